#pragma once

#include <string>

#include "tests/rig/judge/Judging.h"
#include "tests/rig/judge/MadeUpLog.h"

/// @return "VERDICT: what was found" of a check in the log's only run
inline std::string FindingOf(const std::string& id, const std::string& log,
                             const rig::judge::Limits& limits = {}) {
    const auto result = Judged(log, limits);
    for (const auto& check : result.runs.at(0).checks) {
        if (check.id == id) {
            return std::string(rig::result::NameOf(check.verdict)) + ": " + check.found;
        }
    }
    return "no such check";
}

/// @return the checks that the log's only run failed
inline std::string Failed(const std::string& log, const rig::judge::Limits& limits = {}) {
    return With(rig::result::Verdict::Fail, Judged(log, limits).runs.at(0));
}

/// @return EVENT with this in its description's `video`
inline std::string Description(const std::string& reid, const std::string& inside) {
    return "<msg req=\"EVENT\" reid=\"" + reid + "\"><xmlFile>&lt;recording-event reid=\"" + reid +
           "\"&gt;&lt;video&gt;" + inside + "&lt;/video&gt;&lt;/recording-event&gt;</xmlFile></msg>";
}

/// A run in 2.0, as far as a test takes it.
class Dialogue : public MadeUpLog {
 public:
    explicit Dialogue(const std::string& switches = "") : MadeUpLog(2, switches) {}

    Dialogue& List(const std::string& one, const std::string& other = "") {
        Dvr("<msg req=\"OK\"/>").Say("got an OK, sending GET_EVENT_LIST");
        Ask("<msg req=\"GET_EVENT_LIST\" protocolVersion=\"2.0\" />");
        Dvr("<msg req=\"EVENT_LIST\" source=\"s\"><events><event>" + one + "</event>" +
            (other.empty() ? "" : "<event>" + other + "</event>") + "</events></msg>");
        return *this;
    }

    Dialogue& AskEvent(const std::string& reid) {
        Ask("<msg req=\"NEXT_EVENT\" reid=\"" + reid + "\" protocolVersion=\"2.0\" />");
        return *this;
    }

    Dialogue& Describe(const std::string& reid, const std::string& file) {
        Dvr(Description(reid, "&lt;metadata name=\"" + file + "\"/&gt;"));
        return AskFile(reid, file);
    }

    Dialogue& AskFile(const std::string& reid, const std::string& file) {
        Ask("<msg req=\"GET_FILE\" reid=\"" + reid + "\" path=\"" + reid + "\" file=\"" + file +
            "\" protocolVersion=\"2.0\" />");
        return *this;
    }

    Dialogue& Tell(const std::string& name, const std::string& reid, const std::string& file) {
        Dvr("<msg req=\"" + name + "\" reid=\"" + reid + "\" file=\"" + file + "\"/>");
        return *this;
    }

    /// The one file that is left, the event's end and its acknowledgement.
    Dialogue& Finish(const std::string& reid, const std::string& file) {
        Tell("FILE_COMPLETE", reid, file);
        Say("Got FILE_COMPLETE for: reid=" + reid + "  file=" + file).Say("filesToReceive size = 0");
        Say("Sending EVENT_XFER_COMPLETE");
        Ask("<msg req=\"EVENT_XFER_COMPLETE\" reid=\"" + reid + "\" protocolVersion=\"2.0\" />");
        Dvr("<msg req=\"EVENT_XFER_ACK\" reid=\"" + reid + "\"/>");
        Say("Got EVENT_XFER_ACK for: reid='" + reid + "'");
        return *this;
    }

    Dialogue& Done(const std::string& duration = "") {
        Say("Sending DONE").Ask("<msg req=\"DONE\" protocolVersion=\"2.0\"" + duration + " />");
        return *this;
    }

    std::string End() { return After(0.5).Say("shutting down").Text(); }
};
