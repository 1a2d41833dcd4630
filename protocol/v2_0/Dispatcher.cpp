#include <tinyxml.h>

#include <cassert>

#include "protocol/Log.h"
#include "protocol/Message.h"
#include "protocol/v2_0/VelProtocol_2_0.h"

VelProtocolBase::e_MsgReturn VelProtocol_2_0::HandleMessage() {
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
    } else if (req == "EVENT_LIST") {
        Handle_EVENT_LIST(incomingMessage);
        SendFirstNextEvent();
    } else if (req == "EVENT") {
        Handle_EVENT_msg(incomingMessage);
        if (filesToReceive.empty()) {
            VEL_LOG(4) << "Got EVENT message with no files to receive";
        } else {
            SendFileRequest(filesToReceive.front(), false);
        }
    } else if (req == "FILE_COMPLETE") {
        Handle_FILE_COMPLETE(incomingMessage);
    } else if (req == "EVENT_XFER_ACK") {
        return Handle_EVENT_XFER_ACK(incomingMessage);
    } else if (req == "INVALID_EVENT") {
        Handle_INVALID_EVENT(incomingMessage);
    } else if (req == "TRANSPORT_EXCEPTION") {
        Handle_TRANSPORT_EXCEPTION(incomingMessage);
    } else if (req == "XFER_IN_PROGRESS") {
        Handle_XFER_IN_PROGRESS(incomingMessage);
    } else if (req == "SOFTWARE_UPDATE_CONFIRM" or req == "CONFIGURATION_UPDATE_ERROR") {
        if (req == "SOFTWARE_UPDATE_CONFIRM" ? upgrade : configUpdate) {
            VEL_LOG(16) << "Got " << req;
        } else {
            VEL_LOG(2) << "Unexpected " << req;
        }
    } else {
        VEL_LOG(1) << "UNSUPPORTED MSG RECEIVED: " << req;
    }
    return MSG_CONTINUE;
}

void VelProtocol_2_0::Handle_OK() {
    if (upgrade) {
        VEL_LOG(1) << "got an OK, sending UPDATE_SOFTWARE";
        TiXmlDocument update;
        TiXmlElement* const msg = AddMsg(update, "UPDATE_SOFTWARE");
        msg->SetAttribute("path", "/mnt/hd/connectionmgr");
        msg->SetAttribute("file", "upgrade.zip");
        msg->SetAttribute("protocolVersion", "2.0");
        SendMessage(update);
    }
    if (configUpdate) {
        // The log's own name for UPDATE_CONFIGURATION; rigs search for it.
        VEL_LOG(1) << "got an OK, sending CONFIGURATION_UPDATE";
        SendConfigUpdateRequest();
        return;
    }
    VEL_LOG(1) << "got an OK, sending GET_EVENT_LIST";
    TiXmlDocument request;
    AddMsg(request, "GET_EVENT_LIST")->SetAttribute("protocolVersion", "2.0");
    SendMessage(request);
}

void VelProtocol_2_0::SendConfigUpdateRequest() {
    TiXmlDocument request;
    TiXmlElement* const msg = AddMsg(request, "UPDATE_CONFIGURATION");
    msg->SetAttribute("protocolVersion", "2.0");
    msg->SetAttribute("message", PrintFakeConfig("This is a bogus config used for protocol 2.0 testing"));
    SendMessage(request);
}

void VelProtocol_2_0::SendFirstNextEvent() {
    if (events.empty()) {
        VEL_LOG(4) << "Got EVENT_LIST message with no events";
        return;
    }
    if (invalidEvent) {
        VEL_LOG(32) << "processing 'invalidEvent' option [event]";
        // The true identifier stays second, for when the DVR has refused the damaged one.
        events.push_front(events.front());
        events.front().erase(0, 3);
    }
    SendNextEvent(events.front());
}
