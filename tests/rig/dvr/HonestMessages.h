#pragma once

#include <string>
#include <vector>

/// A message as an honest DVR with FixedRecordings sends it.
struct HonestMessage {
    int dialect;
    std::string name;
    std::string text;
};

/// @return one of each, and INVALID_EVENT twice: about an event and about a file
inline const std::vector<HonestMessage>& HonestMessages() {
    static const std::string first =
        R"(&lt;recording-event reid="EVT1"&gt;&lt;video&gt;&lt;metadata name="m.xml"/&gt;&lt;streams&gt;)"
        R"(&lt;stream&gt;&lt;file name="a.ts"/&gt;&lt;/stream&gt;&lt;stream&gt;&lt;file name="b.ts"/&gt;)"
        R"(&lt;/stream&gt;&lt;/streams&gt;&lt;/video&gt;&lt;/recording-event&gt;)";
    static const std::string second =
        R"(&lt;recording-event reid="EVT2"&gt;&lt;video&gt;&lt;metadata name="m.xml"/&gt;&lt;streams&gt;)"
        R"(&lt;stream&gt;&lt;file name="c.ts"/&gt;&lt;/stream&gt;&lt;/streams&gt;&lt;/video&gt;)"
        R"(&lt;/recording-event&gt;)";
    static const std::string complete =
        R"( reid="EVT1" file="a.ts" length="4" )"
        R"(hashCode="0d18d4eb377a214157ad45e7ee0f189a2d7370788a483e729c7f269d94cafe41"/>)";
    static const std::string version = R"( protocolVersion="2.0")";
    static const std::vector<HonestMessage> messages = {
        {1, "OK", R"(<msg req="OK"/>)"},
        {1, "XML",
         R"(<msg req="XML"><xmlFile><string>)" + first + "</string><string>" + second +
             "</string></xmlFile></msg>"},
        {1, "FILE_COMPLETE", R"(<msg req="FILE_COMPLETE")" + complete},
        {1, "CONFIGURATION_UPDATE_ERROR", R"(<msg req="CONFIGURATION_UPDATE_ERROR"/>)"},
        {2, "OK", R"(<msg req="OK")" + version + "/>"},
        {2, "SOFTWARE_UPDATE_CONFIRM", R"(<msg req="SOFTWARE_UPDATE_CONFIRM")" + version + "/>"},
        {2, "CONFIGURATION_UPDATE_ERROR", R"(<msg req="CONFIGURATION_UPDATE_ERROR")" + version + "/>"},
        {2, "EVENT_LIST",
         R"(<msg req="EVENT_LIST")" + version +
             R"( source="velloran-rig"><events><event>EVT1</event><event>EVT2</event></events></msg>)"},
        {2, "EVENT",
         R"(<msg req="EVENT")" + version + R"( reid="EVT1"><xmlFile>)" + first + "</xmlFile></msg>"},
        {2, "FILE_COMPLETE", R"(<msg req="FILE_COMPLETE")" + version + complete},
        {2, "EVENT_XFER_ACK", R"(<msg req="EVENT_XFER_ACK")" + version + R"( reid="EVT1"/>)"},
        {2, "INVALID_EVENT", R"(<msg req="INVALID_EVENT")" + version + R"( reid="EVT1"/>)"},
        {2, "INVALID_EVENT", R"(<msg req="INVALID_EVENT")" + version + R"( reid="EVT1" file="a.ts"/>)"},
        {2, "TRANSPORT_EXCEPTION",
         R"(<msg req="TRANSPORT_EXCEPTION")" + version + R"( reid="EVT1" file="a.ts"/>)"},
        {2, "XFER_IN_PROGRESS", R"(<msg req="XFER_IN_PROGRESS")" + version + R"( reid="EVT1" file="a.ts"/>)"},
    };
    return messages;
}
