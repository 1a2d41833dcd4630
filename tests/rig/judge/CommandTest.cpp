#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <utility>

#include "rig/judge/JudgeCommand.h"
#include "rig/judge/checks/Checks.h"
#include "tests/rig/judge/Judging.h"
#include "tests/support/Program.h"
#include "tests/support/ReadFile.h"
#include "tests/support/TemporaryFolder.h"

namespace rig::judge {
namespace {

class JudgeCommand : public testing::Test {
 protected:
    /// Runs the command, also on logs of real runs. @return its exit status
    int Judge(const std::vector<std::string>& names = {}) {
        JudgeOptions options = options_;
        for (const std::string& name : names) {
            options.logs.push_back(std::string(VELLORAN_LOGS) + "/" + name + ".log");
        }
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int status = RunJudge(options);
        output_ = testing::internal::GetCapturedStdout();
        errors_ = testing::internal::GetCapturedStderr();
        return status;
    }
    std::string PathOf(const std::string& name) const { return (folder_.Path() / name).string(); }

    const TemporaryFolder folder_;
    JudgeOptions options_;
    std::string output_;  // of the last run
    std::string errors_;
};

TEST_F(JudgeCommand, EndsWithTheWorstVerdictOfAllLogs) {
    EXPECT_EQ(Judge({"clean-1.0"}), 0);
    EXPECT_EQ(Judge({"d2-missing-source"}), 1);
    EXPECT_EQ(Judge({"all-faults-2.0"}), 2);
    EXPECT_EQ(Judge({"clean-1.0", "d2-missing-source", "all-faults-2.0"}), 1);
}

TEST_F(JudgeCommand, NeedsALog) {
    EXPECT_EQ(Judge({"no-such-log"}), 66);
}

TEST_F(JudgeCommand, NeverPassesAFileThatIsNotALog) {
    options_.json = PathOf("report.json");
    for (const char* const content : {"", "something else\n\xff\n"}) {
        options_.logs = {folder_.Write("log", content)};
        EXPECT_EQ(Judge(), 66);
        EXPECT_FALSE(std::filesystem::exists(options_.json));
    }
}

TEST_F(JudgeCommand, NamesTheFirstFileThatIsNotALogAmongOthers) {
    options_.logs = {folder_.Write("one", ""), folder_.Write("other", "")};
    options_.json = PathOf("report.json");
    EXPECT_EQ(Judge({"clean-1.0"}), 66);
    EXPECT_NE(errors_.find(options_.logs[0]), std::string::npos);
    EXPECT_NE(ReadFile(options_.json).find("\"steps\": [\n"), std::string::npos)
        << "what can be told is told, with the dialogue";
}

TEST_F(JudgeCommand, NeedsTheProxysLogIfOneIsNamed) {
    options_.proxy =
        folder_.Write("proxy", "{\"time\":\"2026-11-20T22:00:00.000000Z\",\"event\":\"listen\"}\n");
    EXPECT_EQ(Judge({"clean-1.0"}), 2) << "it has no connection";
    options_.html = *options_.proxy;
    EXPECT_EQ(Judge({"clean-1.0"}), 64) << "a report must not replace it";
    options_.html.clear();
    options_.proxy = std::string(VELLORAN_LOGS) + "/clean-1.0.log";
    EXPECT_EQ(Judge({"clean-1.0"}), 66);
    options_.proxy = PathOf("nothing");
    EXPECT_EQ(Judge({"clean-1.0"}), 66);
}

TEST_F(JudgeCommand, KeepsALogThatIsNamedAsAReport) {
    options_.html = folder_.Write("log", RealLog("clean-2.0"));
    options_.logs = {options_.html};
    EXPECT_EQ(Judge(), 64);
    EXPECT_EQ(ReadFile(options_.html), RealLog("clean-2.0"));
}

TEST_F(JudgeCommand, ReplacesAnEarlierReport) {
    options_.json = folder_.Write("report.json", "an earlier one");
    EXPECT_EQ(Judge({"clean-1.0"}), 0);
    EXPECT_EQ(ReadFile(options_.json).substr(0, 1), "{");
}

TEST_F(JudgeCommand, CountsEvenASingleRun) {
    EXPECT_EQ(Judge({"clean-1.0"}), 0);
    EXPECT_NE(output_.find("\nPASS: 1 run, 18 checks, 18 passed, "), std::string::npos);
}

TEST_F(JudgeCommand, FailsForAKnownFailureThatPasses) {
    options_.known = folder_.Write("known", "event-list.source EVENT_LIST without source\n");
    EXPECT_EQ(Judge({"clean-2.0"}), 1);
    EXPECT_EQ(Judge({"clean-2.0", "d2-missing-source"}), 0);
}

TEST_F(JudgeCommand, ListsTheChecksWithoutALog) {
    options_.listChecks = true;
    options_.format = "markdown";
    EXPECT_EQ(Judge(), 0);
    EXPECT_EQ(output_, AsMarkdown(judge::ListChecks()));
}

TEST_F(JudgeCommand, ReadsStandardInput) {
    const int before = dup(STDIN_FILENO);
    const int log = open(VELLORAN_LOGS "/d2-missing-source.log", O_RDONLY);
    dup2(log, STDIN_FILENO);
    close(log);
    options_.logs = {"-"};
    EXPECT_EQ(Judge(), 1);
    dup2(before, STDIN_FILENO);
    close(before);
}

TEST_F(JudgeCommand, TakesRotatedFilesInTheirOrder) {
    const std::string log = RealLog("clean-2.0");
    const std::size_t half = log.find('\n', log.size() / 2) + 1;
    options_.logs = {folder_.Write("log.1", log.substr(0, half)), folder_.Write("log", log.substr(half))};
    EXPECT_EQ(Judge(), 0);
    std::swap(options_.logs[0], options_.logs[1]);
    EXPECT_NE(Judge(), 0);
}

/// A child process that follows a log.
class Follower {
 public:
    explicit Follower(const std::string& log) : log_(log), process_(fork()) {
        if (process_ == 0) {
            JudgeOptions options;
            options.follow = true;
            options.logs = {log};
            testing::internal::CaptureStdout();
            const int status = RunJudge(options);
            testing::internal::GetCapturedStdout();
            _exit(status);
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

TEST_F(JudgeCommand, FollowsAGrowingLogToTheEndOfTheRun) {
    const std::string log = RealLog("clean-2.0");
    const std::string path = folder_.Write("log", log.substr(0, log.size() / 2));
    const Follower follower(path);
    EXPECT_TRUE(follower.HasReadAll());
    std::ofstream(path, std::ios::app) << log.substr(log.size() / 2);
    EXPECT_EQ(follower.ExitStatus(), 0);
}

TEST_F(JudgeCommand, JudgesWhatItFollowedWhenInterrupted) {
    const std::string log = RealLog("clean-2.0");
    const std::string path = folder_.Write("log", log.substr(0, log.size() / 2));
    const Follower follower(path);
    EXPECT_TRUE(follower.HasReadAll());
    follower.Interrupt();
    EXPECT_EQ(follower.ExitStatus(), 2);
}

TEST_F(JudgeCommand, FollowsTheRunThatGoesOnAfterOthers) {
    const std::string log = RealLog("d2-missing-source");
    const std::string path = folder_.Write("log", RealLog("clean-2.0") + log.substr(0, log.size() / 2));
    const Follower follower(path);
    EXPECT_TRUE(follower.HasReadAll());
    std::ofstream(path, std::ios::app) << log.substr(log.size() / 2);
    EXPECT_EQ(follower.ExitStatus(), 1);
}

TEST_F(JudgeCommand, FollowsARunToItsEnd) {
    options_.follow = true;
    EXPECT_EQ(Judge({"clean-2.0"}), 0);
}

TEST_F(JudgeCommand, WritesItsReports) {
    options_.json = PathOf("judge.json");
    options_.tap = PathOf("judge.tap");
    options_.junit = PathOf("judge.xml");
    EXPECT_EQ(Judge({"clean-2.0"}), 0);
    for (const std::string& path : {options_.json, options_.tap, options_.junit}) {
        EXPECT_TRUE(std::ifstream(path).good()) << path;
    }
    options_.json = "/nowhere/judge.json";
    EXPECT_EQ(Judge({"clean-2.0"}), 64);
}

TEST_F(JudgeCommand, ShowsOnATerminalHowFarItIs) {
    std::filesystem::resize_file(folder_.Write("Event1/Event1.xml", ""), 3'000'000);
    const ProgramResult result =
        RunRig({"judge", VELLORAN_LOGS "/clean-1.0.log", "--delivered", folder_.Path().string()},
               {{}, true, nullptr, nullptr});
    EXPECT_NE(result.output.find("Event1/Event1.xml [=>"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find(" of 3.0 MB\r\033[K"), std::string::npos) << result.output;
}

}  // namespace
}  // namespace rig::judge
