#include "bench/harness/Messages.h"

#include <tinyxml.h>

namespace {

std::string Name(const std::string& reid, int file) {
    return reid + "_" + std::to_string(file) + ".mp4";
}

}  // namespace

std::string Description(const std::string& reid, int files) {
    std::string text = "<recording-event reid=\"" + reid + "\"><video><metadata name=\"" + reid +
                       ".xml\"/><streams><stream>";
    for (int file = 1; file <= files; ++file) {
        text += "<file name=\"" + Name(reid, file) + "\"/>";
    }
    return text + "</stream></streams></video></recording-event>";
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    TiXmlBase::EncodeString(text, &escaped);
    return escaped;
}

std::string XmlMessage(int events, int filesPerEvent) {
    std::string text = "<msg req=\"XML\"><xmlFile>";
    for (int event = 0; event < events; ++event) {
        text += "<string>" + Escaped(Description("EV" + std::to_string(1'000'000 + event), filesPerEvent)) +
                "</string>";
    }
    return text + "</xmlFile></msg>";
}

std::string EventListMessage(int events) {
    std::string text = "<msg req=\"EVENT_LIST\" source=\"bench\" protocolVersion=\"2.0\"><events>";
    for (int event = 0; event < events; ++event) {
        text += "<event>EV" + std::to_string(1'000'000 + event) + "</event>";
    }
    return text + "</events></msg>";
}

std::string EventMessage(const std::string& reid, int files) {
    return "<msg req=\"EVENT\" reid=\"" + reid + "\" protocolVersion=\"2.0\"><xmlFile>" +
           Escaped(Description(reid, files)) + "</xmlFile></msg>";
}

std::string FileCompleteMessage(const std::string& reid, const std::string& file) {
    return "<msg req=\"FILE_COMPLETE\" reid=\"" + reid + "\" file=\"" + file + "\" protocolVersion=\"2.0\"/>";
}
