#pragma once

#include <string>

#include "rig/result/Result.h"

namespace rig::html {

/// @return the result as one self-contained HTML page: a table of the checks, the dialogue drawn as a
///         ladder, the log with a search. Needs the runs' steps and log.
std::string HtmlReport(const result::Result& result);

}  // namespace rig::html
