#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "HonestMessages.h"

/// All that goes out in place of one message.
struct Sent {
    std::string frame;
    std::vector<std::string> before;
    std::vector<std::string> after;
    std::string then;  // what happens behind it, a word for each; "acted" unless the defect passed it over
};

/// @return it for people, and for comparison
std::string Show(const Sent& sent);

/// @return what goes out where no defect acts
Sent PassedOver(const HonestMessage& honest);

/// What a defect makes of a message that its kind can act on. None where that is random.
using Expectation = std::function<Sent(const HonestMessage&)>;

/// @return the expectations by the defect as it is written on the command line; each kind is there at least
/// once
const std::map<std::string, Expectation>& Expectations();
