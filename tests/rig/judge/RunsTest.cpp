#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "rig/judge/checks/Checks.h"
#include "tests/rig/judge/Judging.h"

namespace {

using rig::result::Verdict;

std::string At(int second, const std::string& text) {
    return "2026-11-20T14:00:0" + std::to_string(second) + ".000000Z velloran 1 velloran:1 " + text + "\n";
}

/// @return the log with another length announced for the request that follows this line
std::string WithAnotherLength(std::string log, const std::string& line, const char* length = "7f") {
    const std::size_t byte = log.find("]= ", log.find(line)) + 3;
    return log.replace(byte, log.find('\n', byte) - byte, length);
}

TEST(Runs, BeginAnewWithASwitchOrAConnection) {
    const std::string run = RealLog("clean-2.0");
    EXPECT_EQ(Judged(run + RealLog("clean-1.0") + run).runs.size(), 3U);
    const std::string middle = run.substr(0, run.rfind('\n', run.find("Sending DONE")) + 1);
    EXPECT_EQ(Judged(middle.substr(middle.find("expecting")) + run).runs.size(), 2U);
}

TEST(Runs, AreNamedByTheLineInWhichTheyBegin) {
    const auto runs = Judged(At(1, "'protocol' option set to 2") + At(2, "shutting down") +
                             At(3, "'protocol' option set to 1"))
                          .runs;
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0].name, "test.log:1");
    EXPECT_EQ(runs[1].name, "test.log:3");
}

TEST(LastWords, AreAnAssertionOrAnException) {
    EXPECT_TRUE(rig::judge::IsLastWord("velloran: a.cpp:1: int main(): Assertion `false' failed."));
    EXPECT_TRUE(rig::judge::IsLastWord("terminate called after throwing an instance of 'std::logic_error'"));
    EXPECT_FALSE(rig::judge::IsLastWord("touch: cannot touch '/mnt/hd/velloranFail'"));
    EXPECT_TRUE(rig::judge::IsMarkerFailure("touch: cannot touch '/mnt/hd/velloranFail'"));
    EXPECT_FALSE(rig::judge::IsMarkerFailure("rm: cannot remove '/mnt/hd/velloranFail'"));
    EXPECT_FALSE(rig::judge::IsMarkerFailure("touch: cannot touch '/mnt/hd'"));
}

TEST(Runs, GoOnInARotatedFile) {
    const auto result = Judged(RealLog("clean-2.0"), {}, 20);
    ASSERT_EQ(result.runs.size(), 1U);
    EXPECT_EQ(rig::result::WorstOf(result), Verdict::Pass);
}

TEST(Runs, ThatCannotListenAreTheEnvironments) {
    const auto result = Judged(At(1, "bind failed: 98") + At(1, "bind failed: Address already in use"));
    EXPECT_EQ(With(Verdict::Environment, result.runs.at(0)), "harness.ran");
    EXPECT_EQ(rig::result::ExitStatusOf(rig::result::WorstOf(result)), 3);
}

TEST(Runs, WithoutConnectionFailOnceTheHarnessWaitedLongEnough) {
    const std::string start = At(1, "'protocol' option set to 2");
    EXPECT_EQ(With(Verdict::Fail, Judged(start + At(9, "shutting down")).runs.at(0)), "connection.made");
    EXPECT_EQ(With(Verdict::Fail, Judged(start + At(2, "shutting down")).runs.at(0)), "");
}

TEST(Runs, WithoutTheirStartAreInconclusive) {
    const std::string log = RealLog("clean-2.0");
    const auto result = Judged(log.substr(log.find("expecting")));
    EXPECT_NE(With(Verdict::Inconclusive, result.runs.at(0)).find("log.start"), std::string::npos);
}

/// A log that lost its first lines proves no failure of what came before.
TEST(Runs, OfAGoodDvrNeverFailWhereverTheirLogBegins) {
    for (const std::string name : {"clean-1.0", "clean-2.0", "all-faults-2.0", "xfer-2.0"}) {
        std::string log = RealLog(name);
        for (int line = 1; !log.empty(); ++line) {
            for (const auto& run : Judged(log).runs) {
                EXPECT_EQ(With(Verdict::Fail, run), "") << name << " from line " << line;
            }
            log.erase(0, log.find('\n') + 1);
        }
    }
}

TEST(Runs, OfWhichAMessageIsCutFailForNothingThatFollows) {
    std::string log = RealLog("clean-2.0");
    const std::size_t slice = log.find("bytes 1 to ", log.size() / 2);
    log.erase(log.rfind('\n', slice), log.find('\n', slice) - log.rfind('\n', slice));
    const auto result = Judged(log);
    EXPECT_EQ(With(Verdict::Fail, result.runs.at(0)), "");
    EXPECT_EQ(With(Verdict::Inconclusive, result.runs.at(0)).find("log.whole"), 0U);
}

TEST(Runs, InWhichTheFailureMarkerCannotBeMadeAreTheEnvironments) {
    const std::string log = RealLog("transport-2.0");
    const std::size_t end = log.find('\n', log.find("processing 'transportException'")) + 1;
    const auto result =
        Judged(log.substr(0, end) + "touch: cannot touch '/mnt/hd/velloranFail': Read-only file system\n" +
               log.substr(end));
    EXPECT_EQ(With(Verdict::Environment, result.runs.at(0)), "harness.ran");
    EXPECT_EQ(With(Verdict::Inconclusive, result.runs.at(0)), "transport.fired");
    EXPECT_EQ(With(Verdict::NotReached, result.runs.at(0)), "transport.answer");
}

TEST(Runs, InWhichARequestIsNotAsLongAsTheJudgeBelievesAreInconclusive) {
    const auto result = Judged(WithAnotherLength(RealLog("clean-2.0"), "'reid' attribute in EVENT msg"));
    EXPECT_EQ(With(Verdict::Inconclusive, result.runs.at(0)), "log.understood");
    EXPECT_EQ(
        FoundBy("log.understood", result.runs.at(0)),
        "the judge misread what the harness asked for, a fault of its own: nothing that follows from it "
        "is held against the DVR (GET_FILE Event1/Event1.xml: 90 bytes as the judge believes, 127 as it "
        "went out)");
}

TEST(Runs, BlameTheDvrForNothingThatFollowsFromWhatTheJudgeMisread) {
    const std::string log = RealLog("d2-no-answer-on-EVENT_XFER_ACK");
    const auto before = Judged(WithAnotherLength(log, "calling SendFileRequest"));
    EXPECT_EQ(With(Verdict::Fail, before.runs.at(0)), "");
    EXPECT_EQ(With(Verdict::Inconclusive, before.runs.at(0)),
              "log.understood requests.answered event-ack.reid export.done");
    EXPECT_EQ(
        FoundBy("event-ack.reid", before.runs.at(0)).find("the judge misread what the harness asked for"),
        0U);
}

TEST(Runs, BlameTheDvrForWhatCameBeforeTheJudgeMisreadARequest) {
    const std::string log = RealLog("d1-wrong-file");
    const std::string start = log.substr(0, log.rfind('\n', log.find("shutting down")) + 1);
    const std::string again = log.substr(log.rfind('\n', log.find("expecting")) + 1);
    const auto linesOfStart = static_cast<std::uint64_t>(std::count(start.begin(), start.end(), '\n'));
    for (const std::uint64_t older : {std::uint64_t{0}, linesOfStart}) {
        const auto result = Judged(start + WithAnotherLength(again, "got an OK"), {}, older);
        EXPECT_EQ(With(Verdict::Fail, result.runs.at(0)),
                  "messages.asked requests.answered file-complete.identity");
        EXPECT_EQ(With(Verdict::Inconclusive, result.runs.at(0)), "log.understood export.done");
    }
}

/// A log up to and with the line that asks for the list of events; nothing has answered.
std::string UpToTheFirstRequest() {
    const std::string log = RealLog("clean-2.0");
    return log.substr(0, log.find('\n', log.find("hdr[")) + 1);
}

constexpr const char* kAnotherConnection =
    "velloran: /x/velloran.cpp:186: int main(int, char**): Assertion `FD_ISSET(g_clientFd, &readFds)' "
    "failed.\n";

TEST(Runs, ThatEndAtASecondConnectionFailOnlyWhereStandardErrorSaysSo) {
    const auto hidden = Judged(UpToTheFirstRequest());
    EXPECT_EQ(With(Verdict::Fail, hidden.runs.at(0)), "");
    EXPECT_EQ(With(Verdict::Inconclusive, hidden.runs.at(0)), "log.whole requests.answered");
    const auto told = Judged(UpToTheFirstRequest() + kAnotherConnection);
    EXPECT_EQ(With(Verdict::Fail, told.runs.at(0)), "connection.kept");
}

TEST(Runs, KeepOnlyWhatIsAskedFor) {
    std::vector<rig::result::RunResult> runs;
    rig::judge::Judge judge({}, {false, false, false},
                            [&runs](rig::result::RunResult run) { runs.push_back(std::move(run)); });
    std::istringstream lines(RealLog("clean-2.0"));
    std::uint64_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        judge.Add("test.log", ++number, line);
    }
    judge.Finish();
    EXPECT_TRUE(runs.at(0).steps.empty());
    EXPECT_TRUE(runs.at(0).log.empty());
    EXPECT_EQ(runs.at(0).checks.front().found, "");
    const rig::result::RunResult all = Judged(RealLog("clean-2.0")).runs.at(0);
    ASSERT_EQ(all.log.size(), number);
    EXPECT_EQ(all.log.front().text, "'protocol' option set to 2");
}

TEST(Runs, TellWhichLinesEndAMessageAndBeginARequest) {
    rig::judge::Judge judge({}, {}, [](rig::result::RunResult /*run*/) {});
    std::istringstream lines(RealLog("clean-2.0"));
    std::string told;
    for (std::string line; told.size() < 40 && std::getline(lines, line);) {
        const rig::judge::ReadLine read = judge.Add("test.log", 1, line);
        told += read.message != nullptr ? read.message->name + " " : "";
        told += read.request != nullptr ? read.request->name + " " : "";
    }
    EXPECT_EQ(told, "OK GET_EVENT_LIST EVENT_LIST NEXT_EVENT ");
}

TEST(Runs, DoNotEndAtAnAssertionOfAnotherProgram) {
    const auto result =
        Judged(RealLog("clean-2.0") + "recorder: /x/main.cpp:1: int main(): Assertion `false' failed.\n");
    EXPECT_EQ(rig::result::WorstOf(result), Verdict::Pass);
}

TEST(Runs, ThatEndAtAnAssertionFailForTheLineBeforeIt) {
    const std::map<std::string, std::string> failed = {
        {"Read7BitEncodedInt:badly formatted 7 bit string length prefix", "messages.framed"},
        {"error: 1:Error document empty.", "messages.parsed"},
        {"EOF at: 18  exp=318", "connection.kept"},
        {"SendMessage: msg: size= 50  errorno=Connection reset by peer", "connection.kept"}};
    for (const auto& [line, check] : failed) {
        const auto result = Judged(UpToTheFirstRequest() + At(9, line));
        EXPECT_EQ(With(Verdict::Fail, result.runs.at(0)), check) << line;
    }
}

/// A whole export, after which the DVR comes back at once.
std::string ExportAndAnotherConnection() {
    const std::string log = RealLog("clean-2.0");
    return log.substr(0, log.rfind('\n', log.find("shutting down")) + 1) + kAnotherConnection;
}

TEST(Runs, ThatEndAtAConnectionAfterDonePass) {
    EXPECT_EQ(rig::result::WorstOf(Judged(ExportAndAnotherConnection())), Verdict::Pass);
}

TEST(Runs, ThatEndAtAConnectionAfterDoneLeaveOpenWhetherTheDvrStayedAway) {
    const std::string log = WithAnotherLength(ExportAndAnotherConnection(), "Sending DONE", "35");
    const auto result = Judged(At(1, "doneDuration set to 1") + log);
    EXPECT_EQ(With(Verdict::Fail, result.runs.at(0)), "");
    EXPECT_EQ(With(Verdict::Inconclusive, result.runs.at(0)), "duration.answer");
}

TEST(Runs, WithoutAnEventOfThreeFilesShowNoPause) {
    std::string log = At(1, "sleepForGetFile set to 1") + RealLog("clean-2.0");
    const std::string front = "&lt;file name=\"Front.ts\"/&gt;";
    log.replace(log.find(front), front.size(), front.size(), ' ');
    const std::size_t request = log.rfind('\n', log.find("filesToReceive size = 2"));
    log.erase(request, log.rfind('\n', log.find("filesToReceive size = 1")) - request);
    const auto result = Judged(log);
    EXPECT_EQ(With(Verdict::Fail, result.runs.at(0)), "");
    EXPECT_EQ(With(Verdict::Inconclusive, result.runs.at(0)), "sleep.fired");
}

TEST(Runs, InterruptedSoonAfterARequestAreInconclusive) {
    const auto result = Judged(RealLog("d2-no-answer-on-EVENT_XFER_ACK"), {60, {}});
    EXPECT_EQ(With(Verdict::Fail, result.runs.at(0)), "");
    EXPECT_EQ(With(Verdict::Inconclusive, result.runs.at(0)), "requests.answered");
}

TEST(Runs, FailWhereAnAnswerTookLongerThanTheLimit) {
    EXPECT_EQ(With(Verdict::Fail, Judged(RealLog("clean-2.0"), {3, 50.0}).runs.at(0)), "reaction.time");
    EXPECT_EQ(With(Verdict::Fail, Judged(RealLog("clean-2.0"), {3, 5000.0}).runs.at(0)), "");
}

TEST(Runs, AreTimedNetOfTheHarnesssPauses) {
    // -x: while the harness reads the answer to the second request, the answer to the first arrives. A
    // transfer takes 200 ms there, 20 ms otherwise; a pause of the harness 250 ms.
    for (const auto& [log, limit] : std::map<std::string, double>{{"xfer-2.0", 300}, {"clean-2.0", 200}}) {
        const auto result = Judged(RealLog(log));
        for (const auto& timing : result.runs.at(0).timings) {
            EXPECT_LT(timing.longest, limit) << timing.request;
        }
    }
}

TEST(Runs, WithTimesInWholeSecondsHaveNoReactionTimes) {
    std::istringstream lines(RealLog("clean-2.0"));
    std::string syslog;
    for (std::string line; std::getline(lines, line);) {
        syslog += "Nov 20 14:03:07 rig " + line.substr(line.find("velloran:")) + "\n";
    }
    const auto result = Judged(syslog, {3, 5000.0});
    EXPECT_TRUE(result.runs.at(0).timings.empty());
    EXPECT_EQ(With(Verdict::Inconclusive, result.runs.at(0)), "reaction.time");
}

TEST(Runs, InWhichTheHarnessAbortsForItsOwnReasonAreTheEnvironments) {
    const auto result = Judged(At(1, "'protocol' option set to 2") +
                               "velloran: velloran.cpp:150: int main(int, char**): Assertion "
                               "`listen(g_serverFd, 5) == 0' failed.\n");
    EXPECT_EQ(With(Verdict::Environment, result.runs.at(0)), "harness.ran");
}

TEST(Runs, OfManyExportsAreDoneOnlyWithTheLast) {
    const std::string log = RealLog("clean-1.0");
    const std::size_t first = log.rfind('\n', log.find("expecting a message")) + 1;
    const std::size_t again = log.find('\n', log.find("got an OK")) + 1;
    const std::string begun = log.substr(first, again - first) + At(9, "hdr[0]= 15");
    const auto result = Judged(log.substr(0, log.rfind('\n', log.find("shutting down")) + 1) + begun);
    EXPECT_EQ(With(Verdict::Inconclusive, result.runs.at(0)), "log.whole requests.answered");
    EXPECT_EQ(With(Verdict::NotReached, result.runs.at(0)), "export.done");
}

TEST(Runs, TellThatASwitchMeansNothingToProtocolOne) {
    const auto result = Judged(At(1, "'invalidEvent' flag set") + RealLog("clean-1.0"));
    EXPECT_EQ(With(Verdict::Inconclusive, result.runs.at(0)), "invalid-event.fired");
}

// A DVR that answers the request after a wrong prefix as if the frame were whole.
TEST(Runs, FailWhereAFrameThatIsTooShortIsAnswered) {
    std::string log =
        At(1, "'sizeError' flag set") + WithAnotherLength(RealLog("clean-1.0"), "got an OK", "1f");
    log.insert(log.rfind('\n', log.find("hdr[")) + 1, At(2, "sent: size= 1/30/20  'TEXT'"));
    EXPECT_EQ(With(Verdict::Fail, Judged(log).runs.at(0)), "size.answer");
}

TEST(Runs, SurviveRandomBytes) {
    std::mt19937 random(20261120);
    const std::string log = RealLog("all-faults-2.0");
    for (int round = 0; round < 300; ++round) {
        std::string garbled = log;
        for (int change = 0; change < 40; ++change) {
            garbled[random() % garbled.size()] = static_cast<char>(random());
        }
        garbled.erase(random() % garbled.size(), random() % 200);
        EXPECT_FALSE(Judged(garbled).runs.empty());
    }
}

TEST(Runs, OfWhichTheMessageIsLostTellOfItsFaultWithoutIt) {
    const auto unknown = Judged(At(1, "Connected to: x") + At(1, "expecting a message of 5 bytes") +
                                At(1, "UNSUPPORTED MSG RECEIVED: X"));
    EXPECT_EQ(FoundBy("messages.known", unknown.runs.at(0)), "a message that this dialect does not know");
    const auto ended = Judged(At(1, "Connected to: x") + At(1, "expecting a message of 5 bytes") +
                              "terminate called after throwing an instance of 'std::logic_error'\n");
    EXPECT_EQ(FoundBy("messages.parsed", ended.runs.at(0)),
              "a message that the harness cannot take: an exception ends it");
}

TEST(Proof, HasALineOnce) {
    rig::judge::KeptLines kept;
    rig::judge::Proof proof;
    const std::string file = "test.log";
    for (const std::uint64_t line : {1U, 1U, 2U, 2U}) {
        proof.Add({file, line, "text", &kept});
    }
    EXPECT_EQ(proof.Lines().size(), 2U);
}

TEST(ReactionTimes, GivePercentilesToAFewPercent) {
    rig::judge::KeptLines kept;
    rig::judge::ReactionTimes times;
    for (int millisecond = 1; millisecond <= 1000; ++millisecond) {
        times.Add(std::int64_t{millisecond} * 1000, {"test.log", 1, "", &kept});
    }
    EXPECT_NEAR(times.Percentile(0.5), 500, 15);
    EXPECT_NEAR(times.Percentile(0.99), 990, 30);
    EXPECT_EQ(times.Longest(), 1000);
    rig::judge::ReactionTimes none;
    none.Add(-1, {"test.log", 1, "", &kept});
    EXPECT_EQ(none.Longest(), 0) << "no time, where the clock was set back";
}

}  // namespace
