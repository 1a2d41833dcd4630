#include "tests/support/Messages.h"

#include "tests/support/Escaped.h"

std::string Message(const std::string& req, const std::string& attributes) {
    return "<msg req=\"" + req + "\"" + attributes + "/>";
}

std::string Ok() {
    return Message("OK");
}

std::string FileComplete(const std::string& reid, const std::string& file, const std::string& attributes) {
    return Message("FILE_COMPLETE", " reid=\"" + reid + "\" file=\"" + file + "\"" + attributes);
}

std::string Description(const std::string& reid, const std::vector<std::string>& files) {
    if (files.empty()) {
        return "<recording-event reid=\"" + reid + "\"/>";
    }
    std::string streams;
    for (std::size_t index = 1; index < files.size(); ++index) {
        streams += "<file name=\"" + files[index] + "\"/>";
    }
    return "<recording-event reid=\"" + reid + "\"><video><metadata name=\"" + files[0] +
           "\"/><streams><stream>" + streams + "</stream></streams></video></recording-event>";
}

std::string Xml(const std::vector<std::string>& descriptions) {
    std::string strings;
    for (const std::string& description : descriptions) {
        strings += "<string>" + Escaped(description) + "</string>";
    }
    return "<msg req=\"XML\"><xmlFile>" + strings + "</xmlFile></msg>";
}

std::string EventList(const std::vector<std::string>& ids) {
    std::string events;
    for (const std::string& id : ids) {
        events += "<event>" + id + "</event>";
    }
    return "<msg req=\"EVENT_LIST\" source=\"DVR\"><events>" + events + "</events></msg>";
}

std::string Event(const std::string& reid, const std::string& description) {
    return "<msg req=\"EVENT\" reid=\"" + reid + "\"><xmlFile>" + Escaped(description) + "</xmlFile></msg>";
}

namespace {
std::string About(const std::string& req, const std::string& reid) {
    return Message(req, " reid=\"" + reid + "\"");
}
}  // namespace

std::string EventXferAck(const std::string& reid) {
    return About("EVENT_XFER_ACK", reid);
}
std::string InvalidEvent(const std::string& reid) {
    return About("INVALID_EVENT", reid);
}
std::string TransportException(const std::string& reid) {
    return About("TRANSPORT_EXCEPTION", reid);
}
std::string XferInProgress(const std::string& reid) {
    return About("XFER_IN_PROGRESS", reid);
}

namespace v1 {

const char* const kGetXml = "<msg req=\"GET_XML\" />";
const char* const kUpdateConfiguration =
    "<msg req=\"UPDATE_CONFIGURATION\" txt='&lt;FakeConfig info=&quot;This is a bogus config used for "
    "protocol 1.0 testing&quot; /&gt;' />";
const char* const kDone = "<msg req=\"DONE\" />";

std::string GetFile(const std::string& reid, const std::string& file) {
    return "<msg req=\"GET_FILE\" path=\"" + reid + "\" file=\"" + file + "\" />";
}

std::string EventXferComplete(const std::vector<std::string>& ids) {
    std::string events;
    for (const std::string& id : ids) {
        events += "<string>" + id + "</string>";
    }
    return "<msg req=\"EVENT_XFER_COMPLETE\"><events>" + events + "</events></msg>";
}

}  // namespace v1

namespace v2 {

const char* const kUpdateSoftware =
    "<msg req=\"UPDATE_SOFTWARE\" path=\"/mnt/hd/connectionmgr\" file=\"upgrade.zip\" "
    "protocolVersion=\"2.0\" />";
const char* const kGetEventList = "<msg req=\"GET_EVENT_LIST\" protocolVersion=\"2.0\" />";
const char* const kUpdateConfiguration =
    "<msg req=\"UPDATE_CONFIGURATION\" protocolVersion=\"2.0\" message='&lt;FakeConfig info=&quot;This is a "
    "bogus config used for protocol 2.0 testing&quot; /&gt;' />";
const char* const kDone = "<msg req=\"DONE\" protocolVersion=\"2.0\" />";

std::string NextEvent(const std::string& reid) {
    return "<msg req=\"NEXT_EVENT\" reid=\"" + reid + "\" protocolVersion=\"2.0\" />";
}

std::string GetFile(const std::string& reid, const std::string& file) {
    return "<msg req=\"GET_FILE\" reid=\"" + reid + "\" path=\"" + reid + "\" file=\"" + file +
           "\" protocolVersion=\"2.0\" />";
}

std::string EventXferComplete(const std::string& reid) {
    return "<msg req=\"EVENT_XFER_COMPLETE\" reid=\"" + reid + "\" protocolVersion=\"2.0\" />";
}

}  // namespace v2
