#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rig::result {

/// What is known about one thing that is required of the DVR.
enum class Verdict {
    Pass,
    Warning,       // legal, but a recorder should not
    KnownFailure,  // failed exactly as the list of known failures says
    NotReached,    // the dialogue ended before it came to this
    Inconclusive,  // the log cannot tell; the finding says why
    Environment,   // the harness or the rig failed, not the DVR
    Fail
};
constexpr std::size_t kVerdicts = static_cast<std::size_t>(Verdict::Fail) + 1;

/// @return whether a report for people says what was expected and found
bool NeedsWords(Verdict verdict);

/// @return the verdict as reports print it, in capitals: "PASS", "NOT REACHED" ...
const char* NameOf(Verdict verdict);

/// One line of a log that proves a finding.
struct Evidence {
    std::string file;        // as given on the command line; "-" is standard input
    std::uint64_t line = 0;  // counting from 1
    std::string text;        // the text of the log's line, without its prefix, still escaped
    std::string note = {};   // what the line itself does not say

    /// @return file, line, text and note
    std::string Words() const;
};

struct CheckResult {
    std::string_view id;      // stable: "event-list.source"; lasts as long as the program
    std::string requirement;  // one sentence: what is required of the DVR
    Verdict verdict = Verdict::NotReached;
    std::string expected;
    std::string found;
    std::vector<Evidence> evidence;  // at most a handful
};

/// @return the id of a check as CheckResult has it. All are kept: there are few
std::string_view LastingId(const std::string& id);

/// One rung of the dialogue's ladder.
struct Step {
    enum class Kind { FromDvr, FromHarness, Fault, Note };
    Kind kind = Kind::Note;
    std::optional<std::int64_t> time;  // microseconds since 1970-01-01 UTC
    std::string text;
    std::uint64_t line = 0;  // of the log
};

/// One statement of the harness's log.
struct LogEntry {
    std::uint64_t line = 0;            // of the log
    std::optional<std::int64_t> time;  // microseconds since 1970-01-01 UTC
    std::optional<int> level;          // 1 to 64, if the log has it
    std::string text;                  // without prefix, escaped
};

/// How long the DVR took to answer one kind of request, net of the harness's own pauses; milliseconds.
struct Timing {
    std::string request;
    std::uint64_t count = 0;
    double median = 0;
    double percentile95 = 0;
    double percentile99 = 0;
    double longest = 0;
};

/// The verdict on one run of the harness.
struct RunResult {
    std::string name;      // where its first line is: "run.log:1"
    std::string switches;  // as on the harness's command line: "-p 2 -e -c 3"
    std::optional<std::int64_t> begin;
    std::optional<std::int64_t> end;  // microseconds since 1970-01-01 UTC
    std::vector<CheckResult> checks;
    std::vector<Timing> timings;
    std::vector<Step> steps;    // empty unless asked for
    std::vector<LogEntry> log;  // empty unless asked for
};

struct Result {
    std::vector<RunResult> runs;
};

/// @return what was found without the parentheses at its end, which differ from run to run
std::string_view WithoutDetails(std::string_view found);

/// @return the verdict that decides for the run: the worst of its checks. A check not reached because of a
/// known failure counts as known.
Verdict WorstOf(const RunResult& run);

/// @return the verdict that decides for all runs
Verdict WorstOf(const Result& result);

/// @return the exit status that says the verdict: 0 pass, warning or known failure, 1 fail, 2 inconclusive or
/// not reached, 3 environment
int ExitStatusOf(Verdict verdict);

/// @return the seconds between two times in microseconds, "0.255"; nothing if one is not known
std::string SecondsSince(const std::optional<std::int64_t>& begin, const std::optional<std::int64_t>& time);

/// @param time microseconds since 1970. @return "2026-11-20T14:03:07Z"
std::string Date(std::int64_t time);

}  // namespace rig::result
