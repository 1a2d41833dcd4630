#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace rig::proxy {

/// A fault, and what --on and --at say of it; empty: anywhere.
struct FaultOption {
    std::string fault;  // "NAME[=VALUE]"
    std::string on;
    std::string at;
};

/// What the command line of `velloran-rig proxy` says, with its defaults.
struct ProxyOptions {
    std::string listen = "5001";
    std::string harness;         // where it listens; empty: where the command below starts it
    std::string harnessCommand;  // for /bin/sh
    bool once = false;           // stop the harness after one export
    std::string log;             // file; empty: standard output
    std::vector<FaultOption> faults;
    std::optional<std::uint32_t> seed;
    bool listsFaults = false;
    std::string format = "text";  // of the list
};

/// Adds the subcommand `proxy`. If the command line asks for it, parsing runs it and sets `status` to its
/// exit status.
void AddProxyCommand(CLI::App& app, int& status);

/// Passes on what DVR and harness send until a signal ends it, or the harness that it has started; if
/// something goes wrong, one line on standard error.
/// @return the exit status
int RunProxy(const ProxyOptions& options);

}  // namespace rig::proxy
