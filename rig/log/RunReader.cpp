#include "rig/log/RunReader.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace rig::log {
namespace {

/// The second failure ends a harness.
constexpr int kMostBindFailures = 2;

constexpr std::uint32_t kMostPrefixBytes = 5;

bool IsSecondDialect(const pugi::xml_node& message) {
    return message.attribute("protocolVersion").as_string() == std::string_view("2.0");
}

/// @return those of all runs: what one says, the next says, too
Documents& AllDocuments() {
    static Documents documents;
    return documents;
}

}  // namespace

bool RunReader::StartsAnother(Sign sign) const {
    const bool hasBegun = hasConnected_ || hasExpected_;
    return hasEnded_ || (hasBegun && (IsSwitch(sign) || sign == Sign::Connected || sign == Sign::BindFailed));
}

RunReader::Event RunReader::Add(const Statement& statement) {
    const bool isFirst = std::exchange(isFirst_, false);
    switch (statement.sign) {
        case Sign::None:
        case Sign::TextRead:
            return Event::None;
        case Sign::Expecting:
            hasExpected_ = true;
            return incoming_.Expect(statement) ? Event::None : Event::Gap;
        case Sign::Incoming:
            return TakeSlice(statement);
        case Sign::HeaderByte:
            return TakePrefixByte(statement);
        default:
            NoteStart(statement.sign, isFirst);
            TakeSwitch(statement);
            fault_ = next_.TakeStatement(statement, switches_);
            return fault_ == Fault::None ? Event::None : Event::Fault;
    }
}

/// Takes "INDEX]= HEX".
RunReader::Event RunReader::TakePrefixByte(const Statement& statement) {
    constexpr std::size_t kIndexEnd = 4;
    const bool isFirst = statement.detail.substr(0, 2) == "0]";
    if (isFirst) {
        request_ = next_.MakeRequest(switches_);
    }
    const std::string_view hex = statement.detail.substr(std::min(kIndexEnd, statement.detail.size()));
    std::uint32_t byte = 0;
    std::from_chars(hex.data(), hex.data() + hex.size(), byte, 16);
    const auto index = static_cast<std::uint32_t>(statement.Number());
    if (index < kMostPrefixBytes) {
        request_.announced |= (byte & 0x7f) << (7 * index);
    }
    request_.isAnnounced = !hex.empty() && (byte & 0x80) == 0;
    return isFirst ? Event::Request : Event::None;
}

void RunReader::NoteStart(Sign sign, bool isFirst) {
    // A harness without switches that no DVR connects to only says at its end that it is shutting down.
    const bool isStart = IsSwitch(sign) || sign == Sign::Connected || sign == Sign::BindFailed ||
                         sign == Sign::NoSignalHandler || (sign == Sign::ShuttingDown && isFirst);
    hasStart_ = hasStart_ || (isStart && !hasExpected_);
    hasConnected_ = hasConnected_ || sign == Sign::Connected;
    bindFailures_ += sign == Sign::BindFailed ? 1 : 0;
    hasEnded_ = hasEnded_ || sign == Sign::ShuttingDown || bindFailures_ >= kMostBindFailures;
}

void RunReader::TakeSwitch(const Statement& statement) {
    if (!IsSwitch(statement.sign) && statement.sign != Sign::Opening) {
        return;
    }
    const std::int64_t number = std::clamp<std::int64_t>(statement.Number(), INT32_MIN, INT32_MAX);
    switch (statement.sign) {
        case Sign::CloseSwitch:
            switches_.closeEarly = number;
            break;
        case Sign::DurationSwitch:
            switches_.doneDuration = number;
            switches_.hasDuration = true;
            break;
        case Sign::SleepSwitch:
            switches_.sleepSeconds = number;
            switches_.hasSleep = true;
            break;
        case Sign::ProtocolSwitch:
            switches_.protocol = static_cast<int>(number);
            break;
        case Sign::Opening:  // in a log that lacks its first lines
            switches_.protocol = statement.detail == "GET_EVENT_LIST" ? 2
                                 : statement.detail == "GET_XML"      ? 1
                                                                      : switches_.protocol;
            break;
        default:
            break;
    }
}

RunReader::Event RunReader::TakeSlice(const Statement& statement) {
    if (!incoming_.AddSlice(statement)) {
        return Event::Gap;
    }
    if (!incoming_.IsWhole()) {
        return Event::None;
    }
    TakeMessage();
    return Event::Message;
}

void RunReader::TakeMessage() {
    next_.Forget();
    const std::string& text = incoming_.Text();
    document_.reset();
    document_ = AllDocuments().Parsed(text);
    message_.text = text;
    message_.time = incoming_.Time();
    message_.form = document_->GetForm();
    message_.root = document_->Root();
    message_.about = document_->About();
    message_.name = message_.about->name;
    if (!hasStart_ && IsSecondDialect(message_.root)) {
        switches_.protocol = 2;
    }
    message_.kind = protocol::Find(switches_.protocol == 2 ? 2 : 1, protocol::Sender::Dvr, message_.name);
    message_.isRepeated = message_.kind != nullptr && incoming_.IsRepeated();
    message_.listed = nullptr;
    if (message_.kind != nullptr) {
        message_.event = next_.Event();
        incoming_.Remember();
        message_.listed = next_.TakeMessage(*document_);
    }
}

}  // namespace rig::log
