#pragma once

#include <string>
#include <vector>

/// A syslog daemon: takes the datagrams that are sent to /dev/log. Destroying it ends the daemon; as with a
/// killed daemon, its socket file stays until another one starts.
class Daemon {
 public:
    /// Listens at /dev/log, replacing whatever is there.
    Daemon();
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    /// @return the datagrams that have arrived since the last call. Does not wait: a datagram has arrived
    /// when its sender goes on.
    std::vector<std::string> Take();

 private:
    int fd_;
};
