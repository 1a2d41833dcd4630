#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "rig/history/Digest.h"

namespace rig::history {

enum class Order { Time, Note };

/// One campaign. Everything refers to it by its place among all.
struct Build {
    diff::Campaign facts;    // without its cases
    std::size_t passed = 0;  // of its cases
    std::size_t cases = 0;
    std::vector<std::string>
        otherVersions;  // of the programs that made it, than those of the build before it

    /// @return "firmware 1.9", or when it began if it has no note
    std::string Name() const;

    /// @return what sets it apart: "part 1 of 3, interrupted"; mostly nothing
    std::string Remarks() const;
};

/// A case in one campaign.
struct Cell {
    std::size_t build = 0;
    CaseDigest digest;
};

/// A case over all campaigns that have it.
struct CaseCourse {
    Text name;
    Text switches;  // in the last of them
    std::vector<Cell> cells;

    bool HasAlwaysPassed() const;
};

/// A check that failed when it last came to a verdict, in these cases alike.
struct Failure {
    Text check;
    Text verdict;  // the last one
    Text found;    // last
    std::vector<Text> cases;
    std::size_t since = 0;              // the build with which the present run of failures began
    std::size_t last = 0;               // the build in which it was last seen
    std::optional<std::size_t> passed;  // the last build in which it passed
    std::string folder;                 // of the first case in the build where it was last seen
    bool hasPage = false;
};

/// A case whose outcome changed between runs with the same note.
struct UnsteadyCase {
    struct Firmware {
        std::string note;
        std::map<std::string, std::size_t> outcomes;  // how often each came
    };
    Text name;
    std::size_t changes = 0;          // how often the outcome was another than in the run before
    std::size_t chances = 0;          // how often it could have been
    std::vector<Firmware> firmwares;  // with which it changed

    double Rate() const { return static_cast<double>(changes) / static_cast<double>(chances); }
};

/// What a recorder took for one request in one case, over all campaigns.
struct ReactionCourse {
    struct Point {
        std::size_t build = 0;
        ReactionDigest digest;
    };
    struct Mark {
        std::size_t point = 0;
        bool isSlower = false;
        diff::Span before;  // the spread that it left
    };
    Text request;
    Text name;  // of the case
    std::vector<Point> points;
    std::vector<Mark> marks;
};

/// What was given and does not count.
struct LeftOut {
    std::string folder;
    std::string reason;
};

struct History {
    Order order = Order::Time;
    std::vector<Build> builds;
    std::vector<CaseCourse> cases;          // in the order of the last build, then those that it lacks
    std::vector<Failure> failures;          // those of the latest builds first
    std::vector<UnsteadyCase> unsteady;     // the most unsteady first
    std::vector<ReactionCourse> reactions;  // by request; those with a mark first
    std::vector<LeftOut> leftOut;

    /// @return "12 campaigns: 1 check fails, 0 cases are unsteady, 2 reaction times left their spread"
    std::string Words() const;

    /// @return those of more cases than anybody reads that did not always pass; else all
    std::vector<const CaseCourse*> CasesToShow() const;
};

/// Puts campaigns in order and finds what their course shows. What is given twice counts once.
History HistoryOf(std::vector<CampaignDigest> campaigns, Order order, std::vector<LeftOut> leftOut = {});

// The rules. Each takes the courses of all cases, whose cells are in the order of the builds.

/// A check fails since the first build of its present run of failures. Verdicts that neither pass nor fail
/// do not end the run.
std::vector<Failure> FailuresIn(const std::vector<CaseCourse>& cases);

/// A campaign without a note has a firmware of its own; outcomes that say nothing of the recorder are left
/// out.
std::vector<UnsteadyCase> UnsteadyIn(const std::vector<CaseCourse>& cases, const std::vector<Build>& builds);

/// A build is marked if it was slower than the ten before it, or faster; only those since the last mark
/// count. See diff::IsSlower.
std::vector<ReactionCourse> ReactionsIn(const std::vector<CaseCourse>& cases);

}  // namespace rig::history
