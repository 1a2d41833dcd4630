#include "rig/log/RequestText.h"

#include <fmt/format.h>
#include <tinyxml.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "rig/protocol/Catalogue.h"

namespace rig::log {

using namespace std::string_view_literals;  // compared without a call where the sizes differ

namespace {

/// Takes what is printed, and only counts it.
struct Count {
    std::size_t size = 0;

    void operator+=(std::string_view text) { size += text.size(); }
    void operator+=(char /*byte*/) { ++size; }
};

/// The bytes that are escaped in a value: a look for each, as the length of every request is counted.
constexpr std::array<bool, 256> kEscaped = [] {
    std::array<bool, 256> escaped{};
    for (std::size_t control = 0; control < ' '; ++control) {
        escaped[control] = true;
    }
    for (const char byte : R"(&<>"')"sv) {
        escaped[static_cast<unsigned char>(byte)] = true;
    }
    return escaped;
}();

template <typename Output>
void AppendValue(Output& printed, std::string_view value) {
    const auto isEscaped = [](char byte) { return kEscaped[static_cast<unsigned char>(byte)]; };
    if (std::none_of(value.begin(), value.end(), isEscaped)) {
        printed += value;
        return;
    }
    std::string encoded;
    TiXmlBase::EncodeString(std::string(value), &encoded);
    printed += std::string_view(encoded);
}

int DialectOf(const Switches& switches) {
    return switches.protocol == 2 ? 2 : 1;
}

/// @param made  holds the value if it must be made up
/// @return the value of an attribute; of an optional one empty if the request does not have it
std::string_view ValueOf(std::string_view attribute, const Request& request, const Switches& switches,
                         std::string& made) {
    const bool isUpdate = request.name == "UPDATE_SOFTWARE"sv;
    if (attribute == "req"sv) {
        return request.name;
    }
    if (attribute == "protocolVersion"sv) {
        return protocol::VersionOf(DialectOf(switches));
    }
    if (attribute == "reid"sv || attribute == "path"sv) {
        return isUpdate ? "/mnt/hd/connectionmgr"sv : request.reid;
    }
    if (attribute == "file"sv) {
        return isUpdate ? "upgrade.zip"sv : request.file;
    }
    if (attribute == "rehash"sv) {
        return request.fault == Fault::Rehash ? "true"sv : ""sv;
    }
    if (attribute == "duration"sv) {
        made = switches.doneDuration == 0 ? "" : std::to_string(switches.doneDuration);
    } else {
        made = fmt::format(R"(<FakeConfig info="This is a bogus config used for protocol {}.0 testing" />)",
                           DialectOf(switches));
    }
    return made;
}

template <typename Output>
void AppendAttribute(Output& printed, std::string_view name, std::string_view value) {
    const char quote = value.find('"') == std::string_view::npos ? '"' : '\'';
    printed += ' ';
    printed += name;
    printed += '=';
    printed += quote;
    AppendValue(printed, value);
    printed += quote;
}

template <typename Output>
void AppendList(Output& printed, const std::vector<std::string>& events) {
    printed += events.empty() ? "<events />"sv : "<events>"sv;
    for (const std::string& event : events) {
        printed += "<string>";
        AppendValue(printed, event);
        printed += "</string>";
    }
    printed += events.empty() ? ""sv : "</events>"sv;
}

template <typename Output>
Output Printed(const Request& request, const Switches& switches) {
    Output printed;
    const auto* const kind = protocol::Find(DialectOf(switches), protocol::Sender::Harness, request.name);
    if (kind == nullptr) {
        return printed;
    }
    std::string made;
    printed += "<msg";
    for (const std::string_view name : kind->required) {
        AppendAttribute(printed, name, ValueOf(name, request, switches, made));
    }
    for (const std::string_view name : kind->optional) {
        const std::string_view value = ValueOf(name, request, switches, made);
        if (!value.empty()) {
            AppendAttribute(printed, name, value);
        }
    }
    if (*kind->children == '\0') {
        printed += " />";
    } else {
        printed += '>';
        AppendList(printed, request.statedEvents);
        printed += "</msg>";
    }
    return printed;
}

}  // namespace

std::string TextOf(const Request& request, const Switches& switches) {
    return Printed<std::string>(request, switches);
}

std::size_t SizeOf(const Request& request, const Switches& switches) {
    return Printed<Count>(request, switches).size;
}

std::uint32_t AnnouncedFor(std::size_t size, bool isSizeWrong) {
    const auto whole = static_cast<std::uint32_t>(size);
    return isSizeWrong ? whole * 3 >> 1 : whole;
}

}  // namespace rig::log
