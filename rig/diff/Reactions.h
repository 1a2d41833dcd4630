#pragma once

#include <map>
#include <string>

#include "rig/diff/CampaignReader.h"

namespace rig::diff {

/// What one or more runs took for one request, milliseconds.
struct Span {
    double typical = 0;  // the least of the medians
    double most = 0;     // of the 95th percentiles

    /// Makes it hold what other runs took, too.
    void Add(const Span& other);

    /// @return "10.0 to 12.5 ms"
    std::string Words() const;
};

/// @return what all runs of a case took, by request
std::map<std::string, Span> SpansOf(const Case& all);

/// @return whether the later runs were slower beyond the spread of the earlier ones: all their medians lie
/// above what 95 of 100 reactions took before, by more than a fifth and more than 20 ms. Turned round:
/// whether they were faster.
bool IsSlower(const Span& later, const Span& earlier);

}  // namespace rig::diff
