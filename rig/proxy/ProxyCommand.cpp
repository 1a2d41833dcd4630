#include "rig/proxy/ProxyCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <memory>
#include <optional>
#include <string>

#include "rig/base/Complaint.h"
#include "rig/base/Interrupts.h"
#include "rig/base/OptionChecks.h"
#include "rig/proxy/Address.h"
#include "rig/proxy/HarnessProcess.h"
#include "rig/proxy/Namespace.h"
#include "rig/proxy/Proxy.h"
#include "rig/proxy/ProxyLog.h"

namespace rig::proxy {
namespace {

constexpr int kInterrupted = 128 + SIGINT;
constexpr int kAnyPort = 0;  // the system chooses one
constexpr int kLowestPort = 1;

constexpr const char* kProxyStatuses =
    "Exit status: 64 usage, an address that cannot be used, no network for the harness, or a log that\n"
    "cannot be written; 130 interrupted by SIGINT, SIGTERM or SIGHUP, which is how it ends.\n"
    "With --harness-command the harness's, or 128 + the signal that ended it. The first such signal\n"
    "interrupts it, the next one kills it.";

/// A check that the text is a place as `form` shows it.
CLI::Validator Place(const std::string& form, bool needsHost, int lowestPort) {
    const auto check = [form, needsHost, lowestPort](const std::string& text) -> std::string {
        const std::optional<HostAndPort> place = ParseHostAndPort(text, lowestPort);
        if (place && !(needsHost && place->host.empty())) {
            return "";
        }
        return fmt::format("expected {} with PORT from {} to {}, found '{}'", form, lowestPort, kHighestPort,
                           text);
    };
    return CLI::Validator(check, "");
}

void AddHarnessOptions(CLI::App& proxy, ProxyOptions& options, CLI::Option& log) {
    CLI::Option* const place = proxy.add_option("--harness", options.harness, "Where the harness listens")
                                   ->check(Place("HOST:PORT", true, kLowestPort))
                                   ->type_name("HOST:PORT");
    proxy
        .add_option("--harness-command", options.harnessCommand,
                    "Start the harness by this, in a network of its own; standard output is then the "
                    "harness's log")
        ->type_name("COMMAND")
        ->check(CLI::Validator(
            [](const std::string& text) {
                return text.empty() ? "expected a command, found ''" : std::string();
            },
            ""))
        ->needs(&log)
        ->excludes(place);
}

int RunWithHarness(const ProxyOptions& options, const Address& listen, Interrupts& interrupts) {
    ProxyLog log(options.log);
    Proxy proxy(listen, HarnessProcess::Place(), log);
    EnterOwnNetwork();
    HarnessProcess process(options.harnessCommand, log);
    proxy.RunWith(process, interrupts);
    return process.Status();
}

}  // namespace

void AddProxyCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<ProxyOptions>();
    CLI::App* const proxy = app.add_subcommand(
        "proxy", "Stands between DVR and harness, passes everything on as it comes, and logs it");
    proxy->footer(kProxyStatuses);
    proxy
        ->add_option("--listen", options->listen,
                     "Where the DVR connects: [HOST:]PORT; without HOST at all addresses, with port 0 at any "
                     "free one, which the log names")
        ->check(Place("[HOST:]PORT", false, kAnyPort))
        ->type_name("HOST:PORT")
        ->capture_default_str();
    CLI::Option* const log = proxy->add_option(
        "--log", options->log, "Write the log there, as JSON Lines (default: to standard output)");
    TakesPath(*log, "FILE");
    AddHarnessOptions(*proxy, *options, *log);
    proxy->callback([options, &status] {
        if (options->harness.empty() && options->harnessCommand.empty()) {
            throw CLI::RequiredError("--harness or --harness-command");
        }
        status = RunProxy(*options);
    });
}

int RunProxy(const ProxyOptions& options) {
    try {
        Interrupts interrupts;
        const Address listen = Resolve(*ParseHostAndPort(options.listen, kAnyPort), "--listen");
        if (options.harness.empty()) {
            return RunWithHarness(options, listen, interrupts);
        }
        const Address harness = Resolve(*ParseHostAndPort(options.harness, kLowestPort), "--harness");
        ProxyLog log(options.log);
        Proxy(listen, harness, log).Run(interrupts);
        return kInterrupted;
    } catch (const std::exception& error) {
        return Complain("proxy", kUsageStatus, error.what());
    }
}

}  // namespace rig::proxy
