#pragma once

#include <list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "rig/judge/Run.h"

namespace rig::judge {

/// @return what the DVR must answer to a request with a fault; empty if it need not answer
std::string_view AnswerTo(std::string_view request, Fault fault, int protocol);

/// What decides which request a message of the DVR answers.
struct Arrival {
    std::shared_ptr<const log::Subject> about = std::make_shared<const log::Subject>();
    std::optional<std::int64_t> time = {};  // when its prefix was in, microseconds
    bool isRepeated = false;                // it is, byte for byte, the message before it

    const std::string& Name() const { return about->name; }
    const std::optional<std::string>& Reid() const { return about->reid; }
    const std::optional<std::string>& File() const { return about->file; }
};

/// @return whether the message is about exactly what the request asked for
bool IsExact(const Request& request, const Arrival& message);

/// The requests that wait for an answer, and what each message of the DVR is to them: the right answer, a
/// wrong one, or something that nobody asked for.
class Exchange {
 public:
    explicit Exchange(Run& facts) : run_(facts) {}

    /// The harness has sent a request, or DONE. It does not read while it pauses after it.
    void SendRequest(const log::Request& sent, std::optional<std::int64_t> time, const Place& place);

    /// The DVR has sent a message that its dialect knows.
    /// @param event  the identifier of the event that the harness considers in progress
    void TakeMessage(Arrival message, const std::string& event, const Place& place);

    /// The harness has said that it ignores the last message: the request that it seemed to answer is still
    /// waiting.
    void IgnoreLast(log::Sign why, const Place& place);

    /// The harness has logged something at this time: it was not reading before.
    void WasBusyUntil(std::optional<std::int64_t> time);

    /// @return the request that the last message answers exactly; null if there is none
    const Request* Answered() const { return HasAnswered() && isExact_ ? &answered_.front() : nullptr; }

 private:
    bool HasAnswered() const { return !answered_.empty(); }
    void TakeOk(const Arrival& message, const Place& place);
    bool Answers(const Arrival& message, const std::string& event, const Place& place);
    bool AnswersWrongly(const Arrival& message, const Place& place);
    bool ReportsAnotherFault(const Arrival& message, const Place& place);
    bool RefusesLater(const Arrival& message);
    bool Refuses(const Arrival& message, const Place& place);
    bool AnswersTheRefused(const Arrival& message);
    bool TellsProgress(const Arrival& message, const Place& place);
    void TakeUnasked(const Arrival& message, const Place& place);
    /// @return whether the message had come before the harness began to wait for one
    bool WasThere(const Arrival& message) const;
    void AddReaction(const Request& request, const Arrival& message, const Place& place);

    Run& run_;
    Arrival last_;
    std::list<Request> answered_;              // by the last message: one, or none
    bool isExact_ = false;                     // which is about exactly what the request asked for
    Arrival completed_;                        // the last FILE_COMPLETE that was asked for
    std::set<std::string> accepted_;           // damaged identifiers that the DVR took for events
    std::optional<Request> refused_;           // the last for an event that the DVR lists
    std::optional<std::int64_t> free_;         // when the harness began to wait for a message
    std::optional<std::int64_t> pausedUntil_;  // by the pause after the last request
};

}  // namespace rig::judge
