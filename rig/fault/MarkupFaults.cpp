#include "rig/fault/FaultTables.h"

namespace rig::fault {
namespace {

constexpr std::size_t kDepth = 100'000;
constexpr std::size_t kHugeBytes = 10'000'000;
constexpr int kExpansions = 9;  // each ten times the one before it

/// @return the text with this inserted before the end of its first tag
std::string InTag(std::string text, const std::string& inserted) {
    const std::size_t end = text.find('>');
    return text.insert(end > 0 && text[end - 1] == '/' ? end - 1 : end, inserted);
}

std::string CutOff(const std::string& text) {
    return text.substr(0, text.size() - 2);
}

std::string WrongNesting(const std::string& text) {
    return "<a><b>" + text + "</a></b>";
}

std::string TwoRoots(const std::string& text) {
    return text + text;
}

std::string OtherRoot(const std::string& text) {
    std::string other = text;
    for (std::size_t at = 0; (at = other.find("msg", at)) != std::string::npos; at += 3) {
        other.replace(at, 3, "gsm");
    }
    return other;
}

std::string AttributeTwice(const std::string& text) {
    return InTag(text, " req=\"DONE\"");
}

std::string HugeAttribute(const std::string& text) {
    return InTag(text, " huge=\"" + std::string(kHugeBytes, 'x') + "\"");
}

std::string Deep(const std::string& text) {
    std::string deep;
    for (std::size_t level = 0; level < kDepth; ++level) {
        deep += "<a>";
    }
    deep += text;
    for (std::size_t level = 0; level < kDepth; ++level) {
        deep += "</a>";
    }
    return deep;
}

std::string Expanding(const std::string& text) {
    std::string document = "<!DOCTYPE msg [<!ENTITY e0 \"expansion\">";
    for (int level = 1; level <= kExpansions; ++level) {
        const std::string before = "&e" + std::to_string(level - 1) + ";";
        document += "<!ENTITY e" + std::to_string(level) + " \"";
        for (int copy = 0; copy < 10; ++copy) {
            document += before;
        }
        document += "\">";
    }
    return document + "]>" + InTag(text, " huge=\"&e" + std::to_string(kExpansions) + ";\"");
}

/// @return the text with an element more in it
std::string Inside(std::string text, const std::string& element) {
    const std::size_t end = text.find('>');
    return text[end - 1] == '/' ? text.replace(end - 1, 2, ">" + element + "</msg>")
                                : text.insert(end + 1, element);
}

std::string External(const std::string& text) {
    return "<!DOCTYPE msg [<!ENTITY file SYSTEM \"file:///dev/zero\">]>" + Inside(text, "<a>&file;</a>");
}

std::string WrongEncoding(const std::string& text) {
    return "<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + text;
}

std::string NotUtf8(const std::string& text) {
    return InTag(text, " name=\"\xc3\x28\xff\"");
}

std::string Controls(const std::string& text) {
    return InTag(text, " name=\"\x01\x08\x1b[2J\x7f\"");
}

std::string Blank(const std::string&) {
    return " ";
}

std::string NotXml(const std::string&) {
    return "GET_FILE please";
}

Fault Markup(const char* name, const char* does, std::string (*write)(const std::string&)) {
    return {name,
            "markup",
            Duty::Survives,
            "12",
            {},
            {},
            false,
            std::string("first sends ") + does,
            [write](const Scene& scene) { return Ask(scene, write(scene.text)); }};
}

}  // namespace

const std::vector<Fault>& MarkupFaults() {
    static const std::vector<Fault> faults = {
        Markup("cut-off", "the message without its last two bytes", CutOff),
        Markup("wrong-nesting", "it with elements that end in the wrong order", WrongNesting),
        Markup("two-roots", "it twice in one text", TwoRoots),
        Markup("other-root", "it with another element than msg", OtherRoot),
        Markup("attribute-twice", "it with a second req", AttributeTwice),
        Markup("huge-attribute", "it with an attribute of 10 MB", HugeAttribute),
        Markup("deep", "it inside 100,000 elements", Deep),
        Markup("entity-expansion", "it with an entity that expands to 9 GB", Expanding),
        Markup("external-entity", "it with an entity from a file that never ends", External),
        Markup("wrong-encoding", "it declared as UTF-16, which it is not", WrongEncoding),
        Markup("not-utf-8", "it with bytes that are not UTF-8", NotUtf8),
        Markup("control-characters", "it with control characters in an attribute", Controls),
        Markup("blank-text", "a text of one blank", Blank),
        Markup("not-xml", "a text that is not XML", NotXml),
    };
    return faults;
}

}  // namespace rig::fault
