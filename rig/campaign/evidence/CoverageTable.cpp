#include "rig/campaign/evidence/Coverage.h"

namespace rig::campaign {

const std::vector<ProtocolItem>& ProtocolItems() {
    static const std::vector<ProtocolItem> kItems = {
        {1, "DVR", "OK", ""},
        {1, "harness", "GET_XML", ""},
        {1, "DVR", "XML", ""},
        {1, "DVR", "XML", "xmlFile/string"},
        {1, "harness", "GET_FILE", ""},
        {1, "DVR", "FILE_COMPLETE", ""},
        {1, "DVR", "FILE_COMPLETE", "reid"},
        {1, "DVR", "FILE_COMPLETE", "file"},
        {1, "harness", "EVENT_XFER_COMPLETE", ""},
        {1, "harness", "DONE", ""},
        {1, "harness", "UPDATE_CONFIGURATION", ""},
        {1, "DVR", "CONFIGURATION_UPDATE_ERROR", ""},
        {2, "DVR", "OK", ""},
        {2, "harness", "GET_EVENT_LIST", ""},
        {2, "DVR", "EVENT_LIST", ""},
        {2, "DVR", "EVENT_LIST", "source"},
        {2, "DVR", "EVENT_LIST", "events/event"},
        {2, "harness", "NEXT_EVENT", ""},
        {2, "DVR", "EVENT", ""},
        {2, "DVR", "EVENT", "reid"},
        {2, "DVR", "EVENT", "xmlFile"},
        {2, "harness", "GET_FILE", ""},
        {2, "harness", "GET_FILE", "rehash"},
        {2, "DVR", "FILE_COMPLETE", ""},
        {2, "DVR", "FILE_COMPLETE", "reid"},
        {2, "DVR", "FILE_COMPLETE", "file"},
        {2, "DVR", "FILE_COMPLETE", "hashCode"},
        {2, "DVR", "FILE_COMPLETE", "length"},
        {2, "DVR", "INVALID_EVENT", ""},
        {2, "DVR", "INVALID_EVENT", "reid"},
        {2, "DVR", "TRANSPORT_EXCEPTION", ""},
        {2, "DVR", "TRANSPORT_EXCEPTION", "reid"},
        {2, "DVR", "XFER_IN_PROGRESS", ""},
        {2, "DVR", "XFER_IN_PROGRESS", "reid"},
        {2, "harness", "EVENT_XFER_COMPLETE", ""},
        {2, "DVR", "EVENT_XFER_ACK", ""},
        {2, "DVR", "EVENT_XFER_ACK", "reid"},
        {2, "harness", "DONE", ""},
        {2, "harness", "DONE", "duration"},
        {2, "harness", "UPDATE_SOFTWARE", ""},
        {2, "DVR", "SOFTWARE_UPDATE_CONFIRM", ""},
        {2, "harness", "UPDATE_CONFIGURATION", ""},
        {2, "DVR", "CONFIGURATION_UPDATE_ERROR", ""},
    };
    return kItems;
}

const std::vector<SwitchItem>& SwitchItems() {
    static const std::vector<SwitchItem> kSwitches = {
        {'e', false, {"invalid-event.fired"}},
        {'f', false, {"invalid-file.fired-event", "invalid-file.fired-name"}},
        {'t', false, {"transport.fired"}},
        {'r', false, {"rehash.fired"}},
        {'x', false, {"xfer.fired"}},
        {'z', true, {"size.fired"}},
        {'g', true, {"config.fired"}},
        {'u', false, {"upgrade.fired"}},
        {'c', false, {"close.fired"}},
        {'d', false, {"duration.fired"}},
        {'s', false, {"sleep.fired"}},
    };
    return kSwitches;
}

}  // namespace rig::campaign
