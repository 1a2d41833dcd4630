#include "rig/dvr/replay/Replay.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "rig/base/Counted.h"
#include "rig/base/Printable.h"
#include "rig/dvr/replay/Subjects.h"
#include "rig/dvr/wire/Message.h"

namespace rig::dvr {
namespace {

/// No message comes after this long. The harness takes 250 ms for each.
constexpr Milliseconds kQuiet(1000);

std::string Milli(Milliseconds time) {
    return std::to_string(time.count()) + " ms";
}

/// @return a text of either side, message or not, for people
std::string Describe(const std::string& text) {
    try {
        return Summarize(Message::Parse(text));
    } catch (const Breach&) {
        return "'" + Excerpt(text) + "'";
    }
}

std::string Describe(const EarlierRequest& request) {
    std::string text =
        request.text ? Describe(*request.text) : (request.name.empty() ? "a message" : request.name);
    if (!request.text && request.subject) {
        text += " about " + Printable(*request.subject);
    }
    text += ", announced with " + Counted(request.announced, "byte");
    return request.evidence.empty() ? text : text + " (" + Printable(request.evidence) + ")";
}

/// The log does not reliably show a value with a hexadecimal reference: the harness sends such a reference on
/// unchanged.
bool IsReliable(const std::string& subject) {
    return subject.find("&#x") == std::string::npos;
}

bool HasNameAndSubject(const EarlierRequest& expected, const Message& found) {
    const std::vector<std::string> subjects = SubjectsOf(found);
    return found.Name() == expected.name &&
           (!expected.subject || !IsReliable(*expected.subject) ||
            std::find(subjects.begin(), subjects.end(), *expected.subject) != subjects.end());
}

bool IsSame(const EarlierRequest& expected, const std::string& text, std::size_t announced) {
    if (announced != expected.announced || expected.text || expected.name.empty()) {
        return announced == expected.announced && expected.text.value_or(text) == text;
    }
    try {
        return HasNameAndSubject(expected, Message::Parse(text));
    } catch (const Breach&) {
        return false;
    }
}

}  // namespace

Replay::Replay(const EarlierRun& run, const Endpoint& endpoint, Transcript& transcript,
               const ReplayManner& manner)
    : run_(run), endpoint_(endpoint), transcript_(transcript), manner_(manner) {}

void Replay::Run(Milliseconds wait) {
    for (const EarlierMessage& message : run_.messages) {
        if (!connection_) {
            connection_ = Connection::Open(endpoint_, wait);
            connection_->Decoder().AcceptSizeErrors();
            if (manner_.piece) {
                connection_->SendInPieces(*manner_.piece, manner_.gap);
            }
            anchor_ = Clock::now();
            transcript_.Note("connected; -> is sent by the DVR, <- by the harness");
        }
        Play(message);
    }
    if (connection_ && run_.ended) {
        AwaitNothing(run_.messages.back());
    }
}

void Replay::Play(const EarlierMessage& message) {
    Pause(message);
    Send(message);
    for (const EarlierRequest& request : message.requests) {
        AwaitRequest(request);
    }
    if (message.closed) {
        AwaitEnd(message);
        connection_.reset();
    }
}

/// Also checks whether the harness has asked for more than it did earlier.
void Replay::Pause(const EarlierMessage& message) {
    const auto pause = std::chrono::duration_cast<Milliseconds>(message.pause.value_or(LogTime(0)));
    const std::string expected = "nothing more before " + Describe(message.text);
    if (const auto text = Receive(message.line, expected, manner_.paced ? anchor_ + pause : Clock::now())) {
        Deviate(message.line, expected, Found(*text));
    }
}

void Replay::Send(const EarlierMessage& message) {
    Show(true, message.text);
    try {
        connection_->Send(EncodeFrame(message.text), manner_.silence);
    } catch (const Breach& found) {
        Deviate(message.line, "the harness to take " + Describe(message.text), found.what());
    }
    anchor_ = Clock::now();
    ++messages_;
}

void Replay::AwaitRequest(const EarlierRequest& request) {
    if (request.text) {
        connection_->Decoder().ExpectSizeError(request.announced, request.text->size());
    }
    const auto text = Receive(request.line, Describe(request), Clock::now() + manner_.silence);
    anchor_ = Clock::now();
    if (!text) {
        Deviate(request.line, Describe(request), "nothing within " + Milli(manner_.silence),
                ExitStatus::NothingCame);
    }
    const ReceivedFrame& frame = connection_->Decoder().LastFrame();
    if (!IsSame(request, *text, frame.announced)) {
        Deviate(request.line, Describe(request), Found(*text));
    }
    if (wireCheck_ != nullptr) {
        wireCheck_->Inspect(frame, *text, transcript_);
    }
    ++requests_;
}

void Replay::AwaitEnd(const EarlierMessage& message) {
    const std::string expected = "the end of the connection after " + Describe(message.text);
    try {
        const auto text = connection_->Receive(Clock::now() + manner_.silence, manner_.frame);
        Deviate(message.line, expected,
                text ? Found(*text) : "it still open after " + Milli(manner_.silence));
    } catch (const Breach& found) {
        if (!connection_->HasEnded()) {
            Deviate(message.line, expected, found.what());
        }
    }
}

/// The harness may close the connection: the log does not show whether the earlier one would have.
void Replay::AwaitNothing(const EarlierMessage& message) {
    const std::string expected = "nothing more after " + Describe(message.text);
    try {
        if (const auto text = connection_->Receive(Clock::now() + kQuiet, manner_.frame)) {
            Deviate(message.line, expected, Found(*text));
        }
    } catch (const Breach& found) {
        if (!connection_->HasEnded()) {
            Deviate(message.line, expected, found.what());
        }
    }
}

std::optional<std::string> Replay::Receive(std::size_t line, const std::string& expected,
                                           Clock::time_point deadline) {
    try {
        auto text = connection_->Receive(deadline, manner_.frame);
        if (text) {
            Show(false, *text);
        }
        return text;
    } catch (const Breach& found) {
        Deviate(line, expected, found.what());
    }
}

std::string Replay::Found(const std::string& text) {
    const std::size_t announced = connection_->Decoder().LastFrame().announced;
    return Describe(text) + ", announced with " + Counted(announced, "byte") +
           (announced == text.size() ? "" : ", got " + std::to_string(text.size()));
}

void Replay::Show(bool isOurs, const std::string& text) {
    try {
        const Message message = Message::Parse(text);
        isOurs ? transcript_.Sent(message) : transcript_.Received(message);
    } catch (const Breach&) {
        transcript_.Note((isOurs ? "-> '" : "<- '") + text.substr(0, kExcerptBytes) + "', not a message");
    }
}

void Replay::Deviate(std::size_t line, const std::string& expected, const std::string& found,
                     ExitStatus status) const {
    throw Failure(status,
                  fmt::format("{}:{}: expected {}, found {}", Printable(run_.log), line, expected, found));
}

std::string Replay::Summary() const {
    return fmt::format("replayed {} of {}, {} as in {}", messages_, Counted(run_.messages.size(), "message"),
                       Counted(requests_, "request"), run_.log);
}

}  // namespace rig::dvr
