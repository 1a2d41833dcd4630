#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <string_view>

#include "rig/log/RunReader.h"
#include "rig/result/Json.h"

namespace rig::judge {

/// Prints what the two sides sent to each other, as far as a log says, one JSON object a line, for programs
/// that compare it with something else:
///
///     {"line":5,"sender":"DVR","text":"3c6d..."}
///     {"line":7,"sender":"harness","announced":38,"name":"GET_FILE","file":"EVENT/FILE","rehash":false}
///
/// "line" is the message's first in the log, "text" its bytes in hexadecimal, of the harness only where the
/// log has them. Of a message whose start or end the log lacks, "isWhole" is false.
class MessageList {
 public:
    explicit MessageList(std::ostream& out) : out_(out) {}

    /// Takes the next line of the log. @return whether it is a statement of the harness
    bool Add(std::uint64_t number, std::string_view line);

    /// Prints what is still open.
    void Finish();

 private:
    /// The run of one process.
    struct Open {
        log::RunReader reader;
        std::uint64_t line = 0;  // of the first slice of the message in progress
        result::Json request;    // the last, not yet printed; null if there is none
    };

    void Take(Open& run, std::uint64_t number, const log::Statement& statement);
    void TakePrefixByte(Open& run, std::uint64_t number, const log::Statement& statement);
    void TakeSlice(Open& run, std::uint64_t number, const log::Statement& statement);
    void End(Open& run);
    void EndRequest(Open& run);
    void Print(const result::Json& message);

    std::ostream& out_;
    std::map<int, Open> runs_;  // by process; -1 if the log does not name it
};

}  // namespace rig::judge
