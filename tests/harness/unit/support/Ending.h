#pragma once

#include <functional>
#include <string>

#include "tests/harness/unit/support/Journal.h"

/// Runs code that ends its process, in a separate process that has this one's scripts and objects. It uses up
/// the scripts: here they are empty afterwards.
/// @return the lines that it adds to the journal and what it prints to standard error, in order, an
///         assertion's message as in AssertionFailed, and a last line about its end. SIGALRM ends a process
///         that runs for 30 seconds.
std::string RunToItsEnd(const std::function<void()>& code);

/// Expects a statement to end its process by SIGABRT, after exactly these lines:
///
///     EXPECT_ABORT(protocol.GetMessage(message), Read(1, 1), AssertionFailed("void f()", "x == 1"));
#define EXPECT_ABORT(statement, ...) \
    EXPECT_EQ(Expected({__VA_ARGS__}) + "ended by signal 6\n", RunToItsEnd([&] { statement; }))

/// The last line of a process that ends by exit, and not by _exit or the like: a rig's logger that holds
/// lines back has written them.
constexpr const char* kExitHandlersRan = "the handlers of exit have run\n";

/// Expects a statement to end its process by exit with that status, after exactly these lines.
#define EXPECT_EXIT_STATUS(status, statement, ...)                                                         \
    EXPECT_EQ(                                                                                             \
        Expected({__VA_ARGS__}) + kExitHandlersRan + "ended with status " + std::to_string(status) + "\n", \
        RunToItsEnd([&] { statement; }))

/// Expects a statement to end its process with that status at once, as _exit does, after exactly these lines.
#define EXPECT_STATUS_AT_ONCE(status, statement, ...)                                         \
    EXPECT_EQ(Expected({__VA_ARGS__}) + "ended with status " + std::to_string(status) + "\n", \
              RunToItsEnd([&] { statement; }))
