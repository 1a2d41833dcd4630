#include "rig/dvr/dialogue/Dialogue_2_0.h"

#include <fmt/format.h>

#include "rig/base/ParseNumber.h"
#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"

namespace rig::dvr {
namespace {

constexpr int kLongestAbsence = 7 * 24 * 60;  // in minutes, that a recorder accepts of any backend

/// @return what is wrong with the values of a GET_FILE; empty if nothing is
std::string FaultIn(const Message& request) {
    if (request.Get("path") != request.Get("reid")) {
        return fmt::format("GET_FILE with path {} but reid {}", Quoted(request.Get("path")),
                           Quoted(request.Get("reid")));
    }
    const auto rehash = request.Find("rehash");
    return rehash && *rehash != "true" ? "GET_FILE with rehash " + Quoted(*rehash) + " instead of 'true'"
                                       : "";
}

}  // namespace

Dialogue_2_0::Dialogue_2_0(const Recordings& recordings, const std::filesystem::path& failureMarker)
    : Dialogue(recordings, 2), failureMarker_(failureMarker) {}

std::vector<std::string> Dialogue_2_0::AllowedMessages() const {
    if (done_) {
        return {};
    }
    if (IsTransferring()) {
        return {"GET_FILE"};
    }
    switch (phase_) {
        case Phase::Opening:
            return {"UPDATE_SOFTWARE", "UPDATE_CONFIGURATION", "GET_EVENT_LIST"};
        case Phase::UpdatingSoftware:
            return {"UPDATE_CONFIGURATION", "GET_EVENT_LIST"};
        case Phase::BetweenEvents:
            if (acknowledged_.empty()) {
                return {"NEXT_EVENT"};
            }
            return {"NEXT_EVENT", "DONE"};
        case Phase::Exporting:
            break;
    }
    if (outstanding_.empty()) {
        return {"GET_FILE", "EVENT_XFER_COMPLETE"};
    }
    return {"GET_FILE"};
}

std::string Dialogue_2_0::Situation() const {
    if (IsTransferring()) {
        return TransferSituation();
    }
    switch (phase_) {
        case Phase::Opening:
            return "in answer to OK";
        case Phase::UpdatingSoftware:
            return "after UPDATE_SOFTWARE";
        case Phase::BetweenEvents:
            return "with no event in progress";
        case Phase::Exporting:
            break;
    }
    return FilesLeft(outstanding_.size()) + " from " + Quoted(event_.id);
}

std::vector<Message> Dialogue_2_0::React(const Message& message) {
    std::vector<Message> answers;
    if (message.Name() == "GET_FILE") {
        return RequestFile(message);
    }
    if (message.Name() == "UPDATE_SOFTWARE") {
        phase_ = Phase::UpdatingSoftware;
        answers.push_back(NewMessage("SOFTWARE_UPDATE_CONFIRM"));
    } else if (message.Name() == "UPDATE_CONFIGURATION") {
        answers.push_back(RefuseConfiguration(message, "message"));
    } else if (message.Name() == "GET_EVENT_LIST") {
        answers.push_back(ListEvents());
    } else if (message.Name() == "NEXT_EVENT") {
        answers.push_back(DescribeEvent(message.Get("reid")));
    } else if (message.Name() == "EVENT_XFER_COMPLETE") {
        answers.push_back(AcknowledgeEvent(message.Get("reid")));
    } else if (message.Name() == "DONE") {
        HandleDone(message);
    }
    return answers;
}

std::vector<Message> Dialogue_2_0::Refuse(const Message& message) {
    std::vector<Message> answers;
    if (message.Name() == "GET_FILE") {
        answers.push_back(ReportFile("INVALID_EVENT", {message.Get("reid"), message.Get("file")}));
    } else if (message.Name() == "NEXT_EVENT") {
        answers.push_back(RefuseEvent(message.Get("reid")));
    } else {
        return Dialogue::Refuse(message);
    }
    return answers;
}

Message Dialogue_2_0::ListEvents() {
    Message list = NewMessage("EVENT_LIST");
    list.Set("source", "velloran-rig");
    pugi::xml_node container = list.Root().append_child("events");
    for (const std::string& id : recordings_.Events()) {
        container.append_child("event").text().set(id.c_str());
    }
    phase_ = Phase::BetweenEvents;
    return list;
}

Message Dialogue_2_0::DescribeEvent(const std::string& reid) {
    if (!recordings_.Has(reid)) {
        return RefuseEvent(reid);
    }
    event_ = recordings_.Find(reid);
    files_.clear();
    for (const std::string& file : event_.Files()) {
        files_.insert(file);
        outstanding_.emplace(reid, file);
    }
    phase_ = Phase::Exporting;
    Message description = NewMessage("EVENT");
    description.Set("reid", reid);
    description.Root().append_child("xmlFile").text().set(event_.Describe().c_str());
    return description;
}

Message Dialogue_2_0::RefuseEvent(const std::string& reid) const {
    return std::move(NewMessage("INVALID_EVENT").Set("reid", reid));
}

std::vector<Message> Dialogue_2_0::RequestFile(const Message& request) {
    const FileId file(request.Get("reid"), request.Get("file"));
    const std::string fault = FaultIn(request);
    if (!fault.empty() && distrusts_) {
        return Refuse(request);
    }
    if (!fault.empty()) {
        throw Breach(fault);
    }
    if (transfer_ && *transfer_ != file && !distrusts_) {
        Object("GET_FILE for " + FileName(file) + " " + TransferSituation());
        transfer_.reset();
    }
    std::vector<Message> answers;
    if (transfer_ && (*transfer_ == file || IsFileInProgress(file))) {
        answers.push_back(ReportFile("XFER_IN_PROGRESS", file));
    } else if (!IsFileInProgress(file)) {
        answers.push_back(ReportFile("INVALID_EVENT", file));
    } else if (IsFailureWanted()) {
        answers.push_back(ReportFile("TRANSPORT_EXCEPTION", file));
    } else {
        StartTransfer(file, request.Find("rehash").has_value());
    }
    return answers;
}

std::optional<Message> Dialogue_2_0::ReportProgress() const {
    return ReportFile("XFER_IN_PROGRESS", *InTransfer());
}

/// Echoes what was asked for, even if that is damaged.
Message Dialogue_2_0::ReportFile(const char* name, const FileId& file) const {
    return std::move(NewMessage(name).Set("reid", file.first).Set("file", file.second));
}

/// Only files of the event in progress: one of another event is refused.
bool Dialogue_2_0::IsFileInProgress(const FileId& file) const {
    return file.first == event_.id && files_.count(file.second) == 1;
}

bool Dialogue_2_0::IsFailureWanted() const {
    std::error_code ignored;  // what cannot be looked at does not exist
    return std::filesystem::exists(failureMarker_, ignored);
}

Message Dialogue_2_0::AcknowledgeEvent(const std::string& reid) {
    if (reid != event_.id) {
        Object("EVENT_XFER_COMPLETE for " + Quoted(reid) + " while " + Quoted(event_.id) + " is in progress");
    }
    acknowledged_.insert(reid);
    tally_.events = acknowledged_.size();
    phase_ = Phase::BetweenEvents;
    return std::move(NewMessage("EVENT_XFER_ACK").Set("reid", reid));
}

void Dialogue_2_0::HandleDone(const Message& done) {
    const auto duration = done.Find("duration");
    const int minutes = ParseNumber<int>(duration.value_or("0")).value_or(0);
    if (duration && minutes < 1) {
        throw Breach("DONE with duration " + Quoted(*duration) + " instead of a number of minutes above 0");
    }
    if (distrusts_ && minutes > kLongestAbsence) {
        throw Breach(fmt::format("DONE with a duration of {} minutes (at most {} are accepted)", minutes,
                                 kLongestAbsence));
    }
    End(std::chrono::minutes(minutes));
}

}  // namespace rig::dvr
