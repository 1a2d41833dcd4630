#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>

#include "Judging.h"
#include "rig/judge/KnownFailures.h"

namespace rig::judge {
namespace {

using report::Verdict;

TEST(KnownFailures, DoNotFailTheRunForTheSameReason) {
    auto result = Judged(RealLog("d2-missing-source"));
    Apply({{"event-list.source", "EVENT_LIST without source (2 times)"}}, result.runs.at(0));
    EXPECT_EQ(With(Verdict::KnownFailure, result.runs.at(0)), "event-list.source");
    EXPECT_EQ(report::ExitStatusOf(report::WorstOf(result)), 0);
}

TEST(KnownFailures, DoNotCountWhatStandsInParentheses) {
    auto result = Judged(RealLog("d2-no-answer-on-EVENT_XFER_ACK"));
    Apply({{"event-ack.reid", "an event that was never acknowledged"}}, result.runs.at(0));
    EXPECT_EQ(With(Verdict::KnownFailure, result.runs.at(0)), "event-ack.reid");
}

TEST(KnownFailures, DoNotCountNamesThatHoldParentheses) {
    report::RunResult run;
    run.checks.push_back(
        {"files.asked-for", "", Verdict::Fail, "", "another file (E/a (1).ts instead of GET_FILE E/a)", {}});
    Apply({{"files.asked-for", "another file (E/other.ts instead of GET_FILE E/other)"}}, run);
    EXPECT_EQ(With(Verdict::KnownFailure, run), "files.asked-for");
}

TEST(KnownFailures, FailForAnotherReason) {
    auto result = Judged(RealLog("d2-missing-source"));
    Apply({{"event-list.source", "another reason"}}, result.runs.at(0));
    EXPECT_EQ(With(Verdict::Fail, result.runs.at(0)), "event-list.source");
}

TEST(KnownFailures, FailWhenTheyPass) {
    auto result = Judged(RealLog("clean-2.0"));
    Apply({{"event-list.source", "EVENT_LIST without source (2 times)"}}, result.runs.at(0));
    EXPECT_EQ(With(Verdict::Fail, result.runs.at(0)), "event-list.source");
}

TEST(KnownFailures, AreReadFromAFile) {
    const std::string path = testing::TempDir() + "velloran-known-failures";
    std::ofstream(path) << "# firmware 7\n\nevent-list.source EVENT_LIST without source (2 times)\n";
    EXPECT_EQ(ReadKnownFailures(path),
              (KnownFailures{{"event-list.source", "EVENT_LIST without source (2 times)"}}));
    std::ofstream(path) << "no.such-check reason\n";
    EXPECT_THROW(ReadKnownFailures(path), std::runtime_error);
    std::ofstream(path) << "event-list.source\n";
    EXPECT_THROW(ReadKnownFailures(path), std::runtime_error);
    std::remove(path.c_str());
    EXPECT_THROW(ReadKnownFailures(path), std::runtime_error);
}

}  // namespace
}  // namespace rig::judge
