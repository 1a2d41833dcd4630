#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace rig::diff {

/// How long the DVR took to answer one kind of request in one run, milliseconds.
struct Reaction {
    double median = 0;
    double percentile95 = 0;
};

struct Check {
    std::string verdict;  // "PASS", as reports name verdicts and outcomes
    std::string found;
};

/// One run of a case.
struct CaseRun {
    std::string folder;  // with its evidence, below the campaign's
    bool hasPage = false;
    std::string outcome;  // "PASS", "TIMEOUT" ...
    std::string reason;
    std::vector<std::pair<std::string, Check>> checks;  // with their ids, in the judge's order
    std::map<std::string, Reaction> reactions;          // by request
    std::vector<std::string> messages;                  // "DVR FILE_COMPLETE", in order
};

/// All runs of one case.
struct Case {
    std::string name;
    std::string switches;
    std::vector<CaseRun> runs;
};

/// What tells a campaign from all others of its recorder.
struct Identity {
    std::int64_t begin = 0;  // microseconds since 1970-01-01 UTC
    std::uint32_t seed = 0;  // 0 if it has none
    std::string note;
};

/// What a campaign left in its folder.
struct Campaign {
    std::string folder;
    std::string state;  // "finished", "interrupted", "running"
    std::string note;
    std::int64_t begin = 0;  // microseconds since 1970-01-01 UTC
    std::uint32_t seed = 0;
    std::string shard;                            // "1 of 3" if it is one of three parts
    std::vector<Identity> parts;                  // that were merged into it
    std::map<std::string, std::string> versions;  // of the programs that made it, by name
    std::vector<Case> cases;                      // in the order in which they ran
    std::size_t fingerprint = 0;                  // of the record's text
};

enum class Depth { Record, Dialogues };

/// Reads the record that `velloran-rig run` left, and down to Depth::Dialogues each case's dialogue, if there
/// is one. Throws Unreadable, which names the file, what was expected and what was found.
Campaign ReadCampaign(const std::string& folder, Depth depth = Depth::Dialogues);

}  // namespace rig::diff
