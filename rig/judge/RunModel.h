#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "rig/judge/Exchange.h"
#include "rig/judge/Run.h"
#include "rig/log/RunReader.h"

namespace rig::judge {

/// What is kept of a run beyond what the verdict needs. The first two take memory in proportion to the log.
struct Keep {
    bool steps = false;  // the dialogue
    bool log = false;    // every statement
    bool words = true;   // what was expected and found of each check, not only of those that reports explain
    bool transfers = false;  // in proportion to the files, however often each is transferred
};

/// Gathers what the judge needs to know of one run of the harness, statement by statement. Keeps facts, gives
/// no verdicts.
class RunModel {
 public:
    RunModel(const Place& begin, const Keep& keep);
    RunModel(const RunModel&) = delete;
    RunModel& operator=(const RunModel&) = delete;

    /// @return whether the statement can only belong to a later run
    bool StartsAnother(log::Sign sign) const;

    /// Takes the next statement of the run. @return what it completes, which Reader() then has
    log::RunReader::Event Add(const log::Statement& statement, Place place);

    const log::RunReader& Reader() const { return reader_; }

    /// Takes the message of a failed assertion of the harness, from its standard error.
    void AddAssertion(Place place);

    /// Takes what the library says, on standard error, of an exception that ends the harness.
    void AddException(Place place);

    /// Takes a line of the harness's standard error that says it could not make the failure marker.
    void AddMarkerFailure(Place place);

    /// @return whether the harness has said that it ends
    bool HasEnded() const { return reader_.HasEnded(); }

    /// @return whether the harness has ended, or has nothing more to ask for
    bool IsOver() const;

    const Run& Facts() const { return run_; }
    Run TakeFacts() { return std::move(run_); }

 private:
    bool HasAborted() const { return run_.assertions.Any() || run_.exceptions.Any(); }
    void Note(const log::Statement& statement, const Place& place);
    std::string NoteOn(const log::Statement& statement);
    void TakeDetails(const log::Statement& statement, const Place& place);
    void TakeMessage(const log::Message& message, const Place& place);
    void TakeOtherEncoding(const log::Message& message, const Place& place);
    void TakeMalformed(const log::Message& message, const Place& place);
    void TakeListed(const log::Listed& listed, const Place& place);
    void TakeRejection(const log::Statement& statement, const Place& place);
    void TakeTransfer(const log::Message& message, const Place& place);
    void TakeRequest(const Place& place);
    void CheckLength(const Place& place);
    void NoteEmpty(const char* attribute, Tally& tally, const Place& place);
    void AddStep(result::Step::Kind kind, std::string_view text, const Place& place);

    Run run_;
    Exchange exchange_{run_};
    Keep keep_;
    std::optional<std::int64_t> now_;  // the statement's time
    log::RunReader reader_;
    std::uint64_t transfers_ = 0;                            // that ended
    bool hasText_ = false;                                   // the last message's is still there
    std::string malformed_;                                  // what is wrong with it, if it is not XML
    std::pair<std::string_view, std::uint64_t> beforeLast_;  // the good message before the last, and its line
};

}  // namespace rig::judge
