#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <csignal>
#include <string>
#include <vector>

#include "tests/harness/unit/driver/FakeProtocol.h"
#include "tests/harness/unit/driver/LoggerSettings.h"
#include "tests/harness/unit/support/HarnessTest.h"

constexpr int kServer = 70;

const char* const kMain = "int main(int, char**)";

/// A test of main. It never returns, so each run is the statement of an EXPECT_ABORT or an
/// EXPECT_EXIT_STATUS.
class Driver : public HarnessTest {
 protected:
    Driver();

    /// Runs the harness with these arguments, not counting the program's name.
    static void RunMain(const std::vector<std::string>& arguments = {});

    /// Scripts a start in which everything works, up to the first wait.
    static void ScriptListening(int server = kServer);
    /// Scripts, from scratch, a start in which everything works, up to the first DVR's connection.
    static void ScriptConnection();
    /// Scripts that the DVR has sent something, and what handling it yields.
    static void ScriptMessage(int result);
};

/// @name What main does in several steps.
/// @{
/// The logger is set up.
Entries LoggerSetUp();
/// The listening socket is opened, the first wait has begun and ended, ScriptConnection's DVR is connected.
Entries Connection();
/// The first wait of the loop. Its exception set lacks the server, which the first wait has removed.
Entry FirstLoopWait(long seconds = 10000);
/// Every later wait of the loop.
Entry LoopWait(long seconds = 10000);
/// The last call never returns: nothing is scripted for it, and the process is aborted there.
Entry Unscripted(const std::string& function);
/// Everything from the first connection to the wait for the second message, for an object made with these
/// values.
Entries Service(const TestOptions& options);
/// The usage text.
Entries Usage();
/// @}
