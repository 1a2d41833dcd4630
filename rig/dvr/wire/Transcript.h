#pragma once

#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "rig/base/Terminal.h"
#include "rig/dvr/wire/Message.h"

namespace rig::dvr {

/// Prints a dialogue for people to follow, one line per message, each flushed at once:
///
///         0.502 <- GET_FILE reid="EVT-0001" file="front-1.ts"
///         0.703 -> FILE_COMPLETE reid="EVT-0001" file="front-1.ts" length="150021" hashCode="..."
///
/// Seconds since the start; -> goes out from the DVR, <- comes in from the harness. Leaves out the obvious
/// (protocolVersion, a `path` that repeats the `reid`) and shortens long values.
class Transcript {
 public:
    /// @param out       takes the lines; must outlive the transcript
    /// @param terminal  whether `out` is a terminal: it then gets colours and a line that is overwritten
    Transcript(std::ostream& out, bool terminal);
    ~Transcript();
    Transcript(const Transcript&) = delete;
    Transcript& operator=(const Transcript&) = delete;

    /// @param defects  that acted on it; none for an honest message
    void Sent(const Message& message, const std::vector<std::string>& defects = {});
    void Received(const Message& message);
    void Note(const std::string& text);

    /// Shows on a terminal, below all lines and until the next one, how far the transfer of a file is.
    /// @param done,length  bytes
    void Progress(const std::string& file, std::uint64_t done, std::uint64_t length);

 private:
    void EraseProgress();
    void Print(Colour colour, const std::string& text);

    std::ostream& out_;
    bool terminal_;
    bool hasProgress_ = false;  // the terminal's last line shows it
    std::chrono::steady_clock::time_point start_;
};

/// @return the name and the fields of a message, in one line, which does not grow without limit
std::string Summarize(const Message& message);

}  // namespace rig::dvr
