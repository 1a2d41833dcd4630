#include "rig/judge/RunModel.h"

#include "rig/base/Printable.h"

namespace rig::judge {
namespace {

using log::Sign;
using result::Step;

/// @return whether the harness says that it ignores the message
bool IsRejection(Sign sign) {
    return sign == Sign::FileWithoutNames || sign == Sign::WrongFile || sign == Sign::EventReidWrong ||
           sign == Sign::AckWithoutReid || sign == Sign::AckReidWrong;
}

/// @return whether the dialogue shows the statement as it is
bool IsRemarkable(Sign sign) {
    return sign == Sign::Connected || sign == Sign::ClosingClient || sign == Sign::ShuttingDown ||
           sign == Sign::EndInsideText || sign == Sign::PrefixReadError;
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

bool RunModel::StartsAnother(Sign sign) const {
    return run_.assertions.Any() || reader_.StartsAnother(sign);
}

bool RunModel::IsOver() const {
    return HasEnded() || run_.Saw(Sign::ClosingClient) || run_.assertions.Any() ||
           (run_.doneSent.Any() && !run_.isExporting && run_.switches.protocol == 2 &&
            run_.switches.closeEarly == 0);
}

const log::Message* RunModel::Add(const log::Statement& statement, const Place& place) {
    using Event = log::RunReader::Event;
    const Event event = reader_.Add(statement);
    run_.switches = reader_.Echoed();
    run_.hasStart = reader_.HasStart();
    Note(statement, place);
    switch (event) {
        case Event::Gap:
            run_.damaged.Add(place);
            break;
        case Event::Message:
            TakeMessage(reader_.LastMessage(), place);
            return &reader_.LastMessage();
        case Event::Request:
            TakeRequest(place);
            break;
        case Event::Fault:
            run_.Of(reader_.LastFault()).fired.Add(place);
            AddStep(Step::Kind::Fault, statement.text, place);
            break;
        case Event::None:
            break;
    }
    if (statement.sign == Sign::Expecting && statement.Number() < 0) {
        run_.badLength.Add(place);
    } else if (IsRemarkable(statement.sign)) {
        AddStep(Step::Kind::Note, statement.text, place);
    } else if (IsRejection(statement.sign)) {
        TakeRejection(statement, place);
    }
    return nullptr;
}

/// What every statement tells, whatever it is a sign of.
void RunModel::Note(const log::Statement& statement, const Place& place) {
    const Sign sign = statement.sign;
    if (sign == Sign::Expecting) {
        exchange_.WasBusyUntil(now_);  // when it last said something
    }
    now_ = statement.time;
    run_.last = sign;
    run_.hasFractions = run_.hasFractions || (now_ && *now_ % log::kSecond != 0);
    if (!run_.beginTime) {
        run_.beginTime = now_;
    }
    if (now_) {
        run_.endTime = now_;
    }
    if (sign == Sign::UnknownMessage) {
        run_.signs[static_cast<std::size_t>(sign)].Add(place, WithoutControls(statement.detail));
    } else if (sign != Sign::None) {
        run_.signs[static_cast<std::size_t>(sign)].Add(place);
    }
    if (keep_.log) {
        run_.log.push_back({place.line, statement.time, statement.level, std::string(statement.text)});
    }
}

void RunModel::AddAssertion(const Place& place) {
    run_.assertions.Add(place);
    AddStep(Step::Kind::Note, place.text, place);
}

void RunModel::AddMarkerFailure(const Place& place) {
    run_.markerFailures.Add(place);
}

void RunModel::TakeMessage(const log::Message& message, const Place& place) {
    using Form = log::Message::Form;
    if (message.form == Form::NoMsg) {
        run_.noMessage.Add(place);
        return;
    }
    if (message.form != Form::Good) {
        AddStep(Step::Kind::FromDvr, "(not XML)", place);
        Tally& fault = message.form == Form::Empty       ? run_.empty
                       : message.form == Form::BrokenOff ? run_.brokenOff
                                                         : run_.notWellFormed;
        fault.Add(place);
        return;
    }
    const Arrival arrival{message.name, ValueOf(message.root, "reid"), ValueOf(message.root, "file"),
                          message.time, message.isRepeated};
    if (keep_.steps) {
        AddStep(Step::Kind::FromDvr, Described(arrival), place);
    }
    if (!message.isKnown) {
        run_.received[""].Add(place);
        return;
    }
    exchange_.TakeMessage(arrival, message.event, place);
    run_.received[message.name].Add(place);
    if (keep_.transfers) {
        TakeTransfer(arrival, message.root, place);
    }
    TakeListed(message.listed, place);
}

void RunModel::TakeListed(const log::Listed& listed, const Place& place) {
    const auto add = [&place](Tally& tally, std::size_t times) {
        for (std::size_t time = 0; time < times; ++time) {
            tally.Add(place);
        }
    };
    for (const std::string& reid : listed.doubled) {
        run_.doubledEvents.Add(place, Printable(reid));
    }
    add(run_.notWellFormed, listed.notWellFormed);
    add(run_.noEvent, listed.noEvent);
    add(run_.noFiles, listed.noFiles);
    add(run_.namelessFiles, listed.namelessFiles);
    add(run_.noDescriptions, listed.noDescriptions ? 1 : 0);
    run_.files += listed.files;
    run_.hasLargeEvent = run_.hasLargeEvent || listed.hasLargeEvent;
}

/// What becomes of a file that the harness asked for.
void RunModel::TakeTransfer(const Arrival& message, const pugi::xml_node& root, const Place& place) {
    const bool isComplete = message.name == "FILE_COMPLETE";
    const Request* const request = exchange_.Answered();
    if (request == nullptr || (!isComplete && message.name != "TRANSPORT_EXCEPTION")) {
        return;
    }
    Transfer& transfer = run_.transfers[{request->reid, request->file}];
    transfer.state = isComplete ? Transfer::State::Complete : Transfer::State::Failed;
    transfer.hasFailed = transfer.hasFailed || !isComplete;
    transfer.isNewHash = request->fault == Fault::Rehash;
    transfer.length = ValueOf(root, "length");
    transfer.hash = ValueOf(root, "hashCode");
    transfer.time = message.time;
    transfer.evidence = place.Proof();
    transfer.order = ++transfers_;
}

void RunModel::TakeRejection(const log::Statement& statement, const Place& place) {
    if (keep_.steps) {
        AddStep(Step::Kind::Note, "ignored: " + std::string(statement.text), place);
    }
    exchange_.IgnoreLast(statement.sign, place);
}

void RunModel::TakeRequest(const Place& place) {
    Request request{reader_.LastRequest(), "", now_, false, false, place.Proof()};
    request.expects = AnswerTo(request.name, request.fault, run_.switches.protocol);
    if (keep_.steps) {
        AddStep(Step::Kind::FromHarness, request.Words(), place);
    }
    const bool isDamaged = request.fault == Fault::FileEvent || request.fault == Fault::FileName;
    if (keep_.transfers && request.name == "GET_FILE" && !isDamaged) {
        run_.transfers[{request.reid, request.file}];
    }
    exchange_.SendRequest(std::move(request), place);
}

void RunModel::AddStep(Step::Kind kind, std::string_view text, const Place& place) {
    if (keep_.steps) {
        run_.steps.push_back({kind, now_, WithoutControls(text), place.line});
    }
}

}  // namespace rig::judge
