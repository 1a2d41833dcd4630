#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>

#include "rig/judge/JudgeCommand.h"
#include "rig/judge/checks/Checks.h"
#include "tests/rig/judge/Judging.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

namespace rig::judge {
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
    EXPECT_EQ(Judge({"all-faults-2.0"}), 2);
    EXPECT_EQ(Judge({"clean-1.0", "d2-missing-source", "all-faults-2.0"}), 1);
}

TEST(JudgeCommand, NeedsALog) {
    EXPECT_EQ(Judge({"no-such-log"}), 66);
}

TEST(JudgeCommand, NeverPassesAFileThatIsNotALog) {
    const TemporaryFolder folder;
    JudgeOptions options;
    options.logs = {(folder.Path() / "log").string()};
    options.json = (folder.Path() / "report.json").string();
    for (const char* const content : {"", "something else\n\xff\n"}) {
        folder.Write("log", content);
        EXPECT_EQ(Judge({}, options), 66);
        EXPECT_FALSE(std::filesystem::exists(options.json));
    }
}

TEST(JudgeCommand, NamesTheFirstFileThatIsNotALogAmongOthers) {
    const TemporaryFolder folder;
    folder.Write("one", "");
    folder.Write("other", "");
    JudgeOptions options;
    options.logs = {(folder.Path() / "one").string(), (folder.Path() / "other").string(),
                    std::string(VELLORAN_LOGS) + "/clean-1.0.log"};
    options.json = (folder.Path() / "report.json").string();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(RunJudge(options), 66);
    testing::internal::GetCapturedStdout();
    EXPECT_NE(testing::internal::GetCapturedStderr().find(options.logs[0]), std::string::npos);
    std::ifstream report(options.json);
    const std::string told(std::istreambuf_iterator<char>(report), {});
    EXPECT_NE(told.find("\"steps\": [\n"), std::string::npos)
        << "what can be told is told, with the dialogue";
}

TEST(JudgeCommand, NeedsTheProxysLogIfOneIsNamed) {
    const TemporaryFolder folder;
    folder.Write("proxy", "{\"time\":\"2026-11-20T22:00:00.000000Z\",\"event\":\"listen\"}\n");
    JudgeOptions options;
    options.proxy = (folder.Path() / "proxy").string();
    EXPECT_EQ(Judge({"clean-1.0"}, options), 2) << "it has no connection";
    options.html = *options.proxy;
    EXPECT_EQ(Judge({"clean-1.0"}, options), 64) << "a report must not replace it";
    options.html.clear();
    options.proxy = std::string(VELLORAN_LOGS) + "/clean-1.0.log";
    EXPECT_EQ(Judge({"clean-1.0"}, options), 66);
    options.proxy = (folder.Path() / "nothing").string();
    EXPECT_EQ(Judge({"clean-1.0"}, options), 66);
}

TEST(JudgeCommand, KeepsALogThatIsNamedAsAReport) {
    const std::string path = testing::TempDir() + "velloran-precious";
    std::ofstream(path) << RealLog("clean-2.0");
    JudgeOptions options;
    options.logs = {path};
    options.html = path;
    EXPECT_EQ(Judge({}, options), 64);
    std::ifstream file(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), RealLog("clean-2.0"));
    std::remove(path.c_str());
}

TEST(JudgeCommand, ReplacesAnEarlierReport) {
    const TemporaryFolder folder;
    folder.Write("report.json", "an earlier one");
    JudgeOptions options;
    options.json = (folder.Path() / "report.json").string();
    EXPECT_EQ(Judge({"clean-1.0"}, options), 0);
    EXPECT_EQ(std::ifstream(options.json).get(), '{');
}

TEST(JudgeCommand, CountsEvenASingleRun) {
    JudgeOptions options;
    options.logs = {std::string(VELLORAN_LOGS) + "/clean-1.0.log"};
    testing::internal::CaptureStdout();
    EXPECT_EQ(RunJudge(options), 0);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("\nPASS: 1 run, 18 checks, 18 passed, "),
              std::string::npos);
}

TEST(JudgeCommand, FailsForAKnownFailureThatPasses) {
    JudgeOptions options;
    options.known = testing::TempDir() + "velloran-known";
    std::ofstream(options.known) << "event-list.source EVENT_LIST without source\n";
    EXPECT_EQ(Judge({"clean-2.0"}, options), 1);
    EXPECT_EQ(Judge({"clean-2.0", "d2-missing-source"}, options), 0);
    std::remove(options.known.c_str());
}

TEST(JudgeCommand, ListsTheChecksWithoutALog) {
    JudgeOptions options;
    options.listChecks = true;
    options.format = "markdown";
    testing::internal::CaptureStdout();
    EXPECT_EQ(RunJudge(options), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), AsMarkdown(judge::ListChecks()));
}

TEST(JudgeCommand, ReadsStandardInput) {
    const int before = dup(STDIN_FILENO);
    const int log = open(VELLORAN_LOGS "/d2-missing-source.log", O_RDONLY);
    dup2(log, STDIN_FILENO);
    close(log);
    JudgeOptions options;
    options.logs = {"-"};
    EXPECT_EQ(Judge({}, options), 1);
    dup2(before, STDIN_FILENO);
    close(before);
}

TEST(JudgeCommand, TakesRotatedFilesInTheirOrder) {
    const std::string log = RealLog("clean-2.0");
    const std::size_t half = log.find('\n', log.size() / 2) + 1;
    const std::string path = testing::TempDir() + "velloran-rotated";
    std::ofstream(path + ".1") << log.substr(0, half);
    std::ofstream(path) << log.substr(half);
    JudgeOptions options;
    options.logs = {path + ".1", path};
    EXPECT_EQ(Judge({}, options), 0);
    options.logs = {path, path + ".1"};
    EXPECT_NE(Judge({}, options), 0);
    std::remove(path.c_str());
    std::remove((path + ".1").c_str());
}

/// A child process that follows a log.
class Follower {
 public:
    explicit Follower(const std::string& log) : log_(log), process_(fork()) {
        if (process_ == 0) {
            JudgeOptions options;
            options.follow = true;
            options.logs = {log};
            _exit(Judge({}, options));
        }
    }

    /// Whether it has read the log to its end and waits for more.
    bool HasReadAll() const {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        const auto size = std::filesystem::file_size(log_);
        while (std::chrono::steady_clock::now() < deadline) {
            if (Position() == size) {
                return true;
            }
            poll(nullptr, 0, 10);
        }
        return false;
    }

    void Interrupt() const { kill(process_, SIGINT); }

    int ExitStatus() const {
        int status = 0;
        waitpid(process_, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

 private:
    /// @return how far the child has read the log; nothing if it has not opened it yet
    std::optional<std::uintmax_t> Position() const {
        const std::string folder = "/proc/" + std::to_string(process_);
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(folder + "/fd", error)) {
            if (std::filesystem::read_symlink(entry, error) == std::filesystem::canonical(log_)) {
                std::ifstream info(folder + "/fdinfo/" + entry.path().filename().string());
                std::string word;
                std::uintmax_t position = 0;
                info >> word >> position;
                return position;
            }
        }
        return std::nullopt;
    }

    std::string log_;
    pid_t process_;
};

TEST(JudgeCommand, FollowsAGrowingLogToTheEndOfTheRun) {
    const std::string log = RealLog("clean-2.0");
    const std::string path = testing::TempDir() + "velloran-growing";
    std::ofstream(path) << log.substr(0, log.size() / 2);
    const Follower follower(path);
    EXPECT_TRUE(follower.HasReadAll());
    std::ofstream(path, std::ios::app) << log.substr(log.size() / 2);
    EXPECT_EQ(follower.ExitStatus(), 0);
    std::remove(path.c_str());
}

TEST(JudgeCommand, JudgesWhatItFollowedWhenInterrupted) {
    const std::string log = RealLog("clean-2.0");
    const std::string path = testing::TempDir() + "velloran-interrupted";
    std::ofstream(path) << log.substr(0, log.size() / 2);
    const Follower follower(path);
    EXPECT_TRUE(follower.HasReadAll());
    follower.Interrupt();
    EXPECT_EQ(follower.ExitStatus(), 2);
    std::remove(path.c_str());
}

TEST(JudgeCommand, FollowsTheRunThatGoesOnAfterOthers) {
    const std::string log = RealLog("d2-missing-source");
    const std::string path = testing::TempDir() + "velloran-appended";
    std::ofstream(path) << RealLog("clean-2.0") + log.substr(0, log.size() / 2);
    const Follower follower(path);
    EXPECT_TRUE(follower.HasReadAll());
    std::ofstream(path, std::ios::app) << log.substr(log.size() / 2);
    EXPECT_EQ(follower.ExitStatus(), 1);
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

TEST(JudgeCommand, ShowsOnATerminalHowFarItIs) {
    const TemporaryFolder folder;
    folder.Write("Event1/Event1.xml", "");
    std::filesystem::resize_file(folder.Path() / "Event1/Event1.xml", 3'000'000);
    const ProgramResult result =
        RunRig({"judge", VELLORAN_LOGS "/clean-1.0.log", "--delivered", folder.Path().string()},
               {{}, true, nullptr, nullptr});
    EXPECT_NE(result.output.find("Event1/Event1.xml [=>"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find(" of 3.0 MB\r\033[K"), std::string::npos) << result.output;
}

}  // namespace
}  // namespace rig::judge
