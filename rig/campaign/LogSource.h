#pragma once

#include <string>

#include "rig/common/Descriptor.h"

namespace rig::campaign {

/// Where the bytes of a log come from, piece by piece, without waiting.
class LogSource {
 public:
    /// A pipe that the harness writes into.
    explicit LogSource(Descriptor pipe);

    /// A file that grows: read from where it ends now, or from its start once there is one, or a new one.
    explicit LogSource(std::string path);

    /// @return what has come since, at most one piece; empty where nothing has. Throws std::runtime_error
    /// when it cannot be read.
    std::string Read();

    /// @return a descriptor that poll finds readable when more has come; -1 for a file, which has to be
    /// looked at, and for a pipe that has ended
    int Number() const { return path_.empty() && !hasEnded_ ? descriptor_.Number() : -1; }

 private:
    void OpenNew();

    std::string path_;  // empty for a pipe
    Descriptor descriptor_;
    bool hasEnded_ = false;
};

}  // namespace rig::campaign
