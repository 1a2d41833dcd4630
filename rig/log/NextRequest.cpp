#include "rig/log/NextRequest.h"

#include <pugixml.hpp>

#include "rig/base/Affix.h"
#include "rig/judge/Protocol.h"
#include "rig/log/LogLine.h"
#include "rig/log/Numbers.h"

namespace rig::judge {

void NextRequest::Forget() {
    last_.clear();
    announced_.clear();
    popped_ = false;
    left_ = 0;
    fault_ = Fault::None;
    doubled_ = 0;
}

void NextRequest::TakeMessage(const std::string& name, const pugi::xml_node& message, const Place& place) {
    last_ = name;
    if (name == "EVENT_LIST") {
        lists_.TakeEventList(message, place, run_);
    } else if (name == "XML") {
        lists_.TakeXml(message, place, run_);
    } else if (name == "EVENT" && !lists_.events.empty() && Event() == message.attribute("reid").value()) {
        lists_.TakeEvent(message, place, run_);
    } else if (name == "INVALID_EVENT" && lists_.files.empty() && !lists_.events.empty()) {
        lists_.events.pop_front();
    }
}

Fault NextRequest::Take(log::Sign sign, std::string_view text) {
    const std::string_view detail = log::Behind(sign, text);
    switch (sign) {
        case log::Sign::Opening:
            announced_ = detail == "CONFIGURATION_UPDATE" ? "UPDATE_CONFIGURATION" : detail;
            break;
        case log::Sign::FileDone:
            if (run_.protocol == 1) {
                RetireFile();
            }
            break;
        case log::Sign::FilesLeft:
            popped_ = true;
            left_ = log::NumberIn(detail);
            RetireFile();
            break;
        case log::Sign::SendingComplete:
            announced_ = "EVENT_XFER_COMPLETE";
            break;
        case log::Sign::SendingDone:
            announced_ = "DONE";
            break;
        case log::Sign::Acknowledged:
            if (!lists_.events.empty()) {
                lists_.events.pop_front();
            }
            break;
        default:
            return TakeFault(sign, text);
    }
    return Fault::None;
}

/// What the harness logs when it is about to do something wrong on purpose.
Fault NextRequest::TakeFault(log::Sign sign, std::string_view text) {
    switch (sign) {
        case log::Sign::EventFault:
            lists_.events.push_front(Damaged(Event()));
            fault_ = Fault::Event;
            break;
        case log::Sign::FileFault:
            fault_ = DamageFile(log::NumberIn(log::Behind(sign, text)));
            break;
        case log::Sign::TransportFault:
            AskTwice();
            fault_ = Fault::Transport;
            break;
        case log::Sign::RehashFault:
            AskTwice();
            break;
        case log::Sign::LastFile:
            fault_ = EndsWith(text, ", true)") ? Fault::Rehash : Fault::None;
            break;
        case log::Sign::XferFault:
            doubled_ = 2;
            return Fault::Xfer;
        default:
            return Fault::None;
    }
    return fault_;
}

/// @param count how often -f has fired before: first it damages the event's identifier, then the file's name
Fault NextRequest::DamageFile(std::int64_t count) {
    if (count > 1 || lists_.files.empty()) {
        return Fault::None;
    }
    AskTwice();
    WorkLists::File& file = lists_.files.front();
    std::string& part = count == 0 ? file.first : file.second;
    part = Damaged(part);
    return count == 0 ? Fault::FileEvent : Fault::FileName;
}

void NextRequest::RetireFile() {
    if (!lists_.files.empty()) {
        lists_.files.pop_front();
    }
}

void NextRequest::AskTwice() {
    if (!lists_.files.empty()) {
        lists_.files.push_front(lists_.files.front());
    }
}

std::string NextRequest::Event() const {
    return lists_.events.empty() ? "" : lists_.events.front();
}

std::string NextRequest::Name() const {
    if (!announced_.empty()) {
        return announced_;
    }
    if (last_ == "EVENT_LIST" || last_ == "EVENT_XFER_ACK" || (last_ == "INVALID_EVENT" && !popped_)) {
        return "NEXT_EVENT";
    }
    return "GET_FILE";
}

Request NextRequest::Make() {
    Request request;
    request.name = Name();
    if (request.name == "GET_FILE" && !lists_.files.empty()) {
        request.reid = lists_.files.front().first;
        request.file = lists_.files.front().second;
    } else if (run_.protocol == 2 &&
               (request.name == "NEXT_EVENT" || request.name == "EVENT_XFER_COMPLETE")) {
        request.reid = Event();
    }
    if (request.name == "GET_FILE" && popped_ && left_ > 1) {
        request.pause = run_.sleepSeconds * log::kSecond;
    }
    if (doubled_ > 0 && --doubled_ == 0) {
        fault_ = Fault::Xfer;  // only the second of the two gets a different answer
    }
    request.fault = fault_;
    request.expects = AnswerTo(request.name, request.fault, run_.protocol);
    announced_.clear();
    fault_ = Fault::None;
    return request;
}

}  // namespace rig::judge
