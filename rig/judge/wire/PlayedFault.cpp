#include "rig/judge/wire/PlayedFault.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "rig/base/Printable.h"
#include "rig/protocol/Catalogue.h"

namespace rig::judge {
namespace {

using fault::Duty;

const std::vector<std::string_view>& AnswersTo(const std::string& request, int dialect) {
    static const std::vector<std::string_view> kNone;
    const auto* const kind = protocol::Find(dialect, protocol::Sender::Harness, request);
    return kind == nullptr ? kNone : kind->answers;
}

}  // namespace

PlayedFault::PlayedFault(const WireEvent& begin, const Place& place, int dialect, WireFacts& facts)
    : begin_(begin), fault_(fault::Find(begin.fault)), dialect_(dialect), facts_(facts) {
    facts_.lines->Keep(place, line_);
    if (fault_ == nullptr) {
        facts_.unknown.Add(place, Printable(begin_.fault));
    }
}

bool PlayedFault::IsWrong() const {
    return fault_ == nullptr || fault_->duty != Duty::GoesOn;
}

bool PlayedFault::NeedsOnlySurvival() const {
    return fault_ == nullptr || fault_->duty == Duty::Survives;
}

/// What it sends later is the harness's message itself.
void PlayedFault::TakeSent(const WireEvent& sent) {
    if (!hasSent_) {
        requests_ = sent.messages;
    }
    hasSent_ = true;
}

void PlayedFault::TakeAnswer(const WireEvent& answer, const Place& place) {
    if (IsReport(answer.message)) {
        ++reports_;
        return;
    }
    ++others_;
    other_ = answer.message;
    facts_.lines->Keep(place, line_);
}

void PlayedFault::TakeKeptOpen(const Place& place) {
    facts_.keptOpen.Add(place, Printable(begin_.Named()));
}

void PlayedFault::TakeHangUp(const WireEvent& end, const Place& place) {
    if (!hasHungUp_) {
        facts_.ended.Add(place, fmt::format("{}, after {:.1f} s", Printable(begin_.Named()),
                                            static_cast<double>(end.time - begin_.time) / 1e6));
        facts_.lines->Keep(place, line_);
    }
    hasHungUp_ = true;
}

void PlayedFault::End(bool isOver) {
    Tally* const outcome = fault_ == nullptr ? nullptr : Outcome(isOver);
    if (outcome == nullptr) {
        return;
    }
    const std::string answer = other_.empty() ? "a message without req" : Printable(other_);
    const std::string request = requests_.empty() ? "" : fmt::format(" to {}", fmt::join(requests_, " and "));
    outcome->Add(line_.Proof(), (others_ > 0 ? answer + Printable(request) + ", " : "") +
                                    Printable(begin_.Named()) + " at " + Printable(begin_.message));
}

/// @return which of the facts the fault is one of; null: the DVR did what it must, or may do
Tally* PlayedFault::Outcome(bool isOver) const {
    const std::uint64_t answers = reports_ + others_;
    const bool isKnown = isOver || hasHungUp_;
    switch (fault_->duty) {
        case Duty::Refuses:
            if (others_ > fault_->actsDue) {
                return IsGoodAnswer(other_) ? &facts_.obeyed : &facts_.notReport;
            }
            if (HasReport() && reports_ == 0) {
                return hasHungUp_ ? &facts_.hungUp : isOver ? &facts_.notRefused : &facts_.unfinished;
            }
            return isKnown || answers > 0 ? nullptr : &facts_.unfinished;
        case Duty::GoesOn:
            return answers >= fault_->actsDue ? nullptr : isKnown ? &facts_.notAnswered : &facts_.unfinished;
        case Duty::Survives:
            break;
    }
    return nullptr;
}

bool PlayedFault::HasReport() const {
    return std::any_of(requests_.begin(), requests_.end(), [this](const std::string& request) {
        return AnswersTo(request, dialect_).size() > 1;
    });
}

bool PlayedFault::IsReport(const std::string& message) const {
    return std::any_of(requests_.begin(), requests_.end(), [&](const std::string& request) {
        const auto& answers = AnswersTo(request, dialect_);
        return !answers.empty() && std::find(answers.begin() + 1, answers.end(), message) != answers.end();
    });
}

bool PlayedFault::IsGoodAnswer(const std::string& message) const {
    return std::any_of(requests_.begin(), requests_.end(), [&](const std::string& request) {
        const auto& answers = AnswersTo(request, dialect_);
        return !answers.empty() && message == answers.front();
    });
}

}  // namespace rig::judge
