#include "rig/dvr/dialogue/Session.h"

#include <fmt/format.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "rig/base/Counted.h"
#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"

namespace rig::dvr {
namespace {

constexpr std::chrono::seconds kLateness(3);  // well above what clocks and file systems may differ by

}  // namespace

Session::Session(Connection& connection, Dialogue& dialogue, Transcript& transcript,
                 const SessionTimes& times)
    : connection_(connection), dialogue_(dialogue), transcript_(transcript), times_(times) {}

void Session::Misbehave(Injector& injector, const Endpoint& endpoint) {
    injector_ = &injector;
    endpoint_ = &endpoint;
    dialogue_.Tolerate();
}

void Session::Weaken(Weaknesses& weaknesses, const Recordings& recordings) {
    weaknesses_ = &weaknesses;
    recordings_ = &recordings;
    connection_.Weaken(weaknesses);
}

void Session::Adopt(const Habits& habits) {
    habits_ = habits;
    times_.transfer.lateness = habits.lateness;
}

void Session::Run() {
    Send(dialogue_.Open());
    while (!dialogue_.IsDone() && !ended_) {
        const std::string expected = dialogue_.Expected();
        try {
            Step();
        } catch (const Breach& found) {
            throw Breach(fmt::format("expected {}, found {}", expected, found.what()));
        }
    }
    DeliverLate();
    if (habits_.awaitsClose && !ended_) {
        AwaitClose();
    }
}

void Session::AwaitClose() {
    const bool closed = connection_.AwaitEnd(Clock::now() + times_.silence);
    transcript_.Note(closed ? "the harness has closed the connection" : "the harness keeps the connection");
}

void Session::Step() {
    const auto deadline =
        transfer_ ? std::min(transfer_->NextAdvance(), nextReport_) : Clock::now() + times_.silence;
    const std::optional<std::string> text = connection_.Receive(deadline, times_.frame);
    if (text) {
        Answer(*text);
    } else if (transfer_) {
        ContinueTransfer();
    } else {
        throw Failure(ExitStatus::NothingCame,
                      fmt::format("expected {}, found nothing within {} ms {}", dialogue_.Expected(),
                                  times_.silence.count(), dialogue_.Situation()));
    }
}

void Session::Inspect(const std::string& text) {
    const ReceivedFrame& frame = connection_.Decoder().LastFrame();
    sizeErrors_ += frame.announced == text.size() ? 0U : 1U;
    if (wireCheck_ != nullptr) {
        wireCheck_->Inspect(frame, text, transcript_);
    } else if (frame.announced != text.size()) {
        transcript_.Note(fmt::format("size error: announced {}, got {}", frame.announced, text.size()));
    }
}

std::string Session::WireSummary() const {
    return (sizeErrors_ == 0 ? "" : "; " + Counted(sizeErrors_, "size error")) +
           (wireCheck_ == nullptr ? "" : "; " + wireCheck_->Summary());
}

void Session::Answer(const std::string& text) {
    heard_ = true;
    Inspect(text);
    if (weaknesses_ != nullptr && weaknesses_->Ignore(text)) {
        return;
    }
    const Message message = Message::Parse(text);
    transcript_.Received(message);
    if (weaknesses_ != nullptr && weaknesses_->Ignore(message)) {
        return;
    }
    std::vector<Message> answers = AnswersTo(message);
    for (const std::string& remark : dialogue_.TakeRemarks()) {
        transcript_.Note("out of place: " + remark);
    }
    for (Message& answer : answers) {
        Send(std::move(answer));
    }
    FollowTransfer();
}

/// A weak recorder gives some answers where a good one refuses, is silent or hangs up.
std::vector<Message> Session::AnswersTo(const Message& message) {
    if (weaknesses_ == nullptr) {
        return dialogue_.Handle(message);
    }
    std::optional<Message> weak;
    std::vector<Message> answers;
    try {
        answers = dialogue_.Handle(message);
        if (dialogue_.HasRemarks() || (!answers.empty() && answers.front().Name() == "INVALID_EVENT")) {
            weak = weaknesses_->Answer(message, *recordings_);
        }
    } catch (const Breach&) {
        weak = weaknesses_->Answer(message, *recordings_);
        if (!weak) {
            throw;
        }
    }
    if (weak) {
        answers.clear();
        answers.push_back(std::move(*weak));
    }
    return answers;
}

/// Starts or abandons a transfer as the dialogue has done.
void Session::FollowTransfer() {
    const auto& file = dialogue_.InTransfer();
    if (transfer_ && file != transfer_->File()) {
        transfer_.reset();
    }
    if (file && !transfer_) {
        transfer_.emplace(*file, dialogue_.TransferLength(), times_.transfer, deliveryFolder_, Clock::now());
        if (habits_.progress.count() > 0) {
            nextReport_ = Clock::now() + habits_.progress;
        }
    }
}

void Session::ContinueTransfer() {
    const auto now = Clock::now();
    transfer_->Advance(now);
    if (transfer_->IsOver()) {
        transfer_.reset();
        Send(dialogue_.FinishTransfer());
        return;
    }
    if (now >= nextReport_) {
        ReportProgress(now);
    }
    if (transfer_->IsLong(now)) {
        transcript_.Progress(transfer_->File().second, transfer_->Done(), transfer_->Length());
    }
}

void Session::ReportProgress(Clock::time_point now) {
    nextReport_ = now + habits_.progress;
    if (std::optional<Message> report = dialogue_.ReportProgress()) {
        Send(std::move(*report));
    }
}

void Session::Send(Message message) {
    if (silent_ || ended_) {
        return;
    }
    if (injector_ == nullptr) {
        SendHonest(message);
    } else {
        SendDefective(std::move(message));
    }
}

void Session::SendHonest(const Message& message) {
    transcript_.Sent(message);
    Emit(message, EncodeFrame(message.Text(style_)));
}

void Session::SendDefective(Message message) {
    const std::string honest = Summarize(message);
    const std::string event = message.Get("reid");
    const std::string file = message.Get("file");
    const Outgoing outgoing = injector_->Prepare(std::move(message));
    reconnects_ = reconnects_ || outgoing.reconnects;
    SpoilCopyOf(event, file, outgoing.copy);
    if (outgoing.dropped) {
        transcript_.Note("not sent: " + honest);
    } else {
        Transmit(outgoing);
    }
    silent_ = outgoing.silent;
    if (outgoing.knocks) {
        second_ = Connection::Open(*endpoint_, times_.frame);
        transcript_.Note("opened a second connection");
    }
    EndAsTold(outgoing.end);
}

void Session::Transmit(const Outgoing& outgoing) {
    const auto sendExtras = [&](const std::vector<Message>& extras) {
        for (const Message& extra : extras) {
            transcript_.Sent(extra, outgoing.defects);
            Emit(extra, EncodeFrame(extra.Text(style_)));
        }
    };
    sendExtras(outgoing.before);
    transcript_.Sent(outgoing.message, outgoing.defects);
    Emit(outgoing.message, injector_->Frame(outgoing, style_));
    sendExtras(outgoing.after);
}

void Session::SpoilCopyOf(const std::string& event, const std::string& file, Copy copy) {
    if (deliveryFolder_ == nullptr) {
        return;
    }
    SpoilCopy(*deliveryFolder_, event, file, copy);
    if (copy == Copy::Late) {
        late_.push_back({{event, file}, Clock::now() + kLateness});
    }
}

void Session::DeliverLate() {
    for (const LateCopy& copy : late_) {
        std::this_thread::sleep_until(copy.due);
        CopyWhole(*deliveryFolder_, copy.file.first, copy.file.second);
        transcript_.Note("delivered late: " + FileName(copy.file));
    }
}

/// What the harness does not answer can wait, as something always follows it.
void Session::Emit(const Message& message, std::string frame) {
    const bool canWait = message.Name() == "XFER_IN_PROGRESS" || message.Name() == "SOFTWARE_UPDATE_CONFIRM";
    kept_ = kept_.empty() ? std::move(frame) : kept_ + frame;
    if (!habits_.sharesSegments || !canWait) {
        Flush();
    }
}

void Session::Flush() {
    connection_.Send(std::exchange(kept_, {}), times_.silence);
}

void Session::EndAsTold(Outgoing::End end) {
    if (end == Outgoing::End::Keep) {
        return;
    }
    Flush();
    if (end == Outgoing::End::Close) {
        connection_.Close();
    } else {
        connection_.Reset();
    }
    ended_ = true;
    transcript_.Note(end == Outgoing::End::Close ? "closed the connection, as told"
                                                 : "reset the connection, as told");
}

}  // namespace rig::dvr
