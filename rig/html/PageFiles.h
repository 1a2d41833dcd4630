#pragma once

namespace rig::html {

/// The files of page/, unchanged, one after another.
extern const char* const kPageStyle;
extern const char* const kPageScript;

}  // namespace rig::html
