#pragma once

#include <array>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "rig/result/Result.h"

namespace rig::result {

/// Prints runs one by one, and a summary at the end. Of a printed run, only its row of the matrix is kept:
/// there may be any number of runs.
class RunPrinter {
 public:
    /// @param out  must outlive this object
    RunPrinter(std::ostream& out, bool colour) : out_(out), colour_(colour) {}

    /// Prints a short table, and the checks that did not pass with what was expected and found.
    void Add(const RunResult& run);

    /// Prints one matrix, run by check, if there were several runs, and one closing line.
    void End();

    /// @return how many runs were printed
    std::size_t Count() const { return rows_.size(); }

    /// @return the verdict that decides for all of them
    Verdict Worst() const { return worst_; }

 private:
    struct Row {
        std::string title;
        std::string letters;  // of the verdicts, in the order of columns_
    };

    std::string RowOf(Verdict verdict, std::string_view id) const;
    std::size_t ColumnOf(std::string_view id, std::size_t expected);
    void PrintMatrix(std::size_t first, std::size_t end);

    std::ostream& out_;
    bool colour_;
    /// Of a check that a run has had so far.
    struct Column {
        std::string_view id;
        std::string passRow;  // what is printed where it passes
    };

    std::vector<Column> columns_;
    std::vector<Row> rows_;
    std::array<std::size_t, kVerdicts> counts_ = {};  // of checks
    std::string text_;                                // of the last run
    Verdict worst_ = Verdict::Pass;
};

/// @return what RunPrinter prints of all runs
std::string TextReport(const Result& result, bool colour);

/// @return the dialogue of the run as a ladder: time since its start, direction, message, faults marked
std::string Timeline(const RunResult& run);

}  // namespace rig::result
