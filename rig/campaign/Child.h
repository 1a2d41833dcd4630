#pragma once

#include <sys/types.h>

#include <csignal>
#include <optional>
#include <string>
#include <vector>

#include "rig/common/Descriptor.h"

namespace rig::campaign {

/// How a command ended: by itself with a status, or by a signal.
struct Ending {
    std::optional<int> status;
    std::optional<int> signal;

    bool IsStatus(int expected) const { return status == expected; }
    /// @return whether the signal ended it, or, as a shell in between says it, the status 128 + signal
    bool IsSignal(int expected) const { return signal == expected || status == 128 + expected; }
    /// @return "ended with status 3", "was ended by signal 6 (Aborted)"
    std::string Words() const;
};

/// What to start. The descriptors stay the caller's.
struct Launch {
    std::string command;  // for /bin/sh
    int output = -1;
    int errors = -1;
    std::vector<std::string> environment = {};  // NAME=VALUE, beside our own
    int atOurDeath = SIGTERM;                   // the signal that it gets should we be killed
    bool mayLeaveOthers = false;                // what it started may go on when it has ended with status 0
};

/// A command in a process group of its own, which reads nothing. A plain call of a program takes the place of
/// the shell, so that signals and the end are the program's own; in anything else the shell waits for it also
/// behind a SIGINT. What is left of the group is killed when the command has ended (unless it may leave
/// others), and at the end of this object's life; but for what runs as another user, which is left alone.
class Child {
 public:
    /// Throws std::runtime_error when no process can be made, or none that can be waited for.
    explicit Child(const Launch& launch);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// @return a descriptor that poll finds readable once the command has ended
    int EndDescriptor() const { return pidDescriptor_.Number(); }

    /// @return how the command ended; nothing while it runs. Does not wait.
    const std::optional<Ending>& End();

    /// Sends a signal to the whole group, unless the command has ended and may leave nobody.
    void Signal(int signal);

 private:
    void Reap(int flags);
    bool HasOthers() const;

    pid_t process_ = -1;
    Descriptor pidDescriptor_;
    bool mayLeaveOthers_ = false;
    std::optional<Ending> end_;
};

}  // namespace rig::campaign
