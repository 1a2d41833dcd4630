#pragma once

#include <sys/types.h>

#include <string>

#include "tests/support/Here.h"

/// A capture of what passes over port 5001 of the world that the test is in, made by dumpcap.
class Capture {
 public:
    /// Starts it, and waits until it sees every packet from now on.
    /// @param path  the file to write, pcapng
    explicit Capture(const std::string& path, Here here = Here::current());
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    /// Waits until all packets so far are in the file, and ends it. The last packet is a datagram of our own.
    void Stop(Here here = Here::current());

 private:
    std::string path_;
    pid_t pid_;
};
