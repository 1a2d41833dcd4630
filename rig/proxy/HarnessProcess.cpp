#include "rig/proxy/HarnessProcess.h"

#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <utility>

#include "rig/base/Port.h"

namespace rig::proxy {
namespace {

constexpr int kTimeToStop = 5000;  // milliseconds
constexpr std::chrono::seconds kSameWish{1};

}  // namespace

HarnessProcess::HarnessProcess(const std::string& command, ProxyLog& log)
    : log_(log), command_({command, STDOUT_FILENO, STDERR_FILENO}), guard_(command_.Id()) {
    log_.HarnessStarted(command_.Id(), command);
}

HarnessProcess::~HarnessProcess() {
    if (!command_.End()) {
        command_.Signal(SIGINT);
        pollfd end = {EndDescriptor(), POLLIN, 0};
        poll(&end, 1, kTimeToStop);
    }
}

Address HarnessProcess::Place() {
    return Resolve({"127.0.0.1", kHarnessPort}, "--harness-command");
}

bool HarnessProcess::IsListening() const {
    return LookAtPort(kHarnessPort).isListening;
}

void HarnessProcess::Interrupt() {
    if (!std::exchange(isInterrupted_, true)) {
        command_.Signal(SIGINT);
    }
}

void HarnessProcess::Obey(Interrupts& interrupts) {
    const auto now = std::chrono::steady_clock::now();
    if (interrupts.Count() == std::exchange(obeyed_, interrupts.Count())) {
        return;
    }
    if (!obeyedFirst_) {
        obeyedFirst_ = now;
        Interrupt();
    } else if (now - *obeyedFirst_ >= kSameWish) {
        command_.Signal(SIGKILL);
    }
}

bool HarnessProcess::HasEnded() {
    if (!end_ && command_.End()) {
        end_ = command_.End();
        log_.HarnessEnded(*end_);
    }
    return end_.has_value();
}

int HarnessProcess::Status() const {
    return end_->status.value_or(128 + end_->signal.value_or(0));
}

}  // namespace rig::proxy
