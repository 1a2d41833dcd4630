#include "rig/campaign/Interrupts.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <initializer_list>

namespace rig::campaign {

Interrupts::Interrupts() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, signal);
    }
    sigprocmask(SIG_BLOCK, &signals, &before_);
    descriptor_ = Descriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

Interrupts::~Interrupts() {
    Came();  // what is not read would strike now
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

bool Interrupts::Came() {
    signalfd_siginfo info = {};
    while (read(descriptor_.Number(), &info, sizeof info) == sizeof info) {
        if (which_ == 0) {
            which_ = static_cast<int>(info.ssi_signo);
        }
    }
    return which_ != 0;
}

}  // namespace rig::campaign
