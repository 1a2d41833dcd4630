#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace rig::diff {

/// All verdicts and outcomes, from the best to the worst: of several runs the worst counts. As a campaign
/// ranks them, except INTERRUPTED, which says nothing about the DVR and must not hide that another run
/// failed.
constexpr std::array<std::string_view, 11> kVerdicts = {
    "PASS",         "WARNING",     "KNOWN FAILURE", "NOT REACHED", "NOT RUN", "RUNNING",
    "INCONCLUSIVE", "INTERRUPTED", "ENVIRONMENT",   "TIMEOUT",     "FAIL"};

/// @return the place in that order; after all of them if the name is not among them
inline std::size_t Severity(std::string_view verdict) {
    return static_cast<std::size_t>(std::find(kVerdicts.begin(), kVerdicts.end(), verdict) -
                                    kVerdicts.begin());
}

inline bool IsKnown(std::string_view verdict) {
    return Severity(verdict) < kVerdicts.size();
}

inline bool IsPass(std::string_view verdict) {
    return verdict == "PASS";
}

inline bool IsWarning(std::string_view verdict) {
    return verdict == "WARNING";
}

/// @return whether it says that the DVR did wrong
inline bool IsFailure(std::string_view verdict) {
    return verdict == "FAIL" || verdict == "TIMEOUT";
}

}  // namespace rig::diff
