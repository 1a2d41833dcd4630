#include "rig/judge/RunModel.h"

#include <algorithm>
#include <charconv>
#include <pugixml.hpp>
#include <set>

namespace rig::judge {
namespace {

using report::Evidence;
using report::Step;

constexpr std::int64_t kSecond = 1'000'000;
constexpr std::size_t kDamage = 3;  // characters that a damaged identifier or name has lost

std::int64_t NumberIn(std::string_view text) {
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string Damaged(const std::string& text) {
    return text.size() < kDamage ? "" : text.substr(kDamage);
}

bool IsSwitch(Sign sign) {
    return sign >= Sign::CloseSwitch && sign <= Sign::ConfigSwitch;
}

/// @return what the DVR must answer; nothing where it need not answer
std::string AnswerTo(const std::string& request, Fault fault, int protocol) {
    switch (fault) {
        case Fault::Event:
        case Fault::FileEvent:
        case Fault::FileName:
            return "INVALID_EVENT";
        case Fault::Transport:
            return "TRANSPORT_EXCEPTION";
        case Fault::Xfer:
            return "XFER_IN_PROGRESS";
        default:
            break;
    }
    static const std::map<std::string, std::string> kAnswers = {
        {"GET_EVENT_LIST", "EVENT_LIST"},
        {"GET_XML", "XML"},
        {"UPDATE_SOFTWARE", "SOFTWARE_UPDATE_CONFIRM"},
        {"UPDATE_CONFIGURATION", "CONFIGURATION_UPDATE_ERROR"},
        {"NEXT_EVENT", "EVENT"},
        {"GET_FILE", "FILE_COMPLETE"}};
    if (request == "EVENT_XFER_COMPLETE" && protocol == 2) {
        return "EVENT_XFER_ACK";
    }
    const auto answer = kAnswers.find(request);
    return answer == kAnswers.end() ? "" : answer->second;
}

bool Knows(int protocol, const std::string& message) {
    static const std::set<std::string> kFirst = {"OK", "XML", "FILE_COMPLETE", "CONFIGURATION_UPDATE_ERROR"};
    static const std::set<std::string> kSecondDialect = {"OK",
                                                         "EVENT_LIST",
                                                         "EVENT",
                                                         "FILE_COMPLETE",
                                                         "EVENT_XFER_ACK",
                                                         "INVALID_EVENT",
                                                         "TRANSPORT_EXCEPTION",
                                                         "XFER_IN_PROGRESS",
                                                         "SOFTWARE_UPDATE_CONFIRM",
                                                         "CONFIGURATION_UPDATE_ERROR"};
    return (protocol == 2 ? kSecondDialect : kFirst).count(message) > 0;
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
        TakeEventList(message, evidence);
    } else if (last_ == "XML" || (last_ == "EVENT" && !events_.empty() &&
                                  events_.front() == message.attribute("reid").value())) {
        TakeDescriptions(message, evidence);
    } else if (last_ == "INVALID_EVENT" && files_.empty() && !events_.empty()) {
        events_.pop_front();
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
        request.fault == Fault::FileEvent && !events_.empty() && events_.front() == reid.value();
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

void RunModel::TakeEventList(const pugi::xml_node& message, const Evidence& evidence) {
    std::set<std::string> listed;
    for (const pugi::xml_node event : message.child("events").children()) {
        const std::string reid = event.text().get();
        if (reid.empty()) {
            continue;
        }
        if (!listed.insert(reid).second) {
            run_.doubledEvents.Add(evidence);
        }
        events_.push_back(reid);
    }
}

void RunModel::TakeDescriptions(const pugi::xml_node& message, const Evidence& evidence) {
    const std::size_t before = files_.size();
    const pugi::xml_node container = message.child("xmlFile");
    if (last_ == "EVENT") {
        TakeDescription(container.text().get(), message.attribute("reid").value(), evidence);
        run_.hasLargeEvent = run_.hasLargeEvent || files_.size() >= before + 2;
    } else {
        const std::set<std::string> known(events_.begin(), events_.end());
        for (const pugi::xml_node description : container.children("string")) {
            TakeDescription(description.text().get(), "", evidence);
        }
        const std::set<std::string> now(events_.begin(), events_.end());
        if (now.size() < events_.size() && known.empty()) {
            run_.doubledEvents.Add(evidence);
        }
    }
    run_.files += files_.size() - before;
    if (last_ == "XML" && !container.child("string")) {
        run_.noFiles.Add(evidence);
    }
}

void RunModel::TakeDescription(const std::string& text, const std::string& reid, const Evidence& evidence) {
    pugi::xml_document description;
    if (text.empty() && last_ == "XML") {
        run_.noEvent.Add(evidence);
    }
    if (!description.load_string(text.c_str())) {
        return;  // the harness says so
    }
    const pugi::xml_node event = description.child("recording-event");
    const std::string name = reid.empty() ? event.attribute("reid").value() : reid;
    if (!event) {
        run_.noEvent.Add(evidence);
    }
    if (!event || (reid.empty() && name.empty())) {
        return;
    }
    if (reid.empty()) {
        events_.push_back(name);
    }
    const std::size_t before = files_.size();
    const pugi::xml_node video = event.child("video");
    if (const pugi::xml_node metadata = video.child("metadata")) {
        TakeFile(metadata, name, evidence);
    }
    for (const pugi::xml_node stream : video.child("streams").children()) {
        for (const pugi::xml_node file : stream.children()) {
            TakeFile(file, name, evidence);
        }
    }
    if (files_.size() == before) {
        run_.noFiles.Add(evidence);
    }
}

void RunModel::TakeFile(const pugi::xml_node& file, const std::string& reid, const Evidence& evidence) {
    if (!file.attribute("name")) {
        run_.namelessFiles.Add(evidence);
    }
    files_.emplace_back(reid, file.attribute("name").value());
}

void RunModel::TakeHandling(Sign sign, std::string_view text, const Evidence& evidence) {
    switch (sign) {
        case Sign::Opening: {
            const std::string name(Behind(sign, text));
            announced_ = name == "CONFIGURATION_UPDATE" ? "UPDATE_CONFIGURATION" : name;
            break;
        }
        case Sign::EventFault:
            events_.push_front(events_.empty() ? "" : Damaged(events_.front()));
            Inject(Fault::Event, evidence);
            break;
        case Sign::FileDone:
            if (run_.protocol == 1 && !files_.empty()) {
                files_.pop_front();
            }
            break;
        case Sign::FilesLeft:
            popped_ = true;
            left_ = NumberIn(Behind(sign, text));
            if (!files_.empty()) {
                files_.pop_front();
            }
            break;
        case Sign::FileFault: {
            const std::int64_t count = NumberIn(Behind(sign, text));
            if (count > 1 || files_.empty()) {
                break;
            }
            files_.push_front(files_.front());
            std::string& part = count == 0 ? files_.front().first : files_.front().second;
            part = Damaged(part);
            Inject(count == 0 ? Fault::FileEvent : Fault::FileName, evidence);
            break;
        }
        case Sign::TransportFault:
        case Sign::RehashFault:
            if (!files_.empty()) {
                files_.push_front(files_.front());
            }
            if (sign == Sign::TransportFault) {
                Inject(Fault::Transport, evidence);
            }
            break;
        case Sign::LastFile:
            if (text.size() > 7 && text.substr(text.size() - 7) == ", true)") {
                Inject(Fault::Rehash, evidence);
            }
            break;
        case Sign::XferFault:
            Inject(Fault::Xfer, evidence);
            fault_ = Fault::None;
            doubled_ = 2;
            break;
        case Sign::SendingComplete:
            announced_ = "EVENT_XFER_COMPLETE";
            break;
        case Sign::SendingDone:
            announced_ = "DONE";
            break;
        case Sign::Acknowledged:
            if (!events_.empty()) {
                events_.pop_front();
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
            break;
    }
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
        request.reid = events_.empty() || run_.protocol == 1 ? "" : events_.front();
    } else if (name == "GET_FILE" && !files_.empty()) {
        request.reid = files_.front().first;
        request.file = files_.front().second;
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
