#include "rig/campaign/execution/Harness.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "rig/base/Printable.h"
#include "rig/campaign/execution/Watch.h"
#include "rig/log/LogReader.h"

namespace rig::campaign {
namespace {

// The evidence names the files as in the case's folder.
const std::string kLogName = "harness.log";
const std::string kErrorName = "harness.err";

constexpr std::size_t kMostMessages = 100'000;  // that the coverage counts
constexpr std::size_t kMostLastWords = 16;
constexpr std::size_t kLongestExcerpt = 300;  // bytes
constexpr int kRoom = 1 << 20;                // of a pipe, so that the harness does not wait for us

/// @return its ends: to read, to write
std::array<Descriptor, 2> Pipe() {
    std::array<int, 2> ends = {-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("expected a pipe for the harness's output, found none");
    }
    fcntl(ends[1], F_SETPIPE_SZ, kRoom);
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

/// Adds the DVR's message that the line completes.
void Add(std::vector<DvrMessage>& messages, const judge::ReadLine& read) {
    if (read.statement && read.message != nullptr && read.message->root && messages.size() < kMostMessages) {
        messages.push_back(DvrMessageOf(*read.message));
    }
}

template <typename TakeLine>
void AddFile(const CaseFolder& folder, const std::string& name, const TakeLine& take) {
    log::LineCutter lines(take);
    std::ifstream file(folder.PathOf(name));
    lines.Add(std::string(std::istreambuf_iterator<char>(file), {}));
    lines.End();
}

}  // namespace

Harness::Harness(const std::string& command, const std::string& log, const CaseFolder& folder,
                 const judge::Limits& limits, TakeStatement take)
    : take_(std::move(take)),
      judge_(limits, {true, true}, [this](result::RunResult run) { result_.runs.push_back(std::move(run)); }),
      logFile_(folder.Grow(kLogName)),
      errorFile_(folder.Grow(kErrorName)),
      lines_([this](std::uint64_t number, std::string_view line) { TakeLine(number, line); }),
      errorLines_([this](std::uint64_t number, std::string_view line) { TakeError(number, line); }) {
    auto [readErrors, writeErrors] = Pipe();
    errors_ = std::make_unique<LogSource>(std::move(readErrors));
    Launch launch{command, -1, writeErrors.Number()};
    launch.atOurDeath = SIGINT;
    Descriptor writeLog;
    if (log.empty()) {
        auto [read, write] = Pipe();
        log_ = std::make_unique<LogSource>(std::move(read));
        writeLog = std::move(write);
        launch.output = writeLog.Number();
    } else {
        log_ = std::make_unique<LogSource>(log);
        outputFile_ = std::make_unique<GrowingFile>(folder.Grow("harness.out"));
        launch.output = outputFile_->Number();
    }
    command_ = std::make_unique<Child>(launch);
}

std::vector<DvrMessage> MessagesIn(const CaseFolder& folder) {
    std::vector<DvrMessage> messages;
    judge::Judge judge({}, {}, [](const result::RunResult& /*run*/) {});
    AddFile(folder, kLogName, [&](std::uint64_t number, std::string_view line) {
        Add(messages, judge.Add(kLogName, number, line));
    });
    return messages;
}

result::Result JudgeAgain(const CaseFolder& folder, const judge::Limits& limits) {
    result::Result result;
    judge::Judge judge(limits, {true, true},
                       [&result](result::RunResult run) { result.runs.push_back(std::move(run)); });
    for (const std::string& name : {kLogName, kErrorName}) {
        AddFile(folder, name,
                [&](std::uint64_t number, std::string_view line) { judge.Add(name, number, line); });
    }
    judge.Finish();
    return result;
}

void Harness::Read() {
    ReadLog();
    ReadErrors();
}

bool Harness::ReadLog() {
    const std::string piece = log_->Read();
    logFile_.Add(piece);
    logBytes_ += piece.size();
    lines_.Add(piece);
    return !piece.empty();
}

bool Harness::ReadErrors() {
    const std::string piece = errors_->Read();
    errorFile_.Add(piece);
    errorLines_.Add(piece);
    return !piece.empty();
}

std::vector<int> Harness::Descriptors() {
    return {log_->Number(), errors_->Number(), command_->End() ? -1 : command_->EndDescriptor()};
}

result::Result Harness::Finish() {
    while (logBytes_ <= 2 * kLargestLog && ReadLog()) {
    }
    lines_.End();
    while (ReadErrors()) {
    }
    errorLines_.End();
    for (const auto& [number, line] : lastWords_) {
        judge_.Add(kErrorName, number, line);
    }
    try {
        judge_.Finish();
    } catch (const log::Unreadable&) {
        result_.runs.clear();  // the proxy ended before it could begin its log: nothing was there to judge
    }
    return std::move(result_);
}

void Harness::TakeLine(std::uint64_t number, std::string_view line) {
    const judge::ReadLine read = judge_.Add(kLogName, number, line);
    if (!read.statement) {
        return;
    }
    times_.Add(*read.statement);
    Add(messages_, read);
    take_(read, judge_.IsOver());
}

/// The judge gets these last, so that they come after all that the harness logged before them.
void Harness::TakeError(std::uint64_t number, std::string_view line) {
    if (judge::IsMarkerFailure(line)) {
        judge_.Add(kErrorName, number, line);
    } else if (judge::IsLastWord(line) && lastWords_.size() < kMostLastWords) {
        lastWords_.emplace_back(number, line);
    }
    if (!line.empty()) {
        lastError_ = Excerpt(std::string(line), kLongestExcerpt);
    }
}

}  // namespace rig::campaign
