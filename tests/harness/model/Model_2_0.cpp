#include "tests/harness/model/Dialects.h"

namespace model {
namespace {

constexpr std::size_t kDamage = 3;

/// Kept for the whole process, as the harness does.
std::string& LastHash() {
    static std::string hash;
    return hash;
}

std::string Damaged(const std::string& text) {
    return text.size() < kDamage ? "" : text.substr(kDamage);
}

std::string Quoted(const std::string& text) {
    return "'" + text + "'";
}

}  // namespace

void Model_2_0::Handle(const std::string& req, const Element& message) {
    using Handler = void (Model_2_0::*)(const Element&);
    static const std::vector<std::pair<std::string, Handler>> kHandlers = {
        {"EVENT_LIST", &Model_2_0::TakeEventList},
        {"EVENT", &Model_2_0::TakeEvent},
        {"FILE_COMPLETE", &Model_2_0::TakeFileComplete},
        {"EVENT_XFER_ACK", &Model_2_0::TakeAcknowledgement},
        {"INVALID_EVENT", &Model_2_0::TakeInvalidEvent},
        {"TRANSPORT_EXCEPTION", &Model_2_0::TakeTransportException},
        {"XFER_IN_PROGRESS", &Model_2_0::TakeXferInProgress}};
    for (const auto& [name, handler] : kHandlers) {
        if (req == name) {
            return (this->*handler)(message);
        }
    }
    if (req == "OK") {
        TakeOk();
    } else if (req == "SOFTWARE_UPDATE_CONFIRM") {
        LogAnswer(options_.upgrade, req);
    } else if (req == "CONFIGURATION_UPDATE_ERROR") {
        LogAnswer(options_.configUpdate, req);
    } else {
        Log(1, "UNSUPPORTED MSG RECEIVED: " + req);
    }
}

void Model_2_0::SendInDialect(const std::string& req,
                              std::vector<std::pair<std::string, std::string>> attributes) {
    attributes.emplace_back("protocolVersion", "2.0");
    Send(req, std::move(attributes));
}

void Model_2_0::TakeOk() {
    if (options_.upgrade) {
        Log(1, "got an OK, sending UPDATE_SOFTWARE");
        SendInDialect("UPDATE_SOFTWARE", {{"path", "/mnt/hd/connectionmgr"}, {"file", "upgrade.zip"}});
    }
    if (options_.configUpdate) {
        Log(1, "got an OK, sending CONFIGURATION_UPDATE");
        Send("UPDATE_CONFIGURATION",
             {{"protocolVersion", "2.0"},
              {"message", R"(<FakeConfig info="This is a bogus config used for protocol 2.0 testing" />)"}});
    } else {
        Log(1, "got an OK, sending GET_EVENT_LIST");
        SendInDialect("GET_EVENT_LIST", {});
    }
}

void Model_2_0::TakeEventList(const Element& message) {
    const auto source = message.Attribute("source");
    if (source) {
        Log(16, "'source' attribute = " + Quoted(*source));
    } else {
        Log(2, "'source' attribute missing from EVENT_LIST message");
    }
    const Element* const list = message.Child("events");
    if (list == nullptr || list->Child("event") == nullptr) {
        Log(2, "could not find 'event' tag in EVENT_LIST message");
    } else {
        bool isAfterFirst = false;
        for (const Element& item : list->children) {
            isAfterFirst = isAfterFirst || item.name == "event";
            if (isAfterFirst && item.text) {
                events_.push_back(*item.text);
            } else if (isAfterFirst) {
                Log(2, "'event' found with no text");
            }
        }
    }
    if (events_.empty()) {
        return Log(4, "Got EVENT_LIST message with no events");
    }
    if (options_.invalidEvent) {
        Log(32, "processing 'invalidEvent' option [event]");
        events_.push_front(Damaged(events_.front()));
    }
    RequestNextEvent();
}

void Model_2_0::RequestNextEvent() {
    SendInDialect("NEXT_EVENT", {{"reid", events_.front()}});
}

void Model_2_0::TakeEvent(const Element& message) {
    const auto reid = message.Attribute("reid");
    if (reid) {
        Log(16, "'reid' attribute in EVENT msg = " + Quoted(*reid));
    }
    if (events_.empty() || reid.value_or("") != events_.front()) {
        Log(2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp=" + Quoted(FrontEvent()) +
                   "  act=" + Quoted(reid.value_or("")));
    } else {
        TakeDescription(message, reid.value_or(""));
    }
    if (files_.empty()) {
        Log(4, "Got EVENT message with no files to receive");
    } else {
        RequestFile(false);
    }
}

void Model_2_0::TakeDescription(const Element& message, const std::string& reid) {
    const Element* const xmlFile = message.Child("xmlFile");
    if (xmlFile == nullptr) {
        return Log(2, "EVENT message does not contain 'xmlFile' tag");
    }
    if (!xmlFile->text) {
        return Log(2, "EVENT message 'xmlFile' tag does not contain data");
    }
    const Element& event = *Description(*xmlFile->text);
    if (event.name != "recording-event") {
        return;
    }
    const auto described = event.Attribute("reid");
    if (!described) {
        Log(2, "Escaped XML for event contains no REID");
    } else {
        Do(Saved("/mnt/hd/incoming_" + *described, Indented(event)));
        if (*described != reid) {
            Log(2, "Handle_EVENT_msg: 'reid' in escaped XML incorrect: exp=" + Quoted(reid) +
                       "  act=" + Quoted(*described));
        }
    }
    QueueFiles(reid, event);
}

void Model_2_0::RequestFile(bool rehash) {
    const auto& [reid, file] = files_.front();
    std::vector<std::pair<std::string, std::string>> attributes = {
        {"reid", reid}, {"path", reid}, {"file", file}, {"protocolVersion", "2.0"}};
    if (rehash) {
        attributes.emplace_back("rehash", "true");
    }
    Send("GET_FILE", attributes);
}

/// The DVR has reported on the front file.
void Model_2_0::GoOn() {
    if (!files_.empty()) {
        files_.pop_front();
    }
    Log(32, "filesToReceive size = " + std::to_string(files_.size()));
    if (files_.size() == 1) {
        RequestLastFile();
    } else if (files_.empty()) {
        Log(16, "Sending EVENT_XFER_COMPLETE");
        SendAndSave({"msg",
                     {{"req", "EVENT_XFER_COMPLETE"}, {"reid", FrontEvent()}, {"protocolVersion", "2.0"}},
                     std::nullopt,
                     {}});
    } else {
        RequestFile(false);
        Do(Slept(static_cast<unsigned int>(options_.sleepForGetFile)));
    }
}

void Model_2_0::RequestLastFile() {
    if (options_.invalidFile) {
        RequestDamagedFile();
    } else if (options_.transportException) {
        Log(32, "processing 'transportException' option");
        files_.push_front(files_.front());
        Do(Ran("touch /mnt/hd/velloranFail"));
        RequestFile(false);
    } else if (options_.rehash) {
        Log(32, "processing 'rehash' option");
        files_.push_front(files_.front());
        options_.rehash = false;
        isRehashDue_ = true;
        RequestFile(false);
    } else if (options_.xferInProgress) {
        Log(32, "processing 'xferInProgress' option");
        RequestFile(false);
        RequestFile(false);
        options_.xferInProgress = false;
    } else {
        Log(32, "calling SendFileRequest(" + files_.front().first + "/" + files_.front().second + ", " +
                    (isRehashDue_ ? "true" : "false") + ")");
        RequestFile(isRehashDue_);
    }
}

void Model_2_0::RequestDamagedFile() {
    Log(32, "processing 'invalidFile' option, cnt=" + std::to_string(refusedFiles_));
    if (refusedFiles_ > 1) {
        return;
    }
    files_.push_front(files_.front());
    std::string& damaged = refusedFiles_ == 0 ? files_.front().first : files_.front().second;
    damaged = Damaged(damaged);
    RequestFile(false);
    options_.invalidFile = refusedFiles_ == 0;
}

void Model_2_0::TakeFileComplete(const Element& message) {
    const auto reid = message.Attribute("reid");
    const auto file = message.Attribute("file");
    if (!reid || !file) {
        return Log(2, "Got FILE_COMPLETE without both reid and file");
    }
    if (isRehashDue_ && files_.size() == 1) {
        CompareHash(message);
        isRehashDue_ = false;
    }
    LastHash() = message.Attribute("hashCode").value_or(LastHash());
    if (files_.empty() || files_.front() != std::make_pair(*reid, *file)) {
        return Log(1, "invalid file in FILE_COMPLETE: " + Compact(message));
    }
    Log(64, "Got FILE_COMPLETE for: reid=" + *reid + "  file=" + *file);
    GoOn();
}

void Model_2_0::CompareHash(const Element& message) {
    const auto hash = message.Attribute("hashCode");
    const auto length = message.Attribute("length");
    if (!length) {
        Log(2, "'length' attribute not present when requested");
    }
    if (!hash) {
        Log(2, "'hashCode' attribute not present when requested");
    } else if (*hash == LastHash()) {
        Log(16, "rehash resulted in same hash: " + Quoted(*hash) + "  len=" + length.value_or(""));
    } else {
        Log(16, "rehash resulted in new hash: old=" + Quoted(LastHash()) + "  new=" + Quoted(*hash) +
                    "  len=" + length.value_or(""));
    }
}

void Model_2_0::TakeAcknowledgement(const Element& message) {
    const auto reid = message.Attribute("reid");
    if (!reid) {
        return Log(2, "Got EVENT_XFER_ACK with no reid attribute");
    }
    if (events_.empty() || events_.front() != *reid) {
        return Log(2, "In EVENT_XFER_ACK, got unexpected reid: exp=" + Quoted(FrontEvent()) +
                          "  act=" + Quoted(*reid));
    }
    events_.pop_front();
    Log(32, "Got EVENT_XFER_ACK for: reid=" + Quoted(*reid));
    if (!events_.empty() && options_.closeEarly != 1) {
        RequestNextEvent();
        options_.closeEarly -= options_.closeEarly > 1 || options_.closeEarly < 0 ? 1 : 0;
        return;
    }
    Log(16, "Sending DONE");
    if (options_.doneDuration == 0) {
        SendInDialect("DONE", {});
    } else {
        Send("DONE", {{"protocolVersion", "2.0"}, {"duration", std::to_string(options_.doneDuration)}});
    }
    if (options_.closeEarly == 1) {
        Close();
    }
}

void Model_2_0::TakeInvalidEvent(const Element& message) {
    const auto reid = message.Attribute("reid");
    if (!reid) {
        Log(2, "'reid' attribute missing from INVALID_EVENT message");
    } else {
        Log(16, "INVALID_EVENT 'reid' attribute = " + Quoted(*reid));
        if (*reid != FrontEvent()) {
            Log(2, "'reid' attribute does not match expected: " + Quoted(FrontEvent()));
        }
    }
    if (!files_.empty()) {
        if (!options_.invalidFile) {
            Log(2, "Received unexpected INVALID_EVENT message!");
        }
        ++refusedFiles_;
        return GoOn();
    }
    options_.invalidEvent = false;
    if (!events_.empty()) {
        events_.pop_front();
    }
    if (!events_.empty()) {
        RequestNextEvent();
    }
}

void Model_2_0::TakeTransportException(const Element& message) {
    const auto reid = message.Attribute("reid");
    const std::string missing = "'reid' attribute missing from TRANSPORT_EXCEPTION message";
    const std::string expected = files_.empty() ? "" : files_.front().first;
    if (!reid) {
        Log(2, missing);
    } else {
        Log(16, "TRANSPORT_EXCEPTION 'reid' attribute = " + Quoted(*reid));
        if (*reid != expected) {
            Log(2, missing);
            Log(2, "'reid' attribute does not match expected: " + Quoted(expected));
        }
    }
    options_.transportException = false;
    Do(Ran("rm /mnt/hd/velloranFail"));
    GoOn();
}

void Model_2_0::TakeXferInProgress(const Element& message) {
    const auto reid = message.Attribute("reid");
    if (reid) {
        Log(16, "XFER_IN_PROGRESS 'reid' attribute = " + Quoted(*reid));
    } else {
        Log(2, "'reid' attribute missing from XFER_IN_PROGRESS message");
    }
}

std::unique_ptr<Model> NewModel(const TestOptions& options) {
    if (options.protocol == 2) {
        return std::make_unique<Model_2_0>(options);
    }
    return std::make_unique<Model_1_0>(options);
}

}  // namespace model
