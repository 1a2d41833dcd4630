#include "rig/dvr/wire/WireCheck.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <pugixml.hpp>
#include <vector>

#include "rig/base/Counted.h"
#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/wire/Markup.h"
#include "rig/protocol/Catalogue.h"

namespace rig::dvr {
namespace {

std::string Hex(const std::string& bytes) {
    const std::vector<unsigned char> numbers(bytes.begin(), bytes.end());
    return fmt::format("{:02x}", fmt::join(numbers, " "));
}

std::string Join(const std::vector<std::string>& names) {
    return names.empty() ? "none" : Printable(fmt::format("{}", fmt::join(names, ", ")));
}

std::string Fault(const std::string& expected, const std::string& found) {
    return "expected " + expected + ", found " + found;
}

std::string SizeFault(const ReceivedFrame& frame, std::size_t size) {
    return Fault(fmt::format("a prefix that announces the {} bytes of the text", size),
                 fmt::format("one that announces {}", frame.announced));
}

std::string PrefixFault(const ReceivedFrame& frame) {
    const std::string shortest = EncodePrefix(static_cast<std::uint32_t>(frame.announced));
    return frame.prefix == shortest
               ? ""
               : Fault(fmt::format("the prefix {}, the shortest form of {}", Hex(shortest), frame.announced),
                       Hex(frame.prefix));
}

/// Parses the text, and anything around the document's element.
std::string DocumentFault(pugi::xml_document& document, const std::string& text) {
    constexpr unsigned int kFlags = pugi::parse_full | pugi::parse_fragment | pugi::parse_ws_pcdata;
    const std::string start = "'" + Excerpt(text) + "'";
    const auto result = document.load_buffer(text.data(), text.size(), kFlags, pugi::encoding_utf8);
    if (!result) {
        return Fault("one XML document",
                     fmt::format("{} at byte {}: {}", result.description(), result.offset, start));
    }
    if (text.empty() || text.front() != '<' || document.first_child().type() != pugi::node_element) {
        return Fault("the document's element at the start of the text", start);
    }
    const std::size_t end = DocumentEnd(text).value_or(text.size());
    if (end < text.size()) {
        return Fault("nothing after the document's element",
                     Counted(text.size() - end, "byte") + ": '" + Excerpt(text.substr(end)) + "'");
    }
    return "";
}

std::string PrintingFault(const pugi::xml_document& document, const std::string& text) {
    const auto control = std::find_if(text.begin(), text.end(), [](char byte) {
        return static_cast<unsigned char>(byte) < 0x20;  // in values they are printed as references
    });
    if (control != text.end()) {
        return Fault("compact text without line breaks",
                     fmt::format("a byte {} at offset {}", Hex({*control}), control - text.begin()));
    }
    const std::string compact = SkeletonOf(document);
    const std::string printed = SkeletonOf(text);
    return compact == printed ? ""
                              : Fault("compact text (without values, '" + Printable(compact) + "')",
                                      "'" + Printable(printed) + "'");
}

std::vector<std::string> AttributesOf(const pugi::xml_node& element) {
    std::vector<std::string> names;
    for (const pugi::xml_attribute attribute : element.attributes()) {
        names.emplace_back(attribute.name());
    }
    return names;
}

std::string AttributeFault(const protocol::MessageKind& kind, const std::vector<std::string>& found) {
    std::vector<std::string> expected(kind.required.begin(), kind.required.end());
    for (const std::string_view attribute : kind.optional) {
        if (std::find(found.begin(), found.end(), attribute) != found.end()) {
            expected.emplace_back(attribute);
        }
    }
    return expected == found
               ? ""
               : Fault(fmt::format("the attributes of {} in the order {}", kind.name, Join(expected)),
                       Join(found));
}

std::string MessageFault(const pugi::xml_node& root, int dialect) {
    const std::string name = root.attribute("req").value();
    if (root.name() != std::string("msg")) {
        return Fault("an element 'msg'", Quoted(root.name()));
    }
    const protocol::MessageKind* const kind = protocol::Find(dialect, protocol::Sender::Harness, name);
    if (kind == nullptr) {
        return Fault(fmt::format("a message of protocol {}.0", dialect), Quoted(name));
    }
    std::string fault = AttributeFault(*kind, AttributesOf(root));
    const char* const expected = protocol::VersionOf(dialect);
    const std::string version = root.attribute("protocolVersion").value();
    if (!fault.empty() || expected == nullptr || version == expected) {
        return fault;
    }
    return Fault(name + " with protocolVersion " + Quoted(expected), Quoted(version));
}

}  // namespace

std::vector<std::string> FindWireFaults(const ReceivedFrame& frame, const std::string& text, int dialect) {
    std::vector<std::string> faults;
    if (frame.announced != text.size()) {
        faults.push_back(SizeFault(frame, text.size()));
    }
    pugi::xml_document document;
    std::string fault = PrefixFault(frame);
    if (fault.empty()) {
        fault = DocumentFault(document, text);
    }
    if (fault.empty()) {
        fault = PrintingFault(document, text);
    }
    if (fault.empty()) {
        fault = MessageFault(document.first_child(), dialect);
    }
    if (!fault.empty()) {
        faults.push_back(fault);
    }
    return faults;
}

WireCheck::WireCheck(int dialect, bool tolerant) : dialect_(dialect), tolerant_(tolerant) {}

void WireCheck::Inspect(const ReceivedFrame& frame, const std::string& text, Transcript& transcript) {
    ++frames_;
    const std::vector<std::string> faults = FindWireFaults(frame, text, dialect_);
    wrong_ += faults.empty() ? 0U : 1U;
    for (const std::string& fault : faults) {
        const bool isSize = frame.announced != text.size() && fault == faults.front();
        const std::string line = fmt::format("wire check: frame {}: {}", frames_, fault);
        if (!tolerant_ && !isSize) {
            throw Failure(ExitStatus::ProtocolBroken, line);
        }
        transcript.Note(line);
    }
}

std::string WireCheck::Summary() const {
    return fmt::format("wire check: {}, {} wrong", Counted(frames_, "frame"),
                       wrong_ == 0 ? "none" : std::to_string(wrong_));
}

}  // namespace rig::dvr
