#pragma once

#include <memory>
#include <string>

namespace rig::campaign {

/// Writes the traffic on the harness's port, on any of this machine's networks, to a pcap file.
class Capture {
 public:
    /// Throws std::runtime_error, with one line of text, when the privilege or the network is missing.
    explicit Capture(const std::string& path);
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    /// @return a descriptor that becomes readable when packets have arrived
    int Number() const;

    /// Writes the packets that have arrived. Does not wait. @return whether the capture can go on
    bool WritePackets();

    /// @return why it cannot
    const std::string& Error() const { return error_; }

 private:
    struct Handles;
    std::unique_ptr<Handles> handles_;
    std::string error_;
};

}  // namespace rig::campaign
