#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <vector>

#include "tests/support/Dvr.h"
#include "tests/support/Harness.h"
#include "tests/support/World.h"

// The harness's -z against a DVR that goes on anyway, and one that does not.

namespace {

using Words = std::vector<std::string>;

class WrongPrefixTest : public testing::Test {
 protected:
    /// Lets the harness and the DVR talk to the end. @return the DVR's transcript
    Words Talk(const Words& switches, const Words& arguments, int status, const std::string& why = "") {
        Harness harness(switches);
        harness.Listens();
        Dvr dvr(arguments);
        dvr.EndsWithStatus(status, why);
        harness.GetsSignal(SIGINT);
        harness.LogsUpTo(1, "shutting down");
        harness.EndsWithStatus(44);
        return dvr.Transcript();
    }

    World world;
};

bool Contains(const Words& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

TEST_F(WrongPrefixTest, EndsTheDialogueUnlessTold) {
    Talk({"-p", "2", "-z"}, {"--protocol", "2", "--frame-timeout", "0.3"}, 1,
         "expected UPDATE_SOFTWARE, UPDATE_CONFIGURATION or GET_EVENT_LIST, found a message that remained "
         "unfinished for 300 ms: announced 75, got 50");
}

TEST_F(WrongPrefixTest, OfTwoMessagesInARowIsTolerated) {
    const Words transcript =
        Talk({"-p", "2", "-z", "-u", "-g"},
             {"--protocol", "2", "--frame-timeout", "0.3", "--on-size-error", "continue"}, 0);
    EXPECT_TRUE(Contains(transcript, "size error: announced 148, got 99"));
    EXPECT_TRUE(Contains(transcript, "-> SOFTWARE_UPDATE_CONFIRM"));
    EXPECT_TRUE(Contains(transcript, "-> CONFIGURATION_UPDATE_ERROR"));
    EXPECT_NE(transcript.back().find("; 2 size errors"), std::string::npos) << transcript.back();
}

TEST_F(WrongPrefixTest, OfEveryMessageOfA10ExportIsTolerated) {
    const Words transcript =
        Talk({"-z"}, {"--frame-timeout", "0.3", "--on-size-error", "continue", "--wire-check"}, 0);
    EXPECT_TRUE(Contains(transcript, "<- DONE"));
    EXPECT_NE(transcript.back().find("; 12 size errors; wire check: 12 frames, 12 wrong"), std::string::npos)
        << transcript.back();
}

TEST_F(WrongPrefixTest, IsNotSeenOtherwise) {
    const Words transcript =
        Talk({"-p", "2", "-e", "-f", "-t", "-u", "-x", "-d", "5"}, {"--protocol", "2", "--wire-check"}, 0);
    EXPECT_NE(transcript.back().find("; wire check: 23 frames, none wrong"), std::string::npos)
        << transcript.back();
}

}  // namespace
