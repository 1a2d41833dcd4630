#include "rig/dvr/dialogue/Dialogue_1_0.h"

#include <fmt/format.h>

#include <algorithm>

#include "rig/base/Counted.h"
#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"

namespace rig::dvr {
namespace {

Dialogue::FileId FileOf(const Message& request) {
    return {request.Get("path"), request.Get("file")};  // `path` carries the event
}

/// White space around a text is up to whoever writes it.
std::string Trimmed(const std::string& text) {
    const std::size_t start = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    return text.substr(start, text.find_last_not_of(" \t\r\n") + 1 - start);
}

}  // namespace

Dialogue_1_0::Dialogue_1_0(const Recordings& recordings) : Dialogue(recordings, 1) {}

std::vector<std::string> Dialogue_1_0::AllowedMessages() const {
    if (done_ || IsTransferring()) {
        return {};
    }
    switch (phase_) {
        case Phase::Opening:
            return {"GET_XML", "UPDATE_CONFIGURATION"};
        case Phase::Exporting:
            if (outstanding_.empty()) {
                return {"EVENT_XFER_COMPLETE"};
            }
            return {"GET_FILE"};
        case Phase::Completed:
            break;
    }
    return {"DONE"};
}

std::string Dialogue_1_0::Situation() const {
    if (IsTransferring()) {
        return TransferSituation();
    }
    switch (phase_) {
        case Phase::Opening:
            return "in answer to OK";
        case Phase::Exporting:
            return FilesLeft(outstanding_.size());
        case Phase::Completed:
            break;
    }
    return "after EVENT_XFER_COMPLETE";
}

std::vector<Message> Dialogue_1_0::React(const Message& message) {
    std::vector<Message> answers;
    if (message.Name() == "GET_XML") {
        answers.push_back(DescribeAll());
    } else if (message.Name() == "UPDATE_CONFIGURATION") {
        answers.push_back(RefuseConfiguration(message, "txt"));
    } else if (message.Name() == "GET_FILE") {
        StartFile(message);
    } else if (message.Name() == "EVENT_XFER_COMPLETE") {
        Complete(message);
    } else if (message.Name() == "DONE") {
        End(std::chrono::minutes(0));
    }
    return answers;
}

/// The dialect has no report for a file. One that was transferred already is transferred again.
std::vector<Message> Dialogue_1_0::Refuse(const Message& message) {
    if (message.Name() != "GET_FILE") {
        return Dialogue::Refuse(message);
    }
    if (phase_ == Phase::Exporting && !IsTransferring()) {
        StartFile(message);
    } else {
        Remark("GET_FILE for " + FileName(FileOf(message)) + " " + Situation());
    }
    return {};
}

Message Dialogue_1_0::DescribeAll() {
    Message descriptions = NewMessage("XML");
    pugi::xml_node container = descriptions.Root().append_child("xmlFile");
    for (const std::string& id : recordings_.Events()) {
        const Event event = recordings_.Find(id);
        container.append_child("string").text().set(event.Describe().c_str());
        for (const std::string& file : event.Files()) {
            outstanding_.emplace(id, file);
        }
    }
    phase_ = Phase::Exporting;
    return descriptions;
}

void Dialogue_1_0::StartFile(const Message& request) {
    const FileId file = FileOf(request);
    if (outstanding_.count(file) == 0) {
        const std::string found =
            "GET_FILE for " + FileName(file) + ", which is not a file that is still to be transferred";
        if (distrusts_) {
            Remark(found);
        } else {
            Object(found);
        }
        if (!Exists(file)) {
            return;  // this dialect has no message for it
        }
    }
    StartTransfer(file, false);
}

bool Dialogue_1_0::Exists(const FileId& file) const {
    if (!recordings_.Has(file.first)) {
        return false;
    }
    const std::vector<std::string> files = recordings_.Find(file.first).Files();
    return std::find(files.begin(), files.end(), file.second) != files.end();
}

/// The list may start with events of earlier exports to the same harness: it never forgets them.
void Dialogue_1_0::Complete(const Message& list) {
    std::vector<std::string> listed;
    for (const pugi::xml_node entry : list.Root().child("events").children("string")) {
        listed.push_back(distrusts_ ? Trimmed(TextOf(entry)) : TextOf(entry));
    }
    std::vector<std::string> events = recordings_.Events();
    if (distrusts_) {
        std::transform(events.begin(), events.end(), events.begin(), Trimmed);
    }
    if (listed.size() < events.size() || !std::equal(events.rbegin(), events.rend(), listed.rbegin())) {
        Object(
            fmt::format("EVENT_XFER_COMPLETE with a list of {} that does not end with the {} of this export",
                        Counted(listed.size(), "event"), events.size()));
    }
    tally_.events = events.size();
    phase_ = Phase::Completed;
}

}  // namespace rig::dvr
