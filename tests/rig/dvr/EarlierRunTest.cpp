#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "rig/dvr/replay/EarlierRun.h"
#include "tests/rig/dvr/Failures.h"
#include "tests/rig/dvr/HarnessLog.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using rig::dvr::EarlierRequest;
using rig::dvr::EarlierRun;
using rig::dvr::ExitStatus;
using rig::dvr::LogTime;

const std::string kOk = R"(<msg req="OK"/>)";

class EarlierRunTest : public testing::Test {
 protected:
    EarlierRun Read(const std::string& log) {
        folder_.Write("run.log", log);
        return rig::dvr::ReadEarlierRun(Path());
    }

    /// @return what is wrong with the log, without the file's name
    std::string FaultOf(const std::string& log) {
        const std::string fault = FailureOf(ExitStatus::Unusable, [&] { Read(log); });
        return fault.compare(0, Path().size(), Path()) == 0 ? fault.substr(Path().size()) : fault;
    }

    std::string Path() const { return (folder_.Path() / "run.log").string(); }

    TemporaryFolder folder_;
};

HarnessLog Opened() {
    HarnessLog log;
    log.Connected().Received(kOk).Line("got an OK, sending GET_XML").Sent(21);
    return log;
}

TEST_F(EarlierRunTest, HoldsEveryMessageByteForByte) {
    std::string text = "<msg req=\"XML\">\\\n\t\r \x7f\xc3\xa4";
    text += std::string(1, '\0') + std::string(1600, '&') + "</msg>";
    const EarlierRun run = Read(Opened().Received(text).Received("").Received(std::string(800, 'x')).Text());
    ASSERT_EQ(run.messages.size(), 4U);
    EXPECT_EQ(run.messages[0].text, kOk);
    EXPECT_EQ(run.messages[0].line, 2U);
    EXPECT_EQ(run.messages[1].text, text);
    EXPECT_EQ(run.messages[2].text, "");
    EXPECT_EQ(run.messages[3].text, std::string(800, 'x'));
}

TEST_F(EarlierRunTest, HoldsWhatIsKnownOfEveryRequest) {
    const EarlierRun run = Read(Opened()
                                    .Received(R"(<msg req="XML"/>)")
                                    .Sent(300)
                                    .Received(R"(<msg req="FILE_COMPLETE"/>)")
                                    .Line("Got FILE_COMPLETE for: reid=E1  file=a b")
                                    .Line("Sending EVENT_XFER_COMPLETE")
                                    .Sent(70000)
                                    .Line("Sending DONE")
                                    .Sent(18)
                                    .Text());
    ASSERT_EQ(run.messages.size(), 3U);
    ASSERT_EQ(run.messages[0].requests.size(), 1U);
    EXPECT_EQ(run.messages[0].requests[0].name, "GET_XML");
    EXPECT_EQ(run.messages[0].requests[0].line, 6U);
    EXPECT_EQ(run.messages[0].requests[0].announced, 21U);
    EXPECT_EQ(run.messages[0].requests[0].evidence, "got an OK, sending GET_XML");
    ASSERT_EQ(run.messages[1].requests.size(), 1U);
    const EarlierRequest& file = run.messages[1].requests[0];
    EXPECT_EQ(file.name, "GET_FILE");
    EXPECT_EQ(file.announced, 300U);
    EXPECT_EQ(file.evidence, "in answer to XML");
    EXPECT_EQ(file.subject, "reid=E1  file=a b");
    ASSERT_EQ(run.messages[2].requests.size(), 2U);
    EXPECT_EQ(run.messages[2].requests[0].name, "EVENT_XFER_COMPLETE");
    EXPECT_EQ(run.messages[2].requests[0].announced, 70000U);
    EXPECT_EQ(run.messages[2].requests[1].name, "DONE");
    EXPECT_EQ(run.messages[2].requests[1].subject, std::nullopt);
}

TEST_F(EarlierRunTest, NamesTheSubjectsOfA20Dialogue) {
    HarnessLog log;
    log.Connected({"'protocol' option set to 2", "doneDuration set to 30", "'invalidEvent' flag set"});
    log.Received(R"(<msg req="EVENT_LIST"/>)").Line("processing 'invalidEvent' option [event]").Sent(54);
    log.Received(R"(<msg req="INVALID_EVENT"/>)").Sent(57);
    log.Received(R"(<msg req="EVENT"/>)").Sent(80);
    log.Received(R"(<msg req="FILE_COMPLETE"/>)").Line("Got FILE_COMPLETE for: reid=E1  file=a");
    log.Line("filesToReceive size = 1").Line("calling SendFileRequest(E1/b, true)").Sent(95);
    log.Received(R"(<msg req="FILE_COMPLETE"/>)").Line("Got FILE_COMPLETE for: reid=E1  file=b");
    log.Line("filesToReceive size = 0").Line("Sending EVENT_XFER_COMPLETE").Sent(66);
    log.Received(R"(<msg req="EVENT_XFER_ACK"/>)").Line("Got EVENT_XFER_ACK for: reid='E1'");
    log.Line("Sending DONE").Sent(54).Line("shutting down");
    const EarlierRun run = Read(log.Text());
    EXPECT_EQ(run.dialect, 2);
    EXPECT_TRUE(run.ended);
    ASSERT_EQ(run.messages.size(), 6U);
    const EarlierRequest& damaged = run.messages[0].requests.at(0);
    EXPECT_EQ(damaged.name, "NEXT_EVENT");
    EXPECT_EQ(damaged.subject, std::nullopt) << "it was refused";
    EXPECT_EQ(run.messages[1].requests.at(0).name, "NEXT_EVENT");
    EXPECT_EQ(run.messages[1].requests.at(0).subject, "reid='E1'");
    EXPECT_EQ(run.messages[2].requests.at(0).subject, "reid=E1  file=a");
    EXPECT_EQ(run.messages[3].requests.at(0).subject, "E1/b");
    EXPECT_EQ(run.messages[4].requests.at(0).subject, "reid='E1'");
    EXPECT_EQ(run.messages[5].requests.at(0).name, "DONE");
    EXPECT_EQ(run.messages[5].requests.at(0).subject, "duration=30");
}

TEST_F(EarlierRunTest, HoldsTheTextOfARequestWithAWrongPrefix) {
    HarnessLog log;
    log.Connected({"'sizeError' flag set"}).Received(kOk).Line("got an OK, sending GET_XML").Sent(31);
    log.Line(R"(sent: size= 1/31/21  '<msg req="GET_XML" />')");
    const EarlierRun run = Read(log.Text());
    EXPECT_EQ(run.messages.at(0).requests.at(0).text, R"(<msg req="GET_XML" />)");
    EXPECT_EQ(run.messages.at(0).requests.at(0).announced, 31U);
}

TEST_F(EarlierRunTest, KnowsTheDialectFromTheSwitchOrTheMessages) {
    HarnessLog two;
    two.Received(R"(<msg req="EVENT_LIST"/>)").Sent(50);
    EXPECT_EQ(Read(two.Text()).dialect, 2);
    HarnessLog one;
    one.Received(R"(<msg req="XML"/>)").Sent(50);
    EXPECT_EQ(Read(one.Text()).dialect, 1);
    HarnessLog asked;
    asked.Received(kOk).Line("got an OK, sending GET_EVENT_LIST").Sent(50);
    EXPECT_EQ(Read(asked.Text()).dialect, 2);
    HarnessLog wrong;
    wrong.Connected().Received(R"(<msg req="EVENT_LIST"/>)").Line("UNSUPPORTED MSG RECEIVED: EVENT_LIST");
    EXPECT_EQ(Read(wrong.Text()).dialect, 1);
    HarnessLog last;
    last.Connected({"'protocol' option set to 1", "'protocol' option set to 2"}).Received(kOk);
    EXPECT_EQ(Read(last.Text()).dialect, 2);
}

TEST_F(EarlierRunTest, KnowsThePausesOfTheDvr) {
    const auto at = [](const std::string& seconds) {
        return "2026-11-20T14:03:" + seconds + "Z velloran 1 ";
    };
    HarnessLog log(at("01.0"));
    log.Connected().From(at("01.25")).Received(kOk);
    log.From(at("02.0")).Line("got an OK, sending GET_XML").Sent(21);
    log.From(at("03.5")).Received("<msg/>").From(at("03.9")).Received("<msg/>");
    log.Line("Closing client socket...").From(at("04.0")).Received(kOk);
    const EarlierRun run = Read(log.Text());
    EXPECT_TRUE(run.timed);
    ASSERT_EQ(run.messages.size(), 4U);
    EXPECT_EQ(run.messages[0].pause, LogTime(250'000));
    EXPECT_EQ(run.messages[1].pause, LogTime(1'500'000));
    EXPECT_EQ(run.messages[2].pause, LogTime(400'000)) << "since the message before it";
    EXPECT_TRUE(run.messages[2].closed);
    EXPECT_EQ(run.messages[3].pause, LogTime(100'000)) << "since the connection before it";
    EXPECT_FALSE(run.messages[3].closed);
}

TEST_F(EarlierRunTest, HasNoPausesWithoutTimes) {
    HarnessLog log("rig velloran[7]: ");
    EXPECT_FALSE(Read(log.Connected().Received(kOk).Text()).timed);
}

TEST_F(EarlierRunTest, IgnoresOtherPrograms) {
    HarnessLog log("Nov 20 14:03:07 rig velloran[7]: ");
    const std::string text = log.Connected().Received(kOk).Line("got an OK, sending GET_XML").Sent(21).Text();
    std::string mixed = "\n\x01\x02\n";
    for (const char byte : text) {
        mixed += byte == '\n' ? "\r\nNov 20 14:03:07 rig cron[3]: velloran\n" : std::string(1, byte);
    }
    const EarlierRun run = Read(mixed);
    ASSERT_EQ(run.messages.size(), 1U);
    EXPECT_EQ(run.messages[0].text, kOk);
    EXPECT_FALSE(run.hasOtherRuns);
}

TEST_F(EarlierRunTest, IsTheFirstRunOfTwoInARow) {
    const EarlierRun run = Read(Opened().Connected({"'protocol' option set to 2"}).Received("<msg/>").Text());
    EXPECT_EQ(run.messages.size(), 1U);
    EXPECT_TRUE(run.hasOtherRuns);
    EXPECT_FALSE(run.ended) << "how the first one ended is not in the log";
    EXPECT_EQ(run.lastLine, 6U);
    EXPECT_EQ(run.dialect, 1);
}

TEST_F(EarlierRunTest, IsTheFirstRunWithAMessage) {
    HarnessLog log;
    log.Line("'protocol' option set to 2")
        .Line("bind failed: 98")
        .Line("bind failed: Address already in use");
    log.Connected({"'upgrade' flag set"}).Line("shutting down").Connected().Received(kOk);
    const EarlierRun run = Read(log.Text());
    EXPECT_EQ(run.messages.size(), 1U);
    EXPECT_EQ(run.dialect, 1);
    EXPECT_TRUE(run.hasOtherRuns);
}

TEST_F(EarlierRunTest, IsTheFirstRunOfTwoInterleavedProcesses) {
    HarnessLog log("rig velloran[7]: ");
    log.Connected().From("rig velloran[8]: ").Line("'protocol' option set to 2").From("rig velloran[7]: ");
    log.Line("expecting a message of 6 bytes").From("rig velloran[8]: ").Line("bind failed: 98");
    log.From("rig velloran[7]: ").Line("GetMessage:incoming message, bytes 1 to 6:<msg/>");
    const EarlierRun run = Read(log.Text());
    EXPECT_EQ(run.messages.at(0).text, "<msg/>");
    EXPECT_EQ(run.dialect, 1);
    EXPECT_TRUE(run.hasOtherRuns);
}

TEST_F(EarlierRunTest, IsCompleteUpToWhereTheLogIsCut) {
    const std::string whole = Opened().Received("<msg/>").Line("INVALID XML RECEIVED").Text();
    const std::string head = Opened().Text();
    for (std::size_t size = head.size(); size < whole.size(); ++size) {
        const EarlierRun run = Read(whole.substr(0, size));
        const bool isWhole = run.messages.size() == 2;
        ASSERT_EQ(run.messages.size(), isWhole ? 2U : 1U) << size;
        EXPECT_EQ(run.messages[0].requests.size(), 1U);
        EXPECT_FALSE(run.ended);
        EXPECT_EQ(run.cutMessage.has_value(), !isWhole && run.lastLine > 6U) << size;
    }
}

TEST_F(EarlierRunTest, MayBeginAnywhere) {
    const std::string text = HarnessLog()
                                 .Line("GetMessage:incoming message, bytes 801 to 1600:</msg>")
                                 .Line("got an OK, sending GET_XML")
                                 .Sent(300)
                                 .Received("<msg/>")
                                 .Text();
    for (std::size_t start = 0; start < 4; ++start) {
        std::string rest = text;
        for (std::size_t line = 0; line < start; ++line) {
            rest.erase(0, rest.find('\n') + 1);
        }
        EXPECT_EQ(Read(rest).messages.size(), 1U) << start;
    }
}

TEST_F(EarlierRunTest, NeedsALogOfTheHarness) {
    const std::string expected = ":1: expected a line of the harness's log (\"velloran:N TEXT\"), found ";
    EXPECT_EQ(FaultOf(""), expected + "an empty log");
    EXPECT_EQ(FaultOf("hello\nyou\n"), expected + "'hello'");
    EXPECT_EQ(FaultOf("no newline"), expected + "'no newline'");
    EXPECT_EQ(FaultOf(std::string("\x7f\0\n", 3)), expected + "'\\x7f\\x00'");
    EXPECT_EQ(
        FaultOf(HarnessLog().Connected().Text()),
        ":1: expected a message of the DVR (\"GetMessage:incoming message, ...\") up to here, found none");
}

TEST_F(EarlierRunTest, NeedsAReadableFile) {
    const std::string expected = "--replay: expected a log of the harness that can be read, found '";
    EXPECT_EQ(FailureOf(ExitStatus::Unusable, [] { rig::dvr::ReadEarlierRun("/nonexistent"); }),
              expected + "/nonexistent': No such file or directory");
    EXPECT_EQ(FailureOf(ExitStatus::Unusable, [] { rig::dvr::ReadEarlierRun("/"); }),
              expected + "/': Is a directory");
}

TEST_F(EarlierRunTest, MayNotLackALineInTheMiddle) {
    const std::pair<HarnessLog, const char*> logs[] = {
        {HarnessLog().Line("expecting a message of 1000 bytes").Received(kOk),
         ":2: expected 'GetMessage:incoming message, bytes 1 to 800:', found 'expecting a message of 15 "
         "bytes'"},
        {HarnessLog()
             .Line("expecting a message of 1000 bytes")
             .Line("GetMessage:incoming message, bytes 801 to 1600:x"),
         ":2: expected 'GetMessage:incoming message, bytes 1 to 800:', found 'GetMessage:incoming message, "
         "bytes 801 to 1600:x'"},
        {HarnessLog()
             .Line("expecting a message of 6 bytes")
             .Line("GetMessage:incoming message, bytes 1 to 6:<ms"),
         ":2: expected 'GetMessage:incoming message, bytes 1 to 6:' and 6 bytes, found '3 bytes: <ms'"},
        {HarnessLog().Received(kOk).Line("GetMessage:incoming message, bytes 1 to 6:<msg/>"),
         ":4: expected 'expecting a message of N bytes', found 'GetMessage:incoming message, bytes 1 to "
         "6:<msg/>'"},
        {HarnessLog().Received(kOk).Line("got an OK, sending GET_XML").Received("<msg/>"),
         ":5: expected 'hdr[0]= ' after 'got an OK, sending GET_XML', as in a log of all levels, found "
         "'expecting a message of 6 bytes'"},
        {HarnessLog().Received(kOk).Line("hdr[0]= ac").Line("hdr[2]= 2"),
         ":5: expected 'hdr[1]= ' and a byte in hexadecimal, found 'hdr[2]= 2'"},
        {HarnessLog().Received(kOk).Line("expecting a message of some bytes"),
         ":4: expected 'expecting a message of N bytes', found 'expecting a message of some bytes'"},
    };
    for (const auto& [log, fault] : logs) {
        EXPECT_EQ(FaultOf(log.Text()), fault);
    }
}

}  // namespace
