#include <tinyxml.h>

#include <cassert>

#include "protocol/Log.h"
#include "protocol/Message.h"
#include "protocol/v2_0/VelProtocol_2_0.h"

void VelProtocol_2_0::Handle_EVENT_LIST(TiXmlDocument& document) {
    const char* const source = MsgAttribute(document, "source");
    if (source == nullptr) {
        VEL_LOG(2) << "'source' attribute missing from EVENT_LIST message";
    } else {
        VEL_LOG(16) << "'source' attribute = '" << source << "'";
    }

    const TiXmlNode* node =
        TiXmlHandle(&document).FirstChild("msg").FirstChild("events").FirstChild("event").ToElement();
    if (node == nullptr) {
        VEL_LOG(2) << "could not find 'event' tag in EVENT_LIST message";
    }
    // Every sibling counts as an event, whatever its name; rigs slip in identifiers that way.
    for (; node; node = node->NextSibling()) {
        const char* const text = node->ToElement() ? node->ToElement()->GetText() : nullptr;
        if (text == nullptr) {
            VEL_LOG(2) << "'event' found with no text";
        } else {
            events.emplace_back(text);
        }
    }
}

void VelProtocol_2_0::SendNextEvent(const std::string& reid) {
    TiXmlDocument request;
    TiXmlElement* const msg = AddMsg(request, "NEXT_EVENT");
    msg->SetAttribute("reid", reid);
    msg->SetAttribute("protocolVersion", "2.0");
    eventRequestPending = true;
    SendMessage(request);
}

void VelProtocol_2_0::Handle_EVENT_msg(TiXmlDocument& document) {
    eventRequestPending = false;
    const char* const attribute = MsgAttribute(document, "reid");
    const std::string reid = attribute ? attribute : "";
    if (attribute) {
        VEL_LOG(16) << "'reid' attribute in EVENT msg = '" << reid << "'";
    }
    if (events.empty() or reid not_eq events.front()) {
        VEL_LOG(2) << "Handle_EVENT_msg: 'reid' attribute incorrect: exp='" << FrontEvent() << "'  act='"
                   << reid << "'";
        return;
    }
    const TiXmlElement* const xmlFile =
        TiXmlHandle(&document).FirstChild("msg").FirstChild("xmlFile").ToElement();
    if (xmlFile == nullptr) {
        VEL_LOG(2) << "EVENT message does not contain 'xmlFile' tag";
        return;
    }
    const char* const text = xmlFile->GetText();
    if (text == nullptr) {
        VEL_LOG(2) << "EVENT message 'xmlFile' tag does not contain data";
        return;
    }
    TiXmlDocument embmsg;
    ParseOrReport(embmsg, text);
    assert(not embmsg.Error());

    const TiXmlHandle recordingEvent = TiXmlHandle(&embmsg).FirstChild("recording-event");
    if (recordingEvent.ToElement() == nullptr) {
        return;
    }
    const char* const embeddedReid = recordingEvent.ToElement()->Attribute("reid");
    if (embeddedReid == nullptr) {
        VEL_LOG(2) << "Escaped XML for event contains no REID";
    } else {
        embmsg.SaveFile(std::string("/mnt/hd/incoming_") + embeddedReid);
        if (reid not_eq embeddedReid) {
            VEL_LOG(2) << "Handle_EVENT_msg: 'reid' in escaped XML incorrect: exp='" << reid << "'  act='"
                       << embeddedReid << "'";
        }
    }
    QueueEventFiles(recordingEvent, reid, filesToReceive);
}

std::string VelProtocol_2_0::FrontEvent() const {
    return events.empty() ? std::string() : events.front();
}
