#include "rig/proxy/Guard.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace rig::proxy {
namespace {

[[noreturn]] void Watch(pid_t group, pid_t parent) {
    setpgid(0, 0);  // so that a signal to the parent's group leaves it alone
    close_range(0, ~0U, 0);
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, nullptr);
    prctl(PR_SET_PDEATHSIG, SIGUSR1);
    sigset_t death;
    sigemptyset(&death);
    sigaddset(&death, SIGUSR1);
    if (getppid() == parent) {
        sigwaitinfo(&death, nullptr);
    }
    kill(-group, SIGKILL);
    _exit(0);
}

}  // namespace

Guard::Guard(pid_t group) {
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0) {
        Watch(group, parent);
    }
}

Guard::~Guard() {
    if (process_ != -1) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
}

}  // namespace rig::proxy
