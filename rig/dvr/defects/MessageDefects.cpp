#include <algorithm>
#include <cctype>

#include "rig/dvr/defects/DefectChanges.h"
#include "rig/dvr/recordings/Digest.h"

namespace rig::dvr {
namespace {

constexpr const char* kHashOfNothing = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

bool Replace(Outgoing& outgoing, const char* attribute, const std::string& value) {
    pugi::xml_attribute found = outgoing.message.Root().attribute(attribute);
    return found && found.value() != value && found.set_value(value.c_str());
}

bool Remove(Outgoing& outgoing, const char* attribute) {
    return outgoing.message.Root().remove_attribute(attribute);
}

bool ExchangeCase(Outgoing& outgoing, const char* attribute) {
    std::string value = outgoing.message.Get(attribute);
    for (char& letter : value) {
        const int code = static_cast<unsigned char>(letter);
        letter = static_cast<char>(std::isupper(code) != 0 ? std::tolower(code) : std::toupper(code));
    }
    return Replace(outgoing, attribute, value);
}

/// @return a message about the same event, in the same dialect
Message Sibling(const Message& message, const char* name) {
    Message sibling(name);
    for (const char* attribute : {"protocolVersion", "reid"}) {
        const auto value = message.Find(attribute);
        if (value) {
            sibling.Set(attribute, *value);
        }
    }
    return sibling;
}

bool SendFirst(Outgoing& outgoing, const char* name) {
    outgoing.before.push_back(Sibling(outgoing.message, name));
    return true;
}

/// @return the files of an event; none if there is no such event
std::vector<std::string> FilesOf(const Recordings& recordings, const std::string& event) {
    return recordings.Has(event) ? recordings.Find(event).Files() : std::vector<std::string>();
}

void CompleteInstead(Outgoing& outgoing, const Digest& digest) {
    Message complete = Sibling(outgoing.message, "FILE_COMPLETE");
    complete.Set("file", outgoing.message.Get("file"))
        .Set("length", std::to_string(digest.length))
        .Set("hashCode", digest.hashCode);
    outgoing.message = std::move(complete);
}

}  // namespace

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

}  // namespace rig::dvr
