#pragma once

#include <chrono>
#include <ostream>
#include <string>
#include <vector>

#include "rig/dvr/Message.h"

namespace rig {

/// Prints a dialogue for people to follow, one line a message, each flushed at once:
///
///         0.502 <- GET_FILE reid="EVT-0001" file="front-1.ts"
///         0.703 -> FILE_COMPLETE reid="EVT-0001" file="front-1.ts" length="150021" hashCode="..."
///
/// Seconds since the start; -> goes out from the DVR, <- comes in from the harness. What goes without saying
/// is left out (protocolVersion, a `path` that repeats the `reid`), long values are shortened.
class Transcript {
 public:
    /// @param out       takes the lines; must outlive the transcript
    /// @param coloured  whether to colour them
    Transcript(std::ostream& out, bool coloured);

    /// @param defects  that were at work on it; none for an honest message
    void Sent(const Message& message, const std::vector<std::string>& defects = {});
    void Received(const Message& message);
    void Note(const std::string& text);

 private:
    void Print(const char* colour, const std::string& text);

    std::ostream& out_;
    bool coloured_;
    std::chrono::steady_clock::time_point start_;
};

/// @return name and fields of a message in one line
std::string Summarize(const Message& message);

}  // namespace rig
