#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "rig/diff/CampaignReader.h"
#include "rig/diff/Reactions.h"

namespace rig::history {

/// A text that a Texts keeps: equal texts have the same address.
using Text = const std::string*;

/// Keeps each of many texts once.
class Texts {
 public:
    Text Keep(const std::string& text) { return &*texts_.insert(text).first; }

 private:
    std::unordered_set<std::string> texts_;
};

/// What is known about a check in one campaign, if that says that it passed or failed.
struct CheckDigest {
    Text id;
    Text verdict;
    Text found;  // null unless it failed
};

struct ReactionDigest {
    Text request;
    double median = 0;  // of the runs' medians, milliseconds
    diff::Span span;
};

/// What all runs of a case came to.
struct CaseDigest {
    Text name;
    Text switches;
    std::vector<Text> outcomes;  // of each run, in order
    Text worst;                  // of these
    std::size_t worstCount = 0;
    std::string folder;  // of the first run that came out worst, below the campaign's
    bool hasPage = false;
    std::vector<CheckDigest> checks;
    std::vector<ReactionDigest> reactions;
};

/// A campaign, as small as a history needs it: there may be hundreds.
struct CampaignDigest {
    diff::Campaign facts;  // without its cases
    std::vector<CaseDigest> cases;
};

/// @param texts  must outlive the digest
CampaignDigest DigestOf(diff::Campaign campaign, Texts& texts);

/// @return whether a check with this verdict failed, known or not
bool HasFailed(const std::string& verdict);

/// @return whether the outcome says something about the recorder, not only about the campaign
bool TellsOfRecorder(const std::string& outcome);

}  // namespace rig::history
