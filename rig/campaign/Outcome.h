#pragma once

#include <algorithm>
#include <optional>
#include <string>

#include "rig/base/Child.h"
#include "rig/result/Result.h"

namespace rig::campaign {

/// How a case came out: what the judge says, or why it could say nothing. Ordered from best to worst, as the
/// judge ranks its verdicts; a case that did not run tells as little as an inconclusive one.
enum class Outcome {
    Pass,
    KnownFailure,
    NotReached,
    NotRun,
    Running,
    Inconclusive,
    Environment,
    Timeout,
    Fail,
    Interrupted
};

/// @return as reports print it, in capitals: "PASS", "TIMEOUT" ...
const char* NameOf(Outcome outcome);

/// Why the campaign stopped watching a run.
enum class End {
    None,          // it goes on
    Done,          // the dialogue is over, the harness wants nothing more
    Silence,       // -z: the DVR stayed silent, as it must, for longer than the patience
    HarnessEnded,  // by itself
    DvrFailed,     // the DVR's command ended with a status other than 0, and then nothing came
    NoEvents,      // the DVR has nothing to export
    Stuck,         // the harness has nothing to ask for, though the export is not over
    Lost,          // the DVR closed or reset the connection, on which the harness now waits for ever
    Endless,       // the same exchanges over and over
    ConnectTimeout,
    IdleTimeout,
    TransferTimeout,
    CaseTimeout,
    LogTooLarge,
    Interrupted,
    HookFailed,
    PortTaken
};

/// @return as campaign.json has it: "done", "no events", "case time-out" ...
const char* NameOf(End end);

/// The facts that decide a case's outcome.
struct CaseFacts {
    End end = End::None;
    std::string words;                        // what ended it, where that needs words
    std::optional<Ending> harness;            // how its command ended
    bool isPortTaken = false;                 // so that it could not be started
    bool isStopped = false;                   // we stopped it
    bool isConnected = false;                 // a DVR was there
    bool isDone = false;                      // the dialogue had come to its end
    std::optional<result::RunResult> judged;  // nothing if the log holds no run
    std::string errors;                       // the last line of the harness's standard error
};

/// The harness's exit status when it cannot bind its port.
constexpr int kPortTaken = 99;

/// And when SIGINT has ended it.
constexpr int kInterruptedHarness = 44;

struct Decision {
    Outcome outcome = Outcome::NotRun;
    std::string reason;  // one line
};

/// @return the outcome with its reason. Of several reasons, the one that casts doubt on the others wins:
/// interrupted, then the rig's failures, then time-outs, then what the DVR did.
Decision Decide(const CaseFacts& facts);

/// @return the outcome as a check of the run, "campaign.case", so that report formats that know only checks
/// show it. It passes if the outcome is the judge's own.
result::CheckResult CheckOf(const Decision& decision, const std::optional<result::RunResult>& judged);

/// @return the exit status: 0 pass or known failure, 1 failed or timed out, 2 inconclusive or not reached or
/// not run, 3 environment, 130 interrupted
int ExitStatusOf(Outcome outcome);

/// @return the one of two outcomes that decides for both
inline Outcome Worse(Outcome one, Outcome other) {
    return std::max(one, other);
}

}  // namespace rig::campaign
