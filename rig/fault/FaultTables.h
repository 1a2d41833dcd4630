#pragma once

#include <string>
#include <utility>
#include <vector>

#include "rig/fault/Fault.h"

namespace rig::fault {

// The tables of faults, by group: each row with what plays it. To add a fault, add its row.
const std::vector<Fault>& NetworkFaults();
const std::vector<Fault>& PieceFaults();
const std::vector<Fault>& FramingFaults();
const std::vector<Fault>& ShapeFaults();     // legal XML that the harness would not write
const std::vector<Fault>& MarkupFaults();    // illegal or hostile XML
const std::vector<Fault>& DialogueFaults();  // messages that come at the wrong time, or never
const std::vector<Fault>& ValueFaults();     // what attributes say

// How long a backend waits for the answer to what it made up. Short where a good DVR does not answer.
constexpr Milliseconds kAnswerTime{5000};
constexpr Milliseconds kSilenceTime{1500};

// Acts, short for the tables.
Act Send(std::string bytes);
Act Wait(Milliseconds time);
Act Take(Milliseconds time, std::size_t answers = 1, std::vector<std::string> only = {});
Act Just(Act::Kind kind, Milliseconds time = Milliseconds(0));

/// @return the prefix that announces so many bytes
std::string PrefixOf(std::size_t length);

/// @return the text as a frame
std::string FrameOf(const std::string& text);

/// @return the value as a number of milliseconds
Milliseconds TimeOf(const std::string& value);

/// Sends a frame of the text, takes off what the DVR answers to it, and then sends the true message, if the
/// DVR has not hung up.
Script Ask(const Scene& scene, const std::string& text, Milliseconds time = kSilenceTime);

/// Sends the bytes, and closes a connection which is no longer good for anything.
Script BreakOff(const std::string& bytes);

/// @return the message with the attribute set to the value; unchanged but for that
std::string With(const std::string& text, const char* attribute, const std::string& value);
std::string Without(const std::string& text, const char* attribute);

/// @return whether the message has that attribute
bool Has(const std::string& text, const char* attribute);

/// @return the value of the message's attribute; empty if it has none
std::string Get(const std::string& text, const char* attribute);

/// @return the order of a software update, as the harness gives it in 2.0
std::string Update();

/// @return a message of the harness with these attributes, in the dialect's manner
std::string Request(int dialect, const std::string& name,
                    const std::vector<std::pair<const char*, std::string>>& attributes = {});

}  // namespace rig::fault
