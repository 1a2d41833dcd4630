#pragma once

#include <csignal>
#include <string>

#include "rig/base/Descriptor.h"

namespace rig {

/// SIGINT, SIGTERM and SIGHUP, read instead of ending the process while this object lives. SIGHUP is left out
/// if it was ignored, as under nohup, so that a long run survives the logout.
class Interrupts {
 public:
    /// Throws std::runtime_error when the system gives no descriptor for signals.
    Interrupts();
    ~Interrupts();
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    /// @return a descriptor that becomes readable when such a signal has arrived
    int Number() const { return descriptor_.Number(); }

    /// @return how many have arrived; equal ones that arrive at once count as one
    unsigned int Count();

    bool Came() { return Count() > 0; }

    /// @return the first that arrived, in words: "SIGINT (Interrupt)"
    std::string Words() const;

 private:
    sigset_t before_ = {};
    Descriptor descriptor_;
    int which_ = 0;
    unsigned int count_ = 0;
};

}  // namespace rig
