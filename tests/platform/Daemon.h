#pragma once

#include <string>
#include <vector>

/// A syslog daemon: takes the datagrams that are sent to /dev/log. Destroying it is the daemon's end; as with
/// a daemon that is killed, its socket file stays until another one starts.
class Daemon {
 public:
    /// Listens at /dev/log, in the place of whatever is there.
    Daemon();
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    /// @return the datagrams that have arrived and were not taken before. Does not wait: a datagram is there
    /// as soon as its sender goes on.
    std::vector<std::string> Take();

 private:
    int fd_;
};
