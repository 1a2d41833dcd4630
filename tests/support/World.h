#pragma once

#include <string>

#include "tests/support/ReadFile.h"

/// A world of its own for one test: a user, network and mount namespace in which port 5001 is free, the
/// loopback device is the whole network, /mnt/hd is an empty disk and /dev holds a few harmless devices and
/// no syslog daemon. Needs no privileges.
///
/// The process that makes it moves in, and what it starts lives there too. The process must be
/// single-threaded. One world at a time; the next one starts afresh.
class World {
 public:
    /// Throws std::runtime_error, with one line that says what to do, if the system forbids namespaces.
    World();
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// Gives the loopback device one more IPv4 address, such as "10.0.0.5".
    void AddAddress(const std::string& address);

 private:
    int addresses_ = 0;  // added so far
};

/// Mounts an empty disk there, in the current world. Throws as World() does.
void MountEmpty(const char* path);

bool FileExists(const std::string& path);
