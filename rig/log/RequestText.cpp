#include "rig/log/RequestText.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "rig/protocol/Catalogue.h"

namespace rig::log {

using namespace std::string_view_literals;  // compared without a call where the sizes differ

namespace {

constexpr std::size_t kUsualSize = 200;  // bytes of a request

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

bool IsEscaped(char byte) {
    return static_cast<unsigned char>(byte) < ' ' || byte == '&' || byte == '<' || byte == '>' ||
           byte == '"' || byte == '\'';
}

void AppendValue(std::string& printed, const std::string& value) {
    if (std::none_of(value.begin(), value.end(), IsEscaped)) {
        printed += value;  // as almost always
        return;
    }
    for (const char byte : value) {
        AppendEscaped(printed, byte);
    }
}

std::string BogusConfiguration(int dialect) {
    return fmt::format(R"(<FakeConfig info="This is a bogus config used for protocol {}.0 testing" />)",
                       dialect);
}

/// @return the value of an attribute; of an optional one empty if the request does not have it
std::string ValueOf(std::string_view attribute, const Request& request, const Switches& switches,
                    int dialect) {
    const bool isUpdate = request.name == "UPDATE_SOFTWARE"sv;
    if (attribute == "req"sv) {
        return request.name;
    }
    if (attribute == "protocolVersion"sv) {
        return protocol::VersionOf(dialect);
    }
    if (attribute == "reid"sv || attribute == "path"sv) {
        return isUpdate ? "/mnt/hd/connectionmgr" : request.reid;
    }
    if (attribute == "file"sv) {
        return isUpdate ? "upgrade.zip" : request.file;
    }
    if (attribute == "rehash"sv) {
        return request.fault == Fault::Rehash ? "true" : "";
    }
    if (attribute == "duration"sv) {
        return switches.doneDuration == 0 ? "" : std::to_string(switches.doneDuration);
    }
    return BogusConfiguration(dialect);
}

void AppendAttribute(std::string& printed, const char* name, const std::string& value) {
    const char quote = value.find('"') == std::string::npos ? '"' : '\'';
    printed += ' ';
    printed += name;
    printed += '=';
    printed += quote;
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
    std::string printed;
    printed.reserve(kUsualSize);
    printed += "<msg";
    for (const char* const name : kind->required) {
        AppendAttribute(printed, name, ValueOf(name, request, switches, dialect));
    }
    for (const char* const name : kind->optional) {
        const std::string value = ValueOf(name, request, switches, dialect);
        if (!value.empty()) {
            AppendAttribute(printed, name, value);
        }
    }
    printed += *kind->children == '\0' ? " />" : ">" + ListOf(request.statedEvents) + "</msg>";
    return printed;
}

std::uint32_t AnnouncedFor(std::size_t size, bool isSizeWrong) {
    const auto whole = static_cast<std::uint32_t>(size);
    return isSizeWrong ? whole * 3 >> 1 : whole;
}

}  // namespace rig::log
