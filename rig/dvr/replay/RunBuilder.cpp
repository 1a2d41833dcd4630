#include "rig/dvr/replay/RunBuilder.h"

#include <algorithm>
#include <charconv>

#include "rig/base/Affix.h"
#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/wire/Message.h"

namespace rig::dvr {
namespace {

constexpr long long kSliceBytes = 800;

bool IsSwitch(const std::string& text) {
    return StartsWith(text, "closeEarly set to ") || StartsWith(text, "doneDuration set to ") ||
           StartsWith(text, "sleepForGetFile set to ") || StartsWith(text, "'protocol' option set to ") ||
           (StartsWith(text, "'") && EndsWith(text, "' flag set"));
}

bool IsConnect(const std::string& text) {
    return StartsWith(text, "Connected to: fam=");
}

bool IsEnd(const std::string& text) {
    return text == "shutting down" || StartsWith(text, "bind failed: ") ||
           text == "Could not install SIGINT handler";
}

/// @return the number after the start of the text; nothing if there is none
std::optional<long long> NumberBehind(const std::string& text, const std::string& start) {
    long long number = 0;
    if (!StartsWith(text, start)) {
        return std::nullopt;
    }
    const auto parsed = std::from_chars(text.data() + start.size(), text.data() + text.size(), number);
    return parsed.ec == std::errc() ? std::optional<long long>(number) : std::nullopt;
}

std::string SliceHead(long long start, long long size) {
    return "GetMessage:incoming message, bytes " + std::to_string(start + 1) + " to " +
           std::to_string(start + std::min(size, kSliceBytes)) + ":";
}

/// @return the dialect that a message belongs to; nothing if both have it
std::optional<int> DialectOf(const std::string& name) {
    if (name == "GET_XML" || name == "XML") {
        return 1;
    }
    const bool isOfBoth = name.empty() || name == "OK" || name == "GET_FILE" || name == "FILE_COMPLETE" ||
                          name == "EVENT_XFER_COMPLETE" || name == "DONE" || name == "UPDATE_CONFIGURATION" ||
                          name == "CONFIGURATION_UPDATE_ERROR";
    return isOfBoth ? std::nullopt : std::optional<int>(2);
}

std::string NameOf(const std::string& text) {
    try {
        return Message::Parse(text).Name();
    } catch (const Breach&) {
        return "";  // sent in the earlier run all the same
    }
}

}  // namespace

RunBuilder::RunBuilder(const std::string& log) {
    run_.log = log;
}

void RunBuilder::Take(std::size_t number, const log::LogLine& line) {
    const std::string text = log::Unescaped(line.text);
    const auto time = line.time ? std::optional<LogTime>(*line.time) : std::nullopt;
    if (!over_ && BeginsAnew(text)) {
        BeginAnew();
    }
    if (over_ || !error_.empty()) {
        return;
    }
    run_.lastLine = number;
    if (IsSwitch(text) || IsConnect(text)) {
        TakeStart(text);
    } else if (IsEnd(text)) {
        run_.ended = true;
    } else if (StartsWith(text, "expecting a message of ")) {
        TakeSize(number, text, time);
    } else if (StartsWith(text, "GetMessage:incoming message, bytes ")) {
        TakeSlice(number, text);
    } else {
        TakeAnswer(number, text);
    }
    if (StartsWith(text, "hdr[") || IsConnect(text) || text == "Closing client socket...") {
        anchor_ = time;
    }
}

bool RunBuilder::BeginsAnew(const std::string& text) const {
    const bool talked = HasMessages() || incoming_.has_value();
    return run_.ended || (IsSwitch(text) && (connected_ || talked)) ||
           (IsConnect(text) && (connected_ || talked));
}

void RunBuilder::BeginAnew() {
    if (HasMessages()) {
        over_ = true;
    } else {
        *this = RunBuilder(run_.log);
    }
    run_.followed = true;
}

void RunBuilder::TakeStart(const std::string& text) {
    connected_ = connected_ || IsConnect(text);
    if (const auto dialect = NumberBehind(text, "'protocol' option set to ")) {
        run_.dialect = static_cast<int>(*dialect);
        dialect_ = run_.dialect;
    }
    if (const auto duration = NumberBehind(text, "doneDuration set to ")) {
        requests_.SetDuration(std::to_string(*duration));
    }
}

void RunBuilder::TakeSize(std::size_t number, const std::string& text, std::optional<LogTime> time) {
    const auto size = NumberBehind(text, "expecting a message of ");
    if (IsMissingSlices(number, text)) {
        return;
    }
    if (!size || !EndsWith(text, " bytes")) {
        return Miss(number, "'expecting a message of N bytes'", text);
    }
    if (!requests_.Missing().empty()) {
        return Miss(number, requests_.Missing(), text);
    }
    incoming_ = Incoming{{}, *size};
    incoming_->message.line = number;
    SetPause(incoming_->message, time);
    anchor_ = time;
}

void RunBuilder::SetPause(EarlierMessage& message, std::optional<LogTime> time) const {
    if (time) {
        message.pause = std::max(LogTime(0), *time - anchor_.value_or(*time));
    }
}

void RunBuilder::TakeSlice(std::size_t number, const std::string& text) {
    if (!incoming_) {
        if (HasMessages()) {
            Miss(number, "'expecting a message of N bytes'", text);
        }
        return;  // the log begins inside a message
    }
    std::string& whole = incoming_->message.text;
    const auto start = static_cast<long long>(whole.size());
    const std::string head = SliceHead(start, incoming_->size);
    const auto due = static_cast<std::size_t>(std::clamp(incoming_->size - start, 0LL, kSliceBytes));
    if (!StartsWith(text, head)) {
        return Miss(number, Quoted(head), text);
    }
    if (text.size() - head.size() != due) {
        return Miss(number, Quoted(head) + " and " + std::to_string(due) + " bytes",
                    std::to_string(text.size() - head.size()) + " bytes: " + text.substr(head.size()));
    }
    whole.append(text, head.size());
    if (static_cast<long long>(whole.size()) >= incoming_->size) {
        EndMessage();
    }
}

void RunBuilder::EndMessage() {
    run_.messages.push_back(std::move(incoming_->message));
    incoming_.reset();
    const std::string name = NameOf(run_.messages.back().text);
    requests_.BeginAnswer(run_, name);
    if (!dialect_ && !connected_) {
        dialect_ = DialectOf(name);
    }
}

/// Takes what the harness says and does about the message that it has read.
void RunBuilder::TakeAnswer(std::size_t number, const std::string& text) {
    if (!HasMessages()) {
        return;  // the log begins inside an answer
    }
    std::string expected;
    if (text == "Closing client socket...") {
        run_.messages.back().closed = true;
    } else if (StartsWith(text, "sent: size= ")) {
        RequestBuilder::TakeSentText(run_, text);
    } else if (!StartsWith(text, "hdr[")) {
        expected = requests_.TakeEvidence(run_, text);
    } else if (!IsMissingSlices(number, text)) {
        expected = requests_.TakePrefixByte(run_, number, text);
    }
    if (!expected.empty()) {
        Miss(number, expected, text);
    }
    const std::vector<EarlierRequest>& requests = run_.messages.back().requests;
    if (!dialect_ && !requests.empty()) {
        dialect_ = DialectOf(requests.back().name);
    }
}

bool RunBuilder::IsMissingSlices(std::size_t number, const std::string& text) {
    if (!incoming_) {
        return false;
    }
    Miss(number, Quoted(SliceHead(static_cast<long long>(incoming_->message.text.size()), incoming_->size)),
         text);
    return true;
}

void RunBuilder::Miss(std::size_t number, const std::string& expected, const std::string& text) {
    error_ = Printable(run_.log) + ":" + std::to_string(number) + ": expected " + expected + ", found '" +
             Excerpt(text) + "'";
}

EarlierRun RunBuilder::Finish() const {
    if (!error_.empty()) {
        throw Failure(ExitStatus::UsageError, error_);
    }
    EarlierRun run = run_;
    run.dialect = dialect_.value_or(1);
    run.cutMessage = incoming_ ? incoming_->message.line : 0;
    run.timed = std::all_of(run.messages.begin(), run.messages.end(),
                            [](const EarlierMessage& message) { return message.pause.has_value(); });
    return run;
}

}  // namespace rig::dvr
