#pragma once

#include <string>

#include "rig/base/Descriptor.h"

namespace rig::campaign {

/// Where the bytes of a log come from, piece by piece, without waiting.
class LogSource {
 public:
    /// A pipe that the harness writes to.
    explicit LogSource(Descriptor pipe);

    /// A file that grows: read from its current end, or from its start once it exists or is replaced.
    explicit LogSource(std::string path);

    /// @return what has arrived since, at most one piece; empty if nothing has. Throws std::runtime_error
    /// when it cannot be read.
    std::string Read();

    /// @return a descriptor that becomes readable when more has arrived; -1 for a file, which must be checked
    /// for growth, and for a pipe that has ended
    int Number() const { return path_.empty() && !hasEnded_ ? descriptor_.Number() : -1; }

 private:
    void OpenNew();

    std::string path_;  // empty for a pipe
    Descriptor descriptor_;
    bool hasEnded_ = false;
};

}  // namespace rig::campaign
