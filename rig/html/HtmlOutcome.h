#pragma once

#include <cstddef>
#include <map>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "rig/result/Result.h"

// How what came out looks on a page: always a word, and a colour with a pattern of its own.

namespace rig::html {

/// One kind of outcome: a verdict, the outcome of a case, a change between two campaigns, what was reached.
struct Look {
    std::string_view name;         // as reports print it: "KNOWN FAILURE", "worse"
    const char* cssClass;          // in the style sheet: "known-failure"
    const char* counted;           // after a number: "3 failed"
    std::string_view letter = {};  // for tables with many of them
};

/// @return the look of that name, which must be one that a report prints; of any other, the one of
/// INCONCLUSIVE
const Look& LookOf(std::string_view name);

/// @return all of them, in the order in which pages count them
const std::vector<Look>& Looks();

/// Adds the outcome in words, in its colour.
pugi::xml_node AddOutcome(pugi::xml_node parent, std::string_view name);
pugi::xml_node AddVerdict(pugi::xml_node parent, result::Verdict verdict);

/// Adds the outcome as a letter, for tables with many of them, with a link to what it is about.
void AddLetter(pugi::xml_node parent, std::string_view name, std::string_view target);

/// How many there are of each kind, by name.
using Tally = std::map<std::string, std::size_t>;

/// @return what the letters of these mean: "P pass, F fail"
std::string LetterLegend(const Tally& tally);

/// Adds the numbers, large, and a bar with the share of each. A kind of which there is none is named if the
/// tally has it.
void AddTally(pugi::xml_node parent, const Tally& tally);

}  // namespace rig::html
