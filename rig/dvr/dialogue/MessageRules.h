#pragma once

#include "rig/dvr/wire/Message.h"

namespace rig::dvr {

/// Throws Breach unless the message is one that the harness may send in the dialect and has its required
/// attributes, each once, none that are not allowed, and children only where allowed. The order does not
/// matter.
/// @param allowsOthers  attributes that the dialect does not know are passed over
void CheckMessage(const Message& message, int dialect, bool allowsOthers = false);

}  // namespace rig::dvr
