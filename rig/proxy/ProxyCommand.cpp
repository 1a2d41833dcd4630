#include "rig/proxy/ProxyCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>

#include "rig/base/Complaint.h"
#include "rig/base/Interrupts.h"
#include "rig/base/OptionChecks.h"
#include "rig/fault/Plan.h"
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
    "With --harness-command the harness's, or 128 + the signal that ended it. Such a signal\n"
    "interrupts it; another one, a second later or after that, kills it.";

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
    const auto isCommand = [](const std::string& text) {
        return text.empty() ? "expected a command, found ''" : std::string();
    };
    CLI::Option* const command =
        proxy
            .add_option("--harness-command", options.harnessCommand,
                        "Start the harness by this, in a network of its own; standard output is then the "
                        "harness's log")
            ->type_name("COMMAND")
            ->check(CLI::Validator(isCommand, ""))
            ->needs(&log)
            ->excludes(place);
    proxy
        .add_flag(
            "--once", options.once,
            "Interrupt the harness when it has ended a connection after DONE; the DVR's next call waits")
        ->needs(command);
}

/// What the DVR is to see of the harness, in command-line order: a place belongs to the fault before it.
void AddFaultOptions(CLI::App& proxy, const std::shared_ptr<ProxyOptions>& options) {
    const auto lastFault = [options](const char* option) -> FaultOption& {
        if (options->faults.empty()) {
            throw CLI::ValidationError(option, "expected a --fault before it, found none");
        }
        return options->faults.back();
    };
    const auto addFault = [options](const std::string& name) { options->faults.push_back({name, "", ""}); };
    proxy
        .add_option_function<std::string>(
            "--fault", addFault, "Wrong the DVR in this way (see --list-faults); may be given several times")
        ->type_name("FAULT[=VALUE]")
        ->trigger_on_parse();
    proxy
        .add_option_function<std::string>(
            "--on", [lastFault](const std::string& place) { lastFault("--on").on = place; },
            "The preceding fault acts on each REQUEST of the harness, or only on the Nth (default: the first "
            "that it can act on)")
        ->type_name("REQUEST[:N]")
        ->trigger_on_parse();
    proxy
        .add_option_function<std::string>(
            "--at", [lastFault](const std::string& place) { lastFault("--at").at = place; },
            "The preceding fault acts only on messages about this event, or this file of it")
        ->type_name("EVENT[:FILE]")
        ->trigger_on_parse();
    proxy.add_option("--seed", options->seed, "Repeat the random choices of an earlier run")
        ->transform(Between<std::uint32_t>(0, UINT32_MAX))
        ->type_name("N");
    proxy.add_flag("--list-faults", options->listsFaults, "Print all faults and exit");
    AddFormatOption(proxy, options->format);
}

fault::Plan PlanOf(const ProxyOptions& options) {
    std::vector<fault::Order> orders;
    for (const FaultOption& option : options.faults) {
        fault::Order order = fault::OrderOf(option.fault);
        if (!option.on.empty()) {
            fault::PlaceOn(order, option.on);
        }
        if (!option.at.empty()) {
            fault::PlaceAt(order, option.at);
        }
        orders.push_back(std::move(order));
    }
    return {std::move(orders), options.seed.value_or(std::random_device()())};
}

int RunWithHarness(const ProxyOptions& options, const Address& listen, fault::Plan plan,
                   Interrupts& interrupts) {
    ProxyLog log(options.log);
    Proxy proxy(listen, HarnessProcess::Place(), std::move(plan), log);
    EnterOwnNetwork();
    HarnessProcess process(options.harnessCommand, log);
    proxy.RunWith(process, interrupts, options.once);
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
    AddFaultOptions(*proxy, options);
    proxy->callback([options, &status] {
        if (options->listsFaults) {
            Print(fault::ListFaults(), options->format);
        } else if (options->harness.empty() && options->harnessCommand.empty()) {
            throw CLI::RequiredError("--harness or --harness-command");
        } else {
            status = RunProxy(*options);
        }
    });
}

int RunProxy(const ProxyOptions& options) {
    try {
        Interrupts interrupts;
        fault::Plan plan = PlanOf(options);
        const Address listen = Resolve(*ParseHostAndPort(options.listen, kAnyPort), "--listen");
        if (options.harness.empty()) {
            return RunWithHarness(options, listen, std::move(plan), interrupts);
        }
        const Address harness = Resolve(*ParseHostAndPort(options.harness, kLowestPort), "--harness");
        ProxyLog log(options.log);
        Proxy(listen, harness, std::move(plan), log).Run(interrupts);
        return kInterrupted;
    } catch (const std::exception& error) {
        return Complain("proxy", kUsageStatus, error.what());
    }
}

}  // namespace rig::proxy
