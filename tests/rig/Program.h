#pragma once

#include <string>
#include <vector>

/// What a run of a program left behind.
struct ProgramResult {
    int status = -1;  // exit status; -1 when a signal ended it
    std::string output;
    std::string errors;
};

/// Runs velloran-rig with these arguments to its end, standard input empty. Ends it, and fails the test, when
/// it takes more than 30 seconds.
ProgramResult RunRig(const std::vector<std::string>& arguments);

/// @return how many lines the text has; a last line must end with a newline to count
std::size_t CountLines(const std::string& text);
