#include "rig/base/Affix.h"
#include "rig/dvr/weaknesses/Weakness.h"

namespace rig::dvr {
namespace {

bool Contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

WeaknessKind InShape(const char* name, Reaction reaction, const char* does, const char* shownBy,
                     bool (*inText)(const std::string& text, std::size_t)) {
    WeaknessKind kind{name, "12", reaction, does, shownBy};
    kind.inText = inText;
    return kind;
}

WeaknessKind OnlyIn(const char* dialect, WeaknessKind kind) {
    kind.dialects = dialect;
    return kind;
}

bool HasMark(const std::string& text, std::size_t) {
    return StartsWith(text, "\xef\xbb\xbf");
}

bool HasDeclaration(const std::string& text, std::size_t) {
    return Contains(text, "<?xml ");
}

bool HasInstruction(const std::string& text, std::size_t) {
    const std::size_t start = text.find("<?");
    return start != std::string::npos && text.compare(start, 6, "<?xml ") != 0;
}

bool HasComment(const std::string& text, std::size_t) {
    return Contains(text, "<!--");
}

bool HasLines(const std::string& text, std::size_t) {
    return text.find_first_of("\r\n") != std::string::npos;
}

bool HasTabs(const std::string& text, std::size_t) {
    return Contains(text, "\t");
}

bool HasReferences(const std::string& text, std::size_t) {
    return Contains(text, "&#");
}

bool HasSingleQuotes(const std::string& text, std::size_t) {
    return Contains(text, "req='");
}

bool IsReordered(const std::string& text, std::size_t) {
    return Contains(text, "<msg ") && !Contains(text, "<msg req=") && Contains(text, " req=");
}

bool HasCdata(const std::string& text, std::size_t) {
    return Contains(text, "<![CDATA[");
}

/// An empty msg with an end tag.
bool IsLong(const std::string& text, std::size_t) {
    return Contains(text, "\"></msg>") || Contains(text, "'></msg>");
}

}  // namespace

const std::vector<WeaknessKind>& ShapeWeaknesses() {
    static const std::vector<WeaknessKind> kinds = {
        InShape("no-byte-order-mark", Reaction::HangUp, "hangs up on a byte order mark", "writes one",
                HasMark),
        InShape("no-declaration", Reaction::HangUp, "hangs up on an XML declaration", "writes one",
                HasDeclaration),
        InShape("no-instructions", Reaction::Abort, "aborts on a processing instruction", "writes one",
                HasInstruction),
        InShape("no-comments", Reaction::HangUp, "hangs up on a comment", "writes comments", HasComment),
        InShape("one-line", Reaction::Ignore, "ignores a message that has more than one line",
                "breaks lines in its XML", HasLines),
        InShape("no-tabs", Reaction::Abort, "aborts on a tab", "writes tabs between elements or attributes",
                HasTabs),
        InShape("no-references", Reaction::HangUp, "hangs up on a character reference",
                "writes characters as references", HasReferences),
        InShape("double-quotes", Reaction::HangUp, "looks for req=\" and hangs up if there is only req='",
                "writes attributes in single quotes", HasSingleQuotes),
        InShape("fixed-order", Reaction::Ignore, "ignores a message whose first attribute is not req",
                "writes the attributes in another order", IsReordered),
        OnlyIn("1", InShape("no-cdata", Reaction::Abort, "aborts on a CDATA section",
                            "writes texts as CDATA sections", HasCdata)),
        InShape("short-form", Reaction::Ignore, "ignores a msg without content that does not end in />",
                "writes end tags of empty elements", IsLong),
    };
    return kinds;
}

}  // namespace rig::dvr
