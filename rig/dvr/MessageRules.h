#pragma once

#include <string>
#include <vector>

#include "rig/dvr/Message.h"

namespace rig {

/// What a message from the harness looks like. `req`, and in dialect 2.0 `protocolVersion`, go without
/// saying.
struct MessageRule {
    const char* name;
    std::vector<const char*> required;  // attributes
    std::vector<const char*> optional;  // attributes
    bool hasChildren;
};

/// The messages that the harness may send in one dialect.
struct MessageRules {
    const char* protocolVersion;  // that each message must carry; null where none may
    std::vector<MessageRule> messages;
};

const MessageRules& Rules_1_0();
const MessageRules& Rules_2_0();

/// Throws Breach unless the message is one of the dialect and has the attributes that it must have, each
/// once, no others, and children only where it may. Their order does not matter.
void CheckMessage(const Message& message, const MessageRules& rules);

}  // namespace rig
