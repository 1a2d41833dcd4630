#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

#include "rig/log/RequestText.h"
#include "tests/rig/judge/Judging.h"
#include "tests/rig/judge/MadeUpLog.h"

// Verdicts on both sides of each bound, a microsecond apart.

namespace {

using rig::result::Verdict;

Verdict VerdictOf(const std::string& id, const MadeUpLog& log, const rig::judge::Limits& limits = {}) {
    const auto result = Judged(log.Text(), limits);
    for (const auto& check : result.runs.at(0).checks) {
        if (check.id == id) {
            return check.verdict;
        }
    }
    return Verdict::KnownFailure;
}

/// The next line comes so long after the last.
MadeUpLog& Later(MadeUpLog& log, std::int64_t microseconds) {
    return log.After((static_cast<double>(microseconds - 1000) + 0.5) / 1e6);
}

MadeUpLog& Ask(MadeUpLog& log, int protocol, const std::string& name) {
    rig::log::Switches switches;
    switches.protocol = protocol;
    switches.doneDuration = name == "DONE" ? 1 : 0;
    rig::log::Request request;
    request.name = name;
    return log.Ask(rig::log::TextOf(request, switches));
}

MadeUpLog Opened(int protocol, const std::string& switches = "") {
    MadeUpLog log(protocol, switches);
    log.Dvr(R"(<msg req="OK"/>)");
    log.Say(protocol == 1 ? "got an OK, sending GET_XML" : "got an OK, sending GET_EVENT_LIST");
    Ask(log, protocol, protocol == 1 ? "GET_XML" : "GET_EVENT_LIST");
    return log;
}

TEST(Bounds, OfPatienceWithAnAnswer) {
    for (const std::int64_t waited : {2'999'999, 3'000'000}) {
        MadeUpLog log = Opened(1);
        Later(log, waited).Say("shutting down");
        EXPECT_EQ(VerdictOf("export.done", log), waited < 3'000'000 ? Verdict::NotReached : Verdict::Fail);
    }
}

TEST(Bounds, OfPatienceNeedATimeAtBothEnds) {
    for (const char* const line : {"hdr[0]", "shutting down"}) {
        MadeUpLog log = Opened(1);
        std::string text = log.After(10).Say("shutting down").Text();
        const std::size_t start = text.rfind('\n', text.find(line)) + 1;
        text.erase(start, text.find("velloran", start) - start);
        EXPECT_EQ(With(Verdict::Fail, Judged(text).runs.at(0)), "") << line;
    }
}

TEST(Bounds, OfPatienceWithAConnection) {
    for (const std::int64_t waited : {2'999'999, 3'000'000}) {
        MadeUpLog log;
        log.Say("'protocol' option set to 1");
        Later(log, waited).Say("shutting down");
        EXPECT_EQ(VerdictOf("connection.made", log),
                  waited < 3'000'000 ? Verdict::Inconclusive : Verdict::Fail);
    }
}

TEST(Bounds, OfPatienceWithAText) {
    for (const std::int64_t waited : {3'499'999, 3'500'000}) {
        MadeUpLog log(1);
        log.Say("expecting a message of 4096 bytes");
        Later(log, waited).Say("shutting down");
        EXPECT_EQ(VerdictOf("messages.framed", log) == Verdict::Fail, waited == 3'500'000);
    }
}

TEST(Bounds, OfPatienceWithATextEndWhereItCame) {
    for (const char* const line : {"read success:4096", "GetMessage:incoming message, bytes 1 to 800:<msg"}) {
        MadeUpLog log(1);
        log.Say("expecting a message of 4096 bytes").Say(line).After(60).Say("shutting down");
        EXPECT_NE(VerdictOf("messages.framed", log), Verdict::Fail) << line;
    }
}

TEST(Bounds, OfTheReactionsThatAPauseHides) {
    struct Row {
        std::int64_t busy;
        std::int64_t wait;
        bool isHidden;
    };
    for (const Row& row : {Row{10'000, 1'000, false}, Row{10'001, 1'000, true}, Row{10'001, 49'999, true},
                           Row{10'001, 50'000, false}}) {
        MadeUpLog log = Opened(1);
        Later(log, row.busy).Say("busy");
        Later(log, row.wait).Dvr(R"(<msg req="XML"/>)");
        EXPECT_EQ(Judged(log.Text()).runs.at(0).timings.empty(), row.isHidden)
            << row.busy << ", " << row.wait;
        Ask(log, 1, "GET_FILE").Dvr(R"(<msg req="FILE_COMPLETE"/>)");
        rig::judge::Limits limits;
        limits.maxReaction = 1000;
        EXPECT_EQ(FoundBy("reaction.time", Judged(log.Text(), limits).runs.at(0)),
                  fmt::format("none that took longer ({} more came while the harness paused)",
                              row.isHidden ? 1 : 0));
    }
}

TEST(Bounds, OfAReaction) {
    for (const std::int64_t waited : {100'000, 100'001}) {
        MadeUpLog log = Opened(1);
        Later(log, waited).Dvr(R"(<msg req="XML"/>)");
        rig::judge::Limits limits;
        limits.maxReaction = 100;
        EXPECT_EQ(VerdictOf("reaction.time", log, limits), waited == 100'000 ? Verdict::Pass : Verdict::Fail);
    }
}

TEST(Bounds, OfAReactionNeedATimeAtBothEnds) {
    for (const char* const line : {"hdr[0]", "expecting a message of 16"}) {
        MadeUpLog log = Opened(1);
        std::string text = log.Dvr(R"(<msg req="XML"/>)").Text();
        const std::size_t start = text.rfind('\n', text.find(line)) + 1;
        text.erase(start, text.find("velloran", start) - start);
        EXPECT_TRUE(Judged(text).runs.at(0).timings.empty()) << line;
    }
}

TEST(Bounds, OfTheDuration) {
    for (const std::int64_t away : {59'999'999, 60'000'000}) {
        MadeUpLog called = Opened(2, "doneDuration set to 1");
        Ask(called.Say("Sending DONE"), 2, "DONE");
        MadeUpLog watched = called;
        Later(called, away).Dvr(R"(<msg req="OK"/>)");
        EXPECT_EQ(VerdictOf("duration.answer", called), away < 60'000'000 ? Verdict::Fail : Verdict::Pass);
        Later(watched.Say("Closing client socket..."), away - 1000).Say("shutting down");
        EXPECT_EQ(VerdictOf("duration.answer", watched),
                  away < 60'000'000 ? Verdict::Inconclusive : Verdict::Pass);
    }
}

TEST(Bounds, OfWhatIsShownOfAMessage) {
    for (const std::size_t size : {200U, 201U}) {
        const std::string text = std::string(size - 1, 'x') + "y";
        const std::string found =
            FoundBy("messages.parsed", Judged(MadeUpLog(1).Dvr("<m/>" + text.substr(4)).Text()).runs.at(0));
        EXPECT_EQ(found.find('y') != std::string::npos, size == 200) << found;
    }
}

}  // namespace
