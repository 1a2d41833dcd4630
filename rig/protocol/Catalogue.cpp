#include "rig/protocol/Catalogue.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <utility>

namespace rig::protocol {
namespace {

constexpr Sender Dvr = Sender::Dvr;
constexpr Sender Harness = Sender::Harness;

using Names = std::vector<std::string_view>;

bool Holds(const Names& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// @return a list for people, "none" if it is empty
std::string Join(const Names& names) {
    return names.empty() ? "none" : fmt::format("{}", fmt::join(names, ", "));
}

std::string AttributesOf(const MessageKind& kind) {
    return Join(kind.required) + (kind.optional.empty() ? "" : " [" + Join(kind.optional) + "]");
}

constexpr std::size_t kDialects = 2;

std::size_t IndexOf(int dialect) {
    return static_cast<std::size_t>(dialect) - 1;
}

std::size_t IndexOf(Sender sender) {
    return static_cast<std::size_t>(sender);
}

}  // namespace

// clang-format off
const std::vector<MessageKind>& Catalogue() {
    static const std::vector<MessageKind> kinds = {
        {1, Dvr, "OK", {"req"}, {}, "", {"GET_XML", "UPDATE_CONFIGURATION"}},
        {1, Harness, "GET_XML", {"req"}, {}, "", {"XML"}},
        {1, Dvr, "XML", {"req"}, {}, "xmlFile/string", {"GET_FILE"}},
        {1, Harness, "GET_FILE", {"req", "path", "file"}, {}, "", {"FILE_COMPLETE"}},
        {1, Dvr, "FILE_COMPLETE", {"req", "reid", "file"}, {}, "",
         {"GET_FILE", "EVENT_XFER_COMPLETE", "DONE"}},
        {1, Harness, "EVENT_XFER_COMPLETE", {"req"}, {}, "events/string", {}},
        {1, Harness, "DONE", {"req"}, {}, "", {}},
        {1, Harness, "UPDATE_CONFIGURATION", {"req", "txt"}, {}, "", {"CONFIGURATION_UPDATE_ERROR"}},
        {1, Dvr, "CONFIGURATION_UPDATE_ERROR", {"req"}, {}, "", {}},

        {2, Dvr, "OK", {"req"}, {"protocolVersion"}, "",
         {"GET_EVENT_LIST", "UPDATE_CONFIGURATION", "UPDATE_SOFTWARE"}},
        {2, Harness, "GET_EVENT_LIST", {"req", "protocolVersion"}, {}, "", {"EVENT_LIST"}},
        {2, Dvr, "EVENT_LIST", {"req", "source"}, {"protocolVersion"}, "events/event", {"NEXT_EVENT"}},
        {2, Harness, "NEXT_EVENT", {"req", "reid", "protocolVersion"}, {}, "", {"EVENT", "INVALID_EVENT"}},
        {2, Dvr, "EVENT", {"req", "reid"}, {"protocolVersion"}, "xmlFile", {"GET_FILE"}},
        {2, Harness, "GET_FILE", {"req", "reid", "path", "file", "protocolVersion"}, {"rehash"}, "",
         {"FILE_COMPLETE", "INVALID_EVENT", "TRANSPORT_EXCEPTION", "XFER_IN_PROGRESS"}},
        {2, Dvr, "FILE_COMPLETE", {"req", "reid", "file", "hashCode", "length"}, {"protocolVersion"}, "",
         {"GET_FILE", "EVENT_XFER_COMPLETE"}},
        {2, Dvr, "INVALID_EVENT", {"req", "reid"}, {"protocolVersion", "file"}, "", {"NEXT_EVENT", "GET_FILE"}},
        {2, Dvr, "TRANSPORT_EXCEPTION", {"req", "reid"}, {"protocolVersion", "file"}, "", {"GET_FILE"}},
        {2, Dvr, "XFER_IN_PROGRESS", {"req", "reid"}, {"protocolVersion", "file"}, "", {}},
        {2, Harness, "EVENT_XFER_COMPLETE", {"req", "reid", "protocolVersion"}, {}, "", {"EVENT_XFER_ACK"}},
        {2, Dvr, "EVENT_XFER_ACK", {"req", "reid"}, {"protocolVersion"}, "", {"NEXT_EVENT", "DONE"}},
        {2, Harness, "DONE", {"req", "protocolVersion"}, {"duration"}, "", {}},
        {2, Harness, "UPDATE_SOFTWARE", {"req", "path", "file", "protocolVersion"}, {}, "",
         {"SOFTWARE_UPDATE_CONFIRM"}},
        {2, Dvr, "SOFTWARE_UPDATE_CONFIRM", {"req"}, {"protocolVersion"}, "", {}},
        {2, Harness, "UPDATE_CONFIGURATION", {"req", "protocolVersion", "message"}, {}, "",
         {"CONFIGURATION_UPDATE_ERROR"}},
        {2, Dvr, "CONFIGURATION_UPDATE_ERROR", {"req"}, {"protocolVersion"}, "", {}},
    };
    return kinds;
}
// clang-format on

const MessageKind* Find(int dialect, Sender sender, std::string_view name) {
    using ByName = std::vector<std::pair<std::string_view, const MessageKind*>>;
    static const auto kKinds = [] {
        std::array<std::array<ByName, 2>, kDialects> kinds;  // by dialect and sender
        for (const MessageKind& kind : Catalogue()) {
            kinds[IndexOf(kind.dialect)][IndexOf(kind.sender)].emplace_back(kind.name, &kind);
        }
        return kinds;
    }();
    if (IndexOf(dialect) >= kDialects) {
        return nullptr;
    }
    for (const auto& [known, kind] : kKinds[IndexOf(dialect)][IndexOf(sender)]) {
        if (known == name) {
            return kind;
        }
    }
    return nullptr;
}

std::optional<int> OnlyDialectOf(std::string_view name) {
    std::optional<int> dialect;
    for (const MessageKind& kind : Catalogue()) {
        if (kind.name == name && dialect) {
            return std::nullopt;
        }
        if (kind.name == name) {
            dialect = kind.dialect;
        }
    }
    return dialect;
}

const char* VersionOf(int dialect) {
    return dialect == 2 ? "2.0" : nullptr;
}

bool HasAttribute(const MessageKind& kind, std::string_view attribute) {
    return Holds(kind.required, attribute) || Holds(kind.optional, attribute);
}

bool HasChild(const MessageKind& kind, std::string_view element) {
    return fmt::format("/{}/", kind.children).find(fmt::format("/{}/", element)) != std::string::npos;
}

bool IsReport(std::string_view name) {
    static const std::set<std::string_view> kReports = [] {
        std::set<std::string_view> reports;
        for (const MessageKind& kind : Catalogue()) {
            if (kind.sender == Harness && kind.answers.size() > 1) {
                reports.insert(kind.answers.begin() + 1, kind.answers.end());
            }
        }
        return reports;
    }();
    return kReports.count(name) > 0;
}

const char* NameOf(Sender sender) {
    return sender == Dvr ? "DVR" : "harness";
}

Listing ListMessages() {
    Listing listing{{"message", "dialect", "from", "attributes [optional]", "children", "answered with"}, {}};
    for (const MessageKind& kind : Catalogue()) {
        listing.rows.push_back({kind.name, std::to_string(kind.dialect) + ".0", NameOf(kind.sender),
                                AttributesOf(kind), *kind.children == '\0' ? "none" : kind.children,
                                kind.answers.empty() ? "nothing" : Join(kind.answers)});
    }
    return listing;
}

}  // namespace rig::protocol
