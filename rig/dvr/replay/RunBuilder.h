#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "rig/dvr/replay/EarlierRun.h"
#include "rig/log/RunReader.h"

namespace rig::dvr {

/// Keeps what a replay needs of the log of one process, and makes sure that no statement is missing: a replay
/// of a log with gaps would blame the harness for them. Notices where the next run begins.
class RunBuilder {
 public:
    /// @param log  name of the file, for people
    explicit RunBuilder(const std::string& log);

    /// Adds the next statement of the process. Those after the first run with a message change nothing.
    void AddStatement(std::size_t number, const log::Statement& statement);

    bool HasMessages() const { return !run_.messages.empty(); }

    /// @return the run, as far as the log holds it
    /// Throws Failure (Unusable) when some are missing between others.
    EarlierRun Finish() const;

 private:
    using RequestId = std::pair<std::size_t, std::size_t>;  // message and request of it

    void StartOver();
    void TakeSize(std::size_t number, const log::Statement& statement);
    void TakeSlice(std::size_t number, const log::Statement& statement);
    void EndMessage();
    void TakeAnswer(std::size_t number, const log::Statement& statement);
    void TakeSentText(const log::Statement& statement);
    void TakePrefixByte(std::size_t number, const log::Statement& statement);
    void BeginRequest(std::size_t number);
    void TakeEvidence(std::size_t number, const log::Statement& statement);
    void Confirm(const log::Statement& statement);
    EarlierRequest& At(const RequestId& id) { return run_.messages[id.first].requests[id.second]; }

    /// Keeps the error that this statement is not the one that was due.
    void NoteGap(std::size_t number, const std::string& expected, const std::string& found);
    bool IsMissingSlices(std::size_t number, const log::Statement& statement);
    bool IsMissingRequest(std::size_t number, const log::Statement& statement);

    EarlierRun run_;
    log::RunReader reader_;
    EarlierMessage incoming_;  // as far as it has come
    bool over_ = false;
    std::string error_;                   // the first gap; empty if there is none
    std::optional<int> dialect_;          // as far as the statements show
    std::optional<LogTime> anchor_;       // of the last traffic on the connection, or of its start
    std::string name_;                    // of the message being answered
    std::string announcement_;            // the last statement since then that announces a request
    std::string promised_;                // the statement that something is sent next; empty once it is
    std::size_t prefixBytes_ = 0;         // of the request being sent; 0: none
    std::vector<RequestId> unconfirmed_;  // whose subject a later statement may reveal
};

}  // namespace rig::dvr
