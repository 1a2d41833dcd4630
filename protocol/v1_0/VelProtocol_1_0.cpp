#include "protocol/v1_0/VelProtocol_1_0.h"

#include <tinyxml.h>

#include <cassert>

#include "protocol/Log.h"
#include "protocol/Message.h"

VelProtocolBase::e_MsgReturn VelProtocol_1_0::HandleMessage() {
    std::vector<char> message;
    GetMessage(message);
    TiXmlDocument incomingMessage;
    ParseOrReport(incomingMessage, message.data());
    assert(not incomingMessage.Error());

    const char* const attribute = MsgReq(incomingMessage);
    if (attribute == nullptr) {
        VEL_LOG(1) << "INVALID XML RECEIVED";
        return MSG_CONTINUE;
    }
    const std::string req = attribute;
    if (req == "OK") {
        Handle_OK();
    } else if (req == "XML") {
        Handle_XML_msg(incomingMessage);
        if (not filesToReceive.empty()) {
            SendFileRequest(filesToReceive.front());
        }
    } else if (req == "FILE_COMPLETE") {
        return Handle_FILE_COMPLETE(incomingMessage);
    } else if (req == "CONFIGURATION_UPDATE_ERROR") {
        if (configUpdate) {
            VEL_LOG(16) << "Got " << req;
        } else {
            VEL_LOG(2) << "Unexpected " << req;
        }
    } else {
        VEL_LOG(1) << "UNSUPPORTED MSG RECEIVED: " << req;
    }
    return MSG_CONTINUE;
}

void VelProtocol_1_0::Handle_OK() {
    if (configUpdate) {
        // The log's own name for UPDATE_CONFIGURATION; rigs search for it.
        VEL_LOG(1) << "got an OK, sending CONFIGURATION_UPDATE";
        SendConfigUpdateRequest();
        return;
    }
    VEL_LOG(1) << "got an OK, sending GET_XML";
    TiXmlDocument request;
    AddMsg(request, "GET_XML");
    SendMessage(request);
}

void VelProtocol_1_0::SendConfigUpdateRequest() {
    TiXmlDocument request;
    TiXmlElement* const msg = AddMsg(request, "UPDATE_CONFIGURATION");
    msg->SetAttribute("txt", PrintFakeConfig("This is a bogus config used for protocol 1.0 testing"));
    SendMessage(request);
}

void VelProtocol_1_0::Handle_XML_msg(TiXmlDocument& document) {
    const TiXmlNode* node =
        TiXmlHandle(&document).FirstChild("msg").FirstChild("xmlFile").FirstChild("string").ToElement();
    while (node) {
        const char* const text = node->ToElement() ? node->ToElement()->GetText() : nullptr;
        if (text == nullptr) {
            node = node->NextSibling();
            continue;
        }
        TiXmlDocument embmsg;
        ParseOrReport(embmsg, text);
        assert(not embmsg.Error());

        const TiXmlHandle recordingEvent = TiXmlHandle(&embmsg).FirstChild("recording-event");
        if (recordingEvent.ToElement()) {
            const char* const reid = recordingEvent.ToElement()->Attribute("reid");
            if (reid == nullptr) {
                // The same node again, for ever: a rig notices a DVR without identifiers by a harness that
                // hangs.
                VEL_LOG(2) << "Found event with no REID";
                continue;
            }
            events.emplace_back(reid);
            VEL_LOG(32) << "Found event " << reid;
            QueueEventFiles(recordingEvent, reid, filesToReceive);
        }
        node = node->NextSibling();
    }
}

void VelProtocol_1_0::SendFileRequest(FileEntry& file) {
    TiXmlDocument request;
    TiXmlElement* const msg = AddMsg(request, "GET_FILE");
    // The path carries the event identifier, not a folder: a 1.0 DVR finds the file by it.
    msg->SetAttribute("path", file.first);
    msg->SetAttribute("file", file.second);
    SendMessage(request);
}

VelProtocolBase::e_MsgReturn VelProtocol_1_0::Handle_FILE_COMPLETE(TiXmlDocument& document) {
    const char* const reid = MsgAttribute(document, "reid");
    const char* const file = MsgAttribute(document, "file");
    if (reid == nullptr or file == nullptr) {
        VEL_LOG(2) << "Got FILE_COMPLETE without both reid and file";
        return MSG_CONTINUE;
    }
    if (filesToReceive.empty() or filesToReceive.front() not_eq FileEntry(reid, file)) {
        VEL_LOG(1) << "invalid file in FILE_COMPLETE: " << document;
        return MSG_CONTINUE;
    }
    filesToReceive.pop_front();
    VEL_LOG(64) << "Got FILE_COMPLETE for: reid=" << reid << "  file=" << file;
    if (not filesToReceive.empty()) {
        SendFileRequest(filesToReceive.front());
        return MSG_CONTINUE;
    }

    SendEventXferComplete();
    VEL_LOG(16) << "Sending DONE";
    TiXmlDocument done;
    AddMsg(done, "DONE");
    SendMessage(done);
    return MSG_CLOSE_CLIENT;
}

void VelProtocol_1_0::SendEventXferComplete() {
    VEL_LOG(16) << "Sending EVENT_XFER_COMPLETE";
    TiXmlDocument report;
    auto* const list = new TiXmlElement("events");
    AddMsg(report, "EVENT_XFER_COMPLETE")->LinkEndChild(list);
    for (const std::string& event : events) {
        VEL_LOG(16) << "HandleMessage: event = '" << event << "'";
        auto* const item = new TiXmlElement("string");
        list->LinkEndChild(item);
        item->LinkEndChild(new TiXmlText(event));
    }
    report.SaveFile(kOutgoingEventXferComplete);
    SendMessage(report);
}
