#pragma once

#include <cstddef>
#include <pugixml.hpp>

#include "rig/html/HtmlLog.h"
#include "rig/result/Result.h"

namespace rig::html {

/// Adds the dialogue as a ladder in SVG: two lifelines, arrows with the messages, injected faults and notes
/// between them, in pieces that fit a printed page. @param limit how many steps the page holds, not counting
/// the faults
void AddLadder(pugi::xml_node section, const result::RunResult& run, const LogPlaces& places,
               std::size_t limit);

}  // namespace rig::html
