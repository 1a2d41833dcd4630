#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <vector>

#include "rig/log/LogReader.h"
#include "tests/support/TemporaryFolder.h"

namespace rig::log {
namespace {

class LogReader : public testing::Test {
 protected:
    void Write(const std::string& content) { path_ = folder_.Write("log", content); }
    std::vector<std::string> Read() const {
        std::vector<std::string> lines;
        ReadLog(path_, [&lines](std::uint64_t number, std::string_view line) {
            EXPECT_EQ(number, lines.size() + 1);
            lines.emplace_back(line);
        });
        return lines;
    }

    const TemporaryFolder folder_;
    std::string path_;
};

TEST_F(LogReader, GivesEachLineEvenALastOneWithoutNewline) {
    Write("a\n\nb");
    EXPECT_EQ(Read(), (std::vector<std::string>{"a", "", "b"}));
}

TEST_F(LogReader, AssemblesLinesLongerThanAChunk) {
    const std::string line(1'000'000, 'x');
    Write(line + "\nend\n");
    EXPECT_EQ(Read(), (std::vector<std::string>{line, "end"}));
}

TEST_F(LogReader, KeepsNoMoreOfALineThanItsLimit) {
    Write(std::string(kLongestLine + 5'000'000, 'x') + "\nend\n");
    const auto lines = Read();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].size(), kLongestLine);
    EXPECT_EQ(lines[1], "end");
}

TEST_F(LogReader, FollowsAFileUntilItIsOverAndReadsAllThatIsThere) {
    Write("a\nb\nc\n");
    int taken = 0;
    FollowLog(
        path_, [&taken](std::uint64_t /*number*/, std::string_view /*line*/) { ++taken; },
        [&taken] { return taken >= 2; });
    EXPECT_EQ(taken, 3);
}

/// A separate process that reads a pipe on its standard input as a log.
class PipeReader {
 public:
    /// @param isFollowed  until it has three lines
    explicit PipeReader(bool isFollowed) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe(ends), 0);
        process_ = fork();
        if (process_ == 0) {
            dup2(ends[0], STDIN_FILENO);
            close(ends[0]);
            close(ends[1]);
            try {
                _exit(Count(isFollowed));
            } catch (const Unreadable&) {
                _exit(kUnreadable);
            }
        }
        close(ends[0]);
        pipe_ = ends[1];
    }
    ~PipeReader() { Close(); }
    PipeReader(const PipeReader&) = delete;
    PipeReader& operator=(const PipeReader&) = delete;

    void Write(const std::string& text) const {
        EXPECT_EQ(write(pipe_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    /// Waits until all is read, so that the handler is installed, and interrupts.
    void Interrupt() const {
        int left = 1;
        while (left > 0 && ioctl(pipe_, FIONREAD, &left) == 0) {
            poll(nullptr, 0, 1);
        }
        kill(process_, SIGINT);
    }

    void Close() {
        if (pipe_ != -1) {
            close(pipe_);
        }
        pipe_ = -1;
    }

    /// @return how many lines it has read
    int Lines() const {
        int status = 0;
        waitpid(process_, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

 private:
    static constexpr int kUnreadable = 255;

    static int Count(bool isFollowed) {
        int lines = 0;
        const auto take = [&lines](std::uint64_t /*number*/, std::string_view /*line*/) { ++lines; };
        if (isFollowed) {
            FollowLog("-", take, [&lines] { return lines >= 3; });
        } else {
            ReadLog("-", take);
        }
        return lines;
    }

    pid_t process_ = -1;
    int pipe_ = -1;
};

/// Whether the pipe is followed, or read to its end.
class LogReaderOfAPipe : public testing::TestWithParam<bool> {};

TEST_P(LogReaderOfAPipe, ReadsTheLastWordsOfAHarnessThatIsInterruptedWithIt) {
    PipeReader reader(GetParam());
    reader.Write("a\n");
    reader.Interrupt();
    poll(nullptr, 0, 50);  // the signal must come before the text
    reader.Write("shutting down\n");
    reader.Close();
    EXPECT_EQ(reader.Lines(), 2);
}

TEST_P(LogReaderOfAPipe, EndsAtASecondInterrupt) {
    const PipeReader reader(GetParam());
    reader.Write("a\n");
    reader.Interrupt();
    poll(nullptr, 0, 50);  // two signals at once may merge into one
    reader.Interrupt();
    EXPECT_EQ(reader.Lines(), 1);
}

INSTANTIATE_TEST_SUITE_P(Followed, LogReaderOfAPipe, testing::Bool());

TEST(LogReaderOfAFollowedPipe, EndsWhenAllIsOverThoughThePipeIsOpen) {
    const PipeReader reader(true);
    reader.Write("a\nb\nc\n");
    EXPECT_EQ(reader.Lines(), 3);
}

TEST_F(LogReader, SaysWhatCannotBeRead) {
    try {
        ReadLog("/nowhere/run.log", [](std::uint64_t /*number*/, std::string_view /*line*/) {});
        FAIL() << "expected it to throw";
    } catch (const Unreadable& error) {
        EXPECT_STREQ(error.what(), "/nowhere/run.log: expected to read it, found: No such file or directory");
    }
    try {
        ReadLog("/", [](std::uint64_t /*number*/, std::string_view /*line*/) {});
        FAIL() << "expected it to throw";
    } catch (const Unreadable& error) {
        EXPECT_STREQ(error.what(), "/: expected to read it, found: Is a directory");
    }
}

TEST_F(LogReader, LeavesNoFileOpenAndNoSignalHandled) {
    Write("a\n");
    std::signal(SIGINT, SIG_DFL);
    const int before = dup(STDERR_FILENO);
    close(before);
    Read();
    const int after = dup(STDERR_FILENO);
    close(after);
    EXPECT_EQ(after, before);
    struct sigaction action = {};
    sigaction(SIGINT, nullptr, &action);
    EXPECT_EQ(action.sa_handler, SIG_DFL);
}

}  // namespace
}  // namespace rig::log
