#include "rig/campaign/execution/Hooks.h"

#include <fmt/format.h>
#include <poll.h>

#include <chrono>
#include <filesystem>

namespace rig::campaign {

Hooks::Hooks(const HookCommands& commands, const CaseFolder& folder, const std::string& name,
             Interrupts& interrupts)
    : commands_(commands), folder_(folder), name_(name), interrupts_(interrupts) {}

std::string Hooks::BeforeCase() {
    return Run("before-case", commands_.beforeCase);
}

std::string Hooks::AfterCase(const std::string& outcome) {
    outcome_ = outcome;
    return Run("after-case", commands_.afterCase);
}

Hooks::Life Hooks::Alive(const std::string& outcome, std::string& words) {
    outcome_ = outcome;
    words = Run("alive", commands_.alive);
    if (words.empty()) {
        return Life::Alive;
    }
    if (commands_.powerCycle.empty() || interrupts_.Came()) {
        return Life::Dead;
    }
    const std::string dead = words;
    words = Run("power-cycle", commands_.powerCycle);
    if (words.empty()) {
        words = Run("alive", commands_.alive);
    }
    if (!words.empty()) {
        return Life::Dead;
    }
    words = dead;
    return Life::Revived;
}

std::string Hooks::Run(const std::string& hook, const std::string& command) {
    if (command.empty() || interrupts_.Came()) {
        return "";
    }
    const auto begin = std::chrono::steady_clock::now();
    const std::optional<Ending> end = RunInTime(command);
    const std::chrono::duration<double> duration = std::chrono::steady_clock::now() - begin;
    records_.push_back({hook, command, end, duration.count()});
    if (end && end->IsStatus(0)) {
        return "";
    }
    return fmt::format("--{} \"{}\" {}", hook, command,
                       end                  ? end->Words()
                       : interrupts_.Came() ? std::string("was interrupted")
                                            : fmt::format("did not end within {:g} s", commands_.timeout));
}

/// @return how it ended; nothing if it took too long or we were interrupted
std::optional<Ending> Hooks::RunInTime(const std::string& command) const {
    const GrowingFile output = folder_.Append("hooks.log");
    Launch launch{command, output.Number(), output.Number()};
    launch.environment = {
        "VELLORAN_CASE=" + name_,
        "VELLORAN_CASE_DIR=" + std::filesystem::absolute(folder_.Path()).lexically_normal().string(),
        "VELLORAN_OUTCOME=" + outcome_};
    Child child(launch);
    pollfd waited[] = {{child.EndDescriptor(), POLLIN, 0}, {interrupts_.Number(), POLLIN, 0}};
    poll(waited, 2, static_cast<int>(commands_.timeout * 1000));
    return child.End();
}

}  // namespace rig::campaign
