#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "rig/judge/Checks.h"
#include "rig/judge/RunModel.h"
#include "rig/report/Result.h"

namespace rig::judge {

/// Reads logs line by line, parts them into runs, and judges each when it is over. Memory does not grow with
/// the logs, but for what is to be kept.
class Judge {
 public:
    Judge(const Limits& limits, const Keep& keep) : limits_(limits), keep_(keep) {}

    /// Takes the next line of a log. @param file as given by the user; the line is escaped, without newline
    void Add(const std::string& file, std::uint64_t number, std::string_view line);

    /// @return whether a run has begun and none is still going on
    bool IsOver() const;

    /// Judges what is still open. @return all runs, in the order in which they began or ended
    report::Result Finish();

 private:
    void Close(int process);

    Limits limits_;
    Keep keep_;
    std::map<int, std::unique_ptr<RunModel>> open_;  // by process; -1 where the log does not name it
    int last_ = -1;                                  // the process of the last statement
    report::Result result_;
};

}  // namespace rig::judge
