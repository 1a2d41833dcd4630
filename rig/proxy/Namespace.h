#pragma once

namespace rig::proxy {

/// Moves this process, which must have one thread, into a network namespace of its own, where every IPv4
/// address is the machine's own: a socket may have the address of a peer elsewhere. Sockets made before stay
/// where they are. Where it is not root that may do so, it gets a user namespace, too, and stays the same
/// user in it.
///
/// Throws std::runtime_error if the system refuses it.
void EnterOwnNetwork();

/// @return whether EnterOwnNetwork() works here; tries it in a process of its own
bool MayHaveOwnNetwork();

}  // namespace rig::proxy
