#include "rig/report/Result.h"

#include <algorithm>

namespace rig::report {

const char* NameOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Pass:
            return "PASS";
        case Verdict::KnownFailure:
            return "KNOWN FAILURE";
        case Verdict::NotReached:
            return "NOT REACHED";
        case Verdict::Inconclusive:
            return "INCONCLUSIVE";
        case Verdict::Environment:
            return "ENVIRONMENT";
        case Verdict::Fail:
            break;
    }
    return "FAIL";
}

Verdict WorstOf(const RunResult& run) {
    Verdict worst = Verdict::Pass;
    for (const CheckResult& check : run.checks) {
        worst = std::max(worst, check.verdict);
    }
    return worst;
}

Verdict WorstOf(const Result& result) {
    Verdict worst = Verdict::Pass;
    for (const RunResult& run : result.runs) {
        worst = std::max(worst, WorstOf(run));
    }
    return worst;
}

int ExitStatusOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Pass:
        case Verdict::KnownFailure:
            return 0;
        case Verdict::NotReached:
        case Verdict::Inconclusive:
            return 2;
        case Verdict::Environment:
            return 3;
        case Verdict::Fail:
            break;
    }
    return 1;
}

}  // namespace rig::report
