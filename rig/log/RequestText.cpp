#include "rig/log/RequestText.h"

#include <fmt/format.h>

#include "rig/protocol/Catalogue.h"

namespace rig::log {
namespace {

void AppendEscaped(std::string& printed, char byte) {
    switch (byte) {
        case '&':
            printed += "&amp;";
            return;
        case '<':
            printed += "&lt;";
            return;
        case '>':
            printed += "&gt;";
            return;
        case '"':
            printed += "&quot;";
            return;
        case '\'':
            printed += "&apos;";
            return;
        default:
            break;
    }
    if (static_cast<unsigned char>(byte) < ' ') {
        printed += fmt::format("&#x{:02X};", static_cast<unsigned char>(byte));
    } else {
        printed += byte;
    }
}

void AppendValue(std::string& printed, const std::string& value) {
    for (const char byte : value) {
        AppendEscaped(printed, byte);
    }
}

std::string BogusConfiguration(int dialect) {
    return fmt::format(R"(<FakeConfig info="This is a bogus config used for protocol {}.0 testing" />)",
                       dialect);
}

/// @return the value of an attribute; of an optional one empty if the request does not have it
std::string ValueOf(const std::string& attribute, const Request& request, const Switches& switches,
                    int dialect) {
    const bool isUpdate = request.name == "UPDATE_SOFTWARE";
    if (attribute == "req") {
        return request.name;
    }
    if (attribute == "protocolVersion") {
        return protocol::VersionOf(dialect);
    }
    if (attribute == "reid" || attribute == "path") {
        return isUpdate ? "/mnt/hd/connectionmgr" : request.reid;
    }
    if (attribute == "file") {
        return isUpdate ? "upgrade.zip" : request.file;
    }
    if (attribute == "rehash") {
        return request.fault == Fault::Rehash ? "true" : "";
    }
    if (attribute == "duration") {
        return switches.doneDuration == 0 ? "" : std::to_string(switches.doneDuration);
    }
    return BogusConfiguration(dialect);
}

void AppendAttribute(std::string& printed, const char* name, const std::string& value) {
    const char quote = value.find('"') == std::string::npos ? '"' : '\'';
    printed += fmt::format(" {}={}", name, quote);
    AppendValue(printed, value);
    printed += quote;
}

std::string ListOf(const std::vector<std::string>& events) {
    std::string printed;
    for (const std::string& event : events) {
        printed += "<string>";
        AppendValue(printed, event);
        printed += "</string>";
    }
    return events.empty() ? "<events />" : "<events>" + printed + "</events>";
}

}  // namespace

std::string TextOf(const Request& request, const Switches& switches) {
    const int dialect = switches.protocol == 2 ? 2 : 1;
    const auto* const kind = protocol::Find(dialect, protocol::Sender::Harness, request.name);
    if (kind == nullptr) {
        return "";
    }
    std::string printed = "<msg";
    for (const char* const name : kind->required) {
        AppendAttribute(printed, name, ValueOf(name, request, switches, dialect));
    }
    for (const char* const name : kind->optional) {
        const std::string value = ValueOf(name, request, switches, dialect);
        if (!value.empty()) {
            AppendAttribute(printed, name, value);
        }
    }
    return printed + (*kind->children == '\0' ? " />" : ">" + ListOf(request.statedEvents) + "</msg>");
}

std::uint32_t AnnouncedFor(std::size_t size, bool isSizeWrong) {
    const auto whole = static_cast<std::uint32_t>(size);
    return isSizeWrong ? whole * 3 >> 1 : whole;
}

}  // namespace rig::log
