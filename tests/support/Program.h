#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/Command.h"

/// What a run of a program left.
struct ProgramResult {
    int status = -1;  // exit status; -1 when a signal ended it
    std::string output;
    std::string errors;
    int signal = 0;  // that ended it; 0: none
};

/// The surroundings of a run.
struct ProgramSurroundings {
    std::vector<std::string> environment;  // NAME=VALUE, added to the test's own
    bool onTerminal = false;               // standard output is a terminal of 80 columns
    std::function<void()> prepare;         // called in the new process, before the program takes its place
    std::function<void(pid_t process)> started;  // called when the program runs
};

/// velloran-rig with these arguments, or what VELLORAN_RIG in the environment names.
Command RigCommand(const std::vector<std::string>& arguments = {});

/// Runs velloran-rig with these arguments to its end, with empty standard input. Ends it, and fails the test,
/// if it takes more than 30 seconds.
ProgramResult RunRig(const std::vector<std::string>& arguments, const ProgramSurroundings& surroundings = {});

/// Starts velloran-rig with these arguments and empty standard input. It does not outlive this process.
/// @param output,errors  descriptors for what it writes
pid_t StartRig(const std::vector<std::string>& arguments, int output, int errors);

/// @return how many lines the text has; a last line must end with a newline to count
std::size_t CountLines(const std::string& text);
