#include <algorithm>

#include "rig/dvr/defects/DefectTables.h"

namespace rig::dvr {
namespace {

bool WrongReid(Outgoing& outgoing, const DefectContext& context) {
    return Replace(outgoing, "reid", context.value);
}

bool MissingReid(Outgoing& outgoing, const DefectContext&) {
    return Remove(outgoing, "reid");
}

bool CaseReid(Outgoing& outgoing, const DefectContext&) {
    return ExchangeCase(outgoing, "reid");
}

bool WrongFile(Outgoing& outgoing, const DefectContext& context) {
    return Replace(outgoing, "file", context.value);
}

bool MissingFile(Outgoing& outgoing, const DefectContext&) {
    return Remove(outgoing, "file");
}

bool CaseFile(Outgoing& outgoing, const DefectContext&) {
    return ExchangeCase(outgoing, "file");
}

bool OtherFile(Outgoing& outgoing, const DefectContext& context) {
    const std::vector<std::string> files = FilesOf(context.recordings, outgoing.message.Get("reid"));
    const auto asked = std::find(files.begin(), files.end(), outgoing.message.Get("file"));
    if (asked == files.end() || files.size() == 1) {
        return false;
    }
    return Replace(outgoing, "file", asked + 1 == files.end() ? files.front() : *(asked + 1));
}

bool MissingSource(Outgoing& outgoing, const DefectContext&) {
    return Remove(outgoing, "source");
}

bool MissingHash(Outgoing& outgoing, const DefectContext&) {
    return Remove(outgoing, "hashCode");
}

bool MissingLength(Outgoing& outgoing, const DefectContext&) {
    return Remove(outgoing, "length");
}

bool NewHash(Outgoing& outgoing, const DefectContext& context) {
    std::string hash;
    std::uniform_int_distribution<std::size_t> digit(0, 15);
    while (hash.size() < 64) {
        hash += "0123456789abcdef"[digit(context.random)];
    }
    return Replace(outgoing, "hashCode", hash);
}

}  // namespace

// clang-format off
const std::vector<DefectKind>& AttributeDefects() {
    static const std::vector<DefectKind> kinds = {
        {"wrong-reid", Text, "no-such-event", "12", MessagesWith("reid"), false,
         "names another event",
         "EVENT: \"Handle_EVENT_msg: 'reid' attribute incorrect: \"; FILE_COMPLETE: \"invalid file in FILE_COMPLETE: \"; "
         "EVENT_XFER_ACK: \"In EVENT_XFER_ACK, got unexpected reid: \"; INVALID_EVENT: \"'reid' attribute does not match "
         "expected: \"; TRANSPORT_EXCEPTION: \"'reid' attribute missing from TRANSPORT_EXCEPTION message\" and \"does not "
         "match expected\"; XFER_IN_PROGRESS: nothing, it is not compared",
         WrongReid},
        {"missing-reid", None, "", "12", MessagesWith("reid"), false,
         "leaves `reid` out",
         "EVENT: \"Handle_EVENT_msg: 'reid' attribute incorrect: \"; FILE_COMPLETE: \"Got FILE_COMPLETE without both reid "
         "and file\"; EVENT_XFER_ACK: \"Got EVENT_XFER_ACK with no reid attribute\"; others: \"'reid' attribute missing "
         "from \" and the message",
         MissingReid},
        {"case-reid", None, "", "12", MessagesWith("reid"), false,
         "names the event with upper and lower case exchanged", "as wrong-reid", CaseReid},
        {"wrong-file", Text, "no-such-file", "12", MessagesWith("file"), false,
         "names another file", "FILE_COMPLETE: \"invalid file in FILE_COMPLETE: \"; others: nothing, it is not read",
         WrongFile},
        {"missing-file", None, "", "12", MessagesWith("file"), false,
         "leaves `file` out",
         "FILE_COMPLETE: \"Got FILE_COMPLETE without both reid and file\"; others: nothing, it is not read", MissingFile},
        {"case-file", None, "", "12", MessagesWith("file"), false,
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
    };
    return kinds;
}
// clang-format on

}  // namespace rig::dvr
