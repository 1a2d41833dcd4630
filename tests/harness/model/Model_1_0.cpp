#include "tests/harness/model/Dialects.h"

namespace model {

void Model_1_0::Handle(const std::string& req, const Element& message) {
    if (req == "OK" && options_.configUpdate) {
        Log(1, "got an OK, sending CONFIGURATION_UPDATE");
        Send("UPDATE_CONFIGURATION",
             {{"txt", R"(<FakeConfig info="This is a bogus config used for protocol 1.0 testing" />)"}});
    } else if (req == "OK") {
        Log(1, "got an OK, sending GET_XML");
        Send("GET_XML");
    } else if (req == "XML") {
        TakeXml(message);
        if (!files_.empty()) {
            RequestFile();
        }
    } else if (req == "FILE_COMPLETE") {
        TakeFileComplete(message);
    } else if (req == "CONFIGURATION_UPDATE_ERROR") {
        LogAnswer(options_.configUpdate, req);
    } else {
        Log(1, "UNSUPPORTED MSG RECEIVED: " + req);
    }
}

void Model_1_0::TakeXml(const Element& message) {
    const Element* const xmlFile = message.Child("xmlFile");
    bool isAfterFirst = false;
    for (const Element& item : xmlFile ? xmlFile->children : std::vector<Element>()) {
        isAfterFirst = isAfterFirst || item.name == "string";
        const Element* const event = isAfterFirst && item.text ? Description(*item.text) : nullptr;
        if (event == nullptr || event->name != "recording-event") {
            continue;
        }
        const std::string reid = *event->Attribute("reid");
        events_.push_back(reid);
        Log(32, "Found event " + reid);
        QueueFiles(reid, *event);
    }
}

void Model_1_0::RequestFile() {
    Send("GET_FILE", {{"path", files_.front().first}, {"file", files_.front().second}});
}

void Model_1_0::TakeFileComplete(const Element& message) {
    const auto reid = message.Attribute("reid");
    const auto file = message.Attribute("file");
    if (!reid || !file) {
        return Log(2, "Got FILE_COMPLETE without both reid and file");
    }
    if (files_.empty() || files_.front() != std::make_pair(*reid, *file)) {
        return Log(1, "invalid file in FILE_COMPLETE: " + Compact(message));
    }
    files_.pop_front();
    Log(64, "Got FILE_COMPLETE for: reid=" + *reid + "  file=" + *file);
    if (!files_.empty()) {
        return RequestFile();
    }
    Log(16, "Sending EVENT_XFER_COMPLETE");
    Element list{"events", {}, std::nullopt, {}};
    for (const std::string& event : events_) {
        Log(16, "HandleMessage: event = '" + event + "'");
        list.children.push_back({"string", {}, event, {}});
    }
    SendAndSave({"msg", {{"req", "EVENT_XFER_COMPLETE"}}, std::nullopt, {list}});
    Log(16, "Sending DONE");
    Send("DONE");
    Close();
}

}  // namespace model
