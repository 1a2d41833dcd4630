#include "rig/campaign/RunCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <utility>

#include "rig/base/Complaint.h"
#include "rig/base/OptionChecks.h"
#include "rig/campaign/Plan.h"
#include "rig/campaign/Search.h"
#include "rig/judge/delivery/DeliveryOptions.h"

namespace rig::campaign {
namespace {

constexpr int kMostRuns = 100;

constexpr const char* kRunStatuses =
    "Exit status: 0 every case passed; 1 a case failed or timed out; 2 a case was inconclusive or did not "
    "run;\n"
    "3 the harness, a hook or the rig failed; 64 usage, or evidence that cannot be written; 130 "
    "interrupted.\n"
    "The switches are appended to the harness's command; {protocol} and {seed} are replaced in the "
    "DVR's.\n"
    "Hooks see VELLORAN_CASE, VELLORAN_CASE_DIR and, after the case, VELLORAN_OUTCOME.";

CLI::Option* AddSeconds(CLI::App& run, const char* name, double& seconds, const char* text) {
    return run.add_option(name, seconds, text)
        ->transform(Between(0.0, kLongestSeconds))
        ->type_name("SECONDS")
        ->capture_default_str();
}

void AddShardOptions(CLI::App& run, RunOptions& options) {
    auto* const shard =
        run.add_option_function<std::string>(
               kShardOption,
               [&options](const std::string& text) {
                   options.selection.shard = ParseShard(text);
                   options.selection.shard->from = kShardOption;
               },
               "Run the Ith of N parts of the cases, which take about equally long (default: the part that "
               "the environment of a test runner or scheduler names)")
            ->check(CLI::Validator(
                [](const std::string& text) {
                    return ParseShard(text)
                               ? std::string()
                               : fmt::format("expected I/N with I from 1 to N, found '{}'", text);
                },
                ""))
            ->type_name("I/N")
            ->excludes("--search");
    run.add_flag("--no-shard", options.isWhole, "Run all cases, whatever the environment says")
        ->excludes(shard);
}

void AddCaseOptions(CLI::App& run, RunOptions& options) {
    auto* const cases =
        run.add_option("--cases", options.selection.names, "Cases to run, as --list-cases names them, or all")
            ->type_name("all|NAME,...")
            ->capture_default_str();
    run.add_option("--faults", options.selection.faults,
                   "Run these cases of faults instead, which a proxy adds to the harness's (see proxy "
                   "--list-faults): one of each fault, all, or some by group, fault or case")
        ->type_name("quick|all|GROUP|ID,...")
        ->excludes(cases);
    run.add_option("--protocol", options.selection.protocol, "Dialects whose cases to run")
        ->check(CLI::IsMember({"1", "2", "both"}))
        ->type_name("1|2|both")
        ->capture_default_str();
    run.add_option(
           "--search", options.search,
           "Try random sequences of the proxy's faults instead: so many, or for so long (90s, 20m, 2h); "
           "what fails is repeated and made smaller")
        ->check(CLI::Validator(
            [](const std::string& text) {
                return ParseSearchLimit(text)
                           ? std::string()
                           : "expected a number of tries, or of s, m or h, found '" + text + "'";
            },
            ""))
        ->type_name("N|DURATION")
        ->excludes(cases)
        ->excludes("--faults");
    AddShardOptions(run, options);
    run.add_flag("--bare", options.selection.bare, "Leave out the clean exports that run first and last");
    run.add_flag("--list-cases", options.listCases, "Print the table of cases and exit");
    run.add_option("--repeat", options.repeat, "Run each case this many times, to see how its runs differ")
        ->transform(Between(1, kMostRuns))
        ->type_name("N")
        ->capture_default_str();
    run.add_option("--seed", options.seed, "Repeat the random choices of an earlier campaign")
        ->transform(Between<std::uint32_t>(0, UINT32_MAX))
        ->type_name("N");
}

void AddCommandOptions(CLI::App& run, RunOptions& options) {
    const auto addCommand = [&run](const char* name, std::string& command, const char* text) {
        run.add_option(name, command, text)->type_name("COMMAND");
    };
    addCommand("--velloran", options.velloran,
               "The harness, such as 'ssh rig velloran' (default: the one next to this program, or on PATH)");
    addCommand("--stop", options.stop,
               "Interrupts the harness, where SIGINT to its command does not reach it");
    TakesPath(
        *run.add_option("--log", options.log, "Where the harness's log goes (default: its standard output)"),
        "FILE");
    run.add_flag("--direct", options.isDirect,
                 "Have the DVR call the harness itself, not a proxy that has it in a network of its own");
    run.add_option_function<std::string>(
           "--dvr", [&options](const std::string& command) { options.dvr = command; },
           "Start this for each case; without COMMAND, the simulated DVR. Without --dvr, wait for a recorder")
        ->expected(0, 1)
        ->type_name("[COMMAND]");
    addCommand("--before-case", options.hooks.beforeCase, "Runs before each case");
    addCommand("--after-case", options.hooks.afterCase, "Runs after each case");
    addCommand("--alive", options.hooks.alive, "Runs after each case: status 0 means that the DVR is alive");
    addCommand("--power-cycle", options.hooks.powerCycle,
               "Runs if the DVR is not alive; then --alive runs once more");
}

void AddPatienceOptions(CLI::App& run, RunOptions& options) {
    AddSeconds(run, "--connect-timeout", options.patience.connect, "How long to wait for the DVR to connect");
    AddSeconds(run, "--idle-timeout", options.patience.idle, "How long to wait for a new line in the log");
    AddSeconds(run, "--transfer-timeout", options.patience.transfer,
               "How long to wait for it while the DVR transfers a file");
    AddSeconds(run, "--case-timeout", options.patience.whole, "How long a case may take");
    AddSeconds(run, "--hook-timeout", options.hooks.timeout, "How long a hook may take");
    AddSeconds(run, "--patience", options.patience.answer,
               "How long the harness must have waited for an answer before it counts as missing");
    run.add_option("--linger", options.linger,
                   "How long to keep watching after the end of a dialogue (default: with -d, as long as it "
                   "asks the DVR to stay away; otherwise 0)")
        ->transform(Between(0.0, kLongestSeconds))
        ->type_name("SECONDS");
    run.add_option("--max-reaction", options.maxReaction, "Fail when an answer took longer")
        ->transform(Between(0.0, kLongestSeconds * 1000))
        ->type_name("MS");
    run.add_flag("--strict", options.strict, "Fail on what is legal, but what a recorder should not do");
}

void AddEvidenceOptions(CLI::App& run, RunOptions& options) {
    TakesPath(
        *run.add_option("--out", options.out,
                        "Folder for the evidence, new or empty (default: velloran-campaign-YYYYMMDD-HHMMSS)"),
        "DIR");
    run.add_option("--note", options.note, "Note for the evidence: firmware, unit")->type_name("TEXT");
    TakesPath(
        *run.add_option("--known", options.known,
                        "Known failures: on each line a check, a blank, and what a report says was found"),
        "FILE");
    judge::AddDeliveryOptions(run, options.delivery);
    run.add_flag("--capture", options.capture, "Capture the packets of port 5001 for each case");
}

int PrintCases(const Selection& selection) try {
    std::cout << ListCases(selection);
    return IsOutputLost() ? Complain("run", kUsageStatus, LossOf("list")) : 0;
} catch (const std::runtime_error& error) {
    return Complain("run", kUsageStatus, error.what());
}

/// A search is not divided: each has a seed of its own. A campaign that is gone on with stays what it was.
RunOptions WithShard(RunOptions options) {
    if (options.selection.shard || options.isWhole || !options.search.empty() || !options.resume.empty()) {
        return options;
    }
    ShardChoice choice = ShardInEnvironment([](const char* name) { return std::getenv(name); });
    options.selection.shard = std::move(choice.shard);
    for (const std::string& ignored : choice.ignored) {
        (options.listCases ? std::cerr : std::cout) << "velloran-rig run: " << ignored << std::endl;
    }
    return options;
}

/// There is no other option beside it.
void AddResumeOption(CLI::App& run, RunOptions& options) {
    CLI::Option* const resume = run.add_option("--resume", options.resume,
                                               "Go on with the campaign in this folder, which was stopped or "
                                               "killed: run the cases that have not come "
                                               "to their end, with the options that it began with");
    TakesPath(*resume, "DIR");
    for (CLI::Option* const other : run.get_options()) {
        if (other != resume && other != run.get_help_ptr()) {
            resume->excludes(other);
        }
    }
}

void AddOptions(CLI::App& run, RunOptions& options) {
    AddCaseOptions(run, options);
    AddCommandOptions(run, options);
    AddPatienceOptions(run, options);
    AddEvidenceOptions(run, options);
    for (const char* other : {"--log", "--stop", "--direct"}) {  // the proxy has the harness
        run.get_option("--faults")->excludes(run.get_option(other));
        run.get_option("--search")->excludes(run.get_option(other));
    }
    AddResumeOption(run, options);
}

}  // namespace

void AddRunCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<RunOptions>();
    CLI::App* const run =
        app.add_subcommand("run", "Exercises a DVR with every switch of the harness, and keeps the evidence");
    run->footer(kRunStatuses);
    AddOptions(*run, *options);
    run->callback([options, &status] { status = RunCampaign(*options); });
}

RunOptions ParseRun(std::vector<std::string> words) {
    RunOptions options;
    CLI::App run;
    AddOptions(run, options);
    std::reverse(words.begin(), words.end());  // as the library wants them
    try {
        run.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        throw std::runtime_error(
            fmt::format("--resume: expected the command line of a campaign, found: {}", error.what()));
    }
    return options;
}

int RunCampaign(const RunOptions& given) {
    const RunOptions options = WithShard(given);
    if (options.listCases) {
        return PrintCases(options.selection);
    }
    try {
        return ExitStatusOf(options.resume.empty() ? PlanAndRun(options) : Resume(options));
    } catch (const std::exception& error) {
        return Complain("run", kUsageStatus, error.what());
    }
}

}  // namespace rig::campaign
