#include <algorithm>
#include <array>
#include <set>
#include <string>

#include "rig/base/ParseNumber.h"
#include "rig/dvr/weaknesses/Weakness.h"
#include "rig/protocol/Catalogue.h"

namespace rig::dvr {
namespace {

WeaknessKind InValues(const char* name, const char* dialects, Reaction reaction, const char* does,
                      const char* shownBy, bool (*inMessage)(const Message& message)) {
    WeaknessKind kind{name, dialects, reaction, does, shownBy};
    kind.inMessage = inMessage;
    return kind;
}

/// @return whether the name of an event or a file in the message is so
template <typename Predicate>
bool AnyName(const Message& message, Predicate isSo) {
    const std::array names = {"reid", "path", "file"};
    return std::any_of(names.begin(), names.end(), [&](const char* name) {
        const auto value = message.Find(name);
        return value && isSo(*value);
    });
}

const protocol::MessageKind* KindOf(const Message& message) {
    const int dialect = message.Find("protocolVersion") ? 2 : 1;
    return protocol::Find(dialect, protocol::Sender::Harness, message.Name());
}

bool IsUnknown(const Message& message) {
    return !message.Name().empty() &&
           protocol::Find(1, protocol::Sender::Harness, message.Name()) == nullptr &&
           protocol::Find(2, protocol::Sender::Harness, message.Name()) == nullptr;
}

bool HasNoName(const Message& message) {
    return message.Name().empty();
}

bool LacksEvent(const Message& message) {
    const protocol::MessageKind* const kind = KindOf(message);
    return kind != nullptr && protocol::HasAttribute(*kind, "reid") && !message.Find("reid");
}

bool LacksFile(const Message& message) {
    return message.Name() == "GET_FILE" && (!message.Find("file") || !message.Find("path"));
}

bool HasTwice(const Message& message) {
    std::set<std::string> seen;
    const auto attributes = message.Root().attributes();
    return std::any_of(attributes.begin(), attributes.end(), [&seen](const pugi::xml_attribute& attribute) {
        return !seen.insert(attribute.name()).second;
    });
}

bool HasUnknown(const Message& message) {
    const protocol::MessageKind* const kind = KindOf(message);
    const auto attributes = message.Root().attributes();
    return kind != nullptr &&
           std::any_of(attributes.begin(), attributes.end(), [kind](const pugi::xml_attribute& attribute) {
               return !protocol::HasAttribute(*kind, attribute.name());
           });
}

bool HasOtherVersion(const Message& message) {
    return message.Get("protocolVersion") != "2.0" && message.Find("protocolVersion");
}

bool HasEmptyName(const Message& message) {
    return AnyName(message, [](const std::string& name) { return name.empty(); });
}

bool HasLongName(const Message& message) {
    constexpr std::size_t kMost = 255;
    return AnyName(message, [](const std::string& name) { return name.size() > kMost; });
}

bool HasFormat(const Message& message) {
    return AnyName(message, [](const std::string& name) { return name.find("%n") != std::string::npos; });
}

bool HasCommand(const Message& message) {
    return AnyName(message, [](const std::string& name) { return name.find_first_of(";|`$") < name.size(); });
}

bool HasQuote(const Message& message) {
    return AnyName(message, [](const std::string& name) { return name.find('\'') != std::string::npos; });
}

bool HasOtherAlphabet(const Message& message) {
    return AnyName(message, [](const std::string& name) {
        return std::any_of(name.begin(), name.end(),
                           [](char byte) { return static_cast<unsigned char>(byte) > 0x7f; });
    });
}

bool HasBlanks(const Message& message) {
    return AnyName(message, [](const std::string& name) { return name.find(' ') != std::string::npos; });
}

bool HasOverflow(const Message& message) {
    const auto duration = message.Find("duration");
    return duration && !duration->empty() &&
           duration->find_first_not_of("-0123456789") == std::string::npos &&
           ParseNumber<int>(*duration).value_or(-1) < 0;
}

bool HasNoNumber(const Message& message) {
    const auto duration = message.Find("duration");
    return duration && (duration->empty() || duration->find_first_not_of("-0123456789") != std::string::npos);
}

bool HasOtherRehash(const Message& message) {
    return message.Get("rehash") != "true" && message.Find("rehash");
}

/// It has no attribute to look for.
bool HasNoRequest(const std::string& text, std::size_t) {
    return text.find("<msg") != std::string::npos && text.find("req=") == std::string::npos &&
           text.find("req ") == std::string::npos;
}

}  // namespace

const std::vector<WeaknessKind>& ValueWeaknesses() {
    static const std::vector<WeaknessKind> kinds = [] {
        std::vector<WeaknessKind> all = {
            InValues("unknown-request", "12", Reaction::Abort,
                     "looks a request up, and aborts if it is unknown", "sends an unknown request",
                     IsUnknown),
            InValues("empty-request", "12", Reaction::Abort, "aborts on an empty req", "sends one",
                     HasNoName),
            InValues("missing-event", "2", Reaction::Abort, "takes reid for granted, and aborts without it",
                     "leaves it out", LacksEvent),
            InValues("missing-file", "12", Reaction::Abort, "takes path and file for granted, and aborts",
                     "leaves one of them out", LacksFile),
            InValues("attribute-twice", "12", Reaction::Abort, "aborts when an attribute comes twice",
                     "sends one twice", HasTwice),
            InValues("unknown-attribute", "12", Reaction::Abort,
                     "aborts on an attribute that it does not know", "sends one", HasUnknown),
            InValues("other-version", "2", Reaction::Abort,
                     "looks protocolVersion up, and aborts if it is unknown", "sends another one",
                     HasOtherVersion),
            InValues("empty-name", "12", Reaction::Abort, "aborts on an empty name of an event or a file",
                     "sends one", HasEmptyName),
            InValues("long-name", "12", Reaction::Abort,
                     "has 255 bytes for a name, and aborts on a longer one", "sends one", HasLongName),
            InValues("format-string", "12", Reaction::Abort, "prints a name as a format, and aborts on %n",
                     "sends such a name", HasFormat),
            InValues("shell", "12", Reaction::Abort,
                     "gives a name to a shell: what comes after a ; ends the recorder", "sends such a name",
                     HasCommand),
            InValues("quotes", "2", Reaction::HangUp, "puts a name between quotes, and hangs up on one in it",
                     "sends such a name", HasQuote),
            InValues("only-ascii", "12", Reaction::Abort,
                     "takes a byte of a name for an index, and aborts beyond 7f",
                     "sends a name that is not ASCII", HasOtherAlphabet),
            InValues("no-blanks", "2", Reaction::Ignore, "ignores a request with a blank in a name",
                     "sends such a name", HasBlanks),
            InValues(
                "duration-overflow", "12", Reaction::GiveUp,
                "takes a duration for an unsigned number of 32 bits, or what is left of it, and stays away",
                "sends one below 0 or above 2^31-1", HasOverflow),
            InValues("duration-text", "12", Reaction::Abort, "aborts on a duration that is not a number",
                     "sends one", HasNoNumber),
            InValues("rehash-value", "2", Reaction::Abort, "aborts on a rehash other than true", "sends one",
                     HasOtherRehash),
        };
        WeaknessKind noRequest{"missing-request", "12", Reaction::Abort,
                               "takes req for granted, and aborts without it", "leaves it out"};
        noRequest.inText = HasNoRequest;
        all.insert(all.begin(), noRequest);
        return all;
    }();
    return kinds;
}

}  // namespace rig::dvr
