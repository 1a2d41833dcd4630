#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rig/judge/Proof.h"

namespace rig::judge {

/// One event of the proxy's log, which doc/proxy.md describes. What an event does not have is empty.
struct WireEvent {
    enum class Kind {
        Listen,
        Plan,
        Connect,
        Refused,
        Frame,
        Fault,
        Sent,
        KeptOpen,
        FaultEnd,
        HalfClose,
        Close,
        Reset,
        Other  // one that the judge does not need, or does not know
    };

    Kind kind = Kind::Other;
    std::int64_t time = 0;  // microseconds since 1970
    std::optional<std::uint64_t> connection = {};
    bool isFromDvr = false;                // a frame
    bool isTaken = false;                  // a frame that does not go on to the harness
    std::string message = {};              // of a frame; at which a fault acts
    std::optional<std::string> reid = {};  // what a frame is about
    std::optional<std::string> file = {};
    std::uint64_t prefixBytes = 0;
    std::uint64_t textBytes = 0;
    std::string fault = {};                  // its name
    std::string value = {};                  // of the fault
    std::string on = {};                     // where a fault is to act
    std::string by = {};                     // who ended a connection: "dvr", "harness" or "proxy"
    std::vector<std::string> messages = {};  // that were sent

    /// @return the fault with its value: "latency=300"
    std::string Named() const { return fault + (value.empty() ? "" : "=" + value); }
};

/// @return the event; nothing if the line is none
std::optional<WireEvent> ReadWireEvent(std::string_view line);

/// Takes an event, and the line that it stands in, which is valid only during the call.
using TakeWireEvent = std::function<void(const WireEvent& event, const Place& place)>;

/// Reads a log of the proxy to its end. Throws log::Unreadable if it cannot be read, or is not one.
/// @return whether its last line is cut
bool ReadWireLog(const std::string& file, const TakeWireEvent& take);

}  // namespace rig::judge
