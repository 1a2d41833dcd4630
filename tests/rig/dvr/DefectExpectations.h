#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/rig/dvr/HonestMessages.h"

/// Everything that goes out in place of one message.
struct Sent {
    std::string frame;
    std::vector<std::string> before;
    std::vector<std::string> after;
    std::string then;  // what happens after it, a word for each; "acted" unless the defect passed it over
};

/// @return its text, for people and for comparison
std::string Show(const Sent& sent);

/// @return what goes out if no defect acts
Sent PassedOver(const HonestMessage& honest);

/// What a defect makes of a message that its kind can act on. Empty if that is random.
using Expectation = std::function<Sent(const HonestMessage&)>;

/// @return the expectations, keyed by the defect as written on the command line; each kind occurs at least
/// once
const std::map<std::string, Expectation>& Expectations();
