#pragma once

#include <string>
#include <vector>

#include "rig/dvr/wire/Message.h"

namespace rig::dvr {

/// What a message from the harness looks like. `req`, and in dialect 2.0 `protocolVersion`, are implied.
struct MessageRule {
    const char* name;
    std::vector<const char*> required;  // attributes
    std::vector<const char*> optional;  // attributes
    bool hasChildren;
};

/// The messages that the harness may send in one dialect.
struct MessageRules {
    const char* protocolVersion;  // that each message must carry; null if none may
    std::vector<MessageRule> messages;
};

const MessageRules& Rules_1_0();
const MessageRules& Rules_2_0();

/// Throws Breach unless the message is one of the dialect and has its required attributes, each once, none
/// that are not allowed, and children only where allowed. The order does not matter.
void CheckMessage(const Message& message, const MessageRules& rules);

}  // namespace rig::dvr
