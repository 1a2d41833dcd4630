#pragma once

#include <csignal>
#include <string>

#include "rig/common/Descriptor.h"

namespace rig::campaign {

/// SIGINT, SIGTERM and SIGHUP, to be read instead of suffered while this object lives; but SIGHUP where it
/// was ignored, as under nohup, so that a campaign survives the logout.
class Interrupts {
 public:
    /// Throws std::runtime_error where the system has no descriptor for signals.
    Interrupts();
    ~Interrupts();
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    /// @return a descriptor that poll finds readable when such a signal has come
    int Number() const { return descriptor_.Number(); }

    /// @return whether one has come, ever
    bool Came();

    /// @return the first that came, in words: "SIGINT (Interrupt)"
    std::string Words() const;

 private:
    sigset_t before_ = {};
    Descriptor descriptor_;
    int which_ = 0;
};

}  // namespace rig::campaign
