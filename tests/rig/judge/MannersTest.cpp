#include <gtest/gtest.h>

#include <map>

#include "tests/rig/judge/Dialogue.h"

// Manners of DVRs, good and bad, that the simulated DVR does not have.

namespace {

using rig::result::Verdict;

// A damaged identifier that is another event's.

Dialogue WithClash() {
    Dialogue log("'invalidEvent' flag set");
    log.List("00012345", "12345").Say("processing 'invalidEvent' option [event]");
    return static_cast<Dialogue&>(log).AskEvent("12345");
}

TEST(DamagedIdentifier, ThatIsAnotherEventsIsNoFault) {
    Dialogue log = WithClash();
    log.Describe("12345", "a").Finish("12345", "a").AskEvent("00012345");
    log.Describe("00012345", "b").Finish("00012345", "b").AskEvent("12345");
    const std::string text = log.Describe("12345", "a").Finish("12345", "a").Done().End();
    EXPECT_EQ(Failed(text), "");
    EXPECT_EQ(
        FindingOf("invalid-event.fired", text),
        "INCONCLUSIVE: never injected: what is left of the name is another that the DVR lists (NEXT_EVENT "
        "12345)");
    EXPECT_EQ(FindingOf("invalid-event.answer", text), "NOT REACHED: the fault was never injected");
}

TEST(DamagedIdentifier, ThatIsAnotherEventsMayNotBeRefused) {
    Dialogue log = WithClash();
    log.Dvr("<msg req=\"INVALID_EVENT\" reid=\"12345\"/>");
    const std::string text = log.AskEvent("00012345").End();
    EXPECT_EQ(Failed(text), "event.reid");
    EXPECT_EQ(FindingOf("event.reid", text),
              "FAIL: INVALID_EVENT about an event that EVENT_LIST names (12345)");
}

TEST(DamagedIdentifier, ThatIsNobodysStaysAFault) {
    Dialogue log("'invalidEvent' flag set");
    log.List("00012345", "123456").Say("processing 'invalidEvent' option [event]");
    EXPECT_EQ(Failed(log.AskEvent("12345").Describe("12345", "a").End()), "invalid-event.answer");
}

TEST(DamagedIdentifier, ThatIsTakenForAnEventsAndRefusedLaterIsOneFault) {
    Dialogue log("'invalidEvent' flag set");
    log.List("00012345", "123456").Say("processing 'invalidEvent' option [event]");
    log.AskEvent("12345").Describe("12345", "a").Tell("INVALID_EVENT", "12345", "a");
    EXPECT_EQ(Failed(log.AskEvent("00012345").End()), "invalid-event.answer");
}

/// An event with another file and "abcm", and -f on the latter.
void DamageFile(Dialogue& log, const std::string& event, const std::string& other, int count) {
    log.AskEvent(event);
    log.Dvr(Description(event, "&lt;metadata name=\"" + other +
                                   "\"/&gt;&lt;streams&gt;&lt;stream&gt;&lt;file "
                                   "name=\"abcm\"/&gt;&lt;/stream&gt;&lt;/streams&gt;"));
    log.AskFile(event, other).Tell("FILE_COMPLETE", event, other);
    log.Say("Got FILE_COMPLETE for: reid=" + event + "  file=" + other).Say("filesToReceive size = 1");
    log.Say("processing 'invalidFile' option, cnt=0");
    log.AskFile(event.substr(3), "abcm");
    if (count > 0) {
        log.Tell("INVALID_EVENT", event.substr(3), "abcm").Say("filesToReceive size = 1");
        log.Say("processing 'invalidFile' option, cnt=1");
        log.AskFile(event, "m");
    }
}

/// -f on the second of two events, up to the request for a damaged name. The first has a file of that name.
Dialogue WithDamagedFile(const std::string& first, const std::string& second, const std::string& other,
                         int count) {
    Dialogue log("'invalidFile' flag set");
    log.List(first, second).AskEvent(first).Describe(first, "m").Finish(first, "m");
    DamageFile(log, second, other, count);
    return log;
}

TEST(DamagedFile, OfAnEventThatIsListedIsNoFaultHoweverItIsAnswered) {
    for (const char* const answer : {"INVALID_EVENT", "FILE_COMPLETE"}) {
        Dialogue log = WithDamagedFile("E1", "123E1", "m1", 0);
        const std::string text = log.Tell(answer, "E1", "abcm").End();
        EXPECT_EQ(Failed(text), "") << answer;
        EXPECT_EQ(
            FindingOf("invalid-file.fired-event", text).find("INCONCLUSIVE: never injected: what is left"),
            0U);
    }
}

TEST(DamagedFile, OfAnEventThatOnlyAnEarlierListHadStaysAFault) {
    Dialogue log("'invalidFile' flag set");
    log.List("E1").AskEvent("E1").Describe("E1", "a").Finish("E1", "a").Done();
    DamageFile(log.List("123E1"), "123E1", "b", 0);
    EXPECT_EQ(Failed(log.Tell("FILE_COMPLETE", "E1", "abcm").End()), "invalid-file.answer-event");
}

TEST(DamagedFile, WhoseNameIsAnotherFilesIsNoFault) {
    Dialogue log = WithDamagedFile("E1", "123E2", "m", 1);
    const std::string text = log.Tell("FILE_COMPLETE", "123E2", "m").End();
    EXPECT_EQ(Failed(text), "");
    EXPECT_EQ(FindingOf("invalid-file.fired-name", text).find("INCONCLUSIVE: never injected: what is left"),
              0U);
}

TEST(DamagedFile, WhoseNameIsNobodysStaysAFault) {
    Dialogue log = WithDamagedFile("E1", "123E2", "other", 1);
    EXPECT_EQ(Failed(log.Tell("FILE_COMPLETE", "123E2", "m").End()), "invalid-file.answer-name");
}

// What a DVR that begins anew in the middle leaves on the harness's list.

TEST(SecondOpening, LeavesTheFilesThatWereAskedFor) {
    const std::string files =
        "<msg req=\"XML\"><xmlFile><string>&lt;recording-event reid=\"E1\"&gt;&lt;video&gt;&lt;metadata "
        "name=\"a\"/&gt;&lt;streams&gt;&lt;stream&gt;&lt;file "
        "name=\"longer\"/&gt;&lt;/stream&gt;&lt;/streams&gt;&lt;/video&gt;&lt;/recording-event&gt;"
        "</string></xmlFile></msg>";
    MadeUpLog log(1);
    for (int opening = 0; opening < 2; ++opening) {
        log.Dvr("<msg req=\"OK\"/>").Say("got an OK, sending GET_XML").Ask("<msg req=\"GET_XML\" />");
        log.Dvr(files).Ask("<msg req=\"GET_FILE\" path=\"E1\" file=\"a\" />");
    }
    EXPECT_EQ(FindingOf("log.understood", log.Text()).substr(0, 4), "PASS");
}

// An event that is listed, and refused.

TEST(Refusal, OfAnEventThatNothingAskedForIsNoneOfAGoodRequest) {
    const auto found = [](const std::string& reid) {
        Dialogue log;
        log.List("E1").AskEvent("E1").Describe("E1", "a").Tell("TRANSPORT_EXCEPTION", reid, "a");
        return FindingOf("messages.asked", log.End());
    };
    EXPECT_EQ(found("E1"), "FAIL: a message that nothing asked for (TRANSPORT_EXCEPTION to a good request)");
    EXPECT_EQ(found("E9"), "FAIL: a message that nothing asked for (TRANSPORT_EXCEPTION)");
}

/// Whether one who follows the log up to this line stops there.
bool IsOverAfter(const std::string& log, const std::string& line) {
    rig::judge::Judge judge({}, {}, [](const rig::result::RunResult& /*run*/) {});
    EXPECT_FALSE(judge.IsOver());
    std::istringstream lines(log.substr(0, log.find('\n', log.rfind(line))));
    for (std::string one; std::getline(lines, one);) {
        judge.Add("test.log", 1, one);
    }
    return judge.IsOver();
}

TEST(Follow, EndsWhereNoMoreOfTheRunCanCome) {
    EXPECT_TRUE(IsOverAfter(RealLog("clean-2.0"), "hdr[0]")) << "after DONE";
    EXPECT_FALSE(IsOverAfter(RealLog("clean-1.0"), "hdr[0]"));
    EXPECT_TRUE(IsOverAfter(RealLog("clean-1.0"), "Closing client"));
    EXPECT_TRUE(IsOverAfter(RealLog("clean-1.0"), "shutting down"));
}

TEST(OtherFile, IsShownInBytesWhereItLooksAlike) {
    Dialogue log;
    log.List("E1").AskEvent("E1").Describe("E1", "caf\xc3\xa9").Tell("FILE_COMPLETE", "E1", "cafe\xcc\x81");
    log.Say("invalid file in FILE_COMPLETE: E1/cafe");
    const std::string found = FindingOf("file-complete.identity", log.Text());
    EXPECT_EQ(found.substr(found.find("from byte")), "from byte 7 on: 65 cc 81 instead of c3 a9)");
}

TEST(LastGood, IsNoMessageThatTheHarnessIgnores) {
    Dialogue log;
    log.List("E1").AskEvent("E1").Describe("E1", "a").Tell("FILE_COMPLETE", "E1", "b");
    log.Say("invalid file in FILE_COMPLETE: b");
    log.Error("velloran: a.cpp:1: int main(): Assertion `FD_ISSET(g_clientFd, &fds)' failed.");
    EXPECT_EQ(FindingOf("connection.kept", log.Text()),
              "FAIL: the DVR opened a second connection while the first was served (the last good message "
              "was EVENT in line 14)");
}

TEST(Unanswered, RequestsAreShownWhereTheyGoOut) {
    Dialogue log;
    log.List("E1").AskEvent("E1").Describe("E1", "a").After(9);
    const auto run = Judged(log.End()).runs.at(0);
    for (const auto& check : run.checks) {
        if (check.id == "requests.answered") {
            ASSERT_EQ(check.evidence.size(), 1U);
            EXPECT_EQ(check.evidence[0].note, "GET_FILE E1/a goes out");
        }
    }
}

/// The harness aborts for what the DVR did, or for a reason of its own.
TEST(Assertion, IsTheDvrsIfItHasCausedIt) {
    const auto verdict = [](const std::string& condition) {
        Dialogue log;
        log.List("E1").Error("velloran: a.cpp:1: int main(): Assertion `" + condition + "' failed.");
        return FindingOf("harness.ran", log.Text());
    };
    for (const char* const condition :
         {"FD_ISSET(g_clientFd, &fds)", "select(g_serverFd+g_clientFd+1, 0, 0, 0, 0) > 0",
          "expectedSize not_eq -1", "readBytes == expectedSize", "not document.Error()", "writelen == 4"}) {
        EXPECT_EQ(verdict(condition), "PASS: no failure of the harness itself") << condition;
    }
    EXPECT_EQ(verdict("true == false"), "ENVIRONMENT: it aborted for a reason of its own");
}

TEST(ListedEvent, ThatIsRefusedFailsItsOwnCheckAlone) {
    Dialogue log;
    log.List("E1", "E2").AskEvent("E1").Dvr("<msg req=\"INVALID_EVENT\" reid=\"E1\"/>");
    const std::string text = log.AskEvent("E2").Describe("E2", "a").Finish("E2", "a").Done().End();
    EXPECT_EQ(Failed(text), "event.reid");
    EXPECT_EQ(FindingOf("event.reid", text), "FAIL: INVALID_EVENT about an event that EVENT_LIST names (E1)");
}

TEST(ListedEvent, ThatIsRefusedAndThenDescribedFailsItsOwnCheckAlone) {
    Dialogue log;
    log.List("E1", "E2").AskEvent("E1").Dvr("<msg req=\"INVALID_EVENT\" reid=\"E1\"/>");
    log.AskEvent("E2").Dvr(Description("E1", "&lt;metadata name=\"a\"/&gt;"));
    const std::string text = log.End();
    EXPECT_EQ(Failed(text), "event.reid");
}

// Messages that are not XML, though the harness takes them.

TEST(Malformed, MessagesFailOneCheckAloneAndAreReadAsTheHarnessReadsThem) {
    for (const std::string list :
         {"<msg req=EVENT_LIST source='s'><events><event>E1</event></events></msg>",
          "<msg req='EVENT_LIST' source='a & b'><events><event>E1</event></events></msg>",
          "<msg req='EVENT_LIST' source='&nbsp;'><events><event>E1</event></events></msg>",
          "<msg req='EVENT_LIST' source='a<b'><events><event>E1</event></events></msg>",
          "<msg req='EVENT_LIST' source='\x01'><events><event>E1</event></events></msg>",
          "<msg req='EVENT_LIST' source='s'><events><event>E1</event></events></msg>rest"}) {
        Dialogue log;
        log.Dvr("<msg req=\"OK\"/>").Say("got an OK, sending GET_EVENT_LIST");
        log.Ask("<msg req=\"GET_EVENT_LIST\" protocolVersion=\"2.0\" />").Dvr(list);
        log.AskEvent("E1");
        const std::string text = log.Describe("E1", "a").Finish("E1", "a").Done().End();
        EXPECT_EQ(Failed(text), "messages.parsed") << list;
        EXPECT_EQ(FindingOf("log.understood", text).substr(0, 4), "PASS") << list;
    }
}

TEST(Malformed, DescriptionsFailOneCheckAlone) {
    Dialogue log;
    log.List("E1").AskEvent("E1").Dvr(Description("E1", "&lt;metadata name='a'/&gt; &amp; more"));
    const std::string text = log.AskFile("E1", "a").Finish("E1", "a").Done().End();
    EXPECT_EQ(Failed(text), "messages.parsed");
    EXPECT_NE(FindingOf("messages.parsed", text).find("not well-formed (invalid token)"), std::string::npos);
}

TEST(Encoding, ThatIsNotUtf8IsAWarning) {
    Dialogue log;
    log.List(
           "Stra\xdf"
           "e")
        .AskEvent(
            "Stra\xdf"
            "e")
        .Describe(
            "Stra\xdf"
            "e",
            "a");
    const std::string text = log.Finish(
                                    "Stra\xdf"
                                    "e",
                                    "a")
                                 .Done()
                                 .End();
    EXPECT_EQ(Failed(text), "");
    EXPECT_EQ(FindingOf("messages.parsed", text).substr(0, 67),
              "WARNING: a message with bytes that are not of its encoding, which i");
}

TEST(Encoding, OfAReferenceIsOneByteToTheHarness) {
    Dialogue log;
    log.List("&#xDF;").AskEvent("\xdf").Dvr(Description("&#xDF;", "&lt;metadata name=\"a\"/&gt;"));
    const std::string text = log.AskFile("\xdf", "a").End();
    EXPECT_EQ(FindingOf("log.understood", text).substr(0, 4), "PASS");
}

TEST(Encoding, OfANameThatTheHarnessCutInTwoIsNotTheDvrs) {
    for (const std::string reid : {"\x97\xa5x", "\xef\xbf\xbd\xef\xbf\xbdx"}) {
        Dialogue log("'invalidEvent' flag set");
        log.List("a\xe6\x97\xa5x").Say("processing 'invalidEvent' option [event]");
        log.AskEvent("\x97\xa5x").Dvr("<msg req=\"INVALID_EVENT\" reid=\"" + reid + "\"/>");
        log.Say("INVALID_EVENT 'reid' attribute = '" + reid + "'");
        const auto result = Judged(log.AskEvent("a\xe6\x97\xa5x").End());
        EXPECT_EQ(With(Verdict::Fail, result.runs.at(0)), "");
        EXPECT_EQ(With(Verdict::Warning, result.runs.at(0)), "");
    }
}

TEST(Encoding, ThatIsDeclaredButUnknownIsNoFault) {
    Dialogue log;
    log.Dvr(
        "<?xml version='1.0' encoding='windows-1252'?><msg req='OK' name='Stra\xdf"
        "e'/>");
    log.Say("got an OK, sending GET_EVENT_LIST");
    EXPECT_EQ(FindingOf("messages.parsed", log.End()), "PASS: nothing else");
}

// What a list holds besides events.

TEST(Lists, MayHoldCommentsAmongDescriptionsIn10) {
    MadeUpLog log(1);
    log.Dvr("<msg req=\"OK\"/>").Say("got an OK, sending GET_XML").Ask("<msg req=\"GET_XML\" />");
    const std::string one =
        "&lt;recording-event reid=\"E1\"&gt;&lt;video&gt;&lt;metadata name=\"m\"/&gt;"
        "&lt;/video&gt;&lt;/recording-event&gt;";
    log.Dvr("<msg req=\"XML\"><xmlFile><string>" + one + "</string><!-- c --><?p i?></xmlFile></msg>");
    log.Say("Found event E1").Ask("<msg req=\"GET_FILE\" path=\"E1\" file=\"m\" />");
    EXPECT_EQ(Failed(log.Say("shutting down").Text()), "");
}

TEST(Logs, ThatBreakOffInAPrefixAreNotMisread) {
    for (const char* const rest : {"hdr[0]= ", "hdr[0]= 4"}) {
        Dialogue log;
        log.List("E1").Say(rest);
        EXPECT_EQ(FindingOf("log.understood", log.Text()).substr(0, 4), "PASS") << rest;
    }
}

// Word of a transfer.

Dialogue Transferring(const std::string& switches = "") {
    Dialogue log(switches);
    log.List("E1").AskEvent("E1").Describe("E1", "a");
    return log;
}

TEST(Requests, WithoutAnAnswerAreForgottenAfterAThousand) {
    Dialogue log = Transferring();
    for (int file = 1; file <= 1000; ++file) {
        log.AskFile("E1", "f" + std::to_string(file));
    }
    log.After(10);
    const std::string text = log.End();
    EXPECT_NE(FindingOf("requests.answered", text).find("(GET_FILE E1/a waited for 11.5 s"),
              std::string::npos);
}

TEST(Progress, OfALongTransferIsAWarning) {
    Dialogue log = Transferring();
    for (int time = 0; time < 8; ++time) {
        log.After(5).Dvr("<msg req=\"XFER_IN_PROGRESS\" reid=\"E1\" file=\"a\"/>");
        log.Say("XFER_IN_PROGRESS 'reid' attribute = 'E1'");
    }
    const std::string text = log.Finish("E1", "a").Done().End();
    EXPECT_EQ(Failed(text), "");
    EXPECT_EQ(FindingOf("messages.asked", text),
              "WARNING: XFER_IN_PROGRESS about a file that was not asked for again: legal while it is in "
              "transfer, but only the harness is known to take it (GET_FILE E1/a, 8 times)");
}

TEST(Progress, CountsAsWaitingForNothing) {
    Dialogue log = Transferring();
    log.After(5).Dvr("<msg req=\"XFER_IN_PROGRESS\" reid=\"E1\"/>");
    EXPECT_EQ(FindingOf("requests.answered", log.End()),
              "INCONCLUSIVE: the log ends too soon to tell whether FILE_COMPLETE would have come");
    EXPECT_EQ(Failed(Transferring().After(5).Say("shutting down").Text()),
              "requests.answered file-complete.identity export.done");
}

TEST(Progress, OfAFileThatNobodyAwaitsIsUnasked) {
    Dialogue log = Transferring();
    log.After(5);
    log.Tell("XFER_IN_PROGRESS", "E1", "other");
    EXPECT_EQ(FindingOf("messages.asked", log.End()),
              "FAIL: a message that nothing asked for (XFER_IN_PROGRESS to a good request)");
}

TEST(Progress, MayFollowTheAnswerToASecondRequestButNotAtOnce) {
    for (const auto& [seconds, verdict] : std::map<double, std::string>{{0, "FAIL: "}, {2, "WARNING: "}}) {
        Dialogue log("'xferInProgress' flag set");
        log.List("E1").AskEvent("E1");
        log.Dvr(Description("E1",
                            "&lt;metadata name=\"m\"/&gt;&lt;streams&gt;&lt;stream&gt;&lt;file "
                            "name=\"a\"/&gt;&lt;/stream&gt;&lt;/streams&gt;"));
        log.AskFile("E1", "m").Tell("FILE_COMPLETE", "E1", "m");
        log.Say("Got FILE_COMPLETE for: reid=E1  file=m").Say("filesToReceive size = 1");
        log.Say("processing 'xferInProgress' option");
        log.AskFile("E1", "a").AskFile("E1", "a");
        log.Dvr("<msg req=\"XFER_IN_PROGRESS\" reid=\"E1\" file=\"a\"/>").After(seconds);
        log.Dvr("<msg req=\"XFER_IN_PROGRESS\" reid=\"E1\" file=\"a\"/>");
        const std::string text = log.Finish("E1", "a").Done().End();
        EXPECT_EQ(FindingOf("messages.asked", text).find(verdict), 0U) << FindingOf("messages.asked", text);
        EXPECT_EQ(FindingOf("xfer.answer", text), "PASS: it came");
    }
}

TEST(Transfer, ThatTakesLongPasses) {
    EXPECT_EQ(Failed(Transferring().After(40).Text()), "");
    Dialogue log = Transferring();
    log.After(40);
    EXPECT_EQ(rig::result::WorstOf(Judged(log.Finish("E1", "a").Done().End())), Verdict::Pass);
}

// Frames that are too short.

TEST(ShortFrame, ThatAnotherOkFollowsFails) {
    MadeUpLog log(2, "'sizeError' flag set");
    for (int time = 0; time < 3; ++time) {
        log.Dvr("<msg req=\"OK\"/>").Say("got an OK, sending GET_EVENT_LIST");
        log.Say("hdr[0]= 4b").Say("sent: size= 1/75/50  'TEXT'").After(5);
    }
    const std::string text = log.Say("shutting down").Text();
    EXPECT_EQ(Failed(text), "size.answer");
    EXPECT_EQ(FindingOf("size.answer", text), "FAIL: another OK on the same connection (2 times)");
}

// What ends the harness by an exception.

constexpr const char* kLogicError = "terminate called after throwing an instance of 'std::logic_error'";
constexpr const char* kNull = "  what():  basic_string::_M_construct null not valid";

std::string WithStream(const std::string& inside) {
    MadeUpLog log(2);
    log.Dvr("<msg req=\"OK\"/>").Say("got an OK, sending GET_EVENT_LIST").Ask("0123456789");
    log.Dvr(Description("E1", "&lt;streams&gt;&lt;stream&gt;" + inside + "&lt;/stream&gt;&lt;/streams&gt;"));
    return log.Error(kLogicError).Error(kNull).Text();
}

TEST(Exception, IsBlamedOnTheMessageBeforeIt) {
    const std::string unknown = WithStream("&lt;file name=\"a\"/&gt;");
    EXPECT_EQ(
        FindingOf("event.description", unknown)
            .find("FAIL: a description of which the harness cannot take a file's name, and aborts (<msg "),
        0U);
    EXPECT_EQ(FindingOf("log.whole", unknown),
              "PASS: the log ends where the harness aborts for what the DVR did");
    EXPECT_EQ(FindingOf("harness.ran", unknown), "PASS: no failure of the harness itself");
    MadeUpLog other(2);
    other.Dvr("<msg req=\"OK\"/>").Error(kLogicError);
    EXPECT_EQ(FindingOf("messages.parsed", other.Text()),
              "FAIL: a message that the harness cannot take: an exception ends it (<msg req=\"OK\"/>)");
}

TEST(Exception, IsBlamedOnADescriptionOfTheFirstDialectAsWell) {
    MadeUpLog log(1);
    log.Dvr("<msg req=\"OK\"/>").Say("got an OK, sending GET_XML").Ask("<msg req=\"GET_XML\" />");
    log.Dvr("<msg req=\"XML\"/>").Error(kLogicError);
    EXPECT_EQ(Failed(log.Text()), "event.description");
}

TEST(Exception, ShowsNoMessageWhereTheTextHasNotCome) {
    MadeUpLog log(2);
    log.Dvr("<msg req=\"OK\"/>").Say("expecting a message of 2147483647 bytes");
    log.Error("terminate called after throwing an instance of 'std::length_error'");
    EXPECT_EQ(FindingOf("messages.parsed", log.Text()),
              "FAIL: a message that the harness cannot take: an exception ends it");
}

TEST(Exception, OfTheHarnessesOwnIsTheEnvironments) {
    MadeUpLog log(2);
    log.Dvr("<msg req=\"OK\"/>").Error("terminate called after throwing an instance of 'std::bad_alloc'");
    EXPECT_EQ(With(Verdict::Environment, Judged(log.Text()).runs.at(0)), "harness.ran");
    EXPECT_EQ(Failed(log.Text()), "");
}

TEST(Exception, EndsItsRun) {
    EXPECT_EQ(Judged(WithStream("") + RealLog("clean-2.0")).runs.size(), 2U);
}

}  // namespace
