#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "rig/base/Child.h"
#include "rig/campaign/Cases.h"
#include "rig/campaign/Outcome.h"
#include "rig/campaign/Shard.h"
#include "rig/campaign/evidence/Coverage.h"
#include "rig/result/Result.h"

namespace rig::campaign {

/// A command that a case started.
struct ProcessRecord {
    std::string command;
    std::optional<Ending> end;
    std::string stoppedBy;  // "SIGINT", the command of --stop; empty if it ended by itself
};

struct HookRecord {
    std::string hook;  // "before-case"
    std::string command;
    std::optional<Ending> end;
    double seconds = 0;
};

/// Where the time of a case went, in seconds.
struct CaseTimes {
    double waited = 0;    // until port 5001 was free
    double duration = 0;  // from the start of the harness to its end
    double pauses = 0;    // of that, the harness's own
    double dvr = 0;       // of that, the harness waiting for the DVR
    double lingered = 0;  // of that, after the end of the dialogue, for a DVR that calls again
    double overhead = 0;  // of that, the rest: the campaign's own
    double hooks = 0;

    CaseTimes& operator+=(const CaseTimes& other);
};

struct CaseRecord {
    Case plan;
    std::string id;  // of this run: the case's name, and "-N" for run N if there are several
    int run = 1;
    Outcome outcome = Outcome::NotRun;
    std::string reason;
    End over = End::None;    // why it was no longer watched
    bool isSuspect = false;  // the clean export before it failed: do not blame how the DVR handles faults
    std::optional<std::int64_t> begin;  // microseconds since 1970-01-01 UTC
    std::optional<std::int64_t> end;
    CaseTimes times;
    int attempts = 0;  // starts of the harness: more than one if the port was still held
    ProcessRecord harness;
    std::optional<ProcessRecord> dvr;
    std::vector<HookRecord> hooks;
    std::vector<std::string> files;           // in the case's folder
    std::vector<std::string> excluded;        // checks that do not count in this case
    std::optional<result::Verdict> verdict;   // the judge's own
    std::vector<result::CheckResult> checks;  // without evidence
    std::vector<result::Timing> timings;

    std::string Folder() const { return "cases/" + id; }
};

/// How the runs of one case differ.
struct Spread {
    std::string name;
    std::map<std::string, int> outcomes;  // by name
    std::vector<double> durations;        // seconds, ascending
    struct Reaction {
        std::string request;
        double least = 0;  // of the medians, milliseconds
        double most = 0;
        double longest = 0;  // of all
    };
    std::vector<Reaction> reactions;
};

/// A campaign that a merged one is made of.
struct PartRecord {
    std::string folder;  // as the command line named it
    std::string note;
    std::uint32_t seed = 0;
    std::vector<std::pair<std::string, std::string>> versions;
    std::optional<Shard> shard;
    std::string state;  // "finished", "interrupted", "killed"
    std::int64_t begin = 0;
    std::optional<std::int64_t> end;
};

/// What a part has of a case that stands as another part ran it.
struct OtherRun {
    std::string id;
    std::size_t part = 0;  // from 1
    Outcome outcome = Outcome::NotRun;
    std::string folder;  // in the merged campaign's
};

/// How a merged campaign came about.
struct MergeRecord {
    std::vector<PartRecord> parts;
    std::vector<std::string> differences;  // what the parts do not have in common, each in a sentence
    std::vector<std::string> doubles;      // cases that several parts ran, though one would have done
    std::vector<std::string> missing;      // cases that no part ran
    std::vector<OtherRun> others;
};

/// Of a part of a campaign.
struct ShardRecord {
    Shard part;
    std::vector<std::string> cases;  // ids, of all parts, in the order of the whole campaign
    std::vector<std::string>
        knownUnseen;  // known failures that its cases reached, but did not show: another part may
};

struct CampaignRecord {
    std::string state = "running";  // "finished", "interrupted"
    std::vector<std::string> commandLine;
    std::string workingDirectory;
    std::vector<std::pair<std::string, std::string>> versions;
    std::vector<std::pair<std::string, std::string>> commands;  // what the options name: harness, dvr, hooks
    std::string note;
    std::uint32_t seed = 0;
    std::optional<ShardRecord> shard;  // none: it is the whole
    int repeat = 1;
    Patience patience;
    std::optional<double> maxReaction;
    std::optional<double> linger;
    bool isStrict = false;
    bool isDirect = false;
    std::int64_t begin = 0;
    std::optional<std::int64_t> end;
    std::vector<CaseRecord> cases;  // all planned ones, in order
    std::vector<std::string>
        knownUnseen;  // known failures that occurred in no case, though some reached them
    Coverage coverage;
    std::optional<MergeRecord> merged;  // nothing: it ran as a whole

    /// @return whether all of its parts had this seed
    bool HasOneSeed() const;

    /// @return the outcome that decides for the campaign
    Outcome Whole() const;

    /// @return how many cases had each outcome, by name
    std::map<std::string, int> Counts() const;

    /// @return for each case with several runs, how they differ
    std::vector<Spread> Spreads() const;

    /// @return where the time of all cases went, in total
    CaseTimes Times() const;
};

/// @return now, in microseconds since 1970-01-01 UTC
std::int64_t Now();

}  // namespace rig::campaign
