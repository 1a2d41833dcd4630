#pragma once

#include "protocol/VelProtocolBase.h"
#include "tests/fuzz/Choices.h"
#include "tests/fuzz/Messages.h"

namespace fuzz {

/// @return the switches of a run
TestOptions ChooseOptions(Choices& choices, int protocol);

/// Plays one dialogue with the harness: messages of a DVR until the input or the harness ends. Every frame
/// that the harness sends is checked.
void PlayDialogue(Choices& choices, VelProtocolBase& harness, Sender sender, const TestOptions& options);

}  // namespace fuzz
