#include "rig/dvr/replay/EarlierRun.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <istream>
#include <map>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/replay/RunBuilder.h"

namespace rig::dvr {
namespace {

/// Far more than any line of a real log.
constexpr std::size_t kMaxLineBytes = std::size_t{256} * 1024 * 1024;
constexpr int kNoProcess = -1;  // for lines that do not name theirs
constexpr const char* kLine = "a line of the harness's log (\"velloran:N TEXT\")";

[[noreturn]] void ThrowAt(const std::string& log, std::size_t line, const std::string& text) {
    throw Failure(ExitStatus::Unusable, fmt::format("{}:{}: {}", Printable(log), line, text));
}

std::ifstream Open(const std::string& log) {
    std::ifstream in(log, std::ios::binary);
    int error = in ? 0 : errno;
    if (std::filesystem::is_directory(log)) {  // which can be opened, but not read
        error = EISDIR;
    }
    if (error != 0) {
        throw Failure(ExitStatus::Unusable,
                      fmt::format("--replay: expected a log of the harness that can be read, found {}: {}",
                                  Quoted(log), std::strerror(error)));
    }
    return in;
}

/// Reads one line, without its newline. @return whether it had one: a line that was cut off proves nothing
bool ReadLine(std::istream& in, std::string& line) {
    line.clear();
    for (int byte = in.get(); byte != std::istream::traits_type::eof(); byte = in.get()) {
        if (byte == '\n') {
            if (!line.empty() && line.back() == '\r') {  // not the logger's: the file was converted
                line.pop_back();
            }
            return true;
        }
        if (line.size() == kMaxLineBytes) {
            return false;
        }
        line += static_cast<char>(byte);
    }
    return false;
}

/// The runs of a log by process.
class RunChooser {
 public:
    explicit RunChooser(std::string log) : log_(std::move(log)) {}

    void AddLine(std::size_t number, const std::string& text) {
        const std::optional<log::Statement> line = log::ReadStatement(text);
        if (number == 1) {
            firstLine_ = text;
        }
        if (!line) {
            return;
        }
        RunBuilder& run = runs_.try_emplace(line->process.value_or(kNoProcess), log_).first->second;
        run.AddStatement(number, *line);
        if (chosen_ == nullptr && run.HasMessages()) {
            chosen_ = &run;
        }
    }

    EarlierRun Choose(std::size_t lines) const {
        if (runs_.empty()) {
            ThrowAt(log_, 1,
                    fmt::format("expected {}, found {}", kLine,
                                lines == 0 ? "an empty log" : "'" + Excerpt(firstLine_) + "'"));
        }
        if (chosen_ == nullptr) {
            for (const auto& run : runs_) {
                run.second.Finish();  // perhaps it has a better error
            }
            ThrowAt(log_, lines,
                    "expected a message of the DVR (\"GetMessage:incoming message, ...\") up to here, found "
                    "none");
        }
        EarlierRun run = chosen_->Finish();
        run.hasOtherRuns = run.hasOtherRuns || runs_.size() > 1;
        return run;
    }

 private:
    std::string log_;
    std::string firstLine_;
    std::map<int, RunBuilder> runs_;  // by process
    const RunBuilder* chosen_ = nullptr;
};

}  // namespace

EarlierRun ReadEarlierRun(const std::string& log) {
    std::ifstream in = Open(log);
    RunChooser chooser(log);
    std::string line;
    std::size_t lines = 0;
    while (ReadLine(in, line)) {
        chooser.AddLine(++lines, line);
    }
    if (in.bad()) {
        ThrowAt(log, lines + 1, "expected a log that can be read to its end, found a read error");
    }
    if (lines == 0 && !line.empty()) {  // it is cut off, but shows what the file is
        chooser.AddLine(++lines, line);
    }
    return chooser.Choose(lines);
}

}  // namespace rig::dvr
