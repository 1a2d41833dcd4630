#pragma once

namespace rig::report {

/// The files of page/, as they are; the styles one behind the other.
extern const char* const kReportStyle;
extern const char* const kReportScript;

}  // namespace rig::report
