#pragma once

#include <string>
#include <utility>

#include "tests/fuzz/Choices.h"

namespace fuzz {

/// What the other side waits for: the values that a good message carries.
struct Expected {
    std::string event;
    std::pair<std::string, std::string> file;  // event and name
    std::string req;                           // the message itself; empty: any
};

/// Who sends a message, and in which dialect.
enum class Sender { Dvr_1_0, Dvr_2_0, Harness_1_0, Harness_2_0 };

/// @return the text of a message, chosen from a table of the dialect's, mostly whole and with mostly the
///         expected values; now and then with attributes or elements missing, doubled or strange, or with
///         bytes damaged anywhere
std::string MakeMessage(Choices& choices, Sender sender, const Expected& expected);

/// @return a text with a few bytes replaced, removed, inserted or doubled
std::string Damaged(Choices& choices, std::string text);

}  // namespace fuzz
