#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace rig::dvr {

/// When a line was logged, since 1970.
using LogTime = std::chrono::microseconds;

/// One frame that the harness sent in an earlier run, as far as its log shows. The log holds each frame's
/// prefix; what it says about the text is on other lines.
struct EarlierRequest {
    std::size_t line = 0;                // of the log, from 1, with the prefix's first byte
    std::uint32_t announced = 0;         // bytes of text
    std::string name;                    // of the message; empty if the log does not say
    std::string evidence;                // the log text that reveals the name; empty likewise
    std::optional<std::string> subject;  // what it is about (see SubjectsOf), if the log tells
    std::optional<std::string> text;     // if the log holds it, as it does for wrong prefixes
};

/// One message of the DVR in an earlier run, and what the harness did about it.
struct EarlierMessage {
    std::size_t line = 0;          // of the log, from 1, where it is announced
    std::string text;              // byte for byte
    std::optional<LogTime> pause;  // between the previous traffic on the connection and this message
    std::vector<EarlierRequest> requests;
    bool closed = false;  // the harness then closed the connection
};

/// The dialogue of an earlier run of the harness.
struct EarlierRun {
    std::string log;  // name of the file
    int dialect = 1;
    std::vector<EarlierMessage> messages;
    std::size_t lastLine = 0;               // of the log, of this run
    bool ended = false;                     // the log shows the end of the run
    std::optional<std::size_t> cutMessage;  // line that announces an incomplete message
    bool hasOtherRuns = false;              // the log holds another run
    bool timed = false;                     // every message has its pause
};

/// Reads the first run with a message from the harness's log. Skips lines that are not the harness's.
/// Throws Failure (Unusable) when the file cannot be read, is not a log of the harness, holds no message or
/// lacks lines in between, with the file, the line, what was expected and what was found.
EarlierRun ReadEarlierRun(const std::string& log);

}  // namespace rig::dvr
