#include "rig/judge/wire/WireEvent.h"

#include <fmt/format.h>

#include <map>

#include "rig/base/Printable.h"
#include "rig/log/LineTime.h"
#include "rig/log/LogReader.h"
#include "rig/result/Json.h"

namespace rig::judge {
namespace {

using result::Json;

constexpr std::size_t kTimeBytes = 27;  // "2026-11-20T14:03:07.123456Z"
constexpr const char* kNotOne = ": expected a log of velloran-rig proxy, found none of its lines";

using EventKind = WireEvent::Kind;

EventKind KindOf(const std::string& name) {
    static const std::map<std::string, EventKind> kKinds = {
        {"listen", EventKind::Listen},      {"plan", EventKind::Plan},
        {"connect", EventKind::Connect},    {"refused", EventKind::Refused},
        {"frame", EventKind::Frame},        {"fault", EventKind::Fault},
        {"sent", EventKind::Sent},          {"close", EventKind::Close},
        {"fault-end", EventKind::FaultEnd}, {"kept-open", EventKind::KeptOpen},
        {"reset", EventKind::Reset},        {"half-close", EventKind::HalfClose}};
    const auto found = kKinds.find(name);
    return found == kKinds.end() ? EventKind::Other : found->second;
}

std::optional<std::string> TextIn(const Json& event, const char* name) {
    const auto found = event.find(name);
    return found != event.end() && found->is_string() ? std::optional(found->get<std::string>())
                                                      : std::nullopt;
}

std::optional<std::uint64_t> NumberIn(const Json& event, const char* name) {
    const auto found = event.find(name);
    return found != event.end() && found->is_number_unsigned() ? std::optional(found->get<std::uint64_t>())
                                                               : std::nullopt;
}

std::vector<std::string> TextsIn(const Json& event, const char* name) {
    std::vector<std::string> texts;
    const auto found = event.find(name);
    for (const Json& text : found == event.end() ? Json::array() : *found) {
        if (text.is_string()) {
            texts.push_back(text.get<std::string>());
        }
    }
    return texts;
}

/// Reads the lines one after the other, and knows whether they are those of a log.
class Lines {
 public:
    Lines(const std::string& file, const TakeWireEvent& take) : file_(file), take_(take) {}

    void Add(std::uint64_t number, std::string_view line) {
        if (badLine_ && !hasEvent_) {
            throw log::Unreadable(Printable(file_) + kNotOne);
        }
        if (badLine_) {
            throw log::Unreadable(
                fmt::format("{}: expected an event of velloran-rig proxy in line {}, found "
                            "something else",
                            Printable(file_), *badLine_));
        }
        const std::optional<WireEvent> event = ReadWireEvent(line);
        if (!event) {
            badLine_ = number;
            return;
        }
        isOne_ = isOne_ || event->kind == WireEvent::Kind::Listen;
        if (!isOne_ && event->connection) {
            throw log::Unreadable(Printable(file_) +
                                  ": expected the whole log of velloran-rig proxy, found that its "
                                  "beginning is missing");
        }
        hasEvent_ = true;
        take_(*event, {file_, number, line});
    }

    bool AreOfProxy() const { return hasEvent_; }
    bool AreCut() const { return badLine_.has_value(); }

 private:
    const std::string& file_;
    const TakeWireEvent& take_;
    std::optional<std::uint64_t> badLine_;  // which may be the last
    bool hasEvent_ = false;
    bool isOne_ = false;  // it begins where the proxy begins
};

}  // namespace

std::optional<WireEvent> ReadWireEvent(std::string_view line) {
    const Json json = Json::parse(line, nullptr, false);
    const std::string time = json.is_object() ? TextIn(json, "time").value_or("") : "";
    const std::optional<std::int64_t> when =
        time.size() == kTimeBytes ? log::OwnTime(time.c_str()) : std::nullopt;
    if (!when || !TextIn(json, "event")) {
        return std::nullopt;
    }
    WireEvent event;
    event.kind = KindOf(*TextIn(json, "event"));
    event.time = *when;
    event.connection = NumberIn(json, "connection");
    event.isFromDvr = TextIn(json, "direction") == "dvr->harness";
    event.isTaken = json.contains("taken");
    event.message = TextIn(json, "message").value_or("");
    event.reid = TextIn(json, "reid");
    event.file = TextIn(json, "file");
    event.prefixBytes = NumberIn(json, "prefixBytes").value_or(0);
    event.textBytes = NumberIn(json, "textBytes").value_or(0);
    event.fault = TextIn(json, "fault").value_or("");
    event.value = TextIn(json, "value").value_or("");
    event.on = TextIn(json, "on").value_or("");
    event.by = TextIn(json, "by").value_or("");
    event.messages = TextsIn(json, "messages");
    return event;
}

bool ReadWireLog(const std::string& file, const TakeWireEvent& take) {
    Lines lines(file, take);
    log::ReadLog(file, [&lines](std::uint64_t number, std::string_view line) { lines.Add(number, line); });
    if (!lines.AreOfProxy()) {
        throw log::Unreadable(Printable(file) + kNotOne);
    }
    return lines.AreCut();
}

}  // namespace rig::judge
