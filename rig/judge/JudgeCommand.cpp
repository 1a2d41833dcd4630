#include "rig/judge/JudgeCommand.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <memory>

#include "rig/common/NumberOption.h"
#include "rig/judge/Judge.h"
#include "rig/judge/KnownFailures.h"
#include "rig/log/LogReader.h"
#include "rig/report/HtmlReport.h"
#include "rig/report/JsonReport.h"
#include "rig/report/JunitReport.h"
#include "rig/report/TapReport.h"
#include "rig/report/TextReport.h"
#include "rig/report/WriteWhole.h"
#include "rig/terminal/Colour.h"

namespace rig {
namespace {

constexpr int kUsage = 64;
constexpr int kNoLog = 66;
constexpr const char* kNoOutput = "expected standard output to take the report, found that it did not";
constexpr double kLongest = 86'400;  // seconds

constexpr const char* kExitStatuses =
    "Exit status: 0 every check passed; 1 a check failed; 2 the log cannot tell; 3 the harness or the rig "
    "failed;\n64 usage, or a report that cannot be written; 66 a log that cannot be read, or is none of the "
    "harness.";

bool WantsFiles(const JudgeOptions& options) {
    return !options.json.empty() || !options.junit.empty() || !options.tap.empty() || !options.html.empty();
}

void ReadLogs(const JudgeOptions& options, judge::Judge& judge) {
    for (const std::string& log : options.logs) {
        if (options.follow) {
            FollowLog(log, [&judge, &log](std::uint64_t number, std::string_view line) {
                judge.Add(log, number, line);
                return !judge.IsOver();
            });
        } else {
            ReadLog(log, [&judge, &log](std::uint64_t number, std::string_view line) {
                judge.Add(log, number, line);
                return true;
            });
        }
    }
    judge.Finish();
}

/// Prints each run as soon as it is judged. Only what is to be written to a file is kept.
/// @return what is to be written
report::Result JudgeLogs(const JudgeOptions& options, const judge::KnownFailures& known,
                         report::RunPrinter& printer) {
    report::Result kept;
    const bool wantsSteps = options.timeline || !options.json.empty() || !options.html.empty();
    judge::Judge judge({options.patience, options.maxReaction}, {wantsSteps, !options.html.empty()},
                       [&](report::RunResult run) {
                           judge::Apply(known, run);
                           if (options.timeline) {
                               std::cout << report::Timeline(run);
                           }
                           printer.Add(run);
                           if (WantsFiles(options)) {
                               kept.runs.push_back(std::move(run));
                           }
                       });
    ReadLogs(options, judge);
    return kept;
}

void WriteReports(const JudgeOptions& options, const report::Result& result) {
    if (!options.json.empty()) {
        report::WriteWhole(options.json, report::JsonReport(result));
    }
    if (!options.junit.empty()) {
        report::WriteWhole(options.junit, report::JunitReport(result));
    }
    if (!options.tap.empty()) {
        report::WriteWhole(options.tap, report::TapReport(result));
    }
    if (!options.html.empty()) {
        report::WriteWhole(options.html, report::HtmlReport(result));
    }
}

int Complain(int status, const std::string& text) {
    std::cerr << "velloran-rig judge: " << text << std::endl;
    return status;
}

}  // namespace

void AddJudgeCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<JudgeOptions>();
    CLI::App* const judge =
        app.add_subcommand("judge", "Reads the harness's log and says how the DVR behaved");
    judge->footer(kExitStatuses);
    judge->add_option("LOG", options->logs,
                      "Logs of the harness in the order in which they were written; - is standard input");
    judge->add_flag("--follow", options->follow, "Go on reading until the run ends, or until SIGINT");
    judge->add_flag("--timeline", options->timeline, "Print the dialogue as a ladder as well");
    judge
        ->add_option("--patience", options->patience,
                     "How long the harness must have waited for an answer before it counts as missing")
        ->transform(Between(0.0, kLongest))
        ->type_name("SECONDS")
        ->capture_default_str();
    judge->add_option("--max-reaction", options->maxReaction, "Fail when an answer took longer")
        ->transform(Between(0.0, kLongest * 1000))
        ->type_name("MS");
    judge
        ->add_option("--known", options->known,
                     "Known failures: in each line a check, a blank, and what a report says was found")
        ->type_name("FILE");
    judge->add_option("--json", options->json, "Write the result as JSON")->type_name("FILE");
    judge->add_option("--junit", options->junit, "Write the result as JUnit XML")->type_name("FILE");
    judge->add_option("--tap", options->tap, "Write the result in the Test Anything Protocol")
        ->type_name("FILE");
    judge
        ->add_option("--html", options->html,
                     "Write one page with the table, the dialogue and the log, to be mailed")
        ->type_name("FILE");
    judge->callback([options, &status] { status = RunJudge(*options); });
}

int RunJudge(const JudgeOptions& options) {
    if (options.logs.empty() || (options.follow && options.logs.size() > 1)) {
        return Complain(kUsage, options.follow ? "expected one log to follow" : "expected a log, found none");
    }
    try {
        const judge::KnownFailures known =
            options.known.empty() ? judge::KnownFailures() : judge::ReadKnownFailures(options.known);
        report::RunPrinter printer(std::cout, WantsColour());
        const report::Result result = JudgeLogs(options, known, printer);
        if (printer.Count() == 0) {
            return Complain(kNoLog,
                            options.logs.front() + ": expected a log of the harness, found no line of one");
        }
        printer.End();
        std::cout.flush();
        WriteReports(options, result);
        if (!std::cout) {
            return Complain(kUsage, kNoOutput);
        }
        return report::ExitStatusOf(printer.Worst());
    } catch (const Unreadable& log) {
        return Complain(kNoLog, log.what());
    } catch (const std::exception& error) {
        return Complain(kUsage, error.what());
    }
}

}  // namespace rig
