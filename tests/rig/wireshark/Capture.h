#pragma once

#include <sys/types.h>

#include <string>

#include "tests/support/Here.h"

/// A capture, made by dumpcap, of the traffic on port 5001 of the test's world.
class Capture {
 public:
    /// Starts it, and waits until it sees every packet.
    /// @param path  the file to write, pcapng
    explicit Capture(const std::string& path, Here here = Here::current());
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    /// Waits until all packets so far are in the file, and ends it. The last packet is our own datagram.
    void Stop(Here here = Here::current());

 private:
    std::string path_;
    pid_t pid_;
};
