#include <gtest/gtest.h>

#include <random>

#include "tests/rig/judge/Judging.h"

// Logs of the harness with the simulated DVR, as they may come to the judge. The verdicts on them as they
// are, and on every defect, are in tests/together.

namespace {

using rig::result::Verdict;

struct RealLogCase {
    const char* log;
    const char* failed;
    const char* inconclusive;
};

void PrintTo(const RealLogCase& one, std::ostream* out) {
    *out << one.log;
}

class RealLogs : public testing::TestWithParam<RealLogCase> {};

TEST_P(RealLogs, GetTheirVerdict) {
    const auto result = Judged(RealLog(GetParam().log));
    ASSERT_EQ(result.runs.size(), 1U);
    EXPECT_EQ(With(Verdict::Fail, result.runs[0]), GetParam().failed);
    EXPECT_EQ(With(Verdict::Inconclusive, result.runs[0]), GetParam().inconclusive);
    EXPECT_EQ(With(Verdict::Environment, result.runs[0]), "");
    if (std::string(GetParam().failed).empty() && std::string(GetParam().inconclusive).empty()) {
        EXPECT_EQ(rig::result::WorstOf(result), Verdict::Pass);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Stored, RealLogs,
    testing::Values(RealLogCase{"clean-1.0", "", ""}, RealLogCase{"clean-2.0", "", ""},
                    RealLogCase{"all-faults-2.0", "", "rehash.fired"},
                    RealLogCase{"d1-wrong-file", "requests.answered file-complete.identity export.done", ""},
                    RealLogCase{"d2-missing-source", "event-list.source", ""},
                    RealLogCase{"d2-no-answer-on-EVENT_XFER_ACK",
                                "requests.answered event-ack.reid export.done", ""}));

TEST(RealLog, NamesTheLinesThatProveAFailure) {
    const auto result = Judged(RealLog("d2-missing-source"));
    for (const auto& check : result.runs.at(0).checks) {
        if (check.id == "event-list.source") {
            ASSERT_EQ(check.evidence.size(), 1U);
            EXPECT_EQ(check.evidence[0].text, "'source' attribute missing from EVENT_LIST message");
            EXPECT_EQ(check.evidence[0].file, "test.log");
            EXPECT_GT(check.evidence[0].line, 5U);
        }
    }
}

TEST(RealLog, CutAnywhereNeverFailsAndPassesOnlyAfterDone) {
    for (const char* name : {"all-faults-2.0", "clean-1.0", "xfer-2.0", "close-2.0"}) {
        const std::string log = RealLog(name);
        const std::size_t done = log.find("hdr[", log.find("Sending DONE"));
        ASSERT_LT(done, log.size());
        for (std::size_t end = 1; end < log.size(); end += 7) {
            const auto result = Judged(log.substr(0, end));
            if (result.runs.empty()) {
                EXPECT_LT(end, log.find('\n')) << name;
                continue;
            }
            const Verdict worst = rig::result::WorstOf(result);
            EXPECT_TRUE(worst == Verdict::Inconclusive || (worst == Verdict::Pass && end > done))
                << name << " cut at " << end << ": " << rig::result::NameOf(worst);
        }
    }
}

TEST(RealLog, BetweenLinesOfBinaryGarbageGetsTheSameVerdict) {
    std::mt19937 random(20261120);
    std::istringstream lines(RealLog("d2-missing-source"));
    std::string log;
    for (std::string line; std::getline(lines, line);) {
        log += line + "\n";
        for (std::size_t count = random() % 50; count > 0; --count) {
            log += static_cast<char>(random());
        }
        log += "\n";
    }
    const auto result = Judged(log);
    ASSERT_EQ(result.runs.size(), 1U);
    EXPECT_EQ(With(Verdict::Fail, result.runs[0]), "event-list.source");
    EXPECT_EQ(With(Verdict::Inconclusive, result.runs[0]), "");
}

TEST(RealLog, GetsTheSameVerdictAsInASyslogFileBetweenLinesOfOthers) {
    std::istringstream lines(RealLog("d2-missing-source"));
    std::string syslog;
    for (std::string line; std::getline(lines, line);) {
        syslog += "Nov 20 14:03:07 rig velloran[212]: " + line.substr(line.find("velloran:")) + "\n";
        syslog += "Nov 20 14:03:07 rig other[7]: hdr[0]= 5e\n";
    }
    const auto result = Judged(syslog);
    ASSERT_EQ(result.runs.size(), 1U);
    EXPECT_EQ(With(Verdict::Fail, result.runs[0]), "event-list.source");
}

TEST(RealLog, InterleavedWithAnotherRunGetsItsOwnVerdict) {
    std::istringstream first(RealLog("clean-2.0"));
    std::istringstream second(RealLog("d2-missing-source"));
    std::string log;
    std::string line;
    while (first || second) {
        for (auto* const source : {&first, &second}) {
            if (std::getline(*source, line)) {
                log += std::string("velloran[") + (source == &first ? "1]: " : "2]: ") +
                       line.substr(line.find("velloran:")) + "\n";
            }
        }
    }
    const auto result = Judged(log);
    ASSERT_EQ(result.runs.size(), 2U);
    EXPECT_EQ(With(Verdict::Fail, result.runs[0]), "");
    EXPECT_EQ(With(Verdict::Fail, result.runs[1]), "event-list.source");
}

}  // namespace
