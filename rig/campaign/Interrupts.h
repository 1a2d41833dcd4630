#pragma once

#include <csignal>

#include "rig/dvr/Descriptor.h"

namespace rig::campaign {

/// SIGINT, SIGTERM and SIGHUP, to be read instead of suffered while this object lives.
class Interrupts {
 public:
    Interrupts();
    ~Interrupts();
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    /// @return a descriptor that poll finds readable when such a signal has come
    int Number() const { return descriptor_.Number(); }

    /// @return whether one has come, ever
    bool Came();

    /// @return the first that came; 0 where none has
    int Which() const { return which_; }

 private:
    sigset_t before_ = {};
    Descriptor descriptor_;
    int which_ = 0;
};

}  // namespace rig::campaign
