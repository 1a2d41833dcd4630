#pragma once

#include <string>
#include <utility>
#include <vector>

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

/// What the value of an attribute is about.
enum class Value { Event, FileEvent, File, Hash, Length, Source, Version, Path, Zip, Config, True, Minutes };

/// What is inside `msg`.
enum class Body { None, EventList, Identifiers, Description, Descriptions };

struct Attribute {
    const char* name;
    Value value;
};

struct Form {
    const char* req;
    std::vector<Attribute> attributes;
    Body body;
    const char* answer = "";  // of a good DVR
};

using Forms = std::vector<Form>;

/// @return the messages that the sender has, some in more than one form
const Forms& FormsOf(Sender sender);

/// @return the text of a message, chosen from the sender's forms, mostly whole and with mostly the
///         expected values; now and then with attributes or elements missing, doubled or strange, or with
///         bytes damaged anywhere
std::string MakeMessage(Choices& choices, Sender sender, const Expected& expected);

/// @return a text with a few bytes replaced, removed, inserted or doubled
std::string Damaged(Choices& choices, std::string text);

}  // namespace fuzz
