#pragma once

namespace rig::html {

/// The files of page/, unchanged; the styles one after another.
extern const char* const kReportStyle;
extern const char* const kReportScript;

}  // namespace rig::html
