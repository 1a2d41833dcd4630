#include "rig/log/NextRequest.h"

#include <algorithm>
#include <pugixml.hpp>

#include "rig/base/Affix.h"

namespace rig::log {

using namespace std::string_view_literals;  // compared without a call where the sizes differ

namespace {

constexpr std::size_t kDamage = 3;  // characters that are cut off

template <typename List>
bool Holds(const List& list, const std::string& text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

}  // namespace

std::string Damaged(const std::string& text) {
    return text.size() < kDamage ? "" : text.substr(kDamage);
}

bool IsAnnouncement(Sign sign) {
    switch (sign) {
        case Sign::Opening:
        case Sign::EventFault:
        case Sign::FileDone:
        case Sign::FilesLeft:
        case Sign::FileFault:
        case Sign::TransportFault:
        case Sign::RehashFault:
        case Sign::XferFault:
        case Sign::LastFile:
        case Sign::SendingComplete:
        case Sign::Acknowledged:
        case Sign::SendingDone:
            return true;
        default:
            return false;
    }
}

void NextRequest::Forget() {
    last_.clear();
    announced_.clear();
    isAnnounced_ = false;
    statedFile_.reset();
    statedEvents_.clear();
    left_.reset();
    fault_ = Fault::None;
    isGenuine_ = false;
    doubled_ = 0;
}

const Listed* NextRequest::TakeMessage(Document& message) {
    last_ = message.Name();
    const bool isEventList = last_ == "EVENT_LIST"sv;
    const bool isExpected =
        last_ == "EVENT"sv && !lists_.events.empty() && Event() == message.Root().attribute("reid").value();
    if (isEventList && lists_.events.empty()) {
        doneEvents_.clear();
    }
    if (last_ == "XML"sv || isExpected) {
        doneFiles_.clear();
    }
    if (isEventList || last_ == "XML"sv || isExpected) {
        lists_.Append(message.Lists());
        return message.WhatIsListed();
    }
    if (last_ == "INVALID_EVENT"sv && lists_.files.empty() && !lists_.events.empty()) {
        lists_.events.pop_front();
    }
    return nullptr;
}

Fault NextRequest::TakeStatement(const Statement& statement, const Switches& switches) {
    if (statement.sign == Sign::ReportedEvent) {  // EVENT'
        statedEvents_.push_back(Unescaped(statement.detail.substr(0, statement.detail.rfind('\''))));
    }
    if (!IsAnnouncement(statement.sign)) {
        return Fault::None;
    }
    isAnnounced_ = true;
    statedFile_.reset();
    switch (statement.sign) {
        case Sign::Opening:
            announced_ =
                statement.detail == "CONFIGURATION_UPDATE" ? "UPDATE_CONFIGURATION" : statement.detail;
            break;
        case Sign::FileDone:
            if (switches.protocol == 1) {
                RetireFile();
            }
            break;
        case Sign::FilesLeft:
            left_ = statement.Number();
            RetireFile();
            break;
        case Sign::SendingComplete:
            announced_ = "EVENT_XFER_COMPLETE";
            break;
        case Sign::SendingDone:
            announced_ = "DONE";
            break;
        case Sign::Acknowledged:
            RetireEvent();
            break;
        default:
            return TakeFault(statement);
    }
    return Fault::None;
}

/// What the harness logs when it is about to do something wrong on purpose.
Fault NextRequest::TakeFault(const Statement& statement) {
    switch (statement.sign) {
        case Sign::EventFault:
            DamageEvent();
            break;
        case Sign::FileFault:
            fault_ = DamageFile(statement.Number());
            break;
        case Sign::TransportFault:
            AskTwice();
            fault_ = Fault::Transport;
            break;
        case Sign::RehashFault:
            AskTwice();
            break;
        case Sign::LastFile:
            statedFile_ =
                Unescaped(statement.detail.substr(0, statement.detail.rfind(", ")));  // EVENT/FILE, BOOL)
            fault_ = EndsWith(statement.text, ", true)") ? Fault::Rehash : Fault::None;
            break;
        case Sign::XferFault:
            doubled_ = 2;
            return Fault::Xfer;
        default:
            return Fault::None;
    }
    return fault_;
}

void NextRequest::DamageEvent() {
    damaged_ = Damaged(Event());
    isGenuine_ = IsListed(damaged_);
    lists_.events.push_front(damaged_);
    fault_ = Fault::Event;
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
    isGenuine_ = count == 0 ? IsListed(part) : Holds(doneFiles_, part);
    return count == 0 ? Fault::FileEvent : Fault::FileName;
}

bool NextRequest::IsListed(const std::string& event) const {
    return Holds(lists_.events, event) || Holds(doneEvents_, event);
}

void NextRequest::RetireEvent() {
    if (lists_.events.empty()) {
        return;
    }
    if (Event() == damaged_) {
        damaged_.clear();
    } else {
        doneEvents_.push_back(std::move(lists_.events.front()));
    }
    lists_.events.pop_front();
}

void NextRequest::RetireFile() {
    if (!lists_.files.empty()) {
        doneFiles_.push_back(std::move(lists_.files.front().second));
        lists_.files.pop_front();
    }
}

void NextRequest::AskTwice() {
    if (!lists_.files.empty()) {
        lists_.files.push_front(lists_.files.front());
    }
}

std::string NextRequest::Name() const {
    if (!announced_.empty()) {
        return announced_;
    }
    if (last_ == "EVENT_LIST"sv || last_ == "EVENT_XFER_ACK"sv || (last_ == "INVALID_EVENT"sv && !left_)) {
        return "NEXT_EVENT";
    }
    return "GET_FILE";
}

Request NextRequest::MakeRequest(const Switches& switches) {
    Request request;
    request.name = Name();
    if (request.name == "GET_FILE"sv && !lists_.files.empty()) {
        request.reid = lists_.files.front().first;
        request.file = lists_.files.front().second;
    } else if (switches.protocol == 2 &&
               (request.name == "NEXT_EVENT"sv || request.name == "EVENT_XFER_COMPLETE"sv)) {
        request.reid = Event();
    }
    if (request.name == "GET_FILE"sv && left_ && *left_ > 1) {
        request.pause = switches.sleepSeconds * kSecond;
    }
    if (doubled_ > 0 && --doubled_ == 0) {
        fault_ = Fault::Xfer;  // only the second of the two gets a different answer
    }
    request.fault = fault_;
    request.isGenuine = isGenuine_;
    request.statedFile = statedFile_;
    request.statedEvents.swap(statedEvents_);
    request.isCertain = isAnnounced_ || last_ == "EVENT_LIST"sv || last_ == "EVENT"sv || last_ == "XML"sv ||
                        last_ == "INVALID_EVENT"sv || last_ == "TRANSPORT_EXCEPTION"sv;
    announced_.clear();
    fault_ = Fault::None;
    isGenuine_ = false;
    return request;
}

}  // namespace rig::log
