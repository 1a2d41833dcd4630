#pragma once

#include <pugixml.hpp>
#include <string>

#include "rig/result/Result.h"

namespace rig {

/// More than any page here has.
constexpr std::size_t kNoLimit = 100'000;

/// @return a result with one run, in which there is a check of each verdict, named after it ("made-up.pass"
///         ...), with a dialogue, timings and a log whose line 3 proves "made-up.fail"
result::Result MadeUp();

/// @return a result with one run and one check
result::Result With(result::Verdict verdict);

/// @return the page as XML readers see it; fails the test if they cannot
pugi::xml_document Read(const std::string& page);

/// @return the element of the page that an anchor names, or none
pugi::xml_node ById(const pugi::xml_node& page, const std::string& id);

/// @return all text below an element
std::string TextOf(const pugi::xml_node& node);

}  // namespace rig
