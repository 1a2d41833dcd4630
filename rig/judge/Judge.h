#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rig/judge/RunModel.h"
#include "rig/judge/checks/Checks.h"
#include "rig/judge/delivery/Inspection.h"
#include "rig/result/Result.h"

namespace rig::judge {

/// @return whether a line of the harness's standard error says that its shell could not make the failure
/// marker, which happens when "/mnt/hd" is missing or cannot be written
bool IsMarkerFailure(std::string_view line);

/// @return whether a line of the harness's standard error says why the harness aborts: a failed assertion, or
/// an exception
bool IsLastWord(std::string_view line);

/// What a line of a log is. Valid until the next line.
struct ReadLine {
    explicit ReadLine(std::string_view line) : statement(log::ReadStatement(line)) {}

    std::optional<log::Statement> statement;  // nothing if the harness did not write the line
    const log::Message* message = nullptr;    // of the DVR, that it completes
    const log::Request* request = nullptr;    // of the harness, that it begins
};

/// Takes the verdict on a run as soon as the run is over.
using TakeRun = std::function<void(result::RunResult run)>;

/// Reads logs line by line, splits them into runs, and judges each when it is over. Memory does not grow with
/// the logs, except for what must be kept.
class Judge {
 public:
    /// With a folder of delivered files or a log of the proxy, keeps what it knows of each run until the end
    /// of the logs, and looks there then: a later run may deliver a file again.
    Judge(const Limits& limits, const Keep& keep, TakeRun take);

    /// Takes the next line of a log. @param file as given by the user; the line is escaped, without its
    /// newline
    /// @return what it is
    ReadLine Add(const std::string& file, std::uint64_t number, std::string_view line);

    /// Takes what the rig saw after DONE. It counts in the verdicts on runs that are not over yet.
    void Take(const AfterDone& after) { limits_.after = after; }

    /// @return whether a run has begun and none is in progress
    bool IsOver() const;

    /// Judges what is still open. Throws log::Unreadable if the proxy's log cannot be read, or is not one.
    void Finish();

 private:
    RunModel& RunOf(const log::Statement& statement, const Place& place);
    void AddError(const Place& place);
    void Close(std::optional<int> process);

    Limits limits_;
    Keep keep_;
    std::map<std::optional<int>, std::unique_ptr<RunModel>> open_;  // by process, if the log names it
    std::optional<int> last_;         // the process of the last statement, if it names one
    RunModel* current_ = nullptr;     // its run; null if it has none open
    std::vector<Run> held_;           // until the folder, or the proxy's log, has been looked at
    std::optional<Snapshot> before_;  // of the folder
    bool hasBegun_ = false;           // a run
    TakeRun take_;
};

}  // namespace rig::judge
