#include "rig/judge/RunModel.h"

#include <fmt/format.h>

#include <tuple>
#include <utility>

#include "rig/base/Printable.h"
#include "rig/judge/Framing.h"
#include "rig/judge/Notes.h"

namespace rig::judge {

using namespace std::string_view_literals;  // compared without a call where the sizes differ

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
    const std::string name = message.Name().empty() ? "(no req)" : Printable(message.Name());
    return name + (message.Reid() ? " " + Printable(*message.Reid()) : "") +
           (message.File() ? " " + Printable(*message.File()) : "");
}

}  // namespace

RunModel::RunModel(const Place& begin, const Keep& keep) : keep_(keep) {
    run_.file = begin.file;
    run_.name = begin.file + ":" + std::to_string(begin.line);
}

bool RunModel::StartsAnother(Sign sign) const {
    return HasAborted() || reader_.StartsAnother(sign);
}

bool RunModel::IsOver() const {
    return HasEnded() || run_.Saw(Sign::ClosingClient) || HasAborted() ||
           (run_.doneSent.Any() && !run_.isExporting && run_.switches.protocol == 2 &&
            run_.switches.closeEarly == 0);
}

log::RunReader::Event RunModel::Add(const log::Statement& statement, Place place) {
    place.kept = run_.lines.get();
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
            break;
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
    TakeDetails(statement, place);
    if (IsRemarkable(statement.sign)) {
        AddStep(Step::Kind::Note, statement.text, place);
    } else if (IsRejection(statement.sign)) {
        TakeRejection(statement, place);
    }
    return event;
}

/// What every statement tells, whatever it is a sign of.
void RunModel::Note(const log::Statement& statement, const Place& place) {
    const Sign sign = statement.sign;
    if (sign == Sign::Expecting) {
        exchange_.WasBusyUntil(now_);  // when it last said something
    }
    now_ = statement.time;
    run_.last = sign;
    if (now_) {
        run_.hasFractions = run_.hasFractions || *now_ % log::kSecond != 0;
        run_.beginTime = run_.beginTime ? run_.beginTime : now_;
        run_.endTime = now_;
    }
    if (sign != Sign::None) {
        Tally& tally = run_.signs[static_cast<std::size_t>(sign)];
        if (tally.Any()) {
            tally.Add(place);
        } else {
            tally.Add(place, NoteOn(statement));
        }
    }
    if (sign == Sign::Expecting) {
        hasText_ = false;
        run_.announcement.length = reader_.Arriving().Announced();
        run_.announcement.time = now_;
        run_.lines->Keep(place, run_.announcement.line);
        run_.announcement.isOpen = true;
    } else if (sign == Sign::TextRead || sign == Sign::EndInsideText || sign == Sign::Incoming) {
        run_.announcement.isOpen = false;
    }
    if (keep_.log) {
        run_.log.push_back({place.line, statement.time, statement.level, std::string(statement.text)});
    }
}

void RunModel::AddAssertion(Place place) {
    place.kept = run_.lines.get();
    run_.assertions.Add(place);
    AddStep(Step::Kind::Note, place.text, place);
}

void RunModel::AddException(Place place) {
    place.kept = run_.lines.get();
    if (!run_.HarnessEnded()) {
        const std::string& name = reader_.LastMessage().name;
        (name == "EVENT" || name == "XML" ? run_.deadlyDescriptions : run_.deadlyMessages)
            .Add(place, hasText_ ? Shown(reader_.LastMessage()) : "");
    }
    run_.exceptions.Add(place);
    AddStep(Step::Kind::Note, place.text, place);
}

void RunModel::AddMarkerFailure(Place place) {
    place.kept = run_.lines.get();
    run_.markerFailures.Add(place);
}

void RunModel::TakeMessage(const log::Message& message, const Place& place) {
    using Form = log::Message::Form;
    hasText_ = true;
    malformed_.clear();
    if (run_.opening.empty() && !run_.openedByOk && message.name != "OK"sv) {
        run_.opening = Shown(message);
    }
    if (message.form == Form::NoMsg) {
        run_.noMessage.Add(place, Shown(message));
        return;
    }
    if (message.text.size() > 1 && message.text.back() == '\0') {
        run_.terminated.Add(place, Shown(message));
    }
    if (message.form == Form::OtherEncoding) {
        TakeOtherEncoding(message, place);
    } else if (message.form != Form::Good) {
        TakeMalformed(message, place);
    }
    if (!message.root) {
        AddStep(Step::Kind::FromDvr, "(not XML)", place);
        return;
    }
    Arrival arrival{message.about, message.time, message.isRepeated};
    if (keep_.steps) {
        AddStep(Step::Kind::FromDvr, Described(arrival), place);
    }
    if (message.kind == nullptr) {
        run_.received[""].Add(place);
        return;
    }
    exchange_.TakeMessage(std::move(arrival), message.event, place);
    run_.received[message.name].Add(place);
    if (keep_.transfers) {
        TakeTransfer(message, place);
    }
    if (message.name == "EVENT_LIST"sv) {
        NoteEmpty("source", run_.emptySource, place);
    }
    beforeLast_ = {run_.lastGood, run_.lastGoodLine};
    run_.lastGood = message.kind->name;
    run_.lastGoodLine = place.line;
    if (message.listed != nullptr) {
        TakeListed(*message.listed, place);
    }
}

/// A damaged name that ends in the middle of a character is the harness's fault, not that of a DVR that
/// repeats it.
void RunModel::TakeOtherEncoding(const log::Message& message, const Place& place) {
    if (IsUtf8(reader_.LastRequest().reid) && IsUtf8(reader_.LastRequest().file)) {
        run_.otherEncoding.Add(place, Where(message.text));
    }
}

void RunModel::TakeMalformed(const log::Message& message, const Place& place) {
    using Form = log::Message::Form;
    const FramingFault fault = ExplainText(message.text);
    if (fault.isProved) {
        run_.wrongPrefix.Add(place, fault.words);
    }
    if (fault.isProved && message.root) {
        return;  // the harness takes what is right, and the rest is no part of it
    }
    malformed_ = fault.words;
    Tally& tally = message.form == Form::Empty       ? run_.empty
                   : message.form == Form::BrokenOff ? run_.brokenOff
                                                     : run_.notWellFormed;
    tally.Add(place, malformed_);
}

void RunModel::TakeListed(const log::Listed& listed, const Place& place) {
    const auto add = [&](Tally& tally, std::size_t times, DescriptionFault fault) {
        for (std::size_t time = 0; time < times; ++time) {
            tally.Add(place, tally.Any() ? std::string() : ShownDescription(reader_.LastMessage(), fault));
        }
    };
    for (const std::string& reid : listed.doubled) {
        run_.doubledEvents.Add(place, Printable(reid));
    }
    for (const auto& [reid, file] : listed.doubledFiles) {
        run_.doubledFiles.Add(place, Printable(fmt::format("{}/{}", reid, file)));
    }
    add(run_.notWellFormed, listed.notWellFormed, DescriptionFault::NotXml);
    add(run_.noEvent, listed.noEvent, DescriptionFault::NoEvent);
    add(run_.emptyReids, listed.emptyReids, DescriptionFault::EmptyReid);
    add(run_.emptyNames, listed.emptyNames, DescriptionFault::EmptyName);
    add(run_.noFiles, listed.noFiles, DescriptionFault::NoFiles);
    add(run_.namelessFiles, listed.namelessFiles, DescriptionFault::NamelessFile);
    const auto addShown = [&](Tally& tally, std::size_t times) {
        for (std::size_t time = 0; time < times; ++time) {
            tally.Add(place, tally.Any() ? std::string() : Shown(reader_.LastMessage()));
        }
    };
    addShown(run_.notFiles, listed.notFiles);
    addShown(run_.notEvents, listed.notEvents);
    addShown(run_.noDescriptions, std::size_t{listed.noDescriptions});
    addShown(reader_.LastMessage().name == "EVENT_LIST"sv ? run_.secondLists : run_.secondDescriptions,
             std::size_t{listed.hasSecond});
    addShown(run_.emptyList, std::size_t{listed.isEmpty});
    run_.hasEmptyEvent = run_.hasEmptyEvent || listed.emptyEvents > 0;
    run_.hasFiles = run_.hasFiles || listed.files > 0;
    run_.hasLargeEvent = run_.hasLargeEvent || listed.hasLargeEvent;
}

/// What becomes of a file that the harness asked for.
void RunModel::TakeTransfer(const log::Message& message, const Place& place) {
    const bool isComplete = message.name == "FILE_COMPLETE";
    const Request* const request = exchange_.Answered();
    if (request == nullptr || (!isComplete && message.name != "TRANSPORT_EXCEPTION")) {
        return;
    }
    Transfer& transfer = run_.transfers[{request->reid, request->file}];
    transfer.state = isComplete ? Transfer::State::Complete : Transfer::State::Failed;
    transfer.hasFailed = transfer.hasFailed || !isComplete;
    transfer.isNewHash = request->fault == Fault::Rehash;
    transfer.length = ValueOf(message.root, "length");
    transfer.hash = ValueOf(message.root, "hashCode");
    transfer.time = message.time;
    KeptLine line;
    run_.lines->Keep(place, line);
    transfer.evidence = line.Proof();
    transfer.order = ++transfers_;
}

void RunModel::TakeRejection(const log::Statement& statement, const Place& place) {
    if (keep_.steps) {
        AddStep(Step::Kind::Note, "ignored: " + std::string(statement.text), place);
    }
    exchange_.IgnoreLast(statement.sign, place);
    std::tie(run_.lastGood, run_.lastGoodLine) = beforeLast_;
}

void RunModel::TakeRequest(const Place& place) {
    const log::Request& request = reader_.LastRequest();
    if (keep_.steps) {
        AddStep(Step::Kind::FromHarness, Request(request).Words(), place);
    }
    const bool isDamaged = request.fault == Fault::FileEvent || request.fault == Fault::FileName;
    if (keep_.transfers && request.name == "GET_FILE" && !isDamaged) {
        run_.transfers[{request.reid, request.file}];
    }
    exchange_.SendRequest(request, now_, place);
}

void RunModel::AddStep(Step::Kind kind, std::string_view text, const Place& place) {
    if (keep_.steps) {
        run_.steps.push_back({kind, now_, WithoutControls(text), place.line});
    }
}

}  // namespace rig::judge
