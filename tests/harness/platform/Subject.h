#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

/// What a child process did when it ran some code with the logger.
struct Outcome {
    pid_t pid = 0;
    int status = -1;                  // from waitpid; 0 for a child that finished
    std::vector<std::string> writes;  // what reached standard output, one entry for each write
    std::string output;               // all of it together
    std::string report;               // what the code reported
};

/// Runs `code` in a child process that has not used the logger, so that each run starts it afresh, and waits
/// for its end. Standard input is /dev/null, standard error is the test's, and descriptors from 3 up are
/// free. A child that hangs is ended after a minute.
/// @param stdoutFd  where standard output goes instead of into the outcome, which takes writes of up to
///                  400 kB
Outcome RunSubject(const std::function<void()>& code, int stdoutFd = -1);

/// Called by the code in the child: adds to Outcome::report.
void Report(const std::string& text);

/// Called by the code in the child: what is open there, "NUMBER TARGET" for each descriptor except the tests'
/// own, in order of number.
std::vector<std::string> OpenDescriptors();

/// Logs as a statement of the harness does: one line of this level and text.
void Log(unsigned int level, const std::string& text);

/// @return the text with a 9 in place of each digit
std::string ShapeOf(std::string text);

/// @return the text of a line after the time stamp, the name and the level, without the newline;
/// "not a line: " and the line if it is not a log line
std::string TextOf(const std::string& line);
