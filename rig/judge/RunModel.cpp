#include "rig/judge/RunModel.h"

#include <algorithm>
#include <charconv>
#include <pugixml.hpp>

#include "rig/judge/Protocol.h"

namespace rig::judge {
namespace {

using report::Evidence;
using report::Step;

constexpr std::int64_t kSecond = 1'000'000;

std::int64_t NumberIn(std::string_view text) {
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool IsSwitch(Sign sign) {
    return sign >= Sign::CloseSwitch && sign <= Sign::ConfigSwitch;
}

std::string Described(const std::string& name, const std::string& reid, const std::string& file) {
    return name + (reid.empty() ? "" : " " + reid) + (file.empty() ? "" : " " + file);
}

}  // namespace

RunModel::RunModel(const Evidence& begin, const Keep& keep) : keep_(keep) {
    run_.begin = begin;
}

bool RunModel::IsStartOfAnother(Sign sign) const {
    const bool hasBegun = run_.Saw(Sign::Connected) || run_.Saw(Sign::Expecting);
    if (run_.Saw(Sign::ShuttingDown) || run_.Of(Sign::BindFailed).Count() > 1) {
        return true;
    }
    return hasBegun && (IsSwitch(sign) || sign == Sign::Connected || sign == Sign::BindFailed);
}

bool RunModel::IsOver() const {
    return run_.Saw(Sign::ShuttingDown) || run_.Of(Sign::BindFailed).Count() > 1 ||
           run_.Saw(Sign::ClosingClient) || run_.assertions.Any() ||
           (isDone_ && run_.protocol == 2 && run_.closeEarly == 0);
}

void RunModel::Add(const LogLine& line, Sign sign, const Evidence& evidence) {
    now_ = line.time;
    if (!run_.beginTime) {
        run_.beginTime = line.time;
    }
    if (line.time) {
        run_.endTime = line.time;
    }
    if (IsSwitch(sign) || sign == Sign::Connected || sign == Sign::BindFailed ||
        sign == Sign::NoSignalHandler || sign == Sign::ShuttingDown) {
        run_.hasStart = run_.hasStart || !run_.Saw(Sign::Expecting);
    }
    run_.signs[static_cast<std::size_t>(sign)].Add(evidence);
    if (keep_.log) {
        run_.log.push_back({evidence.line, line.time, line.level, std::string(line.text)});
    }
    switch (sign) {
        case Sign::Expecting:
            ExpectMessage(line, evidence);
            break;
        case Sign::Incoming:
            TakeSlice(line.text, evidence);
            break;
        case Sign::HeaderByte:
            if (Behind(sign, line.text).substr(0, 2) == "0]") {
                Send(evidence);
            }
            break;
        case Sign::Connected:
        case Sign::ClosingClient:
        case Sign::ShuttingDown:
        case Sign::EndInsideText:
        case Sign::PrefixReadError:
            AddStep(Step::Kind::Note, std::string(line.text), evidence);
            break;
        default:
            TakeNumber(sign, line.text);
            TakeHandling(sign, line.text, evidence);
            break;
    }
}

void RunModel::AddAssertion(const Evidence& evidence) {
    run_.assertions.Add(evidence);
    AddStep(Step::Kind::Note, evidence.text, evidence);
}

void RunModel::TakeNumber(Sign sign, std::string_view text) {
    const std::int64_t number = NumberIn(Behind(sign, text));
    if (sign == Sign::CloseSwitch) {
        run_.closeEarly = number;
    } else if (sign == Sign::DurationSwitch) {
        run_.doneDuration = number;
    } else if (sign == Sign::SleepSwitch) {
        run_.sleepSeconds = number;
        run_.hasSleep = true;
    } else if (sign == Sign::ProtocolSwitch) {
        run_.protocol = static_cast<int>(number);
    }
}

void RunModel::ExpectMessage(const LogLine& line, const Evidence& evidence) {
    if (isIncoming_ && !text_.empty()) {
        run_.damaged.Add(evidence);
    }
    expected_ = NumberIn(Behind(Sign::Expecting, line.text));
    if (expected_ < 0) {
        run_.badLength.Add(evidence);
    }
    arrival_ = line.time;
    text_.clear();
    isIncoming_ = true;
}

void RunModel::TakeSlice(std::string_view text, const Evidence& evidence) {
    text = Behind(Sign::Incoming, text);  // "1 to 800:TEXT"
    const std::size_t colon = text.find(':');
    if (!isIncoming_ || colon == std::string_view::npos) {
        run_.damaged.Add(evidence);
        return;
    }
    text_ += Unescaped(text.substr(colon + 1));
    if (static_cast<std::int64_t>(text_.size()) >= expected_) {
        isIncoming_ = false;
        TakeMessage(evidence);
    }
}

void RunModel::TakeMessage(const Evidence& evidence) {
    popped_ = false;
    left_ = 0;
    announced_.clear();
    fault_ = Fault::None;
    doubled_ = 0;
    last_.clear();
    lastAnswered_.reset();
    pugi::xml_document document;
    if (!document.load_string(text_.c_str(), pugi::parse_default)) {
        AddStep(Step::Kind::FromDvr, "(no XML)", evidence);
        return;  // the harness says so in its next line
    }
    const pugi::xml_node message = document.child("msg");
    if (!message) {
        run_.noMessage.Add(evidence);
        return;
    }
    last_ = message.attribute("req").value();
    if (!run_.hasStart && message.attribute("protocolVersion").as_string() == std::string("2.0")) {
        run_.protocol = 2;
    }
    AddStep(Step::Kind::FromDvr,
            Described(last_.empty() ? "(no req)" : last_, message.attribute("reid").value(),
                      message.attribute("file").value()),
            evidence);
    if (!Knows(run_.protocol, last_)) {
        run_.received[""].Add(evidence);
        return;
    }
    Match(last_, message, evidence);
    run_.received[last_].Add(evidence);
    if (last_ == "EVENT_LIST") {
        lists_.TakeEventList(message, evidence, run_);
    } else if (last_ == "XML") {
        lists_.TakeXml(message, evidence, run_);
    } else if (last_ == "EVENT" && !lists_.events.empty() &&
               lists_.events.front() == message.attribute("reid").value()) {
        lists_.TakeEvent(message, evidence, run_);
    } else if (last_ == "INVALID_EVENT" && lists_.files.empty() && !lists_.events.empty()) {
        lists_.events.pop_front();
    }
}

void RunModel::Match(const std::string& name, const pugi::xml_node& message, const Evidence& evidence) {
    if (name == "OK") {
        run_.openedByOk = run_.openedByOk || run_.received.empty();
        if (run_.Received(name) > 0 && !isDone_) {
            run_.notAsked.Add(evidence);
        }
        isDone_ = false;
        return;
    }
    if (isDone_) {
        run_.afterDone.Add(evidence);
    }
    const auto request = std::find_if(run_.pending.begin(), run_.pending.end(),
                                      [&name](const Request& waiting) { return waiting.expects == name; });
    if (request != run_.pending.end()) {
        lastAnswered_ = *request;
        run_.pending.erase(request);
        Answer(*lastAnswered_, message, evidence);
    } else if (!AnswerWrongly(name, evidence)) {
        run_.notAsked.Add(evidence);
    }
}

void RunModel::Answer(const Request& request, const pugi::xml_node& message, const Evidence& evidence) {
    if (run_.Saw(Sign::SizeSwitch)) {
        run_.answeredWrong.Add(evidence);
    }
    if (request.time && arrival_) {
        run_.reactions[request.name].Add(*arrival_ - *request.time - request.pause);
    }
    isLastExact_ = request.reid == message.attribute("reid").value() &&
                   request.file == message.attribute("file").value();
    if (request.pause > 0) {
        run_.Of(Fault::Pause).answered.Add(evidence);
    }
    if (request.fault == Fault::None) {
        return;
    }
    run_.Of(request.fault).answered.Add(evidence);
    const pugi::xml_attribute reid = message.attribute("reid");
    const bool isTrueReid =
        request.fault == Fault::FileEvent && !lists_.events.empty() && lists_.events.front() == reid.value();
    if (reid && request.reid != reid.value() && !isTrueReid) {
        run_.otherReid.Add(evidence);
    }
}

/// A request with a fault that the DVR answers as if there were none.
bool RunModel::AnswerWrongly(const std::string& name, const Evidence& evidence) {
    const int protocol = run_.protocol;
    const auto request =
        std::find_if(run_.pending.begin(), run_.pending.end(), [&name, protocol](const Request& waiting) {
            return waiting.fault != Fault::None && AnswerTo(waiting.name, Fault::None, protocol) == name;
        });
    if (request == run_.pending.end()) {
        return false;
    }
    run_.Of(request->fault).wrong.Add(evidence);
    run_.pending.erase(request);
    return true;
}

void RunModel::TakeHandling(Sign sign, std::string_view text, const Evidence& evidence) {
    const std::string_view detail = Behind(sign, text);
    switch (sign) {
        case Sign::Opening:
            announced_ = detail == "CONFIGURATION_UPDATE" ? "UPDATE_CONFIGURATION" : detail;
            break;
        case Sign::FileDone:
            if (run_.protocol == 1) {
                RetireFile();
            }
            break;
        case Sign::FilesLeft:
            popped_ = true;
            left_ = NumberIn(detail);
            RetireFile();
            break;
        case Sign::SendingComplete:
            announced_ = "EVENT_XFER_COMPLETE";
            break;
        case Sign::SendingDone:
            announced_ = "DONE";
            break;
        case Sign::Acknowledged:
            if (!lists_.events.empty()) {
                lists_.events.pop_front();
            }
            break;
        case Sign::FileWithoutNames:
        case Sign::WrongFile:
        case Sign::EventReidWrong:
        case Sign::AckWithoutReid:
        case Sign::AckReidWrong:
            RejectLast(sign, evidence);
            break;
        default:
            TakeFault(sign, text, evidence);
            break;
    }
}

void RunModel::RetireFile() {
    if (!lists_.files.empty()) {
        lists_.files.pop_front();
    }
}

/// What the harness logs as it makes ready to do something wrong on purpose.
void RunModel::TakeFault(Sign sign, std::string_view text, const Evidence& evidence) {
    switch (sign) {
        case Sign::EventFault:
            lists_.events.push_front(lists_.events.empty() ? "" : Damaged(lists_.events.front()));
            Inject(Fault::Event, evidence);
            break;
        case Sign::FileFault:
            InjectFileFault(NumberIn(Behind(sign, text)), evidence);
            break;
        case Sign::TransportFault:
            AskTwice();
            Inject(Fault::Transport, evidence);
            break;
        case Sign::RehashFault:
            AskTwice();
            break;
        case Sign::LastFile:
            if (EndsWith(text, ", true)")) {
                Inject(Fault::Rehash, evidence);
            }
            break;
        case Sign::XferFault:
            Inject(Fault::Xfer, evidence);
            fault_ = Fault::None;
            doubled_ = 2;
            break;
        default:
            break;
    }
}

void RunModel::AskTwice() {
    if (!lists_.files.empty()) {
        lists_.files.push_front(lists_.files.front());
    }
}

/// @param count how often -f has fired before: first it damages the event's identifier, then the file's name
void RunModel::InjectFileFault(std::int64_t count, const Evidence& evidence) {
    if (count > 1 || lists_.files.empty()) {
        return;
    }
    AskTwice();
    WorkLists::File& file = lists_.files.front();
    std::string& part = count == 0 ? file.first : file.second;
    part = Damaged(part);
    Inject(count == 0 ? Fault::FileEvent : Fault::FileName, evidence);
}

/// The harness ignores the message: what it seemed to answer is still waiting.
void RunModel::RejectLast(Sign sign, const Evidence& evidence) {
    AddStep(Step::Kind::Note, "ignored: " + evidence.text, evidence);
    const bool cameTooLate = sign == Sign::WrongFile && isLastExact_;
    if (lastAnswered_ && !cameTooLate) {
        run_.pending.push_front(*lastAnswered_);
        lastAnswered_.reset();
    }
}

void RunModel::Inject(Fault fault, const Evidence& evidence) {
    fault_ = fault;
    run_.Of(fault).fired.Add(evidence);
    AddStep(Step::Kind::Fault, evidence.text, evidence);
}

std::string RunModel::NextName() const {
    if (!announced_.empty()) {
        return announced_;
    }
    if (last_ == "EVENT_LIST" || last_ == "EVENT_XFER_ACK" || (last_ == "INVALID_EVENT" && !popped_)) {
        return "NEXT_EVENT";
    }
    return "GET_FILE";
}

Request RunModel::NewRequest(const std::string& name) const {
    Request request;
    request.name = name;
    request.time = now_;
    if (name == "NEXT_EVENT" || name == "EVENT_XFER_COMPLETE") {
        request.reid = lists_.events.empty() || run_.protocol == 1 ? "" : lists_.events.front();
    } else if (name == "GET_FILE" && !lists_.files.empty()) {
        request.reid = lists_.files.front().first;
        request.file = lists_.files.front().second;
    }
    if (name == "GET_FILE" && popped_ && left_ > 1) {
        request.pause = run_.sleepSeconds * kSecond;
    }
    return request;
}

void RunModel::Send(const Evidence& evidence) {
    Request request = NewRequest(NextName());
    if (doubled_ > 0 && --doubled_ == 0) {
        fault_ = Fault::Xfer;
    }
    request.fault = fault_;
    request.evidence = evidence;
    request.expects = AnswerTo(request.name, request.fault, run_.protocol);
    if (request.fault == Fault::Rehash) {
        request.expects = "FILE_COMPLETE";
    }
    if (request.pause > 0) {
        run_.Of(Fault::Pause).fired.Add(evidence);
    }
    AddStep(Step::Kind::FromHarness, Described(request.name, request.reid, request.file), evidence);
    announced_.clear();
    fault_ = Fault::None;
    if (request.name == "DONE") {
        run_.acksAtDone =
            isDone_ || run_.doneSent.Any() ? run_.acksAtDone : run_.Of(Sign::Acknowledged).Count();
        run_.doneSent.Add(evidence);
        isDone_ = true;
    }
    if (!request.expects.empty()) {
        run_.pending.push_back(std::move(request));
    }
}

void RunModel::AddStep(Step::Kind kind, const std::string& text, const Evidence& evidence) {
    if (keep_.steps) {
        run_.steps.push_back({kind, now_, text, evidence.line});
    }
}

}  // namespace rig::judge
