#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "rig/dvr/replay/EarlierRun.h"
#include "rig/dvr/replay/RequestBuilder.h"
#include "rig/log/LogLine.h"

namespace rig::dvr {

/// Assembles the dialogue of one run of the harness from the log lines of one process, and notices where the
/// next run begins.
class RunBuilder {
 public:
    /// @param log  name of the file, for people
    explicit RunBuilder(const std::string& log);

    /// Takes the next line of the process. Lines after the end of the first run with a message change
    /// nothing.
    void Take(std::size_t number, const log::LogLine& line);

    bool HasMessages() const { return !run_.messages.empty(); }

    /// @return the run, as far as the lines go
    /// Throws Failure (UsageError) when lines are missing between others.
    EarlierRun Finish() const;

 private:
    struct Incoming {
        EarlierMessage message;
        long long size;  // bytes
    };
    bool BeginsAnew(const std::string& text) const;
    void BeginAnew();
    void TakeStart(const std::string& text);
    void TakeSize(std::size_t number, const std::string& text, std::optional<LogTime> time);
    void TakeAnswer(std::size_t number, const std::string& text);
    void TakeSlice(std::size_t number, const std::string& text);
    void EndMessage();
    void SetPause(EarlierMessage& message, std::optional<LogTime> time) const;

    /// Remembers that this line is not the one that was due.
    void Miss(std::size_t number, const std::string& expected, const std::string& text);
    bool IsMissingSlices(std::size_t number, const std::string& text);

    EarlierRun run_;
    RequestBuilder requests_;
    bool over_ = false;
    std::string error_;                 // of the first line that was not the one due
    bool connected_ = false;            // the run's start is in the log
    std::optional<int> dialect_;        // as far as the lines show
    std::optional<LogTime> anchor_;     // time of the last traffic on the connection, or of its start
    std::optional<Incoming> incoming_;  // announced and not yet complete
};

}  // namespace rig::dvr
