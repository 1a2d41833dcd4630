#include "tests/harness/world/Still.h"

#include <csignal>
#include <fstream>

#include "tests/support/Until.h"

namespace {

/// The value of a field of the process's status: "State: T (stopped)" has the value "T".
std::string Status(const Process& process, const std::string& field) {
    std::ifstream status("/proc/" + std::to_string(process.Id()) + "/status");
    std::string name;
    std::string value;
    while (status >> name and name not_eq field) {
        std::getline(status, value);
    }
    status >> value;
    return value;
}

}  // namespace

char StateOf(const Harness& harness) {
    const std::string state = Status(harness.GetProcess(), "State:");
    return state.empty() ? '?' : state[0];
}

bool Handles(const Process& process, int signal) {
    const std::string handled = Status(process, "SigCgt:");
    return not handled.empty() and (std::stoull(handled, nullptr, 16) & (1ULL << (signal - 1))) not_eq 0;
}

void StandsStill(Harness& harness, Here here) {
    harness.GetsSignal(SIGSTOP);
    if (not Until([&harness] { return StateOf(harness) == 'T'; })) {
        FailAt(here, "the harness does not stop");
    }
}
