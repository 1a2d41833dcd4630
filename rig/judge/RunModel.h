#pragma once

#include <string>

#include "rig/judge/Run.h"
#include "rig/judge/WorkLists.h"
#include "rig/log/LogLine.h"

namespace pugi {
class xml_node;
}  // namespace pugi

namespace rig::judge {

/// What is kept of a run beyond what the verdict needs. Both take memory in proportion to the log.
struct Keep {
    bool steps = false;  // the dialogue
    bool log = false;    // every statement
};

/// Follows one run of the harness statement by statement: what the DVR sent stands in the log; what the
/// harness sent does not, and follows from the state that the log shows it to be in. Keeps facts, gives no
/// verdicts.
class RunModel {
 public:
    RunModel(const report::Evidence& begin, const Keep& keep);

    /// @return whether the statement can only belong to another run, begun after this one
    bool IsStartOfAnother(Sign sign) const;

    /// Takes the next statement of the run.
    void Add(const LogLine& line, Sign sign, const report::Evidence& evidence);

    /// Takes the message of a failed assertion of the harness, from its standard error.
    void AddAssertion(const report::Evidence& evidence);

    /// @return whether the harness has ended, or has nothing more to ask for
    bool IsOver() const;

    const Run& Facts() const { return run_; }

 private:
    void TakeNumber(Sign sign, std::string_view text);
    void ExpectMessage(const LogLine& line, const report::Evidence& evidence);
    void TakeSlice(std::string_view text, const report::Evidence& evidence);
    void TakeMessage(const report::Evidence& evidence);
    void Match(const std::string& name, const pugi::xml_node& message, const report::Evidence& evidence);
    void Answer(const Request& request, const pugi::xml_node& message, const report::Evidence& evidence);
    bool AnswerWrongly(const std::string& name, const report::Evidence& evidence);
    void TakeHandling(Sign sign, std::string_view text, const report::Evidence& evidence);
    void RetireFile();
    void TakeFault(Sign sign, std::string_view text, const report::Evidence& evidence);
    void AskTwice();
    void InjectFileFault(std::int64_t count, const report::Evidence& evidence);
    void RejectLast(Sign sign, const report::Evidence& evidence);
    void Inject(Fault fault, const report::Evidence& evidence);
    void Send(const report::Evidence& evidence);
    std::string NextName() const;
    Request NewRequest(const std::string& name) const;
    void AddStep(report::Step::Kind kind, const std::string& text, const report::Evidence& evidence);

    Run run_;
    Keep keep_;
    std::optional<std::int64_t> now_;  // the statement's time

    WorkLists lists_;
    bool popped_ = false;    // since the last message, a file was retired
    std::int64_t left_ = 0;  // files of the event behind that

    std::int64_t expected_ = 0;  // bytes of the message coming in
    std::string text_;
    bool isIncoming_ = false;
    std::optional<std::int64_t> arrival_;  // of the message coming in
    std::string last_;                     // the last message's name
    std::optional<Request> lastAnswered_;  // by it
    bool isLastExact_ = false;             // it names exactly what that request asked for
    std::string announced_;                // what a line said is sent next
    Fault fault_ = Fault::None;            // of the next request
    int doubled_ = 0;                      // requests of -x that went out
    bool isDone_ = false;                  // DONE has gone out, and nothing came after it
};

}  // namespace rig::judge
