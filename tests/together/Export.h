#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Tables.h"
#include "tests/support/Dvr.h"
#include "tests/support/Harness.h"
#include "tests/support/RunningProxy.h"
#include "tests/support/World.h"

constexpr const char* kDelivered = "/mnt/delivered";
constexpr const char* kRecorder = "--recorder";       // among the options of a DVR
constexpr const char* kThroughProxy = "--port 5002";  // among the options of a DVR

/// What velloran-rig judge says of a log.
struct Judged {
    std::string verdict;
    /// What was found by each check that did not pass, by "ID" where it failed, "ID?" where it is open, and
    /// "ID!" otherwise, as where it warns.
    std::map<std::string, std::string> found;
    std::set<std::string> passed;  // the other checks
};

/// @return VELLORAN_STYLE of the environment: how DVRs write whose recipes do not say. `manners` sets it, to
/// see the same verdicts
std::string StyleOfAll();

/// Whether the judge reads the proxy's log, too.
enum class WithProxy { No, Yes };

/// One export from beginning to end, in a world of its own: the DVR with the recordings that are kept with
/// these tests, and the harness until it has ended or has logged nothing for longer than it ever pauses.
class Export {
 public:
    /// If the DVR delivers files, it must be to kDelivered, where the judge then looks. With kThroughProxy
    /// a proxy stands between it and the harness. With kRecorder it is ended after its first export.
    explicit Export(const Recipe& recipe, Here here = Here::current());

    Judged Judge(WithProxy proxy = WithProxy::No) const;

    /// The harness's log from its first connection on, as LinesOf gives it.
    std::vector<std::string> Log() const;

    /// The signal that ended the harness before it was interrupted and how its standard error starts, with a
    /// newline; empty: there was none.
    std::string Ending() const;

    const Dvr& GetDvr() const { return *dvr_; }
    int DvrStatus() const { return dvrStatus_; }
    const RunningProxy& GetProxy() const { return *proxy_; }

 private:
    void FollowUntilTheDvrEnds();
    void FollowUntilNothingIsAsked();

    bool delivers_;
    World world_;
    std::optional<Harness> harness_;
    std::optional<RunningProxy> proxy_;
    std::optional<Dvr> dvr_;
    int dvrStatus_ = -1;
};

/// The lines of a log after its first connection: level, blank, text.
std::vector<std::string> LinesOf(const std::string& log);

/// The same of a log that is stored for the judge.
std::vector<std::string> StoredLog(const std::string& name);
