#pragma once

#include <string>

#include "rig/judge/Exchange.h"
#include "rig/judge/Run.h"
#include "rig/log/Incoming.h"
#include "rig/log/LogLine.h"
#include "rig/log/NextRequest.h"

namespace pugi {
class xml_node;
}  // namespace pugi

namespace rig::judge {

/// What is kept of a run beyond what the verdict needs. Both take memory in proportion to the log.
struct Keep {
    bool steps = false;  // the dialogue
    bool log = false;    // every statement
};

/// Follows one run of the harness statement by statement: what the DVR sent is in the log; what the harness
/// sent is not, and follows from the state that the log shows. Keeps facts, gives no verdicts.
class RunModel {
 public:
    RunModel(const Place& begin, const Keep& keep);
    RunModel(const RunModel&) = delete;
    RunModel& operator=(const RunModel&) = delete;

    /// @return whether the statement can only belong to a later run
    bool IsStartOfAnother(log::Sign sign) const;

    /// Takes the next statement of the run.
    void Add(const log::LogLine& line, log::Sign sign, const Place& place);

    /// Takes the message of a failed assertion of the harness, from its standard error.
    void AddAssertion(const Place& place);

    /// Takes a line of the harness's standard error that says it could not make the failure marker.
    void AddMarkerFailure(const Place& place);

    /// @return whether the harness has said that it ends
    bool HasEnded() const;

    /// @return whether the harness has ended, or has nothing more to ask for
    bool IsOver() const;

    const Run& Facts() const { return run_; }

 private:
    void Note(const log::LogLine& line, log::Sign sign, const Place& place);
    void TakeNumber(log::Sign sign, std::string_view text);
    void ExpectMessage(const log::LogLine& line, const Place& place);
    void TakeSlice(std::string_view text, const Place& place);
    void TakeMessage(const Place& place);
    void TakeHandling(log::Sign sign, std::string_view text, const Place& place);
    void Send(const Place& place);
    void AddStep(result::Step::Kind kind, std::string_view text, const Place& place);

    Run run_;
    Exchange exchange_{run_};
    Keep keep_;
    std::optional<std::int64_t> now_;  // the statement's time

    log::Incoming incoming_;
    NextRequest next_{run_};
};

}  // namespace rig::judge
