#include <gtest/gtest.h>

#include "tests/support/Dialogue.h"

namespace {

const char* const kUsage =
    "\n"
    "Usage: velloran\n"
    "       [-c OR --close num]    Close early after handling num events (to test DONE duration)(num>0)\n"
    "       [-d OR --duration num] Set DONE message duration to num minutes (num>0)\n"
    "       [-p OR --protocol 1|2] Set messaging protocol (default=1) \n"
    "       [-r OR --rehash]       Set rehash=true in all GET_FILE messages (default=false) \n"
    "       [-e OR --event]        Verify INVALID_EVENT message in response to bad event (default=false) \n"
    "       [-f OR --file]         Verify INVALID_EVENT message in response to bad file (default=false) \n"
    "       [-t OR --transport]    Verify TRANSPORT_EXCEPTION message from DVR (default=false) \n"
    "       [-u OR --upgrade]      Upgrade to /mnt/hd/connectionmgr/upgrade.zip\n"
    "       [-x OR --xfer]         Verify XFER_IN_PROGRESS message from DVR (default=false) \n"
    "       [-s OR --sleep]        Sleep (in seconds) incurred on each GET_FILE exchange (to slow down "
    "export) \n"
    "       [-z OR --size]         Force header size error of size-10 (help test message parser on DVR) \n"
    "       [-g OR --config]       Send config update only (bogus config, but it tests the protocol) \n"
    "\n";

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

TEST_F(CommandLine, ThatIsRejectedGetsTheUsageTextAndStatus0) {
    for (const std::vector<std::string>& switches :
         {std::vector<std::string>{"--help"}, {"-c", "0"}, {"-p", "3"}, {"--sleep", "5"}}) {
        Harness harness(switches);
        harness.EndsWithStatus(0);
        EXPECT_EQ(kUsage, harness.StandardError()) << switches[0];
    }
}

TEST_F(CommandLine, IsEchoedUpToAnUnknownOption) {
    Harness harness({"-z", "-c", "5", "--duration", "5", "-e"});
    harness.Logs(32, "'sizeError' flag set");
    harness.Logs(32, "closeEarly set to 5");
    harness.EndsWithStatus(0);
    EXPECT_EQ(std::string("velloran: unrecognized option '--duration'\n") + kUsage, harness.StandardError());
}

}  // namespace
