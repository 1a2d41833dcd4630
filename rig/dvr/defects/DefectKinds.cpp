#include <algorithm>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/defects/Defect.h"
#include "rig/dvr/defects/DefectChanges.h"

namespace rig::dvr {
namespace {

constexpr DefectValue None = DefectValue::None;
constexpr DefectValue Text = DefectValue::Text;
constexpr DefectValue Count = DefectValue::Count;
constexpr DefectValue Place = DefectValue::Place;

const std::vector<const char*> kWithReid = {
    "FILE_COMPLETE", "EVENT", "EVENT_XFER_ACK", "INVALID_EVENT", "TRANSPORT_EXCEPTION", "XFER_IN_PROGRESS"};
const std::vector<const char*> kWithFile = {"FILE_COMPLETE", "INVALID_EVENT", "TRANSPORT_EXCEPTION",
                                            "XFER_IN_PROGRESS"};
const std::vector<const char*> kDescriptions = {"EVENT", "XML"};

/// @return what may follow the name, for people
const char* Placeholder(DefectValue value) {
    switch (value) {
        case DefectValue::Text:
            return "[=TEXT]";
        case DefectValue::Count:
            return "[=BYTES]";
        case DefectValue::Place:
            return "[=BYTE]";
        case DefectValue::None:
            break;
    }
    return "";
}

bool IsNumber(const std::string& text) {
    return !text.empty() && text.size() <= 9 && text.find_first_not_of("0123456789") == std::string::npos;
}

bool Takes(DefectValue kind, const std::string& value) {
    switch (kind) {
        case DefectValue::Text:
            return true;
        case DefectValue::Count:
            return IsNumber(value) && value.find_first_not_of('0') != std::string::npos;
        case DefectValue::Place:
            return IsNumber(value) || value == "all" || value == "random";
        case DefectValue::None:
            break;
    }
    return value.empty();
}

}  // namespace

// clang-format off
const std::vector<DefectKind>& DefectKinds() {
    static const std::vector<DefectKind> kinds = {
        // Attributes
        {"wrong-reid", Text, "no-such-event", "12", kWithReid, false,
         "names another event",
         "EVENT: \"Handle_EVENT_msg: 'reid' attribute incorrect: \"; FILE_COMPLETE: \"invalid file in FILE_COMPLETE: \"; "
         "EVENT_XFER_ACK: \"In EVENT_XFER_ACK, got unexpected reid: \"; INVALID_EVENT: \"'reid' attribute does not match "
         "expected: \"; TRANSPORT_EXCEPTION: \"'reid' attribute missing from TRANSPORT_EXCEPTION message\" and \"does not "
         "match expected\"; XFER_IN_PROGRESS: nothing, it is not compared",
         WrongReid},
        {"missing-reid", None, "", "12", kWithReid, false,
         "leaves `reid` out",
         "EVENT: \"Handle_EVENT_msg: 'reid' attribute incorrect: \"; FILE_COMPLETE: \"Got FILE_COMPLETE without both reid "
         "and file\"; EVENT_XFER_ACK: \"Got EVENT_XFER_ACK with no reid attribute\"; others: \"'reid' attribute missing "
         "from \" and the message",
         MissingReid},
        {"case-reid", None, "", "12", kWithReid, false,
         "names the event with upper and lower case exchanged", "as wrong-reid", CaseReid},
        {"wrong-file", Text, "no-such-file", "12", kWithFile, false,
         "names another file", "FILE_COMPLETE: \"invalid file in FILE_COMPLETE: \"; others: nothing, it is not read",
         WrongFile},
        {"missing-file", None, "", "12", kWithFile, false,
         "leaves `file` out",
         "FILE_COMPLETE: \"Got FILE_COMPLETE without both reid and file\"; others: nothing, it is not read", MissingFile},
        {"case-file", None, "", "12", kWithFile, false,
         "names the file with upper and lower case exchanged", "as wrong-file", CaseFile},
        {"other-file", None, "", "12", {"FILE_COMPLETE"}, false,
         "completes the next file of the event instead of the one asked for", "\"invalid file in FILE_COMPLETE: \"",
         OtherFile},
        {"missing-source", None, "", "2", {"EVENT_LIST"}, true,
         "leaves `source` out", "\"'source' attribute missing from EVENT_LIST message\"", MissingSource},
        {"missing-hash", None, "", "2", {"FILE_COMPLETE"}, true,
         "leaves `hashCode` out",
         "with -r: \"'hashCode' attribute not present when requested\"; otherwise nothing", MissingHash},
        {"missing-length", None, "", "2", {"FILE_COMPLETE"}, true,
         "leaves `length` out",
         "with -r: \"'length' attribute not present when requested\"; otherwise nothing", MissingLength},
        {"new-hash", None, "", "2", {"FILE_COMPLETE"}, true,
         "gives another hash each time", "with -r: \"rehash resulted in new hash: \"; otherwise nothing", NewHash},

        // Answers
        {"accept-event", None, "", "2", {"INVALID_EVENT"}, false,
         "describes an event that it does not have",
         "with -e: no INVALID_EVENT; the damaged event's files are asked for and, as the DVR refuses them, \"Received "
         "unexpected INVALID_EVENT message!\"",
         AcceptEvent},
        {"accept-file", None, "", "2", {"INVALID_EVENT"}, false,
         "completes a file that it does not have",
         "with -f: \"Got FILE_COMPLETE for: \" the damaged file; if that was the first of the two, the fault is injected "
         "once more",
         AcceptFile},
        {"no-exception", None, "", "2", {"TRANSPORT_EXCEPTION"}, false,
         "completes a file whose transfer must fail", "with -t: the fault is injected once more", NoException},
        {"no-answer", None, "", "12", {}, false,
         "does not send the message",
         "nothing more: the harness waits, but for SOFTWARE_UPDATE_CONFIRM and XFER_IN_PROGRESS", NoAnswer},
        {"no-xfer-in-progress", None, "", "2", {"XFER_IN_PROGRESS"}, true,
         "does not say that the transfer is in progress", "with -x: no \"XFER_IN_PROGRESS 'reid' attribute = \"", NoAnswer},
        {"double-xfer-in-progress", None, "", "2", {"XFER_IN_PROGRESS"}, true,
         "says twice that the transfer is in progress", "with -x: \"XFER_IN_PROGRESS 'reid' attribute = \", twice", Double},
        {"double", None, "", "12", {}, false,
         "sends the message twice",
         "the handling of the message, twice; FILE_COMPLETE: then \"invalid file in FILE_COMPLETE: \"", Double},
        {"silence", None, "", "12", {}, false,
         "sends the message and then nothing more, but stays connected", "nothing more: the harness waits", Silence},

        // Messages that nobody asked for
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

        // Documents
        {"malformed-xml", None, "", "12", {}, false,
         "leaves the end of the document out", "\"error: 1:\", \"row: \", assertion \"not incomingMessage.Error()\"",
         MalformedXml},
        {"malformed-description", None, "", "12", kDescriptions, false,
         "leaves the end of the event's description out", "\"error: 1:\", \"row: \", assertion \"not embmsg.Error()\"",
         MalformedDescription},
        {"description-without-reid", None, "", "12", kDescriptions, false,
         "describes an event without identifier",
         "1.0: \"Found event with no REID\" for ever; 2.0: \"Escaped XML for event contains no REID\"",
         DescriptionWithoutReid},
        {"description-other-reid", Text, "no-such-event", "12", kDescriptions, false,
         "describes another event",
         "1.0: \"Found event \" the other one, whose files are asked for; 2.0: \"Handle_EVENT_msg: 'reid' in escaped XML "
         "incorrect: \"",
         DescriptionOtherReid},
        {"description-without-video", None, "", "12", kDescriptions, false,
         "describes an event without files",
         "1.0: \"Found event \" and nothing more; 2.0: \"Got EVENT message with no files to receive\"",
         DescriptionWithoutVideo},
        {"description-without-name", None, "", "12", kDescriptions, false,
         "describes a file without name", "aborted: \"basic_string::_M_construct null not valid\"",
         DescriptionWithoutName},
        {"description-without-event", None, "", "12", kDescriptions, false,
         "describes something else than an event",
         "1.0: nothing more; 2.0: \"Got EVENT message with no files to receive\"", DescriptionWithoutEvent},
        {"empty-description", None, "", "12", kDescriptions, false,
         "describes the event by an empty text",
         "1.0: nothing more; 2.0: \"EVENT message 'xmlFile' tag does not contain data\", \"Got EVENT message with no files "
         "to receive\"",
         EmptyDescription},
        {"no-description", None, "", "12", kDescriptions, false,
         "leaves `xmlFile` out",
         "1.0: nothing more; 2.0: \"EVENT message does not contain 'xmlFile' tag\", \"Got EVENT message with no files to "
         "receive\"",
         NoDescription},
        {"empty-list", None, "", "2", {"EVENT_LIST"}, false,
         "lists no event",
         "\"could not find 'event' tag in EVENT_LIST message\", \"Got EVENT_LIST message with no events\"", EmptyList},
        {"double-list", None, "", "12", {"EVENT_LIST", "XML"}, false,
         "lists each event twice", "each event is exported twice", DoubleList},
        {"event-without-text", None, "", "2", {"EVENT_LIST"}, false,
         "lists an event without identifier as well", "\"'event' found with no text\"", EventWithoutText},

        // Frames
        {"bad-prefix", None, "", "12", {}, false,
         "sends a prefix of five continuation bytes",
         "\"Read7BitEncodedInt:badly formatted 7 bit string length prefix\", assertion \"expectedSize not_eq -1\"",
         BadPrefix},
        {"negative-prefix", None, "", "12", {}, false,
         "announces more than 2 GiB", "\"expecting a message of -2 bytes\", aborted", NegativePrefix},
        {"empty-frame", None, "", "12", {}, false,
         "announces no text and sends none",
         "\"read success:0\", \"error: 1:\", \"row: \", assertion \"not incomingMessage.Error()\"", EmptyFrame},
        {"long-prefix", Count, "10", "12", {}, false,
         "announces more than it sends",
         "nothing until the connection ends, then \"EOF at: \", assertion \"readBytes == expectedSize\"; or the bytes of "
         "the next message are taken for the rest",
         LongPrefix},
        {"short-prefix", Count, "10", "12", {}, false,
         "announces less than it sends", "\"error: 1:\", \"row: \", assertion \"not incomingMessage.Error()\"", ShortPrefix},
        {"garble", Count, "1", "12", {}, false,
         "replaces bytes of the document at random places (see --seed)", "depends on the bytes", Garble},

        // Connections
        {"close", Place, "all", "12", {}, false,
         "closes the connection after so many bytes of the frame (a number, `all`, `random`)",
         "before or inside the prefix: nothing, the harness reads on without rest; inside the text: \"EOF at: \", assertion "
         "\"readBytes == expectedSize\"; after it: ended by SIGPIPE as it answers, or, where it does not, nothing",
         Close},
        {"reset", Place, "all", "12", {}, false,
         "resets the connection after so many bytes of the frame (a number, `all`, `random`)",
         "before or inside the prefix: \"read error: 104:\"; inside the text: \"read errored out:104:\", \"EOF at: \", "
         "assertion \"readBytes == expectedSize\"; after it: \"SendMessage: msg: size= \" and an assertion as it answers, "
         "or, where it does not, \"read error: 104:\"",
         Reset},
        {"second-connection", None, "", "12", {}, false,
         "opens a second connection after the message",
         "assertion \"FD_ISSET(g_clientFd, &readFds)\", or, with a message at the same time, \"select(g_serverFd+g_clientFd+1, "
         "&readFds, NULL, &exceptionFds, &time) == 1\"",
         SecondConnection},
        {"reconnect", None, "", "12", {"OK"}, false,
         "connects again after DONE and exports once more",
         "1.0, 2.0 with -c: the next export, without \"Connected to: \"; 2.0 otherwise: as second-connection, or nothing, as "
         "the harness reads on where the first connection was",
         Reconnect},
    };
    return kinds;
}
// clang-format on

const DefectKind& FindDefectKind(std::string_view name) {
    const std::vector<DefectKind>& kinds = DefectKinds();
    const auto found =
        std::find_if(kinds.begin(), kinds.end(), [&](const DefectKind& kind) { return name == kind.name; });
    if (found == kinds.end()) {
        std::string names;
        for (const DefectKind& kind : kinds) {
            names += (names.empty() ? "" : ", ") + std::string(kind.name);
        }
        throw Failure(ExitStatus::Unusable,
                      "--defect: expected one of " + names + "; found " + Quoted(std::string(name)));
    }
    return *found;
}

void CheckDefectValue(const DefectKind& kind, const std::string& value) {
    if (Takes(kind.value, value)) {
        return;
    }
    const char* const expected = kind.value == DefectValue::None    ? "no value"
                                 : kind.value == DefectValue::Count ? "a number of bytes above 0"
                                                                    : "a number of bytes, 'all' or 'random'";
    throw Failure(ExitStatus::Unusable, "--defect " + std::string(kind.name) + ": expected " + expected +
                                            ", found " + Quoted(value));
}

Listing ListDefects() {
    Listing listing{{"defect", "dialect", "acts on", "what the DVR does", "what the harness logs"}, {}};
    for (const DefectKind& kind : DefectKinds()) {
        std::string messages;
        for (const char* message : kind.messages) {
            messages += (messages.empty() ? "" : ", ") + std::string(message);
        }
        const std::string dialects = kind.dialects == std::string("12")  ? "1.0, 2.0"
                                     : kind.dialects == std::string("1") ? "1.0"
                                                                         : "2.0";
        listing.rows.push_back({std::string(kind.name) + Placeholder(kind.value), dialects,
                                (messages.empty() ? "any" : messages) + (kind.always ? ", each" : ""),
                                kind.does, kind.logs});
    }
    return listing;
}

}  // namespace rig::dvr
