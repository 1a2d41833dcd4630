#pragma once

#include <fstream>
#include <sstream>
#include <string>

#include "rig/judge/Judge.h"

/// @return the content of a log of a real run, kept with the tests
inline std::string RealLog(const std::string& name) {
    std::ifstream file(std::string(VELLORAN_LOGS) + "/" + name + ".log", std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

/// @param older  how many lines are in a file of their own, since the log was rotated after them
/// @return the verdicts on the runs of a log with this text
inline rig::result::Result Judged(const std::string& text, const rig::judge::Limits& limits = {},
                                  std::uint64_t older = 0) {
    rig::result::Result result;
    rig::judge::Judge judge(limits, {true, true},
                            [&result](rig::result::RunResult run) { result.runs.push_back(std::move(run)); });
    std::istringstream lines(text);
    std::uint64_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        judge.Add(number <= older ? "test.log.1" : "test.log", number <= older ? number : number - older,
                  line);
    }
    judge.Finish();
    return result;
}

/// @return what a check of the run found
inline std::string FoundBy(const std::string& id, const rig::result::RunResult& run) {
    for (const rig::result::CheckResult& check : run.checks) {
        if (check.id == id) {
            return check.found;
        }
    }
    return "";
}

/// @return the ids of the run's checks with this verdict, separated by blanks
inline std::string With(rig::result::Verdict verdict, const rig::result::RunResult& run) {
    std::string ids;
    for (const rig::result::CheckResult& check : run.checks) {
        if (check.verdict == verdict) {
            ids.append(ids.empty() ? "" : " ").append(check.id);
        }
    }
    return ids;
}
