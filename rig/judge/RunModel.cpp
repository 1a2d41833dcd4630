#include "rig/judge/RunModel.h"

#include <algorithm>
#include <pugixml.hpp>

#include "rig/base/Printable.h"
#include "rig/judge/Protocol.h"
#include "rig/log/Numbers.h"

namespace rig::judge {
namespace {

using result::Step;

bool IsSwitch(log::Sign sign) {
    return sign >= log::Sign::CloseSwitch && sign <= log::Sign::ConfigSwitch;
}

/// @return whether the harness says that it ignores the message
bool IsRejection(log::Sign sign) {
    return sign == log::Sign::FileWithoutNames || sign == log::Sign::WrongFile ||
           sign == log::Sign::EventReidWrong || sign == log::Sign::AckWithoutReid ||
           sign == log::Sign::AckReidWrong;
}

std::optional<std::string> ValueOf(const pugi::xml_node& message, const char* name) {
    const pugi::xml_attribute attribute = message.attribute(name);
    return attribute ? std::optional<std::string>(attribute.value()) : std::nullopt;
}

std::string Described(const Arrival& message) {
    const std::string name = message.name.empty() ? "(no req)" : Printable(message.name);
    return name + (message.reid ? " " + Printable(*message.reid) : "") +
           (message.file ? " " + Printable(*message.file) : "");
}

}  // namespace

RunModel::RunModel(const Place& begin, const Keep& keep) : keep_(keep) {
    run_.begin = begin.Proof();
}

bool RunModel::IsStartOfAnother(log::Sign sign) const {
    const bool hasBegun = run_.Saw(log::Sign::Connected) || run_.Saw(log::Sign::Expecting);
    return HasEnded() || run_.assertions.Any() ||
           (hasBegun && (IsSwitch(sign) || sign == log::Sign::Connected || sign == log::Sign::BindFailed));
}

bool RunModel::HasEnded() const {
    return run_.Saw(log::Sign::ShuttingDown) || run_.Of(log::Sign::BindFailed).Count() > 1;
}

bool RunModel::IsOver() const {
    return HasEnded() || run_.Saw(log::Sign::ClosingClient) || run_.assertions.Any() ||
           (run_.doneSent.Any() && !run_.isExporting && run_.protocol == 2 && run_.closeEarly == 0);
}

void RunModel::Add(const log::LogLine& line, log::Sign sign, const Place& place) {
    Note(line, sign, place);
    switch (sign) {
        case log::Sign::Expecting:
            ExpectMessage(line, place);
            break;
        case log::Sign::Incoming:
            TakeSlice(line.text, place);
            break;
        case log::Sign::HeaderByte:
            if (log::Behind(sign, line.text).substr(0, 2) == "0]") {
                Send(place);
            }
            break;
        case log::Sign::Connected:
        case log::Sign::ClosingClient:
        case log::Sign::ShuttingDown:
        case log::Sign::EndInsideText:
        case log::Sign::PrefixReadError:
            AddStep(Step::Kind::Note, line.text, place);
            break;
        default:
            TakeNumber(sign, line.text);
            TakeHandling(sign, line.text, place);
            break;
    }
}

/// What every statement tells, whatever it is a sign of.
void RunModel::Note(const log::LogLine& line, log::Sign sign, const Place& place) {
    if (sign == log::Sign::Expecting) {
        exchange_.WasBusyUntil(now_);  // when it last said something
    }
    now_ = line.time;
    run_.last = sign;
    run_.hasFractions = run_.hasFractions || (now_ && *now_ % log::kSecond != 0);
    if (!run_.beginTime) {
        run_.beginTime = line.time;
    }
    if (line.time) {
        run_.endTime = line.time;
    }
    // A harness without switches that no DVR connects to only says at its end that it is shutting down.
    const bool isFirst = place.line == run_.begin.line && place.file == run_.begin.file;
    if (IsSwitch(sign) || sign == log::Sign::Connected || sign == log::Sign::BindFailed ||
        sign == log::Sign::NoSignalHandler || (sign == log::Sign::ShuttingDown && isFirst)) {
        run_.hasStart = run_.hasStart || !run_.Saw(log::Sign::Expecting);
    }
    run_.signs[static_cast<std::size_t>(sign)].Add(
        place, sign == log::Sign::UnknownMessage ? WithoutControls(log::Behind(sign, line.text)) : "");
    if (keep_.log) {
        run_.log.push_back({place.line, line.time, line.level, std::string(line.text)});
    }
}

void RunModel::AddAssertion(const Place& place) {
    run_.assertions.Add(place);
    AddStep(Step::Kind::Note, place.text, place);
}

void RunModel::AddMarkerFailure(const Place& place) {
    run_.markerFailures.Add(place);
}

void RunModel::TakeNumber(log::Sign sign, std::string_view text) {
    const std::int64_t number =
        std::clamp<std::int64_t>(log::NumberIn(log::Behind(sign, text)), INT32_MIN, INT32_MAX);
    if (sign == log::Sign::CloseSwitch) {
        run_.closeEarly = number;
    } else if (sign == log::Sign::DurationSwitch) {
        run_.doneDuration = number;
    } else if (sign == log::Sign::SleepSwitch) {
        run_.sleepSeconds = number;
        run_.hasSleep = true;
    } else if (sign == log::Sign::ProtocolSwitch) {
        run_.protocol = static_cast<int>(number);
    } else if (sign == log::Sign::Opening) {  // in a log that lacks its first lines
        const std::string_view request = log::Behind(sign, text);
        run_.protocol = request == "GET_EVENT_LIST" ? 2 : request == "GET_XML" ? 1 : run_.protocol;
    }
}

void RunModel::ExpectMessage(const log::LogLine& line, const Place& place) {
    const std::int64_t bytes = log::NumberIn(log::Behind(log::Sign::Expecting, line.text));
    if (!incoming_.Expect(bytes, line.time)) {
        run_.damaged.Add(place);
    }
    if (bytes < 0) {
        run_.badLength.Add(place);
    }
}

void RunModel::TakeSlice(std::string_view text, const Place& place) {
    if (!incoming_.Add(log::Behind(log::Sign::Incoming, text))) {
        run_.damaged.Add(place);
    } else if (incoming_.IsWhole()) {
        TakeMessage(place);
    }
}

void RunModel::TakeMessage(const Place& place) {
    next_.Forget();
    pugi::xml_document document;
    const std::string& text = incoming_.Text();
    if (!document.load_string(text.c_str(), pugi::parse_default)) {
        AddStep(Step::Kind::FromDvr, "(no XML)", place);
        Tally& fault = text.empty() ? run_.empty : text.back() != '>' ? run_.brokenOff : run_.notWellFormed;
        fault.Add(place);
        return;
    }
    const pugi::xml_node message = document.child("msg");
    if (!message) {
        run_.noMessage.Add(place);
        return;
    }
    const std::string name = message.attribute("req").value();
    if (!run_.hasStart && message.attribute("protocolVersion").as_string() == std::string("2.0")) {
        run_.protocol = 2;
    }
    const Arrival arrival{name, ValueOf(message, "reid"), ValueOf(message, "file"), incoming_.Time(),
                          incoming_.IsRepeated()};
    if (keep_.steps) {
        AddStep(Step::Kind::FromDvr, Described(arrival), place);
    }
    if (!Knows(run_.protocol, name)) {
        run_.received[""].Add(place);
        return;
    }
    exchange_.Take(arrival, next_.Event(), place);
    incoming_.Remember();
    run_.received[name].Add(place);
    next_.TakeMessage(name, message, place);
}

void RunModel::TakeHandling(log::Sign sign, std::string_view text, const Place& place) {
    if (IsRejection(sign)) {
        if (keep_.steps) {
            AddStep(Step::Kind::Note, "ignored: " + std::string(text), place);
        }
        exchange_.IgnoreLast(sign, place);
        return;
    }
    const Fault fault = next_.Take(sign, text);
    if (fault != Fault::None) {
        run_.Of(fault).fired.Add(place);
        AddStep(Step::Kind::Fault, text, place);
    }
}

void RunModel::Send(const Place& place) {
    Request request = next_.Make();
    request.time = now_;
    request.evidence = place.Proof();
    if (keep_.steps) {
        AddStep(Step::Kind::FromHarness, request.Words(), place);
    }
    exchange_.Send(std::move(request), place);
}

void RunModel::AddStep(Step::Kind kind, std::string_view text, const Place& place) {
    if (keep_.steps) {
        run_.steps.push_back({kind, now_, WithoutControls(text), place.line});
    }
}

}  // namespace rig::judge
