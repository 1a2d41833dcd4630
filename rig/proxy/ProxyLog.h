#pragma once

#include <sys/types.h>

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "rig/base/Child.h"
#include "rig/base/Descriptor.h"
#include "rig/fault/Plan.h"
#include "rig/proxy/FrameFollower.h"

namespace rig::proxy {

enum class Party { Dvr, Harness, Proxy };

/// What happens to the connections, as JSON Lines: an object for each event, whole in one write, when it
/// happens. doc/proxy.md says what is in them.
///
/// Every call throws std::runtime_error if the log cannot be written; a file then ends with its last whole
/// line. A reader of standard output that left early has what it wanted: that is no failure.
class ProxyLog {
 public:
    /// @param file  replaced; empty: standard output
    explicit ProxyLog(const std::string& file);

    void Listening(const std::string& address, const std::string& harness);

    void HarnessStarted(pid_t process, const std::string& command);
    void HarnessEnded(const Ending& end);

    /// A fault is to act.
    void Planned(const fault::Order& order);

    /// A connection of the DVR has come from this address.
    void Connected(unsigned int connection, const std::string& dvr);

    /// The harness did not take it.
    void Refused(unsigned int connection, const std::string& error);

    void Frame(unsigned int connection, Party sender, const FollowedFrame& frame);

    /// A message of the DVR that does not go on to the harness.
    void Taken(unsigned int connection, const FollowedFrame& frame);

    /// A fault begins to act in place of the message, has sent a piece, has found that the DVR does not hang
    /// up, and is over.
    void FaultActs(unsigned int connection, const std::string& fault, const std::string& value,
                   const std::string& message);
    void Sent(unsigned int connection, const std::string& fault, const std::string& bytes);
    void KeptOpen(unsigned int connection, const std::string& fault);
    void FaultEnds(unsigned int connection, const std::string& fault);

    void Partial(unsigned int connection, Party sender, const FollowedFrame& frame);

    /// A party sends no more, and may still receive.
    void HalfClosed(unsigned int connection, Party first);
    void Closed(unsigned int connection, Party first);
    void Reset(unsigned int connection, Party first, const std::string& error);

 private:
    void Write(const nlohmann::ordered_json& event);
    void WriteLine(const std::string& line);

    Descriptor file_;
    int output_;               // the file, or standard output
    std::size_t written_ = 0;  // bytes
    bool isUnread_ = false;    // standard output has no reader
};

/// @param time microseconds since 1970. @return "2026-11-20T14:03:07.123456Z"
std::string TimeText(long long time);

}  // namespace rig::proxy
