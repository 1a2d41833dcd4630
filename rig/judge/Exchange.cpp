#include "rig/judge/Exchange.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "rig/base/Printable.h"
#include "rig/judge/Difference.h"
#include "rig/protocol/Catalogue.h"

namespace rig::judge {

using namespace std::string_view_literals;  // compared without a call where the sizes differ

namespace {

constexpr std::size_t kMostPending = 1000;    // unanswered requests: memory must not grow with the log
constexpr std::size_t kShownOfMistake = 300;  // bytes
constexpr std::int64_t kBusy = 10'000;  // microseconds that handling a message never takes without a pause
/// Microseconds within which a message that had already arrived is read, even on a busy machine.
constexpr std::int64_t kAtOnce = 50'000;

/// @return the attribute; empty if the message has none
std::string_view ValueOf(const std::optional<std::string>& attribute) {
    return attribute ? std::string_view(*attribute) : std::string_view();
}

std::string FileIn(const Arrival& message) {
    return fmt::format("{}/{}", ValueOf(message.Reid()), ValueOf(message.File()));
}

}  // namespace

bool IsExact(const Request& request, const Arrival& message) {
    const bool isFileLeftOut = !message.File() && message.Name() != "FILE_COMPLETE"sv;
    return request.reid == ValueOf(message.Reid()) &&
           (isFileLeftOut || request.file == ValueOf(message.File()));
}

std::string_view AnswerTo(std::string_view request, Fault fault, int protocol) {
    switch (fault) {
        case Fault::Event:
        case Fault::FileEvent:
        case Fault::FileName:
            return "INVALID_EVENT";
        case Fault::Transport:
            return "TRANSPORT_EXCEPTION";
        case Fault::Xfer:
            return "XFER_IN_PROGRESS";
        default:
            break;
    }
    // A log without its beginning may not say which dialect it is of.
    const int dialect = protocol == 2 ? 2 : 1;
    const auto* kind = protocol::Find(dialect, protocol::Sender::Harness, request);
    if (kind == nullptr) {
        kind = protocol::Find(3 - dialect, protocol::Sender::Harness, request);
    }
    return kind == nullptr || kind->answers.empty() ? "" : kind->answers.front();
}

void Exchange::SendRequest(const log::Request& sent, std::optional<std::int64_t> time, const Place& place) {
    if (sent.name == "DONE"sv) {
        if (!run_.doneSent.Any()) {
            run_.acksAtDone = run_.Of(log::Sign::Acknowledged).Count();
        }
        run_.doneSent.Add(place);
        run_.isExporting = false;
        run_.doneTime = time;
        for (Request& waiting : run_.pending) {
            waiting.isOvertaken = true;
        }
    }
    Request& request = run_.pending.emplace_back(sent);
    request.time = time;
    run_.lines->Keep(place, request.line);
    if (request.isGenuine) {
        run_.Of(request.fault).genuine.Add(place, request.Words());
        request.mayBeRefused = request.fault == Fault::FileEvent;
        request.fault = Fault::None;
    }
    request.expects = AnswerTo(request.name, request.fault, run_.switches.protocol);
    if (request.pause > 0) {
        run_.Of(Fault::Pause).fired.Add(place);
    }
    pausedUntil_ =
        request.pause > 0 && request.time ? std::optional(*request.time + request.pause) : std::nullopt;
    if (request.expects.empty()) {
        run_.pending.pop_back();
    } else if (run_.pending.size() > kMostPending) {
        run_.pending.pop_front();
    }
}

void Exchange::WasBusyUntil(std::optional<std::int64_t> time) {
    free_ = pausedUntil_ && time ? std::max(*pausedUntil_, *time) : time;
}

void Exchange::TakeMessage(Arrival message, const std::string& event, const Place& place) {
    answered_.clear();
    if (message.Name() == "OK"sv) {
        TakeOk(message, place);
    } else {
        if (run_.doneSent.Any() && !run_.isExporting) {
            run_.afterDone.Add(place, message.Name());
        }
        run_.isExporting = run_.isExporting || !run_.doneSent.Any();  // the log may begin after the OK
        if (run_.Saw(log::Sign::SizeSwitch)) {
            run_.answeredWrong.Add(place, message.Name());
        }
        if (!message.Reid() && protocol::IsReport(message.Name())) {
            run_.reportWithoutReid.Add(place, message.Name());
        }
        const bool isTaken = Answers(message, event, place) || AnswersWrongly(message, place) ||
                             ReportsAnotherFault(message, place) || RefusesLater(message) ||
                             Refuses(message, place) || TellsProgress(message, place);
        if (!isTaken) {
            TakeUnasked(message, place);
        }
    }
    last_ = std::move(message);
    pausedUntil_.reset();
}

void Exchange::TakeOk(const Arrival& message, const Place& place) {
    run_.openedByOk = run_.openedByOk || run_.received.empty();
    if (run_.isExporting) {
        run_.notAsked.Add(place, "a second OK");
        if (run_.Saw(log::Sign::SentWrongSize)) {
            run_.openedAgain.Add(place);
        }
    } else if (run_.doneSent.Any()) {
        if (run_.doneTime && message.time) {
            run_.resumed = std::min(run_.resumed.value_or(INT64_MAX), *message.time - *run_.doneTime);
        }
        run_.resumedAt.Add(place);
    }
    run_.isExporting = true;
}

bool Exchange::Answers(const Arrival& message, const std::string& event, const Place& place) {
    const auto isAnswered = [&message](const Request& request) { return request.expects == message.Name(); };
    auto request = std::find_if(run_.pending.begin(), run_.pending.end(), [&](const Request& waiting) {
        return isAnswered(waiting) && IsExact(waiting, message);
    });
    isExact_ = request != run_.pending.end();
    if (!isExact_ && AnswersTheRefused(message)) {
        return true;
    }
    if (!isExact_) {
        request = std::find_if(run_.pending.begin(), run_.pending.end(), isAnswered);
    }
    if (request == run_.pending.end()) {
        return false;
    }
    answered_.splice(answered_.end(), run_.pending, request);
    const Request& answered = answered_.front();
    AddReaction(answered, message, place);
    if (answered.pause > 0) {
        run_.Of(Fault::Pause).answered.Add(place);
    }
    if (answered.fault != Fault::None) {
        run_.Of(answered.fault).answered.Add(place);
        // The refusal of a file with a damaged identifier may also name the true event.
        const bool isTrue = answered.fault == Fault::FileEvent && event == message.Reid().value_or("");
        if (message.Reid() && *message.Reid() != answered.reid && !isTrue && !message.isRepeated &&
            IsUtf8(answered.reid)) {
            run_.otherReid.Add(place, Instead(*message.Reid(), answered.reid));
        }
    }
    if (message.isRepeated && !isExact_) {
        run_.notAsked.Add(place, message.Name() + " twice");
    }
    if (message.Name() == "FILE_COMPLETE"sv && isExact_) {
        completed_ = message;
    }
    return true;
}

/// A request with a fault that the DVR answers as if it had none.
bool Exchange::AnswersWrongly(const Arrival& message, const Place& place) {
    const int protocol = run_.switches.protocol;
    const auto request =
        std::find_if(run_.pending.begin(), run_.pending.end(), [&message, protocol](const Request& waiting) {
            return waiting.fault != Fault::None &&
                   AnswerTo(waiting.name, Fault::None, protocol) == message.Name();
        });
    if (request == run_.pending.end()) {
        return false;
    }
    run_.Of(request->fault).wrong.Add(place, message.Name() + " to " + request->Words());
    if (request->fault == Fault::Event) {
        accepted_.insert(request->reid);
    }
    run_.pending.erase(request);
    return true;
}

void Exchange::TakeUnasked(const Arrival& message, const Place& place) {
    const bool hasGoodRequest =
        std::any_of(run_.pending.begin(), run_.pending.end(), [&message](const Request& waiting) {
            return waiting.fault == Fault::None && !waiting.reid.empty() &&
                   waiting.reid == message.Reid().value_or("");
        });
    if (message.isRepeated) {
        run_.notAsked.Add(place, message.Name() + " twice");
    } else if (protocol::IsReport(message.Name()) && hasGoodRequest) {
        run_.notAsked.Add(place, message.Name() + " to a good request");
    } else {
        run_.notAsked.Add(place, message.Name());
    }
}

void Exchange::IgnoreLast(log::Sign why, const Place& place) {
    if (HasAnswered() && isExact_) {
        return;  // it was asked for; a message out of turn has led the harness away from it since
    }
    const std::string asked = HasAnswered() ? answered_.front().Words() : "";
    const std::string about = !HasAnswered() ? ""
                              : last_.Reid() ? Instead(*last_.Reid(), answered_.front().reid)
                                             : "no reid instead of " + Printable(answered_.front().reid);
    if (why == log::Sign::WrongFile && FileIn(last_) == FileIn(completed_)) {
        run_.completedAgain.Add(place, Printable(FileIn(completed_)));
    } else if (why == log::Sign::WrongFile) {
        const std::string known = HasAnswered() ? answered_.front().reid + "/" + answered_.front().file : "";
        const std::string given = FileIn(last_);
        run_.otherFile.Add(
            place, asked.empty() ? "" : Printable(given) + " instead of " + asked + Difference(given, known));
    } else if (why == log::Sign::EventReidWrong && HasAnswered()) {
        run_.otherEvent.Add(place, about);
    } else if (why == log::Sign::AckReidWrong && HasAnswered()) {
        run_.otherAck.Add(place, about);
    }
    if (HasAnswered()) {
        answered_.front().mistake = WithoutControls(place.text.substr(0, kShownOfMistake));
        run_.pending.splice(run_.pending.begin(), answered_);
    }
}

bool Exchange::WasThere(const Arrival& message) const {
    return free_ && message.time && *message.time - *free_ < kAtOnce;
}

/// The harness reads nothing while it pauses: an answer that it finds as soon as it reads again arrived at an
/// unknown time. For any other, the DVR took all the time since the request.
void Exchange::AddReaction(const Request& request, const Arrival& message, const Place& place) {
    if (!request.time || !message.time) {
        return;
    }
    const bool wasBusy = free_ && *free_ - *request.time > kBusy;
    if (wasBusy && WasThere(message)) {
        ++run_.hiddenReactions;
    } else {
        run_.reactions[request.name].Add(*message.time - *request.time, place);
    }
}

}  // namespace rig::judge
