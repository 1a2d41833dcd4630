#pragma once

#include <sys/types.h>

namespace rig::proxy {

/// Kills a process group if this process dies, however that comes about: a small process of its own, which
/// ends with this object's life. A signal at a parent's death reaches only the child itself, not what it has
/// started.
class Guard {
 public:
    /// Does without where no process can be started.
    explicit Guard(pid_t group);
    ~Guard();
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

 private:
    pid_t process_;
};

}  // namespace rig::proxy
