#include "protocol/Message.h"

#include <cstdlib>
#include <stdexcept>

#include "protocol/Log.h"

namespace {

/// @return the document's `msg`, or null; null, too, where another kind of node with that value, a comment
///         "msg", comes before the element, as the handle takes the first
const TiXmlElement* FindMsg(const TiXmlDocument& document) {
    return TiXmlHandle(const_cast<TiXmlDocument*>(&document)).FirstChild("msg").ToElement();
}

std::string FileName(const TiXmlNode& file) {
    const TiXmlElement* const element = file.ToElement();
    const char* const name = element ? element->Attribute("name") : nullptr;
    if (name == nullptr) {
        // The text that rigs look for; the library's own for a string from null differs between versions.
        throw std::logic_error("basic_string::_M_construct null not valid");
    }
    return name;
}

}  // namespace

TiXmlElement* AddMsg(TiXmlDocument& document, const char* req) {
    auto* const msg = new TiXmlElement("msg");
    document.LinkEndChild(msg);
    msg->SetAttribute("req", req);
    return msg;
}

const char* MsgAttribute(const TiXmlDocument& document, const char* name) {
    const TiXmlElement* const msg = FindMsg(document);
    return msg ? msg->Attribute(name) : nullptr;
}

const char* MsgReq(const TiXmlDocument& document) {
    const TiXmlElement* const msg = FindMsg(document);
    if (msg == nullptr) {
        std::abort();
    }
    return msg->Attribute("req");
}

void ParseOrReport(TiXmlDocument& document, const char* text) {
    document.Parse(text);
    if (document.Error()) {
        VEL_LOG(1) << "error: " << document.Error() << ":" << document.ErrorDesc();
        VEL_LOG(1) << "row: " << document.ErrorRow() << ":" << document.ErrorCol();
    }
}

std::string PrintFakeConfig(const char* info) {
    TiXmlDocument config;
    auto* const element = new TiXmlElement("FakeConfig");
    config.LinkEndChild(element);
    element->SetAttribute("info", info);
    std::string text;
    text << config;
    return text;
}

void QueueEventFiles(const TiXmlHandle& recordingEvent, const std::string& eventId,
                     std::list<std::pair<std::string, std::string>>& files) {
    const TiXmlHandle video = recordingEvent.FirstChild("video");
    const TiXmlElement* const metadata = video.FirstChild("metadata").ToElement();
    if (metadata) {
        files.emplace_back(eventId, FileName(*metadata));
    }
    const TiXmlNode* stream = video.FirstChild("streams").FirstChild("stream").ToElement();
    for (; stream; stream = stream->NextSibling()) {
        for (const TiXmlNode* file = stream->FirstChild(); file; file = file->NextSibling()) {
            files.emplace_back(eventId, FileName(*file));
        }
    }
}
