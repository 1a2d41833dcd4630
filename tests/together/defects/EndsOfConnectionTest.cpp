#include <csignal>

#include "tests/together/defects/DefectTest.h"

// The end of the connection, orderly or by reset, at a byte of a message.

namespace {

constexpr const char* kShort = "readBytes == expectedSize";
constexpr const char* kShortPrefix = "writelen == static_cast<ssize_t>(headerLength)";
constexpr const char* kReset = "Connection reset by peer";

struct Close10 : Defect10 {};
struct Close20 : Defect20 {
    /// @return what the harness says about the text's end, in a world of its own
    std::string EndWithSeed(const std::string& seed, Here here = Here::current()) {
        const World fresh;
        SetUp();
        Start({}, {"--seed", seed, "--on", "EVENT"}, "=random", here);
        Opens(here);
        Lists(here);
        const LogLine line = NextLine(here);
        harness.reset();
        DvrHasEnded(here);
        dvr.reset();
        return line.text;
    }
};

TEST_F(Close10, BeforeAMessage) {
    Start({}, {"--on", "XML"}, "=0");
    Opens();
    DvrHasEnded();
    harness->StopsOnInterrupt();  // it keeps reading without a pause
    Marks({"XML"});
    Notes("closed the connection, as told");
}

TEST_F(Close10, InsideAText) {
    Start({}, {}, "=5");
    harness->LogsInFull(
        {{1, "expecting a message of 15 bytes"}, {1, "EOF at: 4  exp=15"}, {1, "read success:4"}});
    harness->FailsAssertion(kGetMessage, kShort);
    DvrHasEnded();
}

TEST_F(Close10, BehindAMessage) {
    Start({}, {"--on", "XML"});
    Opens();
    Describes();
    harness->EndsBySignal(SIGPIPE);  // it has something to answer
    EXPECT_EQ("", harness->StandardError());
    DvrHasEnded();
}

TEST_F(Close20, BeforeAMessage) {
    Start({}, {"--on", "FILE_COMPLETE"}, "=0");
    ReachesFirstFile();
    DvrHasEnded();
    harness->StopsOnInterrupt();
    Marks({"FILE_COMPLETE"});
}

TEST_F(Close20, InsideAPrefix) {
    Start({}, {"--on", "EVENT"}, "=1");
    Opens();
    Lists();
    DvrHasEnded();
    harness->StopsOnInterrupt();
}

TEST_F(Close20, BehindAPrefix) {
    Start({}, {"--on", "EVENT"}, "=2");
    Opens();
    Lists();
    Logs(1, "EOF at: 0  exp=288");
    harness->FailsAssertion(kGetMessage, kShort);
    DvrHasEnded();
}

TEST_F(Close20, InsideAText) {
    Start({}, {"--on", "EVENT"}, "=100");
    Opens();
    Lists();
    Logs(1, "EOF at: 98  exp=288");
    harness->FailsAssertion(kGetMessage, kShort);
    DvrHasEnded();
    Marks({"EVENT"});
}

TEST_F(Close20, BehindAMessage) {
    Start({}, {"--on", "EVENT"});
    ReachesFirstFile();
    harness->EndsBySignal(SIGPIPE);
    EXPECT_EQ("", harness->StandardError());
    DvrHasEnded();
}

TEST_F(Close20, BehindAMessageWithoutAnswer) {
    Start({"-x"}, {"--on", "XFER_IN_PROGRESS"});
    ReachesFirstFile();
    CompletesFile("Meta.xml", 1);
    Logs(32, "processing 'xferInProgress' option");
    Logs(16, "XFER_IN_PROGRESS 'reid' attribute = 'Event1'");
    DvrHasEnded();
    harness->StopsOnInterrupt();
}

TEST_F(Close20, AtARandomByteRepeatsItselfWithTheSeed) {
    const std::string end = EndWithSeed("1");
    ASSERT_TRUE(StartsWith(end, "EOF at: ")) << end;
    EXPECT_EQ(end, EndWithSeed("1"));
    EXPECT_NE(end, EndWithSeed("2"));
}

struct Reset10 : Defect10 {};
struct Reset20 : Defect20 {};

TEST_F(Reset10, BeforeAMessage) {
    Start({}, {"--on", "FILE_COMPLETE:2"}, "=0");
    Opens();
    Describes();
    CompletesFile("Meta.xml");
    Logs(1, std::string("read error: 104:") + kReset);
    DvrHasEnded();
    harness->StopsOnInterrupt();
    Notes("reset the connection, as told");
}

TEST_F(Reset10, InsideAText) {
    Start({}, {"--on", "FILE_COMPLETE"}, "=100");
    Opens();
    Describes();
    Logs(1, std::string("read errored out:104:") + kReset);
    Logs(1, "EOF at: 98  exp=143");
    harness->FailsAssertion(kGetMessage, kShort);
    DvrHasEnded();
    Marks({"FILE_COMPLETE"});
}

TEST_F(Reset10, BehindAMessage) {
    Start({});
    Opens();
    Logs(2, std::string("SendMessage: msg: size= 21  errorno=") + kReset);
    harness->FailsAssertion(kSendMessage, kShortPrefix);
    DvrHasEnded();
}

TEST_F(Reset20, BeforeAMessage) {
    Start({}, {"--on", "EVENT"}, "=0");
    Opens();
    Lists();
    Logs(1, std::string("read error: 104:") + kReset);
    DvrHasEnded();
    harness->StopsOnInterrupt();
    Marks({"EVENT"});
}

TEST_F(Reset20, InsideAPrefix) {
    Start({}, {"--on", "EVENT"}, "=1");
    Opens();
    Lists();
    Logs(1, std::string("read error: 104:") + kReset);
    DvrHasEnded();
    harness->StopsOnInterrupt();
}

TEST_F(Reset20, InsideAText) {
    Start({}, {"--on", "EVENT"}, "=50");
    Opens();
    Lists();
    Logs(1, std::string("read errored out:104:") + kReset);
    Logs(1, "EOF at: 48  exp=288");
    harness->FailsAssertion(kGetMessage, kShort);
    DvrHasEnded();
    Marks({"EVENT"});
}

TEST_F(Reset20, BehindAMessage) {
    // The harness pauses 250 ms before it answers: by then the reset has come.
    Start({}, {"--on", "EVENT"});
    ReachesFirstFile();
    Logs(2, std::string("SendMessage: msg: size= 88  errorno=") + kReset);
    harness->FailsAssertion(kSendMessage, kShortPrefix);
    DvrHasEnded();
    Marks({"EVENT"});
}

TEST_F(Reset20, BehindAMessageWithoutAnswer) {
    Start({"-g"}, {"--on", "CONFIGURATION_UPDATE_ERROR"});
    Logs(1, "got an OK, sending CONFIGURATION_UPDATE");
    Logs(16, "Got CONFIGURATION_UPDATE_ERROR");
    Logs(1, std::string("read error: 104:") + kReset);
    DvrHasEnded();
    harness->StopsOnInterrupt();
}

}  // namespace
