#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "rig/base/Child.h"
#include "rig/campaign/evidence/CaseFolder.h"
#include "rig/campaign/evidence/DvrMessages.h"
#include "rig/campaign/evidence/LogTimes.h"
#include "rig/campaign/execution/LogSource.h"
#include "rig/judge/Judge.h"
#include "rig/log/LineCutter.h"

namespace rig::campaign {

/// One start of the harness: its command, its log and its standard error, which are saved as they arrive
/// (harness.log, harness.err; harness.out if the log is another file) and read by the judge.
class Harness {
 public:
    /// Takes a statement of the log, and what it completes. @param isOver  whether it ends the run
    using TakeStatement = std::function<void(const judge::ReadLine& read, bool isOver)>;

    /// Starts it. @param command  for the shell, with the switches
    /// @param log  the file that the log goes to; empty if it goes to the command's standard output
    Harness(const std::string& command, const std::string& log, const CaseFolder& folder,
            const judge::Limits& limits, TakeStatement take);

    /// Takes the next piece that has arrived on each. Does not wait.
    void Read();

    /// @return the descriptors to poll; -1 among them means none
    std::vector<int> Descriptors();

    Child& Command() { return *command_; }

    /// Passes on to the judge what was seen after DONE.
    void Tell(const judge::AfterDone& after) { judge_.Take(after); }

    /// Reads the rest, once the command has ended. @return what the judge says of each run in the log
    result::Result Finish();

    const LogTimes& Times() const { return times_; }
    const std::vector<DvrMessage>& Messages() const { return messages_; }
    std::uint64_t LogBytes() const { return logBytes_; }
    const std::string& LastError() const { return lastError_; }

 private:
    void TakeLine(std::uint64_t number, std::string_view line);
    void TakeError(std::uint64_t number, std::string_view line);
    bool ReadLog();
    bool ReadErrors();

    TakeStatement take_;
    result::Result result_;  // what has been judged so far
    judge::Judge judge_;
    LogTimes times_;
    std::vector<DvrMessage> messages_;
    GrowingFile logFile_;
    GrowingFile errorFile_;
    std::unique_ptr<GrowingFile> outputFile_;
    log::LineCutter lines_;
    log::LineCutter errorLines_;
    std::vector<std::pair<std::uint64_t, std::string>> lastWords_;  // why it aborted, with line numbers
    std::string lastError_;
    std::uint64_t logBytes_ = 0;
    std::unique_ptr<LogSource> log_;
    std::unique_ptr<LogSource> errors_;
    std::unique_ptr<Child> command_;
};

/// @return what the DVR sent, by the log that a harness has left in the case's folder
std::vector<DvrMessage> MessagesIn(const CaseFolder& folder);

/// Judges anew what a harness has left in the case's folder.
result::Result JudgeAgain(const CaseFolder& folder, const judge::Limits& limits);

}  // namespace rig::campaign
