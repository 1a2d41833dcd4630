#include "tests/harness/armhf/Scripts.h"

#include "tests/support/Messages.h"
#include "tests/support/ScriptedDvr.h"

namespace {

/// Bytes from 0x80 up, which are negative if char is signed.
const std::string kHighBytes = "v\xc3\xbc\x80\xff";

/// Numbers that fit a long or not, depending on its size.
const std::vector<std::string> kNumbers = {"-c", "4294967297", "-d", "-99999999999999999999"};

/// Longer than one line of the log holds, with everything that the log escapes.
std::string LongMessage() {
    std::string comment;
    while (comment.size() < 2000) {
        comment += "a\tb\r\nc\\d\x01\x1f\x7f" + kHighBytes;
    }
    return "<msg req=\"" + kHighBytes + "\"><!--" + comment + "--></msg>";
}

/// A frame of the harness whose prefix announces half as much again.
std::string FrameWithSizeError(const std::string& text) {
    return Prefix(static_cast<std::uint32_t>(text.size() * 3 / 2)) + text;
}

Script Export10() {
    const std::string file = v1::GetFile("E2", kHighBytes);
    return {"Export10",
            {"-d", "99999999999999999999", "-c", "0x1fffffffff"},
            {{Frame(LongMessage()), ""},
             {Frame(Ok()), Frame(v1::kGetXml)},
             {Frame(Xml({Description("E1", {"m1"}), Description("E2", {kHighBytes})})),
              Frame(v1::GetFile("E1", "m1"))},
             {Frame(FileComplete("E1", "other")), ""},
             {Frame(FileComplete("E1", "m1")), Frame(file)},
             {Frame(FileComplete("E2", kHighBytes)),
              Frame(v1::EventXferComplete({"E1", "E2"})) + Frame(v1::kDone)}}};
}

Script SizeError10() {
    return {"SizeError10",
            {"-z"},
            {{Frame(Ok()), FrameWithSizeError(v1::kGetXml)},
             {Frame(Xml({Description("E1", {"m1"})})), FrameWithSizeError(v1::GetFile("E1", "m1"))},
             {Frame(FileComplete("E1", "m1")),
              FrameWithSizeError(v1::EventXferComplete({"E1"})) + FrameWithSizeError(v1::kDone)}}};
}

/// Every switch of 2.0, and everything that is logged about an answer.
Script AllFaults20() {
    const std::string done = "<msg req=\"DONE\" protocolVersion=\"2.0\" duration=\"2147483647\" />";
    const std::string file = Frame(v2::GetFile("EVENT1", kHighBytes));
    const std::string complete = " hashCode=\"H1\" length=\"4294967296\"";
    return {"AllFaults20",
            {"-p", "2", "-e", "-f", "-t", "-r", "-x", "-u", "-s", "01", "-c", "1", "-d", "2147483648"},
            {{Frame(LongMessage()), ""},
             {Frame(Ok()), Frame(v2::kUpdateSoftware) + Frame(v2::kGetEventList)},
             {Frame(Message("SOFTWARE_UPDATE_CONFIRM")), ""},
             {Frame(EventList({"EVENT1", "EVENT2"})), Frame(v2::NextEvent("NT1"))},
             {Frame(InvalidEvent("NT1")), Frame(v2::NextEvent("EVENT1"))},
             {Frame(Event("EVENT1", Description("EVENT1", {"meta.xml", kHighBytes}))),
              Frame(v2::GetFile("EVENT1", "meta.xml"))},
             {Frame(FileComplete("EVENT1", "meta.xml")), Frame(v2::GetFile("NT1", kHighBytes))},
             {Frame(InvalidEvent("EVENT1")), Frame(v2::GetFile("EVENT1", kHighBytes.substr(3)))},
             {Frame(InvalidEvent("EVENT1")), file},
             {Frame(TransportException("EVENT1")), file},
             {Frame(FileComplete("EVENT1", kHighBytes, complete)), file + file},
             {Frame(XferInProgress("EVENT1")), ""},
             {Frame(FileComplete("EVENT1", kHighBytes, complete)), Frame(v2::EventXferComplete("EVENT1"))},
             {Frame(EventXferAck("other")), ""},
             {Frame(EventXferAck("EVENT1")), Frame(done)}}};
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Script& script) {
    return out << script.name;
}

const std::vector<Script>& ScriptsToTheEnd() {
    static const std::vector<Script> scripts = {Export10(), SizeError10(), AllFaults20()};
    return scripts;
}

const std::vector<Script>& FatalScripts() {
    static const std::vector<Script> scripts = {
        {"RejectedNumber", kNumbers, {}},
        {"EndlessPrefix", {}, {{"\x80\x80\x80\x80\x80", ""}}},
        {"LengthOfMinusOne", {}, {{"\xff\xff\xff\xff\x0f", ""}}},
        {"NegativeLength", {}, {{"\x80\x80\x80\x80\x7f", ""}}},
        {"MostNegativeLength", {}, {{"\x80\x80\x80\x80\x08", ""}}},
        {"MalformedMessage", {}, {{Frame("<msg req=\"" + kHighBytes), ""}}},
        {"MissingMessage", {"-p", "2"}, {{Frame("<other/>"), ""}}},
        {"FileWithoutName",
         {},
         {{Frame(Xml({"<recording-event reid=\"E1\"><video><metadata/></video></recording-event>"})), ""}}}};
    return scripts;
}
