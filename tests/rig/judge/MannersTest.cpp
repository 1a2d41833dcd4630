#include <gtest/gtest.h>

#include <map>

#include "tests/rig/judge/Judging.h"
#include "tests/rig/judge/MadeUpLog.h"

// Manners of DVRs, good and bad, that the simulated DVR does not have.

namespace {

using rig::judge::AfterDone;
using rig::judge::Limits;
using rig::result::Verdict;

/// @return "VERDICT: what was found" of a check in the log's only run
std::string Of(const std::string& id, const std::string& log, const Limits& limits = {}) {
    const auto result = Judged(log, limits);
    for (const auto& check : result.runs.at(0).checks) {
        if (check.id == id) {
            return std::string(rig::result::NameOf(check.verdict)) + ": " + check.found;
        }
    }
    return "no such check";
}

std::string Failed(const std::string& log, const Limits& limits = {}) {
    return With(Verdict::Fail, Judged(log, limits).runs.at(0));
}

std::string Description(const std::string& reid, const std::string& inside) {
    return "<msg req=\"EVENT\" reid=\"" + reid + "\"><xmlFile>&lt;recording-event reid=\"" + reid +
           "\"&gt;&lt;video&gt;" + inside + "&lt;/video&gt;&lt;/recording-event&gt;</xmlFile></msg>";
}

/// A run in 2.0, as far as a test takes it.
class Dialogue : public MadeUpLog {
 public:
    explicit Dialogue(const std::string& switches = "") : MadeUpLog(2, switches) {}

    Dialogue& List(const std::string& one, const std::string& other = "") {
        Dvr("<msg req=\"OK\"/>").Say("got an OK, sending GET_EVENT_LIST");
        Ask("<msg req=\"GET_EVENT_LIST\" protocolVersion=\"2.0\" />");
        Dvr("<msg req=\"EVENT_LIST\" source=\"s\"><events><event>" + one + "</event>" +
            (other.empty() ? "" : "<event>" + other + "</event>") + "</events></msg>");
        return *this;
    }

    Dialogue& AskEvent(const std::string& reid) {
        Ask("<msg req=\"NEXT_EVENT\" reid=\"" + reid + "\" protocolVersion=\"2.0\" />");
        return *this;
    }

    Dialogue& Describe(const std::string& reid, const std::string& file) {
        Dvr(Description(reid, "&lt;metadata name=\"" + file + "\"/&gt;"));
        return AskFile(reid, file);
    }

    Dialogue& AskFile(const std::string& reid, const std::string& file) {
        Ask("<msg req=\"GET_FILE\" reid=\"" + reid + "\" path=\"" + reid + "\" file=\"" + file +
            "\" protocolVersion=\"2.0\" />");
        return *this;
    }

    Dialogue& Tell(const std::string& name, const std::string& reid, const std::string& file) {
        Dvr("<msg req=\"" + name + "\" reid=\"" + reid + "\" file=\"" + file + "\"/>");
        return *this;
    }

    /// The one file that is left, the event's end and its acknowledgement.
    Dialogue& Finish(const std::string& reid, const std::string& file) {
        Tell("FILE_COMPLETE", reid, file);
        Say("Got FILE_COMPLETE for: reid=" + reid + "  file=" + file).Say("filesToReceive size = 0");
        Say("Sending EVENT_XFER_COMPLETE");
        Ask("<msg req=\"EVENT_XFER_COMPLETE\" reid=\"" + reid + "\" protocolVersion=\"2.0\" />");
        Dvr("<msg req=\"EVENT_XFER_ACK\" reid=\"" + reid + "\"/>");
        Say("Got EVENT_XFER_ACK for: reid='" + reid + "'");
        return *this;
    }

    Dialogue& Done(const std::string& duration = "") {
        Say("Sending DONE").Ask("<msg req=\"DONE\" protocolVersion=\"2.0\"" + duration + " />");
        return *this;
    }

    std::string End() { return After(0.5).Say("shutting down").Text(); }
};

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
        Of("invalid-event.fired", text),
        "INCONCLUSIVE: never injected: what is left of the name is another that the DVR lists (NEXT_EVENT "
        "12345)");
    EXPECT_EQ(Of("invalid-event.answer", text), "NOT REACHED: the fault was never injected");
}

TEST(DamagedIdentifier, ThatIsAnotherEventsMayNotBeRefused) {
    Dialogue log = WithClash();
    log.Dvr("<msg req=\"INVALID_EVENT\" reid=\"12345\"/>");
    const std::string text = log.AskEvent("00012345").End();
    EXPECT_EQ(Failed(text), "event.reid");
    EXPECT_EQ(Of("event.reid", text), "FAIL: INVALID_EVENT about an event that EVENT_LIST names (12345)");
}

TEST(DamagedIdentifier, ThatIsNobodysStaysAFault) {
    Dialogue log("'invalidEvent' flag set");
    log.List("00012345", "123456").Say("processing 'invalidEvent' option [event]");
    EXPECT_EQ(Failed(log.AskEvent("12345").Describe("12345", "a").End()), "invalid-event.answer");
}

/// -f on the second of two events, up to the request for a damaged name.
Dialogue WithDamagedFile(const std::string& first, const std::string& second, const std::string& other,
                         int count) {
    Dialogue log("'invalidFile' flag set");
    log.List(first, second).AskEvent(first).Describe(first, "a").Finish(first, "a").AskEvent(second);
    log.Dvr(Description(second, "&lt;metadata name=\"" + other +
                                    "\"/&gt;&lt;streams&gt;&lt;stream&gt;&lt;file "
                                    "name=\"abcm\"/&gt;&lt;/stream&gt;&lt;/streams&gt;"));
    log.AskFile(second, other).Tell("FILE_COMPLETE", second, other);
    log.Say("Got FILE_COMPLETE for: reid=" + second + "  file=" + other).Say("filesToReceive size = 1");
    log.Say("processing 'invalidFile' option, cnt=0");
    log.AskFile(second.substr(3), "abcm");
    if (count > 0) {
        log.Tell("INVALID_EVENT", second.substr(3), "abcm").Say("filesToReceive size = 1");
        log.Say("processing 'invalidFile' option, cnt=1");
        log.AskFile(second, "m");
    }
    return log;
}

TEST(DamagedFile, OfAnEventThatIsListedIsNoFaultHoweverItIsAnswered) {
    for (const char* const answer : {"INVALID_EVENT", "FILE_COMPLETE"}) {
        Dialogue log = WithDamagedFile("E1", "123E1", "m1", 0);
        const std::string text = log.Tell(answer, "E1", "abcm").End();
        EXPECT_EQ(Failed(text), "") << answer;
        EXPECT_EQ(Of("invalid-file.fired-event", text).find("INCONCLUSIVE: never injected: what is left"),
                  0U);
    }
}

TEST(DamagedFile, WhoseNameIsAnotherFilesIsNoFault) {
    Dialogue log = WithDamagedFile("E1", "123E2", "m", 1);
    const std::string text = log.Tell("FILE_COMPLETE", "123E2", "m").End();
    EXPECT_EQ(Failed(text), "");
    EXPECT_EQ(Of("invalid-file.fired-name", text).find("INCONCLUSIVE: never injected: what is left"), 0U);
}

TEST(DamagedFile, WhoseNameIsNobodysStaysAFault) {
    Dialogue log = WithDamagedFile("E1", "123E2", "other", 1);
    EXPECT_EQ(Failed(log.Tell("FILE_COMPLETE", "123E2", "m").End()), "invalid-file.answer-name");
}

// An event that is listed, and refused.

TEST(ListedEvent, ThatIsRefusedFailsItsOwnCheckAlone) {
    Dialogue log;
    log.List("E1", "E2").AskEvent("E1").Dvr("<msg req=\"INVALID_EVENT\" reid=\"E1\"/>");
    const std::string text = log.AskEvent("E2").Describe("E2", "a").Finish("E2", "a").Done().End();
    EXPECT_EQ(Failed(text), "event.reid");
    EXPECT_EQ(Of("event.reid", text), "FAIL: INVALID_EVENT about an event that EVENT_LIST names (E1)");
}

// Calling again.

/// An export of one event that -c closes, and the next call so many seconds after DONE.
Dialogue ClosedEarly(const std::string& switches) {
    Dialogue log("closeEarly set to 1" + switches);
    log.List("E1", "E2").AskEvent("E1").Describe("E1", "a").Finish("E1", "a").Done();
    log.After(1).Say("Closing client socket...");
    return log;
}

TEST(AnotherCall, AfterAnEarlyEndIsNotForbidden) {
    Dialogue log = ClosedEarly("");
    log.List("E2").AskEvent("E2").Describe("E2", "b").Finish("E2", "b").Done();
    const std::string text = log.After(1).Say("Closing client socket...").Text();
    EXPECT_EQ(Failed(text), "");
    EXPECT_EQ(Of("close.answer", text), "PASS: nothing else");
}

TEST(AnotherCall, IsHeldAgainstTheDuration) {
    const std::string minute = "\ndoneDuration set to 1";
    EXPECT_EQ(Of("duration.answer", ClosedEarly(minute).After(2.9).Dvr("<msg req=\"OK\"/>").Text()),
              "FAIL: the DVR connected again before the time was over (after 3.9 s, not 60 s)");
    EXPECT_EQ(Of("duration.answer", ClosedEarly(minute).After(60).Dvr("<msg req=\"OK\"/>").Text()),
              "PASS: it called after 61.0 s");
    EXPECT_EQ(Of("duration.answer", ClosedEarly(minute).After(2).Say("shutting down").Text()),
              "INCONCLUSIVE: no call, but nobody watched for long enough (for 3.0 s)");
    EXPECT_EQ(Of("duration.answer", ClosedEarly(minute).After(60).Say("shutting down").Text()),
              "PASS: no call for 61.0 s");
}

std::string DoneForAMinute() {
    Dialogue log("doneDuration set to 1");
    log.List("E1").AskEvent("E1").Describe("E1", "a").Finish("E1", "a").Done(" duration=\"1\"");
    log.After(70);
    return log.End();
}

TEST(AnotherCall, IsNotSeenByAHarnessThatKeepsTheConnection) {
    EXPECT_EQ(Of("duration.answer", DoneForAMinute()),
              "INCONCLUSIVE: without -c the harness does not see a call after the DVR has closed its "
              "connection, and nobody else watched");
}

TEST(AnotherCall, MayBeSeenByTheRig) {
    const auto told = [](const AfterDone& after) {
        return Of("duration.answer", DoneForAMinute(), {3, {}, false, after});
    };
    EXPECT_EQ(told({4.0, 0}),
              "FAIL: the DVR connected again before the time was over (after 4.0 s, not 60 s)");
    EXPECT_EQ(told({60.5, 0}), "PASS: it called after 60.5 s");
    EXPECT_EQ(told({{}, 60}), "PASS: no call for 60.0 s");
    EXPECT_EQ(told({{}, 59}), "INCONCLUSIVE: no call, but nobody watched for long enough (for 59.0 s)");
}

TEST(AnotherCall, MayBeToldWhileTheRunGoesOn) {
    rig::result::Result result;
    rig::judge::Judge judge({}, {},
                            [&](rig::result::RunResult run) { result.runs.push_back(std::move(run)); });
    std::istringstream lines(DoneForAMinute());
    std::uint64_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("shutting down") != std::string::npos) {
            judge.Take(AfterDone{4.0, 0});
        }
        judge.Add("test.log", ++number, line);
    }
    EXPECT_EQ(With(Verdict::Fail, result.runs.at(0)), "duration.answer");
}

// Word of a transfer.

Dialogue Transferring(const std::string& switches = "") {
    Dialogue log(switches);
    log.List("E1").AskEvent("E1").Describe("E1", "a");
    return log;
}

TEST(Progress, OfALongTransferIsAWarning) {
    Dialogue log = Transferring();
    for (int time = 0; time < 8; ++time) {
        log.After(5).Dvr("<msg req=\"XFER_IN_PROGRESS\" reid=\"E1\" file=\"a\"/>");
        log.Say("XFER_IN_PROGRESS 'reid' attribute = 'E1'");
    }
    const std::string text = log.Finish("E1", "a").Done().End();
    EXPECT_EQ(Failed(text), "");
    EXPECT_EQ(Of("messages.asked", text),
              "WARNING: XFER_IN_PROGRESS about a file that was not asked for again: legal while it is in "
              "transfer, but only the harness is known to take it (GET_FILE E1/a, 8 times)");
}

TEST(Progress, CountsAsWaitingForNothing) {
    Dialogue log = Transferring();
    log.After(5).Dvr("<msg req=\"XFER_IN_PROGRESS\" reid=\"E1\"/>");
    EXPECT_EQ(Of("requests.answered", log.End()),
              "INCONCLUSIVE: the log ends too soon to tell whether FILE_COMPLETE would have come");
    EXPECT_EQ(Failed(Transferring().After(5).Say("shutting down").Text()),
              "requests.answered file-complete.identity export.done");
}

TEST(Progress, OfAFileThatNobodyAwaitsIsUnasked) {
    Dialogue log = Transferring();
    log.After(5);
    log.Tell("XFER_IN_PROGRESS", "E1", "other");
    EXPECT_EQ(Of("messages.asked", log.End()),
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
        EXPECT_EQ(Of("messages.asked", text).find(verdict), 0U) << Of("messages.asked", text);
        EXPECT_EQ(Of("xfer.answer", text), "PASS: it came");
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
    EXPECT_EQ(Of("size.answer", text), "FAIL: another OK on the same connection (2 times)");
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
    EXPECT_EQ(Of("event.description", unknown),
              "FAIL: a description of which the harness cannot take a file's name, and aborts");
    EXPECT_EQ(Of("log.whole", unknown), "PASS: the log ends where the harness aborts for what the DVR did");
    EXPECT_EQ(Of("harness.ran", unknown), "PASS: no failure of the harness itself");
    MadeUpLog other(2);
    other.Dvr("<msg req=\"OK\"/>").Error(kLogicError);
    EXPECT_EQ(Of("messages.parsed", other.Text()),
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
