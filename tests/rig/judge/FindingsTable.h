#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "rig/result/Result.h"

/// A row of findings.txt, where the layout is explained.
struct FindingsRow {
    std::string title;
    std::vector<std::string> recipe;    // with all names replaced
    std::vector<std::string> findings;  // "VERDICT check | expected | found"
    std::string shown;  // checks whose findings the row has though an earlier row has the like
};

/// What a failed test calls its row.
inline void PrintTo(const FindingsRow& row, std::ostream* out) {
    *out << row.title;
}

/// Throws std::runtime_error with the line that is not as expected.
std::vector<FindingsRow> ReadFindings();

/// @return the verdicts on the log of this recipe
rig::result::Result ResultOf(const FindingsRow& row);

/// @return all that the judge finds in the log of this recipe, as a row has it
std::vector<std::string> FindingsOf(const FindingsRow& row);

/// @return the table with what the judge finds now, each text at its first row
std::string FindingsAnew();
