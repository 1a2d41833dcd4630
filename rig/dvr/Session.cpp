#include "rig/dvr/Session.h"

#include "rig/dvr/Failure.h"

namespace rig {

Session::Session(Connection& connection, Dialogue& dialogue, Transcript& transcript,
                 const SessionTimes& times)
    : connection_(connection), dialogue_(dialogue), transcript_(transcript), times_(times) {}

void Session::Run() {
    Send(dialogue_.Open());
    while (!dialogue_.IsDone()) {
        const std::string expected = dialogue_.Expected();
        try {
            Step();
        } catch (const Breach& found) {
            throw Breach("expected " + expected + ", found " + found.what());
        }
    }
}

void Session::Step() {
    const auto deadline = transferEnd_.value_or(Clock::now() + times_.silence);
    const std::optional<std::string> text = connection_.Receive(deadline, times_.frame);
    if (text) {
        Answer(*text);
    } else if (transferEnd_) {
        transferEnd_.reset();
        Send(dialogue_.FinishTransfer());
    } else {
        throw Failure(ExitStatus::NothingCame,
                      "expected " + dialogue_.Expected() + ", found nothing within " +
                          std::to_string(times_.silence.count()) + " ms " + dialogue_.Standing());
    }
}

void Session::Answer(const std::string& text) {
    const Message message = Message::Parse(text);
    transcript_.Received(message);
    for (const Message& answer : dialogue_.Handle(message)) {
        Send(answer);
    }
    if (dialogue_.IsTransferring() && !transferEnd_) {
        transferEnd_ = Clock::now() + times_.transfer;
    }
}

void Session::Send(const Message& message) {
    const std::string frame = EncodeFrame(message.Text());
    transcript_.Sent(message);
    connection_.Send(frame, times_.silence);
}

}  // namespace rig
