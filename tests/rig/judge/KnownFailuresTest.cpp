#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "rig/judge/KnownFailures.h"
#include "tests/rig/judge/Judging.h"
#include "tests/support/TemporaryFolder.h"

namespace rig::judge {
namespace {

using result::CheckResult;
using result::RunResult;
using result::Verdict;

const KnownFailures kNoSource = {{"event-list.source", {"EVENT_LIST without source (2 times)"}}};

TEST(KnownFailures, DoNotFailTheRunForTheSameReason) {
    auto result = Judged(RealLog("d2-missing-source"));
    Apply(kNoSource, result.runs.at(0));
    EXPECT_EQ(With(Verdict::KnownFailure, result.runs.at(0)), "event-list.source");
    EXPECT_EQ(result::ExitStatusOf(result::WorstOf(result)), 0);
}

TEST(KnownFailures, DoNotFailTheRunForWhatIsNotReachedBecauseOfThem) {
    RunResult run;
    run.checks = {CheckResult{"rehash.attributes", "", Verdict::KnownFailure, "", "", {}},
                  CheckResult{"rehash.same-hash", "", Verdict::NotReached, "", "", {}}};
    EXPECT_EQ(result::WorstOf(run), Verdict::KnownFailure);
    run.checks.push_back({"xfer.fired", "", Verdict::Inconclusive, "", "", {}});
    EXPECT_EQ(result::WorstOf(run), Verdict::Inconclusive);
}

TEST(KnownFailures, IgnoreWhatIsInParentheses) {
    auto result = Judged(RealLog("d2-no-answer-on-EVENT_XFER_ACK"));
    Apply({{"event-ack.reid", {"an event that was never acknowledged"}}}, result.runs.at(0));
    EXPECT_EQ(With(Verdict::KnownFailure, result.runs.at(0)), "event-ack.reid");
}

TEST(KnownFailures, IgnoreNamesThatHoldParentheses) {
    RunResult run;
    run.checks.push_back(
        {"files.asked-for", "", Verdict::Fail, "", "another file (E/a (1).ts instead of GET_FILE E/a)", {}});
    Apply({{"files.asked-for", {"another file (E/other.ts instead of GET_FILE E/other)"}}}, run);
    EXPECT_EQ(With(Verdict::KnownFailure, run), "files.asked-for");
}

TEST(KnownFailures, MayHaveSeveralReasons) {
    auto result = Judged(RealLog("d2-missing-source"));
    Apply({{"event-list.source", {"another reason", "EVENT_LIST without source", "one more"}}},
          result.runs.at(0));
    EXPECT_EQ(With(Verdict::KnownFailure, result.runs.at(0)), "event-list.source");
}

TEST(KnownFailures, FailForAnotherReasonAndNameTheKnownOnes) {
    auto result = Judged(RealLog("d2-missing-source"));
    Apply({{"event-list.source", {"one reason", "two reasons"}}}, result.runs.at(0));
    ASSERT_EQ(With(Verdict::Fail, result.runs.at(0)), "event-list.source");
    const auto& checks = result.runs.at(0).checks;
    const auto source = std::find_if(checks.begin(), checks.end(),
                                     [](const auto& check) { return check.id == "event-list.source"; });
    EXPECT_EQ(source->expected, "source in EVENT_LIST; known is \"one reason\", \"two reasons\"");
}

/// @return what KnownTally calls unseen in the runs of these logs
RunResult Unseen(const KnownFailures& known, const std::string& logs) {
    KnownTally tally;
    for (RunResult& run : Judged(logs).runs) {
        Apply(known, run);
        tally.Add(run);
    }
    return tally.Unseen(known);
}

TEST(KnownFailures, FailIfTheyPassAndOccurInNoRun) {
    const RunResult unseen = Unseen(kNoSource, RealLog("clean-2.0"));
    EXPECT_EQ(unseen.name, "known failures");
    EXPECT_EQ(With(Verdict::Fail, unseen), "event-list.source");
    EXPECT_EQ(unseen.checks.at(0).found, "it passes now: the list of known failures must be fixed");
    const RunResult two = Unseen({{"event-list.source", {"one reason", "another"}}}, RealLog("clean-2.0"));
    EXPECT_EQ(two.checks.at(0).expected, "\"another\" or \"one reason\"");
}

TEST(KnownFailures, NeedNotOccurInEveryRun) {
    EXPECT_TRUE(Unseen(kNoSource, RealLog("clean-2.0") + RealLog("d2-missing-source")).checks.empty());
}

TEST(KnownFailures, AreNotMissedWhereNothingReachedThem) {
    EXPECT_TRUE(Unseen(kNoSource, RealLog("clean-1.0")).checks.empty());
}

class KnownFailuresFile : public testing::Test {
 protected:
    KnownFailures Read(const std::string& content) const {
        std::ofstream(path_, std::ios::binary) << content;
        return ReadKnownFailures(path_);
    }

    const TemporaryFolder folder_;
    const std::string path_ = folder_.Path() / "known-failures";
};

TEST_F(KnownFailuresFile, HasALineForEachReason) {
    EXPECT_EQ(Read("# firmware 7\n\nevent-list.source EVENT_LIST without source (2 times)\n"), kNoSource);
    EXPECT_EQ(Read("xfer.answer a\nxfer.answer b\n"), (KnownFailures{{"xfer.answer", {"a", "b"}}}));
}

TEST_F(KnownFailuresFile, MayComeFromAnyEditor) {
    EXPECT_EQ(Read("\t \r\n  event-list.source \t EVENT_LIST without source (2 times) \r\n"), kNoSource);
}

TEST_F(KnownFailuresFile, IsRefusedWithItsLine) {
    for (const std::string line : {"no.such-check reason", "event-list.source", "event-list.source \r"}) {
        try {
            Read("# firmware 7\n" + line + "\n");
            FAIL() << "taken: " << line;
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what())
                          .find(path_ + ":2: expected the id of a check, a blank and a reason"),
                      0U)
                << error.what();
        }
    }
}

TEST_F(KnownFailuresFile, MayEndItsLinesAsElsewhere) {
    EXPECT_EQ(Read("event-list.source no source\r\nexport.done never \t\r\n"),
              (KnownFailures{{"event-list.source", {"no source"}}, {"export.done", {"never"}}}));
}

TEST_F(KnownFailuresFile, MustBeThere) {
    try {
        ReadKnownFailures("/nowhere/known");
        FAIL() << "read";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(),
                     "--known: /nowhere/known: expected to read it, found: No such file or directory");
    }
}

}  // namespace
}  // namespace rig::judge
