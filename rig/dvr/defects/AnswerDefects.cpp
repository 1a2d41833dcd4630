#include <algorithm>

#include "rig/dvr/defects/DefectTables.h"

namespace rig::dvr {
namespace {

constexpr const char* kHashOfNothing = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

void CompleteInstead(Outgoing& outgoing, const Digest& digest) {
    Message complete = Sibling(outgoing.message, "FILE_COMPLETE");
    complete.Set("file", outgoing.message.Get("file"))
        .Set("length", std::to_string(digest.length))
        .Set("hashCode", digest.hashCode);
    outgoing.message = std::move(complete);
}

bool AcceptEvent(Outgoing& outgoing, const DefectContext&) {
    if (outgoing.message.Find("file")) {
        return false;  // it refuses a file
    }
    const std::string id = outgoing.message.Get("reid");
    Message description = Sibling(outgoing.message, "EVENT");
    const Event event{id, id + ".xml", {{id + "_1"}}};
    description.Root().append_child("xmlFile").text().set(event.Describe().c_str());
    outgoing.message = std::move(description);
    return true;
}

bool AcceptFile(Outgoing& outgoing, const DefectContext&) {
    if (!outgoing.message.Find("file")) {
        return false;  // it refuses an event
    }
    CompleteInstead(outgoing, {kHashOfNothing, 0});
    return true;
}

bool NoException(Outgoing& outgoing, const DefectContext& context) {
    const std::string event = outgoing.message.Get("reid");
    const std::string file = outgoing.message.Get("file");
    const std::vector<std::string> files = FilesOf(context.recordings, event);
    if (std::find(files.begin(), files.end(), file) == files.end()) {
        return false;  // another defect has made it unreadable
    }
    CompleteInstead(outgoing, DigestOf(context.recordings, event, file));
    return true;
}

bool NoAnswer(Outgoing& outgoing, const DefectContext&) {
    outgoing.dropped = true;
    return true;
}

bool Double(Outgoing& outgoing, const DefectContext&) {
    outgoing.after.push_back(outgoing.message.Copy());
    return true;
}

bool Silence(Outgoing& outgoing, const DefectContext&) {
    outgoing.silent = true;
    return true;
}

}  // namespace

// clang-format off
const std::vector<DefectKind>& AnswerDefects() {
    static const std::vector<DefectKind> kinds = {
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
    };
    return kinds;
}
// clang-format on

}  // namespace rig::dvr
