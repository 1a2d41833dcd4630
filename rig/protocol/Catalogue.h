#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "rig/base/Listing.h"

namespace rig::protocol {

enum class Sender { Dvr, Harness };

/// One message of a dialect.
struct MessageKind {
    int dialect;  // 1 or 2
    Sender sender;
    const char* name;                        // `req`
    std::vector<std::string_view> required;  // attributes, in the order in which the harness writes them
    std::vector<std::string_view> optional;  // attributes, after those; the harness does not read a DVR's
    const char* children;  // path of the elements in `msg`, "events/event"; empty if it has none
    std::vector<std::string_view> answers;  // of the other side. A DVR's: to a good request, then the reports
                                            // of a fault. The harness's: what it sends next, the usual first
};

/// @return every message of both dialects, in the order of an export
const std::vector<MessageKind>& Catalogue();

/// @return the message of that name; null if the sender has none in the dialect
const MessageKind* Find(int dialect, Sender sender, std::string_view name);

/// @return the dialect that alone has a message of that name; nothing if both have it, or none
std::optional<int> OnlyDialectOf(std::string_view name);

/// @return what `protocolVersion` says in the dialect; null if its messages have none
const char* VersionOf(int dialect);

/// @return whether the message must or may have this attribute
bool HasAttribute(const MessageKind& kind, std::string_view attribute);

/// @return whether the message has elements of that name below `msg`
bool HasChild(const MessageKind& kind, std::string_view element);

/// @return whether a message of that name reports a fault
bool IsReport(std::string_view name);

/// @return the sender for people: "DVR", "harness"
const char* NameOf(Sender sender);

/// @return the catalogue for --list-messages and the documentation
Listing ListMessages();

}  // namespace rig::protocol
