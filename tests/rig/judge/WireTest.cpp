#include <gtest/gtest.h>

#include "rig/log/LogReader.h"
#include "rig/proxy/ProxyLog.h"
#include "tests/rig/judge/Judging.h"
#include "tests/rig/judge/MadeUpLog.h"
#include "tests/support/TemporaryFolder.h"

// What the judge makes of a log of the proxy beyond single findings, which findings.txt has.

namespace {

using rig::result::Step;
using rig::result::Verdict;

/// The log of a proxy, event by event.
class MadeUpWire {
 public:
    /// An event at so many seconds since the start of a MadeUpLog.
    MadeUpWire& Add(double seconds, const std::string& members) {
        const auto time = MadeUpLog::kStart + static_cast<std::int64_t>(seconds * 1e6);
        return AddLine(fmt::format("{{\"time\":\"{}\",{}}}", rig::proxy::TimeText(time), members));
    }

    MadeUpWire& AddLine(const std::string& line) {
        text_ += line + "\n";
        return *this;
    }

    MadeUpWire& Connect(double seconds, int connection) {
        return Add(seconds,
                   fmt::format(R"("connection":{},"event":"connect","from":"10.0.0.5:1")", connection));
    }

    /// A message with a text of 20 bytes.
    MadeUpWire& Frame(double seconds, int connection, const std::string& from, const std::string& message) {
        return Add(seconds,
                   fmt::format(R"("connection":{},"event":"frame","direction":"{}","message":"{}",)"
                               R"("prefixBytes":1,"textBytes":20)",
                               connection, from == "dvr" ? "dvr->harness" : "harness->dvr", message));
    }

    /// On the first connection, as is its end.
    MadeUpWire& Fault(double seconds, const std::string& name, const std::string& message,
                      const std::string& value = "") {
        return Add(seconds,
                   fmt::format(R"("connection":1,"event":"fault","fault":"{}",{}"message":"{}")", name,
                               value.empty() ? "" : fmt::format(R"("value":"{}",)", value), message));
    }

    MadeUpWire& FaultEnd(double seconds, const std::string& name) {
        return Add(seconds, fmt::format(R"("connection":1,"event":"fault-end","fault":"{}")", name));
    }

    MadeUpWire& Close(double seconds, int connection, const std::string& by) {
        return Add(seconds, fmt::format(R"("connection":{},"event":"close","by":"{}")", connection, by));
    }

    const std::string& Text() const { return text_; }

 private:
    std::string text_;
};

/// The log of a proxy that listens.
MadeUpWire Listening() {
    return MadeUpWire().Add(0, R"("event":"listen","address":"0.0.0.0:5002")");
}

class WireTest : public testing::Test {
 protected:
    rig::result::Result Judge(const std::string& log, std::optional<double> maxReaction = std::nullopt) {
        folder_.Write("proxy.jsonl", wire_.Text());
        rig::judge::Limits limits;
        limits.maxReaction = maxReaction;
        limits.proxy = Path();
        return Judged(log, limits);
    }

    std::string Path() const { return (folder_.Path() / "proxy.jsonl").string(); }

    /// What is said of a log of the proxy that cannot be used.
    std::string Complaint() {
        try {
            Judge(MadeUpLog(2).Text());
        } catch (const rig::log::Unreadable& error) {
            return std::string(error.what()).substr(Path().size());
        }
        return "";
    }

    MadeUpWire wire_ = Listening();
    TemporaryFolder folder_;
};

TEST_F(WireTest, IsReadOnlyWhereItIsGiven) {
    const rig::result::Result judged = Judged(MadeUpLog(2).Text());
    for (const auto& check : judged.runs[0].checks) {
        EXPECT_NE(check.id.rfind("wire.", 0), 0U) << check.id;
    }
    EXPECT_NE(FoundBy("wire.log", Judge(MadeUpLog(2).Text()).runs[0]), "");
}

TEST_F(WireTest, MustBeALogOfTheProxy) {
    wire_ = MadeUpWire();
    EXPECT_EQ(Complaint(), ": expected a log of velloran-rig proxy, found none of its lines");
    wire_.AddLine("2026-11-20T22:00:00 something else").AddLine("else");
    EXPECT_EQ(Complaint(), ": expected a log of velloran-rig proxy, found none of its lines");
    wire_ = MadeUpWire().AddLine(R"({"time":"yesterday","event":"listen"})").AddLine("{}");
    EXPECT_EQ(Complaint(), ": expected a log of velloran-rig proxy, found none of its lines");
}

TEST_F(WireTest, MustBeWholeButForItsLastLine) {
    wire_.AddLine("{\"time\":\"20").Connect(1, 1);
    EXPECT_EQ(Complaint(), ": expected an event of velloran-rig proxy in line 2, found something else");
    wire_ = MadeUpWire().Connect(1, 1);
    EXPECT_EQ(Complaint(),
              ": expected the whole log of velloran-rig proxy, found that its beginning is missing");
    wire_ = Listening().Connect(1, 1).AddLine("{\"time\":\"20");
    EXPECT_EQ(Complaint(), "");
    EXPECT_EQ(With(Verdict::Inconclusive, Judge(MadeUpLog(2).Text()).runs[0]).substr(0, 9), "log.whole");
}

TEST_F(WireTest, MayHoldWhatTheJudgeDoesNotKnow) {
    wire_.Add(0.1, R"("event":"weather","value":7)");
    wire_.Connect(0.2, 1).Add(0.3, R"("connection":1,"event":"weather","message":["OK"])");
    wire_.Add(0.3, R"("connection":1,"event":"frame","direction":1,"message":{},"prefixBytes":-1)");
    wire_.Add(0.3, R"("connection":"1","event":"close","by":"dvr")")
        .Close(0.4, 1, "harness")
        .Close(0.5, 9, "dvr");
    EXPECT_EQ(FoundBy("wire.log", Judge(MadeUpLog(2).Text()).runs[0]), "1 connection");
}

/// Two runs of the harness, a minute each.
std::string TwoRuns() {
    MadeUpLog log(2);
    log.After(60).Say("shutting down").Say("'protocol' option set to 2");
    return log.Say("Connected to: fam=2  127.0.0.1:60985").After(60).Say("shutting down").Text();
}

TEST_F(WireTest, GivesEachRunItsConnections) {
    wire_.Connect(0.1, 1).Frame(0.2, 1, "dvr", "OK").Close(5, 1, "dvr");
    wire_.Connect(60.1, 2).Close(61, 2, "harness").Connect(62, 3).Close(63, 3, "harness");
    const auto runs = Judge(TwoRuns()).runs;
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(FoundBy("wire.log", runs[0]), "1 connection");
    EXPECT_EQ(FoundBy("wire.log", runs[1]), "2 connections");
}

TEST_F(WireTest, ExpectsEachFaultInOneRunOnly) {
    wire_.Add(0, R"("event":"plan","fault":"latency","value":"300")").Connect(0.1, 1);
    wire_.Fault(1, "latency", "GET_FILE", "300");
    wire_.FaultEnd(1, "latency").Close(2, 1, "harness");
    const auto runs = Judge(TwoRuns()).runs;
    EXPECT_NE(FoundBy("fault.acted", runs[0]).find("it acted (latency=300 at GET_FILE, 0.900 s"),
              std::string::npos);
    EXPECT_EQ(FoundBy("fault.acted", runs[1]), "");
}

TEST_F(WireTest, ShowsAFaultInTheDialogueWhereItActed) {
    MadeUpLog log(1);
    log.Dvr("<msg req=\"OK\"/>").Say("got an OK, sending GET_XML").Ask("<msg req=\"GET_XML\" />");
    log.After(1).Dvr("<msg req=\"XML\"/>");
    wire_.Connect(0.001, 1).Fault(0.3, "split", "GET_XML", "1");
    const auto run = Judge(log.Text()).runs.at(0);
    std::string dialogue;
    for (const Step& step : run.steps) {
        dialogue += (step.kind == Step::Kind::Fault ? "!" : "") + step.text + "; ";
    }
    EXPECT_NE(dialogue.find("GET_XML; !proxy: split=1 at GET_XML; XML; "), std::string::npos) << dialogue;
    for (std::size_t step = 1; step < run.steps.size(); ++step) {
        EXPECT_LE(run.steps[step - 1].time, run.steps[step].time) << dialogue;
        EXPECT_TRUE(run.steps[step].kind != Step::Kind::Fault ||
                    run.steps[step].line == run.steps[step - 1].line)
            << dialogue;
    }
}

TEST_F(WireTest, MeasuresFromWhatWentOutToTheDvr) {
    wire_.Connect(0, 1).Frame(0.1, 1, "harness", "GET_XML");
    wire_.Fault(0.1, "latency", "GET_XML", "300");
    wire_.Add(0.4, R"("connection":1,"event":"sent","fault":"latency","messages":["GET_XML"])");
    wire_.FaultEnd(0.4, "latency").Frame(0.45, 1, "dvr", "XML");
    const auto run = Judge(MadeUpLog(1).Text(), 40).runs.at(0);
    EXPECT_EQ(FoundBy("wire.reaction", run), "a late answer to GET_XML (after 50.0 ms)");
    EXPECT_EQ(FoundBy("wire.reaction", Judge(MadeUpLog(1).Text(), 50).runs.at(0)), "none that took longer");
    ASSERT_EQ(run.timings.size(), 1U);
    EXPECT_EQ(run.timings[0].request, "GET_XML on the wire");
    EXPECT_EQ(run.timings[0].count, 1U);
}

TEST_F(WireTest, TakesAnAnswerThatNamesNeitherEventNorFileForTheNext) {
    wire_.Connect(0, 1).Add(
        0.1, R"("connection":1,"event":"frame","direction":"harness->dvr","message":"GET_FILE",)"
             R"("reid":"E1","file":"a","prefixBytes":1,"textBytes":20)");
    wire_.Frame(0.3, 1, "dvr", "FILE_COMPLETE");
    EXPECT_EQ(Judge(MadeUpLog(2).Text()).runs.at(0).timings.at(0).count, 1U);
}

TEST_F(WireTest, KeepsTheLongestReaction) {
    wire_.Connect(0, 1).Frame(0.1, 1, "harness", "GET_FILE").Frame(0.3, 1, "dvr", "FILE_COMPLETE");
    wire_.Frame(0.4, 1, "harness", "GET_FILE").Frame(0.5, 1, "dvr", "FILE_COMPLETE");
    EXPECT_NEAR(Judge(MadeUpLog(2).Text()).runs.at(0).timings.at(0).longest, 200, 1);
}

TEST_F(WireTest, TakesNewsOfATransferForNoAnswer) {
    wire_.Connect(0, 1).Frame(0.1, 1, "harness", "GET_FILE").Frame(0.2, 1, "dvr", "XFER_IN_PROGRESS");
    wire_.Frame(0.3, 1, "dvr", "FILE_COMPLETE").Frame(0.4, 1, "harness", "GET_FILE").Close(1, 1, "harness");
    const auto run = Judge(MadeUpLog(2).Text()).runs.at(0);
    EXPECT_EQ(FoundBy("wire.order", run), "nothing else");
    EXPECT_NEAR(run.timings.at(0).longest, 200, 1);
}

TEST_F(WireTest, ForgetsAtOkWhatTheExportBeforeItLeftUnanswered) {
    wire_.Connect(0, 1).Frame(0.1, 1, "harness", "GET_XML").Frame(1, 1, "harness", "DONE");
    wire_.Frame(2, 1, "dvr", "OK").Frame(2.1, 1, "harness", "GET_XML").Frame(2.2, 1, "dvr", "XML");
    EXPECT_NEAR(Judge(MadeUpLog(1).Text()).runs.at(0).timings.at(0).longest, 100, 1);
}

TEST_F(WireTest, TakesADoneThatAFaultHasSentForDone) {
    wire_.Connect(0, 1).Fault(1, "together-with-done", "EVENT_XFER_COMPLETE");
    wire_.Add(1, R"("connection":1,"event":"sent","messages":["EVENT_XFER_COMPLETE","DONE"])");
    wire_.Add(1, R"("connection":1,"event":"fault-end")").Close(2, 1, "dvr");
    EXPECT_EQ(FoundBy("wire.closed", Judge(MadeUpLog(1).Text()).runs[0]),
              "ended first by the DVR: 1, by the harness: 0, by the proxy: 0, by a fault: 0");
}

TEST_F(WireTest, SeesTheEndOfAConnectionAMomentAfterTheNextCall) {
    wire_.Connect(0, 1).Connect(1, 2).Close(1.5, 1, "dvr").Close(5, 2, "harness");
    EXPECT_EQ(FoundBy("wire.calls", Judge(MadeUpLog(1).Text()).runs[0]), "2 calls");
}

/// The harness aborts at once.
TEST_F(WireTest, SeesASecondCallThatEndsTheHarness) {
    wire_.Connect(0, 1).Connect(1, 2).Close(1.1, 1, "harness").Close(1.1, 2, "harness");
    EXPECT_EQ(FoundBy("wire.calls", Judge(MadeUpLog(1).Text()).runs[0]),
              "a second connection while the first was open");
}

TEST_F(WireTest, AllowsACallAfterDone) {
    wire_.Connect(0, 1).Frame(1, 1, "harness", "DONE").Connect(1.1, 2).Close(2, 1, "harness");
    EXPECT_EQ(FoundBy("wire.calls", Judge(MadeUpLog(1).Text()).runs[0]), "2 calls");
}

TEST_F(WireTest, ExcusesWhatFollowsOnAFaultThatADvrNeedOnlySurvive) {
    MadeUpLog log(1);
    log.Dvr("<msg req=\"OK\"/>").Say("got an OK, sending GET_XML").Ask("<msg req=\"GET_XML\" />");
    log.Dvr("<msg req=\"FILE_COMPLETE\" reid=\"E1\" file=\"a\"/>");
    wire_.Connect(0.001, 1).Frame(0.3, 1, "harness", "GET_XML");
    wire_.Fault(0.3, "no-request", "GET_XML");
    wire_.FaultEnd(0.3, "no-request");
    EXPECT_EQ(
        FoundBy("messages.asked", Judge(log.Text()).runs[0]),
        "a fault of the proxy may be to blame; as far as the log goes, a message that nothing asked for "
        "(FILE_COMPLETE)");
}

TEST_F(WireTest, AsksForTheReportOfWhatAFaultHasMadeUpNotOfTheMessageAfterIt) {
    wire_.Connect(0, 1).Frame(1, 1, "harness", "EVENT_XFER_COMPLETE");
    wire_.Fault(1, "file-of-unknown-event", "EVENT_XFER_COMPLETE");
    wire_.Add(1, R"("connection":1,"event":"sent","messages":["GET_FILE"])");
    wire_.Add(2, R"("connection":1,"event":"sent","messages":["EVENT_XFER_COMPLETE"])");
    wire_.FaultEnd(2, "file-of-unknown-event");
    EXPECT_EQ(FoundBy("fault.answer", Judge(MadeUpLog(2).Text()).runs[0]),
              "the DVR did not report what it must refuse (file-of-unknown-event at EVENT_XFER_COMPLETE)");
}

TEST_F(WireTest, WarnsOfAPrefixThatIsOneByteTooLong) {
    const auto found = [this](int prefix, int text) {
        wire_ = Listening().Connect(0, 1);
        wire_.Add(1, fmt::format(R"("connection":1,"event":"frame","direction":"dvr->harness",)"
                                 R"("message":"XML","prefixBytes":{},"textBytes":{})",
                                 prefix, text));
        const std::string words = FoundBy("wire.prefix", Judge(MadeUpLog(1).Text()).runs[0]);
        return words.substr(words.find('(') + 1);
    };
    EXPECT_EQ(found(1, 127), "nothing else");
    EXPECT_EQ(found(2, 127), "XML: 2 bytes where 1 would do)");
    EXPECT_EQ(found(2, 128), "nothing else");
    EXPECT_EQ(found(3, 16'383), "XML: 3 bytes where 2 would do)");
    EXPECT_EQ(found(3, 16'384), "nothing else");
}

TEST_F(WireTest, FindsTheRequestOfAnAnswerByItsEventAndFile) {
    const auto frame = [this](double seconds, const std::string& direction, const std::string& about) {
        wire_.Add(seconds, fmt::format(R"("connection":1,"event":"frame","direction":"{}",{},)"
                                       R"("prefixBytes":1,"textBytes":20)",
                                       direction, about));
    };
    for (const std::string other : {R"("reid":"E1","file":"b")", R"("reid":"E2","file":"a")"}) {
        wire_ = Listening().Connect(0, 1);
        frame(0.1, "harness->dvr", R"("message":"GET_FILE","reid":"E1","file":"a")");
        frame(0.2, "harness->dvr", R"("message":"GET_FILE",)" + other);
        frame(0.3, "dvr->harness", R"("message":"FILE_COMPLETE",)" + other);
        frame(0.6, "dvr->harness", R"("message":"FILE_COMPLETE","reid":"E1","file":"a")");
        EXPECT_NEAR(Judge(MadeUpLog(2).Text()).runs.at(0).timings.at(0).longest, 500, 1) << other;
    }
}

TEST_F(WireTest, TakesNewsOfATransferThatWasAskedForTwiceForAnAnswer) {
    wire_.Connect(0, 1).Frame(0.1, 1, "harness", "GET_FILE").Frame(0.1, 1, "harness", "GET_FILE");
    wire_.Frame(0.2, 1, "dvr", "XFER_IN_PROGRESS").Frame(0.3, 1, "dvr", "FILE_COMPLETE");
    EXPECT_EQ(Judge(MadeUpLog(2).Text()).runs.at(0).timings.at(0).count, 2U);
}

TEST_F(WireTest, CountsAConnectionOnceByWhoEndsItFirst) {
    wire_.Connect(0, 1).Frame(1, 1, "harness", "DONE");
    wire_.Add(2, R"("connection":1,"event":"half-close","by":"dvr")").Close(2.1, 1, "harness");
    EXPECT_EQ(FoundBy("wire.closed", Judge(MadeUpLog(1).Text()).runs[0]),
              "ended first by the DVR: 1, by the harness: 0, by the proxy: 0, by a fault: 0");
}

TEST_F(WireTest, WarnsOfAConnectionLeftOpenForAsLongAsThePatience) {
    const auto found = [this](double end) {
        wire_ = Listening().Connect(0, 1).Frame(1, 1, "harness", "DONE");
        wire_.Close(end, 1, "harness");
        return FoundBy("wire.closed", Judge(MadeUpLog(1).Text()).runs[0]).substr(0, 12);
    };
    EXPECT_EQ(found(3.999'999), "ended first ");
    EXPECT_EQ(found(4), "a connection");
}

TEST_F(WireTest, SeesTheEndOfAConnectionForAMomentOnly) {
    const auto found = [this](double end) {
        wire_ = Listening().Connect(0, 1).Connect(1, 2);
        wire_.Close(end, 1, "dvr").Close(5, 2, "harness");
        return FoundBy("wire.calls", Judge(MadeUpLog(1).Text()).runs[0]);
    };
    EXPECT_EQ(found(2), "2 calls");
    EXPECT_EQ(found(2.000'001), "a second connection while the first was open");
}

TEST_F(WireTest, GivesARunTheCallsOfTheSecondBeforeIt) {
    const auto found = [this](double call) {
        wire_ = Listening().Connect(call, 1).Close(call + 1, 1, "harness");
        return FoundBy("wire.log", Judge(TwoRuns()).runs.at(1));
    };
    EXPECT_EQ(found(59.004), "1 connection");
    EXPECT_EQ(found(59.003'999), "0 connections");
}

TEST_F(WireTest, HoldsTheFirstCallAfterEachDoneAgainstTheDuration) {
    for (const double seconds : {70.0, 80.0, 90.0}) {
        const auto connection = static_cast<int>(seconds);
        wire_.Connect(seconds, connection).Frame(seconds + 1, connection, "harness", "DONE");
        wire_.Close(seconds + 2, connection, "dvr");
    }
    wire_.Connect(94, 4).Close(95, 4, "dvr").Connect(94.5, 5).Close(96, 5, "dvr");
    EXPECT_EQ(FoundBy("wire.calls", Judge(MadeUpLog(2, "doneDuration set to 1").Text()).runs[0]),
              "the DVR called before the time was over (after 3.0 s, not 60 s)");
}

/// Memory must not grow with the log.
TEST_F(WireTest, KeepsAThousandPlannedFaultsAndAHundredCallsWhileAnotherLasts) {
    for (int fault = 0; fault < 1001; ++fault) {
        wire_.Add(0, R"("event":"plan","fault":"latency","value":"300")");
    }
    for (int call = 1; call <= 20; ++call) {
        wire_.Connect(call, call);
    }
    wire_.Add(30, R"("event":"weather")");
    const auto run = Judge(MadeUpLog(1).Text()).runs.at(0);
    EXPECT_EQ(FoundBy("fault.acted", run), "a fault that never acted (latency=300, 1000 times)");
    EXPECT_EQ(FoundBy("wire.calls", run), "a second connection while the first was open (100 times)");
}

/// A recorder in 1.0 has no report, and need not answer.
TEST_F(WireTest, AsksForNoReportWhereTheDialectHasNone) {
    wire_.Connect(0, 1).Frame(0.1, 1, "harness", "GET_XML");
    for (const double time : {1.0, 2.0}) {
        wire_.Frame(time, 1, "harness", "GET_FILE");
        wire_.Fault(time, "file-name", "GET_FILE", "empty");
        wire_.Add(time, R"("connection":1,"event":"sent","messages":["GET_FILE"])");
        if (time < 2) {
            wire_.FaultEnd(time, "file-name");
        }
    }
    wire_.Close(2.5, 1, "dvr");
    EXPECT_EQ(FoundBy("fault.answer", Judge(MadeUpLog(1).Text()).runs[0]), "nothing else");
}

TEST_F(WireTest, KnowsTheMessageAtWhichAFaultWasPlannedToAct) {
    wire_.Add(0, R"("event":"plan","fault":"split","value":"1","on":"GET_FILE:2")");
    wire_.Add(0, R"("event":"plan","fault":"latency","value":"300","on":"GET_FILE:2")");
    wire_.Add(0, R"("event":"plan","fault":"latency","value":"300","on":"GET_FILE:7")").Connect(0.1, 1);
    wire_.Fault(1, "latency", "GET_FILE", "300");
    EXPECT_EQ(FoundBy("fault.acted", Judge(MadeUpLog(2).Text()).runs[0]),
              "a fault that never acted (split=1 at GET_FILE:2, 2 times)");
    wire_.Fault(2, "latency", "GET_FILE", "300");
    EXPECT_EQ(FoundBy("fault.acted", Judge(MadeUpLog(2).Text()).runs[0]),
              "a fault that never acted (split=1 at GET_FILE:2)");
}

TEST_F(WireTest, WaitsForTheEndOfTheEarlierOfTwoConnections) {
    wire_.Connect(0, 1).Connect(1, 2).Close(1.2, 2, "harness").Close(1.5, 1, "dvr");
    EXPECT_EQ(FoundBy("wire.calls", Judge(MadeUpLog(1).Text()).runs[0]), "2 calls");
}

TEST_F(WireTest, HoldsACallAgainstADoneThatNoWrongFaultHasTouched) {
    wire_.Connect(0, 1).Frame(0.5, 1, "harness", "GET_EVENT_LIST");
    wire_.Fault(0.5, "no-request", "GET_EVENT_LIST");
    wire_.FaultEnd(0.6, "no-request");
    wire_.Frame(1, 1, "harness", "DONE").Close(2, 1, "dvr").Connect(4, 2).Close(5, 2, "dvr");
    EXPECT_EQ(FoundBy("wire.calls", Judge(MadeUpLog(2, "doneDuration set to 1").Text()).runs[0]),
              "the DVR called before the time was over (after 3.0 s, not 60 s)");
}

TEST_F(WireTest, TakesADoneForSentWhenItsFaultIsOver) {
    wire_.Connect(0, 1).Frame(1, 1, "harness", "DONE");
    wire_.Fault(1, "latency", "DONE", "300");
    wire_.Frame(1.1, 1, "dvr", "XML");
    EXPECT_EQ(FoundBy("wire.after-done", Judge(MadeUpLog(1).Text()).runs[0]), "nothing else");
    wire_.FaultEnd(1.3, "latency").Frame(1.4, 1, "dvr", "XML");
    EXPECT_EQ(FoundBy("wire.after-done", Judge(MadeUpLog(1).Text()).runs[0]), "a message after DONE (XML)");
}

/// Memory must not grow with the log.
TEST_F(WireTest, AwaitsAThousandAnswers) {
    const auto answers = [this](int requests) {
        wire_ = Listening().Connect(0, 1);
        for (int request = 0; request < requests; ++request) {
            wire_.Add(1, fmt::format(R"("connection":1,"event":"frame","direction":"harness->dvr",)"
                                     R"("message":"GET_FILE","file":"{}","prefixBytes":1,"textBytes":20)",
                                     request));
        }
        wire_.Add(2, R"("connection":1,"event":"frame","direction":"dvr->harness","message":"FILE_COMPLETE",)"
                     R"("file":"0","prefixBytes":1,"textBytes":20)");
        return Judge(MadeUpLog(2).Text()).runs.at(0).timings.size();
    };
    EXPECT_EQ(answers(1000), 1U);
    EXPECT_EQ(answers(1001), 0U);
}

TEST_F(WireTest, AwaitsNoEndOfAFaultThatWasReported) {
    wire_.Connect(0, 1).Frame(1, 1, "harness", "EVENT_XFER_COMPLETE");
    wire_.Fault(1, "file-of-unknown-event", "EVENT_XFER_COMPLETE");
    wire_.Add(1, R"("connection":1,"event":"sent","messages":[7,"GET_FILE"])");
    EXPECT_EQ(FoundBy("fault.answer", Judge(MadeUpLog(2).Text()).runs[0]),
              "the connection, or the proxy's log, ended before the fault was over (file-of-unknown-event at "
              "EVENT_XFER_COMPLETE)");
    wire_.Add(2, R"("connection":1,"event":"frame","direction":"dvr->harness","message":"INVALID_EVENT",)"
                 R"("taken":true,"prefixBytes":1,"textBytes":20)");
    EXPECT_EQ(FoundBy("fault.answer", Judge(MadeUpLog(2).Text()).runs[0]), "nothing else");
}

TEST_F(WireTest, BeginsAnewWithAConnectionOfTheSameNumber) {
    wire_.Connect(0, 1).Frame(1, 1, "harness", "DONE").Connect(2, 1).Frame(3, 1, "dvr", "XML");
    EXPECT_EQ(FoundBy("wire.after-done", Judge(MadeUpLog(1).Text()).runs[0]), "nothing else");
}

TEST_F(WireTest, ShowsAFaultAfterWhatTheLogHasAtTheSameTime) {
    for (const auto& [seconds, step] : {std::pair(0.0, 0), std::pair(0.002, 1)}) {
        wire_ = Listening().Connect(0, 1).Fault(seconds, "split", "OK", "1");
        const auto steps = Judge(MadeUpLog(1).Text()).runs.at(0).steps;
        ASSERT_EQ(steps.size(), 2U);
        EXPECT_EQ(steps.at(static_cast<std::size_t>(step)).kind, Step::Kind::Fault);
        EXPECT_EQ(steps.at(static_cast<std::size_t>(step)).line, step == 0 ? 0U : 2U);
    }
}

TEST_F(WireTest, SaysThatAMessageHasNoName) {
    wire_.Connect(0, 1).Add(
        1, R"("connection":1,"event":"frame","direction":"dvr->harness","prefixBytes":2,"textBytes":20)");
    EXPECT_EQ(FoundBy("wire.prefix", Judge(MadeUpLog(1).Text()).runs[0]),
              "a prefix that is longer than need be: legal, but some readers stop where they find one (a "
              "message without req: "
              "2 bytes where 1 would do)");
}

TEST_F(WireTest, TakesNoAnswerAboutAnotherEventForAnEarlyOne) {
    for (const char* const about : {R"("reid":"E2","file":"a")", R"("reid":"E1","file":"b")"}) {
        wire_ = Listening().Connect(0, 1);
        wire_.Add(1, R"("connection":1,"event":"frame","direction":"dvr->harness","message":"FILE_COMPLETE",)"
                     R"("reid":"E1","file":"a","prefixBytes":1,"textBytes":20)");
        wire_.Add(2, fmt::format(R"("connection":1,"event":"frame","direction":"harness->dvr",)"
                                 R"("message":"GET_FILE",{},"prefixBytes":1,"textBytes":20)",
                                 about));
        EXPECT_EQ(FoundBy("wire.order", Judge(MadeUpLog(2).Text()).runs[0]), "nothing else") << about;
    }
}

}  // namespace
