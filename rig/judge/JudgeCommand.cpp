#include "rig/judge/JudgeCommand.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>

#include "rig/base/Complaint.h"
#include "rig/base/Holds.h"
#include "rig/base/OptionChecks.h"
#include "rig/base/Printable.h"
#include "rig/base/ProgressBar.h"
#include "rig/base/Terminal.h"
#include "rig/base/WriteWhole.h"
#include "rig/html/HtmlReport.h"
#include "rig/judge/Judge.h"
#include "rig/judge/KnownFailures.h"
#include "rig/judge/MessageList.h"
#include "rig/judge/checks/Checks.h"
#include "rig/judge/delivery/DeliveryOptions.h"
#include "rig/log/LogReader.h"
#include "rig/result/Reports.h"
#include "rig/result/TextReport.h"

namespace rig::judge {
namespace {

constexpr int kNoLog = 66;
constexpr const char* kStandardInput = "-";
constexpr const char* kEraseLine = "\r\033[K";
constexpr std::chrono::milliseconds kBetweenBars(200);

constexpr const char* kJudgeStatuses =
    "Exit status: 0 every check passed, or only warns; 1 a check failed; 2 the log cannot tell; 3 the "
    "harness or the rig "
    "failed;\n64 usage, or a report that cannot be written; 66 a log that cannot be read, or is not the "
    "harness's.";

bool WantsFiles(const JudgeOptions& options) {
    return !options.json.empty() || !options.junit.empty() || !options.tap.empty() || !options.html.empty();
}

std::string NoLine(const std::string& log) {
    return Printable(log) + ": expected a log of the harness, found none of its lines";
}

/// @return those without any statement of the harness
std::vector<std::string> ReadLogs(const JudgeOptions& options, Judge& judge) {
    std::vector<std::string> foreign;
    for (const std::string& log : options.logs) {
        bool isForeign = true;
        const auto take = [&](std::uint64_t number, std::string_view line) {
            isForeign = !judge.Add(log, number, line).statement && isForeign;
        };
        if (options.follow) {
            log::FollowLog(log, take, [&judge] { return judge.IsOver(); });
        } else {
            log::ReadLog(log, take);
        }
        if (isForeign) {
            foreign.push_back(log);
        }
    }
    judge.Finish();
    return foreign;
}

/// @return what shows on a terminal how far the reading of a long file is; nothing elsewhere
DeliveryPlace::Progress ShownProgress() {
    using Clock = std::chrono::steady_clock;
    if (isatty(STDOUT_FILENO) == 0) {
        return nullptr;
    }
    return [shown = Clock::time_point()](const std::string& file, std::uint64_t done,
                                         std::uint64_t total) mutable {
        if (done >= total) {
            std::cout << kEraseLine << std::flush;
        } else if (Clock::now() - shown > kBetweenBars) {
            shown = Clock::now();
            std::cout << kEraseLine << ProgressBar(file, done, total, TerminalColumns() - 1) << std::flush;
        }
        return true;
    };
}

/// Judges logs and prints each run as soon as it is judged. Keeps only what goes into a file.
class LogsJudged {
 public:
    LogsJudged(const JudgeOptions& options, const KnownFailures& known)
        : options_(options), known_(known), printer_(std::cout, WantsColour()) {}

    void Run() {
        const bool wantsSteps = options_.timeline || !options_.json.empty() || !options_.html.empty();
        const Limits limits{options_.patience,
                            options_.maxReaction,
                            options_.strict,
                            {},
                            PlaceOf(options_.delivery, ShownProgress()),
                            options_.proxy};
        const Keep keep{wantsSteps, !options_.html.empty(), WantsFiles(options_)};
        Judge judge(limits, keep, [this](result::RunResult run) {
            if (!known_.empty()) {
                Apply(known_, run);
                tally_.Add(run);
            }
            Take(std::move(run));
        });
        foreign_ = ReadLogs(options_, judge);
        result::RunResult unseen = tally_.Unseen(known_);
        if (!unseen.checks.empty()) {
            Take(std::move(unseen));
        }
        if (printer_.Count() > 0) {
            printer_.End();
        }
        std::cout.flush();
    }

    /// @return what goes into the files
    const result::Result& Kept() const { return kept_; }

    result::Verdict Worst() const { return printer_.Worst(); }

    /// @return the logs without any statement of the harness
    const std::vector<std::string>& Foreign() const { return foreign_; }

 private:
    void Take(result::RunResult run) {
        if (options_.timeline && !run.steps.empty()) {
            std::cout << result::Timeline(run);
        }
        printer_.Add(run);
        if (WantsFiles(options_)) {
            kept_.runs.push_back(std::move(run));
        }
    }

    const JudgeOptions& options_;
    const KnownFailures& known_;
    KnownTally tally_;
    result::RunPrinter printer_;
    result::Result kept_;
    std::vector<std::string> foreign_;
};

/// Prints what both sides sent. @return the exit status
int ListMessages(const JudgeOptions& options) {
    for (const std::string& log : options.logs) {
        MessageList messages(std::cout);
        bool isForeign = true;
        log::ReadLog(log, [&](std::uint64_t number, std::string_view line) {
            isForeign = !messages.Add(number, line) && isForeign;
        });
        messages.Finish();
        if (isForeign) {
            return Complain("judge", kNoLog, NoLine(log));
        }
    }
    std::cout.flush();
    return IsOutputLost() ? Complain("judge", kUsageStatus, LossOf("messages")) : 0;
}

void WriteReports(const JudgeOptions& options, const result::Result& result) {
    if (!options.json.empty()) {
        WriteWhole(options.json, result::JsonReport(result));
    }
    if (!options.junit.empty()) {
        WriteWhole(options.junit, result::JunitReport(result));
    }
    if (!options.tap.empty()) {
        WriteWhole(options.tap, result::TapReport(result));
    }
    if (!options.html.empty()) {
        WriteWhole(options.html, html::HtmlReport(result));
    }
}

/// @return a report that would overwrite a log to be judged; empty if none would
std::string ReportOverLog(const JudgeOptions& options) {
    std::vector<std::string> logs = options.logs;
    logs.push_back(options.proxy.value_or(""));
    for (const std::string& report : {options.json, options.junit, options.tap, options.html}) {
        for (const std::string& log : logs) {
            std::error_code unknown;
            if (!report.empty() && std::filesystem::is_regular_file(report, unknown) &&
                std::filesystem::equivalent(report, log, unknown)) {
                return report;
            }
        }
    }
    return "";
}

}  // namespace

void AddJudgeCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<JudgeOptions>();
    CLI::App* const judge =
        app.add_subcommand("judge", "Reads the harness's log and says how the DVR behaved");
    judge->footer(kJudgeStatuses);
    judge->add_option("LOG", options->logs,
                      "Logs of the harness in the order in which they were written; - is standard input");
    judge->add_flag("--follow", options->follow, "Keep reading until the run ends, or until SIGINT");
    auto* const messages =
        judge->add_flag("--messages", options->messages,
                        "Only print what both sides sent, as far as the log says: a JSON object a line");
    messages->excludes(judge->get_option("--follow"));
    judge->add_flag("--timeline", options->timeline, "Also print the dialogue as a ladder");
    judge
        ->add_option("--patience", options->patience,
                     "How long the harness must have waited for an answer before it counts as missing")
        ->transform(Between(0.0, kLongestSeconds))
        ->type_name("SECONDS")
        ->capture_default_str();
    judge->add_option("--max-reaction", options->maxReaction, "Fail when an answer took longer")
        ->transform(Between(0.0, kLongestSeconds * 1000))
        ->type_name("MS");
    judge->add_flag("--strict", options->strict, "Fail on what is legal, but what a recorder should not do");
    const auto addFile = [judge](const std::string& name, std::string& file, const std::string& text) {
        TakesPath(*judge->add_option(name, file, text), "FILE");
    };
    addFile("--known", options->known,
            "Known failures: on each line a check, a blank, and what a report says was found");
    addFile("--json", options->json, "Write the result as JSON");
    addFile("--junit", options->junit, "Write the result as JUnit XML");
    addFile("--tap", options->tap, "Write the result in the Test Anything Protocol");
    addFile("--html", options->html, "Write one page to mail: the checks, the dialogue and the log");
    AddDeliveryOptions(*judge, options->delivery);
    TakesPath(*judge->add_option("--proxy", options->proxy,
                                 "Also read the log that velloran-rig proxy has written of the same runs"),
              "FILE");
    judge->add_flag("--list-checks", options->listChecks, "Print all checks and exit");
    AddFormatOption(*judge, options->format);
    judge->callback([options, &status] { status = RunJudge(*options); });
}

int RunJudge(const JudgeOptions& options) {
    if (options.listChecks) {
        Print(ListChecks(), options.format);
        return IsOutputLost() ? Complain("judge", kUsageStatus, LossOf("list")) : 0;
    }
    if (options.logs.empty() || (options.follow && options.logs.size() > 1)) {
        return Complain("judge", kUsageStatus,
                        options.follow ? "expected one log to follow" : "expected a log, found none");
    }
    if (options.proxy == kStandardInput && Holds(options.logs, kStandardInput)) {
        return Complain("judge", kUsageStatus,
                        "--proxy: expected another file than the log, found standard input twice");
    }
    if (const std::string report = ReportOverLog(options); !report.empty()) {
        return Complain("judge", kUsageStatus,
                        Printable(report) + ": expected a file for a report, found a log to be judged");
    }
    try {
        if (options.messages) {
            return ListMessages(options);
        }
        const KnownFailures known =
            options.known.empty() ? KnownFailures() : ReadKnownFailures(options.known);
        LogsJudged logs(options, known);
        logs.Run();
        if (logs.Foreign().size() < options.logs.size()) {
            WriteReports(options, logs.Kept());
        }
        if (IsOutputLost()) {
            return Complain("judge", kUsageStatus, LossOf("report"));
        }
        if (!logs.Foreign().empty()) {
            return Complain("judge", kNoLog, NoLine(logs.Foreign().front()));
        }
        return result::ExitStatusOf(logs.Worst());
    } catch (const log::Unreadable& log) {
        return Complain("judge", kNoLog, log.what());
    } catch (const std::exception& error) {
        return Complain("judge", kUsageStatus, error.what());
    }
}

}  // namespace rig::judge
