#pragma once

#include "rig/base/Port.h"

namespace rig::campaign {

/// @return whether the proxy may listen at the port: unlike the harness, it does not mind old connections
/// with
///         another proxy
bool MayBeReused(std::uint16_t port);

/// Makes the system forget closed connections, which it keeps for a minute. Does nothing where somebody
/// listens, and cannot do it for a peer on another machine without CAP_NET_ADMIN.
/// @param evenHalfClosed  also those that the other side has not closed; it is reset
void FreePort(const PortUse& use, bool evenHalfClosed);

/// Tells the kernel to drop a connection. Needs CAP_NET_ADMIN, and a kernel built for it; one that waits out
/// its time is dropped only by newer kernels. @return whether it did
bool Drop(const Socket& socket);

/// Ends a connection that waits out its time, if its peer was on this machine and has closed its socket: a
/// call from the peer's port gets an answer that fits the old connection, and refuses that.
void Knock(const Socket& socket);

}  // namespace rig::campaign
