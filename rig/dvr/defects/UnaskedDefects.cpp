#include "rig/dvr/defects/DefectTables.h"

namespace rig::dvr {
namespace {

bool SendFirst(Outgoing& outgoing, const char* name) {
    outgoing.before.push_back(Sibling(outgoing.message, name));
    return true;
}

bool UnaskedInvalidEvent(Outgoing& outgoing, const DefectContext&) {
    return SendFirst(outgoing, "INVALID_EVENT");
}

bool UnaskedTransportException(Outgoing& outgoing, const DefectContext&) {
    return SendFirst(outgoing, "TRANSPORT_EXCEPTION");
}

bool UnaskedSoftwareUpdateConfirm(Outgoing& outgoing, const DefectContext&) {
    return SendFirst(outgoing, "SOFTWARE_UPDATE_CONFIRM");
}

bool UnaskedConfigurationUpdateError(Outgoing& outgoing, const DefectContext&) {
    return SendFirst(outgoing, "CONFIGURATION_UPDATE_ERROR");
}

bool UnknownMessage(Outgoing& outgoing, const DefectContext& context) {
    return SendFirst(outgoing, context.value.c_str());
}

bool CaseReq(Outgoing& outgoing, const DefectContext&) {
    return ExchangeCase(outgoing, "req");
}

bool NoReq(Outgoing& outgoing, const DefectContext&) {
    return Remove(outgoing, "req");
}

bool NoMsg(Outgoing& outgoing, const DefectContext&) {
    return outgoing.message.Root().set_name("message");
}

}  // namespace

// clang-format off
const std::vector<DefectKind>& UnaskedDefects() {
    static const std::vector<DefectKind> kinds = {
        {"unasked-invalid-event", None, "", "2", {"FILE_COMPLETE", "EVENT"}, false,
         "refuses the event first",
         "before FILE_COMPLETE: \"Received unexpected INVALID_EVENT message!\" unless -f is still set, and the file is "
         "dropped, so \"invalid file in FILE_COMPLETE: \"; before EVENT: the event is dropped, so \"Handle_EVENT_msg: "
         "'reid' attribute incorrect: \"",
         UnaskedInvalidEvent},
        {"unasked-transport-exception", None, "", "2", {"FILE_COMPLETE"}, false,
         "reports a transport exception first",
         "\"TRANSPORT_EXCEPTION 'reid' attribute = \", and the file is dropped, so \"invalid file in FILE_COMPLETE: \"",
         UnaskedTransportException},
        {"unasked-software-update-confirm", None, "", "2", {}, false,
         "confirms a software update first",
         "\"Unexpected SOFTWARE_UPDATE_CONFIRM\"; with -u: \"Got SOFTWARE_UPDATE_CONFIRM\"", UnaskedSoftwareUpdateConfirm},
        {"unasked-configuration-update-error", None, "", "12", {}, false,
         "refuses a configuration first",
         "\"Unexpected CONFIGURATION_UPDATE_ERROR\"; with -g: \"Got CONFIGURATION_UPDATE_ERROR\"",
         UnaskedConfigurationUpdateError},
        {"unknown-message", Text, "HELLO", "12", {}, false,
         "sends a message first that no dialect has", "\"UNSUPPORTED MSG RECEIVED: \" and the name", UnknownMessage},
        {"case-req", None, "", "12", {}, false,
         "names the message in lower case", "\"UNSUPPORTED MSG RECEIVED: \" and the name", CaseReq},
        {"no-req", None, "", "12", {}, false,
         "leaves `req` out", "\"INVALID XML RECEIVED\"", NoReq},
        {"no-msg", None, "", "12", {}, false,
         "calls the element `message`", "aborted, without a line", NoMsg},
    };
    return kinds;
}
// clang-format on

}  // namespace rig::dvr
