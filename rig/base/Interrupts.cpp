#include "rig/base/Interrupts.h"

#include <fmt/format.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <stdexcept>
#include <string>

namespace rig {
namespace {

/// An ignored signal would be delivered all the same once it is blocked.
bool IsIgnored(int signal) {
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

Interrupts::Interrupts() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        // A shell makes background commands ignore SIGINT; one that reaches us was sent on purpose.
        if (signal != SIGHUP || !IsIgnored(signal)) {
            sigaddset(&signals, signal);
        }
    }
    sigprocmask(SIG_BLOCK, &signals, &before_);
    descriptor_ = Descriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!descriptor_.IsOpen()) {
        const int error = errno;
        sigprocmask(SIG_SETMASK, &before_, nullptr);
        throw std::runtime_error(std::string("expected a descriptor for signals, found: ") +
                                 std::strerror(error));
    }
}

Interrupts::~Interrupts() {
    Came();  // an unread one would take effect now
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

unsigned int Interrupts::Count() {
    signalfd_siginfo info = {};
    while (read(descriptor_.Number(), &info, sizeof info) == sizeof info) {
        if (count_++ == 0) {
            which_ = static_cast<int>(info.ssi_signo);
        }
    }
    return count_;
}

std::string Interrupts::Words() const {
    return fmt::format("SIG{} ({})", sigabbrev_np(which_), strsignal(which_));
}

}  // namespace rig
