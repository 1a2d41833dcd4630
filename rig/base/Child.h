#pragma once

#include <sys/types.h>

#include <csignal>
#include <optional>
#include <string>
#include <vector>

#include "rig/base/Descriptor.h"

namespace rig {

/// How a command ended: by itself with a status, or by a signal.
struct Ending {
    std::optional<int> status;
    std::optional<int> signal;

    bool IsStatus(int expected) const { return status == expected; }
    /// @return whether this signal ended it, directly or as a shell in between reports it: status 128 +
    /// signal
    bool IsSignal(int expected) const { return signal == expected || status == 128 + expected; }
    /// @return "ended with status 3", "was ended by signal 6 (Aborted)"
    std::string Words() const;
};

/// What to start. The caller keeps the descriptors.
struct Launch {
    std::string command;  // for /bin/sh
    int output = -1;
    int errors = -1;
    std::vector<std::string> environment = {};  // NAME=VALUE, added to our own
    int atOurDeath = SIGTERM;                   // the signal that it gets if we are killed
    bool mayLeaveOthers = false;                // what it started may live on once it has ended with status 0
};

/// A command in a process group of its own, without input. A plain program call replaces the shell, so that
/// signals and the exit are the program's own; otherwise the shell waits for it even after a SIGINT. What is
/// left of the group is killed when the command has ended (unless it may leave others), and at the end of
/// this object's life, except for what runs as another user, which is left alone.
class Child {
 public:
    /// Throws std::runtime_error when no process can be started, or it cannot be waited for.
    explicit Child(const Launch& launch);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t Id() const { return process_; }

    /// @return a descriptor that becomes readable once the command has ended
    int EndDescriptor() const { return pidDescriptor_.Number(); }

    /// @return how the command ended; nothing while it runs. Does not wait.
    const std::optional<Ending>& End();

    /// Sends a signal to the whole group, unless the command has ended and may not leave others.
    void Signal(int signal);

 private:
    void Reap(int flags);
    bool HasOthers() const;

    pid_t process_ = -1;
    Descriptor pidDescriptor_;
    bool mayLeaveOthers_ = false;
    std::optional<Ending> end_;
};

}  // namespace rig
