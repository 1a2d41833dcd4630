#pragma once

#include <cstdint>

namespace rig::campaign {

constexpr std::uint16_t kHarnessPort = 5001;

/// What this machine's kernel says of a TCP port. All false when the harness runs elsewhere.
struct PortUse {
    bool isListening = false;
    bool isHeld = false;       // a connection, even a long-closed one, keeps the harness from binding to it
    bool isConnected = false;  // a connection that the other side has not yet closed
};

/// Looks at both address families.
PortUse LookAtPort(std::uint16_t port);

}  // namespace rig::campaign
