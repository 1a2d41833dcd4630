#include <gtest/gtest.h>

#include <random>

#include "tests/rig/judge/Judging.h"

// Logs of the harness with the simulated DVR, good and with one defect each: what must fail, what the log
// cannot tell, and that nothing else fails.

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

INSTANTIATE_TEST_SUITE_P(GoodDvr, RealLogs,
                         testing::Values(RealLogCase{"clean-1.0", "", ""}, RealLogCase{"clean-2.0", "", ""},
                                         RealLogCase{"event-2.0", "", ""}, RealLogCase{"file-2.0", "", ""},
                                         RealLogCase{"transport-2.0", "", ""},
                                         RealLogCase{"rehash-2.0", "", ""}, RealLogCase{"xfer-2.0", "", ""},
                                         RealLogCase{"config-1.0", "", ""}, RealLogCase{"config-2.0", "", ""},
                                         RealLogCase{"upgrade-2.0", "", ""}, RealLogCase{"close-2.0", "", ""},
                                         RealLogCase{"size-1.0", "", ""}, RealLogCase{"size-2.0", "", ""},
                                         RealLogCase{"d1-reconnect", "", ""},
                                         RealLogCase{"rehash-xfer-2.0", "", "rehash.fired"},
                                         RealLogCase{"all-faults-2.0", "", "rehash.fired"},
                                         RealLogCase{"sleep-2.0", "", "sleep.fired"}));

INSTANTIATE_TEST_SUITE_P(
    DefectiveDvr, RealLogs,
    testing::Values(
        RealLogCase{"d1-empty-description", "event.description", ""},
        RealLogCase{"d1-malformed-xml", "messages.parsed", ""},
        RealLogCase{"d1-wrong-file", "requests.answered file-complete.identity export.done", ""},
        RealLogCase{"d2-accept-event", "invalid-event.answer", ""},
        RealLogCase{"d2-accept-file", "invalid-file.answer-event", ""},
        RealLogCase{"d2-no-exception", "transport.answer", ""},
        RealLogCase{"d2-no-xfer-in-progress", "requests.answered xfer.answer", ""},
        RealLogCase{"d2-double-xfer-in-progress", "messages.asked", ""},
        RealLogCase{"d2-missing-hash", "rehash.attributes", ""},
        RealLogCase{"d2-missing-length", "rehash.attributes", ""},
        RealLogCase{"d2-new-hash", "", "rehash.same-hash"},
        RealLogCase{"d2-missing-source", "event-list.source", ""},
        RealLogCase{"d2-double-list", "event-list.once", ""},
        RealLogCase{"d2-empty-list", "", "event-list.events"},
        RealLogCase{"d2-event-without-text", "event-list.events", ""},
        RealLogCase{"d2-no-answer-on-EVENT_XFER_ACK", "requests.answered event-ack.reid export.done", ""},
        RealLogCase{"d2-wrong-reid-INVALID_EVENT-f", "fault-report.reid", ""},
        RealLogCase{"d2-wrong-reid-XFER_IN_PROGRESS-x", "fault-report.reid", ""},
        RealLogCase{"d2-wrong-reid-on-EVENT", "requests.answered event.reid export.done", ""},
        RealLogCase{"d2-wrong-reid-on-EVENT_XFER_ACK", "requests.answered event-ack.reid export.done", ""},
        RealLogCase{"d2-close20-FC", "connection.kept", ""},
        RealLogCase{"d2-close-on-EVENT", "", "log.whole requests.answered"},
        RealLogCase{"d2-no-msg", "messages.parsed", ""}, RealLogCase{"d2-bad-prefix", "messages.framed", ""},
        RealLogCase{"d2-second-connection", "", "log.whole requests.answered"},
        RealLogCase{"d2-noconf", "requests.answered upgrade.answer", ""},
        RealLogCase{"d2-description-without-video", "event.files", ""},
        RealLogCase{"d1-no-description", "event.description", ""},
        RealLogCase{"d2-double-OK", "messages.asked", ""},
        RealLogCase{"d2-double-FILE_COMPLETE", "messages.asked file-complete.identity", ""},
        RealLogCase{"d2-double-INVALID_EVENT-f", "messages.asked", ""},
        RealLogCase{"d2-double-EVENT_XFER_ACK", "messages.asked", ""},
        RealLogCase{"d2-unasked-invalid-event", "messages.asked", ""},
        RealLogCase{"d2-unasked-transport-exception", "messages.asked", ""},
        RealLogCase{"d2-short-prefix-on-EVENT", "messages.parsed", ""},
        RealLogCase{"d2-empty-frame", "messages.parsed", ""},
        RealLogCase{"d2-close-all-on-EVENT", "", "log.whole requests.answered"},
        RealLogCase{"d2-reset-on-EVENT", "connection.kept", "requests.answered"},
        RealLogCase{"d2-second-connection-on-EVENT", "connection.kept", ""},
        RealLogCase{"d2-reconnect-c", "close.answer", ""},
        RealLogCase{"d2-reconnect-c-d", "duration.answer", ""},
        RealLogCase{"d2-reconnect-d", "", "duration.answer"},
        RealLogCase{"d2-unknown-message", "connection.opened messages.known", ""}));

/// @return what the check found on the log's only run
std::string Found(const char* log, const std::string& id) {
    const auto result = Judged(RealLog(log));
    for (const auto& check : result.runs.at(0).checks) {
        if (check.id == id) {
            return check.found;
        }
    }
    return "no check " + id;
}

TEST(RealLog, IsToldInWords) {
    EXPECT_EQ(Found("d2-double-OK", "messages.asked"), "a message that nothing asked for (a second OK)");
    EXPECT_EQ(Found("d2-double-FILE_COMPLETE", "messages.asked"),
              "a message that nothing asked for (FILE_COMPLETE twice)");
    EXPECT_EQ(Found("d2-double-FILE_COMPLETE", "file-complete.identity"),
              "a file completed twice (Event1/Front.ts)");
    EXPECT_EQ(Found("d2-unasked-transport-exception", "messages.asked"),
              "a message that nothing asked for (TRANSPORT_EXCEPTION to a good request)");
    EXPECT_EQ(Found("d2-empty-frame", "messages.parsed"),
              "a message without text, for which the harness aborts");
    EXPECT_EQ(
        Found("d2-wrong-reid-XFER_IN_PROGRESS-x", "fault-report.reid"),
        "the report of a fault about another event than the request (no-such-event instead of EVT-0001)");
    EXPECT_NE(Found("d2-close-all-on-EVENT", "log.whole").find("SIGPIPE"), std::string::npos);
    EXPECT_NE(Found("d2-reconnect-c-d", "duration.answer").find("before the time was over"),
              std::string::npos);
    EXPECT_NE(Found("d2-no-answer-on-EVENT_XFER_ACK", "requests.answered")
                  .find("EVENT_XFER_COMPLETE EVT-0001 waited for "),
              std::string::npos);
}

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

TEST(RealLog, OfASecondConnectionFailsWhereStandardErrorIsInIt) {
    const auto result = Judged(RealLog("d2-second-connection") +
                               "velloran: /x/velloran.cpp:186: int main(int, char**): Assertion "
                               "`FD_ISSET(g_clientFd, &readFds)' failed.\n");
    EXPECT_EQ(With(Verdict::Fail, result.runs.at(0)), "connection.kept");
}

TEST(RealLog, CutAnywhereNeverFailsAndPassesOnlyBehindDone) {
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
    std::istringstream lines(RealLog("d2-missing-hash"));
    std::string syslog;
    for (std::string line; std::getline(lines, line);) {
        syslog += "Nov 20 14:03:07 rig velloran[212]: " + line.substr(line.find("velloran:")) + "\n";
        syslog += "Nov 20 14:03:07 rig other[7]: hdr[0]= 5e\n";
    }
    const auto result = Judged(syslog);
    ASSERT_EQ(result.runs.size(), 1U);
    EXPECT_EQ(With(Verdict::Fail, result.runs[0]), "rehash.attributes");
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
