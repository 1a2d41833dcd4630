#include <gtest/gtest.h>

#include "tests/support/Dialogue.h"

namespace {

using CommandLine = SystemTest;

TEST_F(CommandLine, IsEchoedInTheOrderGiven) {
    Harness harness({"export", "-x", "--protocol=2", "-zgc", "010", "--done", "0x1e", "-s5abc", "--event",
                     "--file", "-rt", "--up", "--", "-h"});
    harness.Listens();
    for (const char* const echo :
         {"'xferInProgress' flag set", "'protocol' option set to 2", "'sizeError' flag set",
          "'configUpdate' flag set", "closeEarly set to 8", "doneDuration set to 30",
          "sleepForGetFile set to 5", "'invalidEvent' flag set", "'invalidFile' flag set",
          "'rehash' flag set", "'transportException' flag set", "'upgrade' flag set"}) {
        harness.Logs(32, echo);
    }
    harness.StopsOnInterrupt();
    EXPECT_EQ("", harness.StandardError());
}

TEST_F(CommandLine, IsEchoedUpToAnUnknownOption) {
    Harness harness({"-z", "-c", "5", "--duration", "5", "-e"});
    harness.Logs(32, "'sizeError' flag set");
    harness.Logs(32, "closeEarly set to 5");
    harness.EndsWithStatus(0);
    EXPECT_EQ(
        0u, harness.StandardError().find("velloran: unrecognized option '--duration'\n\nUsage: velloran\n"));
}

}  // namespace
