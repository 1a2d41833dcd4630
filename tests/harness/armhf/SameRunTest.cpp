#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "tests/harness/armhf/Scripts.h"
#include "tests/support/Process.h"
#include "tests/support/ScriptedDvr.h"
#include "tests/support/Sockets.h"
#include "tests/support/Until.h"
#include "tests/support/World.h"

namespace {

constexpr std::uint16_t kPort = 40000;  // the DVR's, which is logged

/// Everything that a run leaves.
struct Remains {
    std::string log;  // without time stamps
    std::string error;
    std::string ending;
    std::string saved;  // the files on the disk, names and contents
};

std::string WithoutTimes(const std::string& log) {
    std::istringstream lines(log);
    std::string rest;
    for (std::string line; std::getline(lines, line);) {
        rest += line.substr(line.find(' ') + 1) + "\n";
    }
    return rest;
}

std::string SavedFiles() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("/mnt/hd")) {
        names.push_back(entry.path());
    }
    std::sort(names.begin(), names.end());
    std::string saved;
    for (const std::string& name : names) {
        saved += name + ":\n" + ReadFile(name) + "\n";
    }
    return saved;
}

void Play(const Script& script) {
    ScriptedDvr dvr("127.0.0.1", kPort);
    for (const Step& step : script.steps) {
        dvr.SendsBytes(step.sent);
        dvr.ReceivesBytes(step.received);
    }
}

/// @param last  a line of the log at which to interrupt the harness; empty: it ends by itself
Remains RunOf(const Script& script, const std::string& last) {
    const World world;
    Process harness(script.switches, {});
    Until([&harness] { return sockets::IsListening(5001) or not harness.IsRunning(); });
    if (harness.IsRunning()) {
        Play(script);
    }
    if (not last.empty()) {
        EXPECT_TRUE(harness.Await([&] { return harness.output.find(last) not_eq std::string::npos; }));
        kill(harness.Id(), SIGINT);
    }
    EXPECT_TRUE(harness.Await([&harness] { return harness.HasEnded(); }));
    return {WithoutTimes(harness.output), harness.error, harness.Ending(), SavedFiles()};
}

/// The same script with this machine's harness.
Remains NativeRunOf(const Script& script, const std::string& last) {
    const std::string other = std::getenv("VELLORAN_HARNESS");
    unsetenv("VELLORAN_HARNESS");
    Remains run = RunOf(script, last);
    setenv("VELLORAN_HARNESS", other.c_str(), 1);
    return run;
}

class Target : public testing::TestWithParam<Script> {
 protected:
    void SetUp() override {
        ASSERT_NE(nullptr, std::getenv("VELLORAN_HARNESS")) << "names the harness to compare with";
    }

    static void ExpectTheSame(const std::string& last) {
        const Remains native = NativeRunOf(GetParam(), last);
        const Remains target = RunOf(GetParam(), last);
        EXPECT_EQ(native.log, target.log);
        EXPECT_EQ(native.error, target.error);
        EXPECT_EQ(native.ending, target.ending);
        EXPECT_EQ(native.saved, target.saved);
        EXPECT_NE("", native.log + native.error);
    }
};

class TargetToTheEnd : public Target {};

TEST_P(TargetToTheEnd, LogsSendsAndSavesTheSame) {
    ExpectTheSame("Closing client socket...");
}

class TargetThatEnds : public Target {};

TEST_P(TargetThatEnds, LogsAndReportsTheSame) {
    ExpectTheSame("");
}

std::string NameOf(const testing::TestParamInfo<Script>& script) {
    return script.param.name;
}

INSTANTIATE_TEST_SUITE_P(In, TargetToTheEnd, testing::ValuesIn(ScriptsToTheEnd()), NameOf);
INSTANTIATE_TEST_SUITE_P(At, TargetThatEnds, testing::ValuesIn(FatalScripts()), NameOf);

}  // namespace
