#include "tests/rig/fault/Requests.h"

#include <random>

using rig::fault::Act;
using rig::fault::Script;

const std::vector<Request>& Requests() {
    static const std::vector<Request> requests = {
        {1, "GET_XML", R"(<msg req="GET_XML" />)"},
        {1, "GET_FILE", R"(<msg req="GET_FILE" path="E1" file="a.ts" />)"},
        {1, "EVENT_XFER_COMPLETE",
         R"(<msg req="EVENT_XFER_COMPLETE"><events><string>E1</string></events></msg>)"},
        {1, "DONE", R"(<msg req="DONE" />)"},
        {2, "GET_EVENT_LIST", R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0" />)"},
        {2, "NEXT_EVENT", R"(<msg req="NEXT_EVENT" reid="E1" protocolVersion="2.0" />)"},
        {2, "GET_FILE", R"(<msg req="GET_FILE" reid="E1" path="E1" file="a.ts" protocolVersion="2.0" />)"},
        {2, "EVENT_XFER_COMPLETE", R"(<msg req="EVENT_XFER_COMPLETE" reid="E1" protocolVersion="2.0" />)"},
        {2, "DONE", R"(<msg req="DONE" protocolVersion="2.0" />)"},
    };
    return requests;
}

Script ScriptOf(const rig::fault::Fault& fault, const Request& request, const std::string& value) {
    std::mt19937 random(1);
    return fault.play({request.text, request.dialect, value, "E2", random});
}

std::string SentBy(const Script& script) {
    std::string sent;
    for (const Act& act : script) {
        sent += act.bytes;
    }
    return sent;
}

std::string TextOf(const std::string& frame) {
    return frame.substr((frame.at(0) & 0x80) == 0 ? 1 : 2);
}
