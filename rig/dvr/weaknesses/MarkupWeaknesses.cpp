#include <algorithm>
#include <pugixml.hpp>

#include "rig/base/Printable.h"
#include "rig/dvr/weaknesses/Weakness.h"
#include "rig/dvr/wire/Markup.h"

namespace rig::dvr {
namespace {

constexpr const char* kWhiteSpace = " \t\r\n";

WeaknessKind InMarkup(const char* name, Reaction reaction, const char* does, const char* shownBy,
                      bool (*inText)(const std::string& text, std::size_t limit)) {
    WeaknessKind kind{name, "12", reaction, does, shownBy};
    kind.inText = inText;
    return kind;
}

WeaknessKind Above(WeaknessKind kind, const char* value, std::size_t usual) {
    kind.value = value;
    kind.limit = usual;
    return kind;
}

bool Holds(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

bool IsLongerThan(const std::string& text, std::size_t limit) {
    return text.size() > limit;
}

bool IsEmpty(const std::string& text, std::size_t) {
    return text.empty();
}

bool IsAllBlank(const std::string& text, std::size_t) {
    return !text.empty() && text.find_first_not_of(kWhiteSpace) == std::string::npos;
}

bool HasNul(const std::string& text, std::size_t) {
    return text.find('\0') != std::string::npos;
}

bool IsCutOff(const std::string& text, std::size_t) {
    const std::size_t last = text.find_last_not_of(kWhiteSpace);
    return last != std::string::npos && text[last] != '>' && Holds(text, "<") && !DocumentEnd(text);
}

bool HasNoMarkup(const std::string& text, std::size_t) {
    return !text.empty() && text.find_first_of("<\0", 0, 2) == std::string::npos &&
           text.find_first_not_of(kWhiteSpace) != std::string::npos;
}

bool HasMoreAfterItsEnd(const std::string& text, std::size_t) {
    const auto end = DocumentEnd(text);
    return end && text.find_first_not_of(kWhiteSpace, *end) != std::string::npos && !Holds(text, "<!");
}

bool IsWronglyNested(const std::string& text, std::size_t) {
    pugi::xml_document document;
    return document.load_buffer(text.data(), text.size()).status == pugi::status_end_element_mismatch;
}

bool HasOtherRoot(const std::string& text, std::size_t) {
    return Holds(text, "<") && !Holds(text, "<msg");
}

bool IsDeeperThan(const std::string& text, std::size_t limit) {
    std::size_t depth = 0;
    for (std::size_t at = text.find('<'); at != std::string::npos && at + 1 < text.size();
         at = text.find('<', at + 1)) {
        const std::size_t end = text.find('>', at);
        const bool isElement = text[at + 1] != '/' && text[at + 1] != '!' && text[at + 1] != '?';
        if (text[at + 1] == '/') {
            depth -= std::min<std::size_t>(depth, 1);
        } else if (isElement && end != std::string::npos && text[end - 1] != '/' && ++depth > limit) {
            return true;
        }
    }
    return false;
}

bool HasEntities(const std::string& text, std::size_t) {
    return Holds(text, "<!ENTITY") && !Holds(text, " SYSTEM ");
}

bool HasExternalEntities(const std::string& text, std::size_t) {
    return Holds(text, "<!ENTITY") && Holds(text, " SYSTEM ");
}

bool HasOtherEncoding(const std::string& text, std::size_t) {
    const std::string name = "encoding=\"";
    const std::size_t at = text.find(name);
    return at != std::string::npos && text.compare(at + name.size(), 5, "UTF-8") != 0 &&
           text.compare(at + name.size(), 5, "utf-8") != 0;
}

bool IsNotUtf8(const std::string& text, std::size_t) {
    return !IsUtf8(text);
}

bool HasControls(const std::string& text, std::size_t) {
    return std::any_of(text.begin(), text.end(), [](char byte) {
        const auto code = static_cast<unsigned char>(byte);
        return (code != 0 && code < 0x20 && byte != '\t' && byte != '\r' && byte != '\n') || code == 0x7f;
    });
}

}  // namespace

const std::vector<WeaknessKind>& MarkupWeaknesses() {
    static const std::vector<WeaknessKind> kinds = {
        Above(InMarkup("short-buffer", Reaction::Abort,
                       "has a buffer of 4096 bytes, or BYTES, and aborts on a longer text",
                       "sends a long message", IsLongerThan),
              "BYTES", 4096),
        InMarkup("empty-text", Reaction::Abort,
                 "looks at the first byte of a text, and aborts if there is none",
                 "sends a message of no bytes", IsEmpty),
        InMarkup("blank-text", Reaction::Abort, "aborts on a text of blanks, in which there is no document",
                 "sends one", IsAllBlank),
        InMarkup("c-string", Reaction::Abort,
                 "aborts when a text is not as long as the C string that it begins with", "sends a NUL",
                 HasNul),
        InMarkup("past-the-end", Reaction::Abort,
                 "looks for the end of a tag beyond the end of the text, and aborts", "cuts off a document",
                 IsCutOff),
        InMarkup("needs-markup", Reaction::Abort, "looks for a tag, and aborts if there is none",
                 "sends what is not XML", HasNoMarkup),
        InMarkup("one-document", Reaction::Abort, "aborts on what comes after the end of a document",
                 "sends more than its document in a text", HasMoreAfterItsEnd),
        InMarkup("trusts-nesting", Reaction::Abort, "aborts when an element ends that did not begin last",
                 "nests its elements wrongly", IsWronglyNested),
        InMarkup("needs-msg", Reaction::Abort, "looks for <msg, and aborts if there is none",
                 "sends another document", HasOtherRoot),
        Above(InMarkup("recursion", Reaction::Abort,
                       "calls itself for each level of a document, and aborts below 1000, or LEVELS",
                       "sends a deep document", IsDeeperThan),
              "LEVELS", 1000),
        InMarkup("expands-entities", Reaction::Hang, "expands the entities of a document, and never ends",
                 "sends entities that grow", HasEntities),
        InMarkup("external-entities", Reaction::Hang,
                 "reads what the entities of a document name, and never ends", "sends an external entity",
                 HasExternalEntities),
        InMarkup("no-encodings", Reaction::Abort, "aborts on an encoding other than UTF-8", "declares one",
                 HasOtherEncoding),
        InMarkup("trusts-encoding", Reaction::Abort, "aborts on bytes that are not UTF-8", "sends some",
                 IsNotUtf8),
        InMarkup("control-characters", Reaction::Abort, "has no place for control characters, and aborts",
                 "sends some", HasControls),
    };
    return kinds;
}

}  // namespace rig::dvr
