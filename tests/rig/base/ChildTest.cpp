#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "rig/base/Child.h"

namespace rig {
namespace {

/// What a command wrote, and how it ended.
struct Ran {
    std::string output;
    Ending end;
};

/// A pipe's two ends.
std::array<Descriptor, 2> Pipe() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

std::string ReadAll(int descriptor) {
    std::string text;
    char piece[256];
    for (ssize_t count = 0; (count = read(descriptor, piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<std::size_t>(count));
    }
    return text;
}

bool HasEnded(Child& child) {
    pollfd waited = {child.EndDescriptor(), POLLIN, 0};
    poll(&waited, 1, 10'000);
    return child.End().has_value();
}

Ran RunIt(const std::string& command, const std::vector<std::string>& environment = {}) {
    auto [output, write] = Pipe();
    Launch launch{command, write.Number(), write.Number()};
    launch.environment = environment;
    Child child(launch);
    write.Close();
    Ran ran;
    ran.output = ReadAll(output.Number());
    EXPECT_TRUE(HasEnded(child)) << command;
    ran.end = child.End().value_or(Ending{});
    return ran;
}

TEST(Child, TellsHowItsCommandEnded) {
    EXPECT_TRUE(RunIt("exit 3").end.IsStatus(3));
    EXPECT_TRUE(RunIt("kill -9 $$").end.IsSignal(SIGKILL));
    EXPECT_TRUE(RunIt("no-such-program -p 2").end.IsStatus(127));
    EXPECT_EQ((Ending{3, {}}).Words(), "ended with status 3");
    EXPECT_EQ((Ending{{}, SIGABRT}).Words(), "was ended by signal 6 (Aborted)");
    EXPECT_TRUE((Ending{134, {}}).IsSignal(SIGABRT));
}

TEST(Child, RunsWhateverAShellTakes) {
    EXPECT_EQ(RunIt("echo 'one  two'").output, "one  two\n");
    EXPECT_EQ(RunIt("cd / && pwd").output, "/\n");
    EXPECT_EQ(RunIt("A=1 printenv A").output, "1\n");
    EXPECT_EQ(RunIt(" cd /usr && pwd").output, "/usr\n");
    EXPECT_TRUE(RunIt("\tcd /usr").end.IsStatus(0)) << "cd is not a program";
    EXPECT_EQ(RunIt("echo out; echo err >&2").output, "out\nerr\n");
    EXPECT_EQ(RunIt("printenv VELLORAN_CASE", {"VELLORAN_CASE=x y"}).output, "x y\n");
}

TEST(Child, StaysDeafToTheHangupThatWeIgnore) {
    const auto before = std::signal(SIGHUP, SIG_IGN);
    EXPECT_TRUE(RunIt("sh -c 'kill -HUP $$'").end.IsStatus(0));
    std::signal(SIGHUP, before);
    EXPECT_TRUE(RunIt("sh -c 'kill -HUP $$'").end.IsSignal(SIGHUP));
}

TEST(Child, HasNoInputAndDefaultSignals) {
    EXPECT_EQ(RunIt("cat").output, "");
    EXPECT_TRUE(RunIt("sh -c 'kill -PIPE $$'").end.IsSignal(SIGPIPE));
}

/// Starts a command that says "ready" and then waits, and sends it a signal.
Ending EndOf(const std::string& command, int signal) {
    auto [output, write] = Pipe();
    Child child({command, write.Number(), write.Number()});
    char piece[16];
    EXPECT_GT(read(output.Number(), piece, sizeof piece), 0);
    child.Signal(signal);
    EXPECT_TRUE(HasEnded(child)) << command;
    return child.End().value_or(Ending{});
}

TEST(Child, GetsSignalsAsTheProgramItselfWould) {
    const std::string program = "sh -c 'trap \"exit 44\" INT; echo ready; while :; do sleep 0.01; done'";
    EXPECT_TRUE(EndOf(program, SIGINT).IsStatus(44));
    EXPECT_TRUE(EndOf("true && " + program, SIGINT).IsStatus(44)) << "through a shell that waits for it";
    EXPECT_TRUE(EndOf(program, SIGKILL).IsSignal(SIGKILL));
}

TEST(Child, MayLeaveOthersUntilItsEnd) {
    auto [output, write] = Pipe();
    {
        Launch launch{"(echo ready; exec sleep 1000) & exit 0", write.Number(), write.Number()};
        launch.mayLeaveOthers = true;
        Child child(launch);
        write.Close();
        EXPECT_TRUE(HasEnded(child));
        char piece[16];
        EXPECT_EQ(read(output.Number(), piece, sizeof piece), 6);
        pollfd waited = {output.Number(), POLLIN, 0};
        EXPECT_EQ(poll(&waited, 1, 50), 0) << "it has gone";
    }
    EXPECT_EQ(ReadAll(output.Number()), "");
}

TEST(Child, TakesItsGroupAlong) {
    auto [output, write] = Pipe();
    {
        Child child({"sleep 1000 & echo ready; exit 0", write.Number(), write.Number()});
        write.Close();
        EXPECT_TRUE(HasEnded(child));
    }
    EXPECT_EQ(ReadAll(output.Number()), "ready\n");  // ends only when all that hold the pipe are gone
    {
        auto [rest, held] = Pipe();
        Child child({"sleep 1000", held.Number(), held.Number()});
        held.Close();
        output = std::move(rest);
    }
    EXPECT_EQ(ReadAll(output.Number()), "");
}

}  // namespace
}  // namespace rig
