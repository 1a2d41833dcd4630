#include <gtest/gtest.h>

#include <sstream>

#include "tests/rig/judge/Dialogue.h"

// A DVR that connects again after DONE.

namespace {

using rig::judge::AfterDone;
using rig::result::Verdict;

/// An export of one event that -c closes, and the next call so many seconds after DONE.
Dialogue ClosedEarly(const std::string& switches) {
    Dialogue log("closeEarly set to 1" + switches);
    log.List("E1", "E2").AskEvent("E1").Describe("E1", "a").Finish("E1", "a");
    log.Done(switches.empty() ? "" : " duration=\"1\"").After(1).Say("Closing client socket...");
    return log;
}

TEST(AnotherCall, AfterAnEarlyEndIsNotForbidden) {
    Dialogue log = ClosedEarly("");
    log.List("E2").AskEvent("E2").Describe("E2", "b").Finish("E2", "b").Done();
    const std::string text = log.After(1).Say("Closing client socket...").Text();
    EXPECT_EQ(Failed(text), "");
    EXPECT_EQ(FindingOf("close.answer", text), "PASS: nothing else");
}

TEST(AnotherCall, IsHeldAgainstTheDuration) {
    const std::string minute = "\ndoneDuration set to 1";
    EXPECT_EQ(FindingOf("duration.answer", ClosedEarly(minute).After(2.9).Dvr("<msg req=\"OK\"/>").Text()),
              "FAIL: the DVR connected again before the time was over (after 3.9 s, not 60 s)");
    EXPECT_EQ(FindingOf("duration.answer", ClosedEarly(minute).After(60).Dvr("<msg req=\"OK\"/>").Text()),
              "PASS: it called after 61.0 s");
    EXPECT_EQ(FindingOf("duration.answer", ClosedEarly(minute).After(2).Say("shutting down").Text()),
              "INCONCLUSIVE: no call, but nobody watched for long enough (for 3.0 s)");
    EXPECT_EQ(FindingOf("duration.answer", ClosedEarly(minute).After(60).Say("shutting down").Text()),
              "PASS: no call for 61.0 s");
}

TEST(AnotherCall, IsHeldAgainstNothingWithoutItsTime) {
    std::string text = ClosedEarly("\ndoneDuration set to 1").Text();
    text +=
        "velloran:1 expecting a message of 15 bytes\n"
        "velloran:1 GetMessage:incoming message, bytes 1 to 15:<msg req=\"OK\"/>\n";
    EXPECT_EQ(With(Verdict::Fail, Judged(text).runs.at(0)), "");
}

std::string DoneForAMinute() {
    Dialogue log("doneDuration set to 1");
    log.List("E1").AskEvent("E1").Describe("E1", "a").Finish("E1", "a").Done(" duration=\"1\"");
    log.After(70);
    return log.End();
}

TEST(AnotherCall, IsNotSeenByAHarnessThatKeepsTheConnection) {
    EXPECT_EQ(FindingOf("duration.answer", DoneForAMinute()),
              "INCONCLUSIVE: without -c the harness does not see a call after the DVR has closed its "
              "connection, and nobody else watched");
}

TEST(AnotherCall, MayBeSeenByTheRig) {
    const auto told = [](const AfterDone& after) {
        return FindingOf("duration.answer", DoneForAMinute(), {3, {}, false, after});
    };
    EXPECT_EQ(told({4.0, 0}),
              "FAIL: the DVR connected again before the time was over (after 4.0 s, not 60 s)");
    EXPECT_EQ(told({60.5, 0}), "PASS: it called after 60.5 s");
    EXPECT_EQ(told({{}, 60}), "PASS: no call for 60.0 s");
    EXPECT_EQ(told({{}, 0.5}), "INCONCLUSIVE: no call, but nobody watched for long enough (for 0.5 s)");
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

}  // namespace
