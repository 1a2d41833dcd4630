#include "rig/dvr/replay/RunBuilder.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "rig/base/Affix.h"
#include "rig/base/Counted.h"
#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/replay/Subjects.h"
#include "rig/dvr/wire/Frame.h"
#include "rig/protocol/Catalogue.h"

namespace rig::dvr {
namespace {

using log::Sign;

constexpr const char* kSizeLine = "'expecting a message of N bytes'";
constexpr std::int64_t kSlice = 800;  // bytes of a message in one statement

/// @return how the statement with the next slice begins: "GetMessage:incoming message, bytes 801 to 1600:"
std::string NextHead(const log::Incoming& arriving) {
    const auto start = static_cast<std::int64_t>(arriving.Text().size());
    return fmt::format("GetMessage:incoming message, bytes {} to {}:", start + 1,
                       start + std::min(arriving.Announced(), kSlice));
}

/// @return how many bytes of the message are in it
std::size_t NextBytes(const log::Incoming& arriving) {
    const auto left = arriving.Announced() - static_cast<std::int64_t>(arriving.Text().size());
    return static_cast<std::size_t>(std::clamp<std::int64_t>(left, 0, kSlice));
}

bool IsEnd(Sign sign) {
    return sign == Sign::ShuttingDown || sign == Sign::BindFailed || sign == Sign::NoSignalHandler;
}

bool IsTraffic(Sign sign) {
    return sign == Sign::HeaderByte || sign == Sign::Connected || sign == Sign::ClosingClient ||
           sign == Sign::Expecting;
}

bool IsPromise(Sign sign) {
    return sign == Sign::Opening || sign == Sign::SendingComplete || sign == Sign::SendingDone;
}

/// @return the byte whose hexadecimal form is all that follows the head; nothing if there is none
std::optional<unsigned int> ByteAfter(std::string_view text, std::string_view head) {
    unsigned int byte = 0;
    if (!StartsWith(text, head)) {
        return std::nullopt;
    }
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data() + head.size(), end, byte, 16);
    return parsed.ec == std::errc() && parsed.ptr == end && byte <= 0xff ? std::optional<unsigned int>(byte)
                                                                         : std::nullopt;
}

}  // namespace

RunBuilder::RunBuilder(const std::string& log) {
    run_.log = log;
}

void RunBuilder::AddStatement(std::size_t number, const log::Statement& statement) {
    if (!over_ && (run_.ended || reader_.StartsAnother(statement.sign))) {
        StartOver();
    }
    if (over_ || !error_.empty()) {
        return;
    }
    run_.lastLine = number;
    run_.ended = IsEnd(statement.sign);
    if (statement.sign == Sign::Expecting) {
        TakeSize(number, statement);
    } else if (statement.sign == Sign::Incoming) {
        TakeSlice(number, statement);
    } else {
        reader_.Add(statement);
        TakeAnswer(number, statement);
    }
    if (statement.sign == Sign::ProtocolSwitch) {
        dialect_ = reader_.Echoed().protocol;
    }
    if (IsTraffic(statement.sign)) {
        anchor_ = statement.time ? std::optional<LogTime>(*statement.time) : std::nullopt;
    }
}

void RunBuilder::StartOver() {
    if (HasMessages()) {
        over_ = true;
    } else {
        *this = RunBuilder(run_.log);
    }
    run_.hasOtherRuns = true;
}

void RunBuilder::TakeSize(std::size_t number, const log::Statement& statement) {
    if (IsMissingSlices(number, statement) || IsMissingRequest(number, statement)) {
        return;
    }
    const bool isNumber = statement.detail.find_first_of("-0123456789") == 0;
    if (!isNumber || !EndsWith(statement.text, " bytes")) {
        NoteGap(number, kSizeLine, log::Unescaped(statement.text));
        return;
    }
    reader_.Add(statement);
    incoming_ = {};
    incoming_.line = number;
    if (statement.time) {
        const LogTime time(*statement.time);
        incoming_.pause = std::max(LogTime(0), time - anchor_.value_or(time));
    }
}

void RunBuilder::TakeSlice(std::size_t number, const log::Statement& statement) {
    const log::Incoming& arriving = reader_.Arriving();
    if (arriving.IsWhole()) {
        if (HasMessages()) {
            NoteGap(number, kSizeLine, log::Unescaped(statement.text));
        }
        return;  // the log begins inside a message
    }
    const std::string text = log::Unescaped(statement.text);
    const std::string head = NextHead(arriving);
    const std::size_t due = NextBytes(arriving);
    if (!StartsWith(text, head)) {
        return NoteGap(number, Quoted(head), text);
    }
    if (text.size() - head.size() != due) {
        return NoteGap(number, Quoted(head) + " and " + Counted(due, "byte"),
                       Counted(text.size() - head.size(), "byte") + ": " + text.substr(head.size()));
    }
    if (reader_.Add(statement) == log::RunReader::Event::Message) {
        EndMessage();
    }
}

void RunBuilder::EndMessage() {
    incoming_.text = reader_.LastMessage().text;
    run_.messages.push_back(std::move(incoming_));
    name_ = reader_.LastMessage().name;
    announcement_.clear();
    prefixBytes_ = 0;
    if (!dialect_ && !reader_.HasStart()) {
        dialect_ = protocol::OnlyDialectOf(name_);
    }
    if (name_ != "INVALID_EVENT" && name_ != "TRANSPORT_EXCEPTION") {
        return;
    }
    // The last request will no longer be confirmed: the file's, or else the event's.
    const auto isFile = [this](const RequestId& id) { return At(id).name == "GET_FILE"; };
    const bool hasFiles = std::any_of(unconfirmed_.begin(), unconfirmed_.end(), isFile);
    unconfirmed_.erase(std::remove_if(unconfirmed_.begin(), unconfirmed_.end(),
                                      [&](const RequestId& id) { return !hasFiles || isFile(id); }),
                       unconfirmed_.end());
}

/// Takes what the harness says and does about the message that it has read.
void RunBuilder::TakeAnswer(std::size_t number, const log::Statement& statement) {
    if (!HasMessages()) {
        return;  // the log begins inside an answer
    }
    if (statement.sign == Sign::ClosingClient) {
        run_.messages.back().closed = true;
    } else if (statement.sign == Sign::SentWrongSize) {
        TakeSentText(statement);
    } else if (statement.sign != Sign::HeaderByte) {
        TakeEvidence(number, statement);
    } else if (!IsMissingSlices(number, statement)) {
        TakePrefixByte(number, statement);
    }
    const std::vector<EarlierRequest>& requests = run_.messages.back().requests;
    if (!dialect_ && !requests.empty()) {
        dialect_ = protocol::OnlyDialectOf(requests.back().name);
    }
}

/// Takes the text of the request that was sent last.
void RunBuilder::TakeSentText(const log::Statement& statement) {
    const std::string text = log::Unescaped(statement.text);
    std::vector<EarlierRequest>& requests = run_.messages.back().requests;
    const std::size_t quote = text.find("  '");
    if (!requests.empty() && quote != std::string::npos && text.size() > quote + 3 && text.back() == '\'') {
        requests.back().text = text.substr(quote + 3, text.size() - quote - 4);
    }
}

void RunBuilder::TakePrefixByte(std::size_t number, const log::Statement& statement) {
    const std::string head = fmt::format("hdr[{}]= ", prefixBytes_);
    const auto byte = ByteAfter(statement.text, head);
    if (!byte) {
        return NoteGap(number, Quoted(head) + " and a byte in hexadecimal", log::Unescaped(statement.text));
    }
    if (prefixBytes_ == 0) {
        BeginRequest(number);
    }
    run_.messages.back().requests.back().announced = reader_.LastRequest().announced;
    const bool isLast = (*byte & 0x80) == 0 || prefixBytes_ + 1 == kMaxPrefixBytes;
    prefixBytes_ = isLast ? 0 : prefixBytes_ + 1;
}

void RunBuilder::BeginRequest(std::size_t number) {
    const log::Request& sent = reader_.LastRequest();
    EarlierRequest request;
    request.line = number;
    request.subject = sent.statedFile;
    if (sent.isCertain) {
        request.name = sent.name;
        request.evidence = announcement_.empty() ? "in answer to " + name_ : announcement_;
    }
    if (request.name == "DONE" && name_ == "EVENT_XFER_ACK" && reader_.Echoed().hasDuration) {
        request.subject = "duration=" + std::to_string(reader_.Echoed().doneDuration);  // not in 1.0
    }
    std::vector<EarlierRequest>& requests = run_.messages.back().requests;
    requests.push_back(request);
    if (request.name == "GET_FILE" || request.name == "NEXT_EVENT" || request.name == "EVENT_XFER_COMPLETE") {
        unconfirmed_.emplace_back(run_.messages.size() - 1, requests.size() - 1);
    }
    promised_.clear();
}

void RunBuilder::TakeEvidence(std::size_t number, const log::Statement& statement) {
    Confirm(statement);
    if (log::IsAnnouncement(statement.sign)) {
        announcement_ = log::Unescaped(statement.text);
    }
    if (IsPromise(statement.sign) && !IsMissingRequest(number, statement)) {
        promised_ = log::Unescaped(statement.text);
    }
}

void RunBuilder::Confirm(const log::Statement& statement) {
    const std::string subject = SubjectConfirmedBy(statement);
    if (subject.empty()) {
        return;
    }
    std::vector<RequestId> left;
    for (const RequestId& id : unconfirmed_) {
        EarlierRequest& request = At(id);
        if ((statement.sign == Sign::FileDone) != (request.name == "GET_FILE")) {
            left.push_back(id);
        } else if (!request.subject) {
            request.subject = subject;
        }
    }
    unconfirmed_ = left;
}

bool RunBuilder::IsMissingSlices(std::size_t number, const log::Statement& statement) {
    if (reader_.Arriving().IsWhole()) {
        return false;
    }
    NoteGap(number, Quoted(NextHead(reader_.Arriving())), log::Unescaped(statement.text));
    return true;
}

bool RunBuilder::IsMissingRequest(std::size_t number, const log::Statement& statement) {
    if (promised_.empty()) {
        return false;
    }
    NoteGap(number, "'hdr[0]= ' after " + Quoted(promised_) + ", as in a log of all levels",
            log::Unescaped(statement.text));
    return true;
}

void RunBuilder::NoteGap(std::size_t number, const std::string& expected, const std::string& found) {
    error_ =
        fmt::format("{}:{}: expected {}, found '{}'", Printable(run_.log), number, expected, Excerpt(found));
}

EarlierRun RunBuilder::Finish() const {
    if (!error_.empty()) {
        throw Failure(ExitStatus::Unusable, error_);
    }
    EarlierRun run = run_;
    run.dialect = dialect_.value_or(1);
    if (!reader_.Arriving().IsWhole()) {
        run.cutMessage = incoming_.line;
    }
    run.timed = std::all_of(run.messages.begin(), run.messages.end(),
                            [](const EarlierMessage& message) { return message.pause.has_value(); });
    return run;
}

}  // namespace rig::dvr
