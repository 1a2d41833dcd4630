#pragma once

#include "Dialects.h"
#include "Dice.h"

/// @return a message as a DVR may send it after what the model has seen: mostly what was asked for,
///         sometimes with something missing or wrong, sometimes anything that the dialects know or do not
///         know. None of those that end the harness: they have tests of their own.
model::Element RandomMessage(Dice& dice, const model::Model& model, int protocol);
