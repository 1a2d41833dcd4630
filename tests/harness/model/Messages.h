#pragma once

#include "tests/harness/model/Dialects.h"
#include "tests/harness/model/Dice.h"

/// @return a message as a DVR may send it after what the model has seen: mostly what was asked for, sometimes
///         with something missing or wrong, sometimes any message, known or unknown. Never one that ends the
///         harness: those have their own tests.
model::Element RandomMessage(Dice& dice, const model::Model& model, int protocol);
