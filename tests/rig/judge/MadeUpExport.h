#pragma once

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <chrono>
#include <string>
#include <vector>

/// What FILE_COMPLETE says of a file.
struct Completed {
    std::string event;
    std::string file;
    std::string attributes = {};  // of the message: ` length="3"`
};

/// The log of an export in protocol 1.0. Unless told otherwise it ran just now: a file that is written while
/// the test runs was delivered during the export.
class MadeUpExport {
 public:
    /// @param shift  seconds from now
    explicit MadeUpExport(const std::vector<Completed>& files, int shift = 0)
        : now_(std::chrono::system_clock::now() + std::chrono::seconds(shift)) {
        Say(-60, "'protocol' option set to 1");
        Say(-60, "Connected to: fam=2  127.0.0.1:60984");
        Receive(-59, R"(<msg req="OK"/>)");
        Say(-58, "got an OK, sending GET_XML");
        Say(-58, "hdr[0]= 15");
        Receive(-57, "<msg req=\"XML\"><xmlFile>" + Descriptions(files) + "</xmlFile></msg>");
        for (const Completed& one : files) {
            Say(-56, "hdr[0]= 30");
            Receive(55, fmt::format(R"(<msg req="FILE_COMPLETE" reid="{}" file="{}"{}/>)", one.event,
                                    one.file, one.attributes));
            Say(56, fmt::format("Got FILE_COMPLETE for: reid={}  file={}", one.event, one.file));
        }
        Say(57, "Sending EVENT_XFER_COMPLETE");
        Say(57, "hdr[0]= 30");
        Say(57, "Sending DONE");
        Say(57, "hdr[0]= 10");
        Say(58, "Closing client socket...");
        Say(60, "shutting down");
    }

    const std::string& Text() const { return text_; }

 private:
    /// An event for each file but those that follow one of the same event.
    static std::string Descriptions(const std::vector<Completed>& files) {
        std::string all;
        for (std::size_t index = 0; index < files.size();) {
            const std::string event = files[index].event;
            all += "<string>&lt;recording-event reid=\"" + event +
                   "\"&gt;&lt;video&gt;&lt;streams&gt;&lt;stream&gt;";
            for (; index < files.size() && files[index].event == event; ++index) {
                all += "&lt;file name=\"" + files[index].file + "\"/&gt;";
            }
            all += "&lt;/stream&gt;&lt;/streams&gt;&lt;/video&gt;&lt;/recording-event&gt;</string>";
        }
        return all;
    }

    void Say(int second, const std::string& text) {
        const auto time = std::chrono::system_clock::to_time_t(now_ + std::chrono::seconds(second));
        text_ +=
            fmt::format("{:%Y-%m-%dT%H:%M:%S}.000001Z velloran 1 velloran:1 {}\n", fmt::gmtime(time), text);
    }

    void Receive(int second, const std::string& message) {
        Say(second, fmt::format("expecting a message of {} bytes", message.size()));
        Say(second, fmt::format("GetMessage:incoming message, bytes 1 to {0}:{1}", message.size(), message));
    }

    std::chrono::system_clock::time_point now_;
    std::string text_;
};
