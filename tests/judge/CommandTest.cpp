#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "rig/judge/JudgeCommand.h"

namespace rig {
namespace {

/// Runs the command on logs of real runs. @return its exit status
int Judge(const std::vector<std::string>& names, JudgeOptions options = {}) {
    for (const std::string& name : names) {
        options.logs.push_back(std::string(VELLORAN_LOGS) + "/" + name + ".log");
    }
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = RunJudge(options);
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    return status;
}

TEST(JudgeCommand, EndsWithTheWorstVerdictOfAllLogs) {
    EXPECT_EQ(Judge({"clean-1.0"}), 0);
    EXPECT_EQ(Judge({"d2-missing-source"}), 1);
    EXPECT_EQ(Judge({"rehash-xfer-2.0"}), 2);
    EXPECT_EQ(Judge({"clean-1.0", "d2-missing-source", "rehash-xfer-2.0"}), 1);
}

TEST(JudgeCommand, NeedsALog) {
    EXPECT_EQ(Judge({}), 64);
    EXPECT_EQ(Judge({"no-such-log"}), 66);
}

TEST(JudgeCommand, NeverPassesALogThatIsNone) {
    const std::string path = testing::TempDir() + "velloran-no-log";
    JudgeOptions options;
    options.logs = {path};
    std::ofstream(path).close();
    EXPECT_EQ(Judge({}, options), 66);
    std::ofstream(path) << "something else\n\xff\n";
    EXPECT_EQ(Judge({}, options), 66);
    std::remove(path.c_str());
}

TEST(JudgeCommand, FollowsARunToItsEnd) {
    JudgeOptions options;
    options.follow = true;
    EXPECT_EQ(Judge({"clean-2.0"}, options), 0);
}

TEST(JudgeCommand, WritesItsReports) {
    JudgeOptions options;
    options.json = testing::TempDir() + "velloran-judge.json";
    options.tap = testing::TempDir() + "velloran-judge.tap";
    options.junit = testing::TempDir() + "velloran-judge.xml";
    EXPECT_EQ(Judge({"clean-2.0"}, options), 0);
    for (const std::string& path : {options.json, options.tap, options.junit}) {
        EXPECT_TRUE(std::ifstream(path).good()) << path;
        std::remove(path.c_str());
    }
    options.json = "/nowhere/judge.json";
    EXPECT_EQ(Judge({"clean-2.0"}, options), 64);
}

}  // namespace
}  // namespace rig
