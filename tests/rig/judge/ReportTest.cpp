#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "rig/result/TextReport.h"
#include "tests/rig/judge/Judging.h"
#include "tests/rig/judge/MadeUpLog.h"

namespace rig::report {
namespace {

TEST(TextReport, TellsWhatWasExpectedAndFoundAndWhere) {
    const std::string text = TextReport(Judged(RealLog("d2-missing-source")), false);
    EXPECT_NE(text.find("FAIL event-list.source\n  EVENT_LIST names its source.\n  expected: source in "
                        "EVENT_LIST\n  found:    EVENT_LIST without source (<msg req="),
              std::string::npos);
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
    EXPECT_EQ(text.rfind("FAIL: 1 run, "), text.rfind('\n', text.size() - 2) + 1);
}

TEST(TextReport, ShowsAMatrixOfManyRuns) {
    const std::string text = TextReport(Judged(RealLog("clean-2.0") + RealLog("d2-missing-source")), false);
    EXPECT_NE(text.find("event-list.source              .   F\n"), std::string::npos);
}

TEST(TextReport, TellsHowTheReactionsSpread) {
    MadeUpLog log(1);
    std::string files;
    for (int file = 1; file <= 200; ++file) {
        files += "&lt;file name='" + std::to_string(file) + "'/&gt;";
    }
    log.Dvr(R"(<msg req="OK"/>)").Say("got an OK, sending GET_XML").Ask("x");
    log.Dvr(
        "<msg req=\"XML\"><xmlFile><string>&lt;recording-event "
        "reid='E'&gt;&lt;video&gt;&lt;streams&gt;&lt;stream&gt;" +
        files +
        "&lt;/stream&gt;&lt;/streams&gt;&lt;/video&gt;&lt;/recording-event&gt;</string></xmlFile></msg>");
    for (int file = 1; file <= 200; ++file) {
        log.Ask("x").After(0.0001 * std::pow(1.05, file));
        log.Dvr("<msg req=\"FILE_COMPLETE\" reid=\"E\" file=\"" + std::to_string(file) + "\"/>");
        log.Say("Got FILE_COMPLETE for: reid=E  file=" + std::to_string(file));
    }
    const auto timings = Judged(log.Text()).runs.at(0).timings;
    ASSERT_EQ(timings.size(), 2U);
    EXPECT_EQ(timings[0].request, "GET_FILE");
    EXPECT_EQ(timings[0].count, 200U);
    EXPECT_NEAR(timings[0].median, 14, 0.5);
    EXPECT_NEAR(timings[0].percentile95, 1063, 31);
    EXPECT_NEAR(timings[0].percentile99, 1569, 46);
    EXPECT_NEAR(timings[0].longest, 1730, 1);
}

TEST(Timeline, MarksTheFaultBetweenTheMessages) {
    const std::string text = Timeline(Judged(RealLog("event-2.0")).runs.at(0));
    EXPECT_NE(text.find("    !!! fault   processing 'invalidEvent' option [event]\n"), std::string::npos);
    EXPECT_NE(text.find("    <-- harness NEXT_EVENT nt1\n"), std::string::npos);
    EXPECT_NE(text.find("DVR -->         INVALID_EVENT nt1\n"), std::string::npos);
}

/// @return the text with `part` replaced by `other`
std::string With(std::string text, const std::string& part, const std::string& other) {
    return text.replace(text.find(part), part.size(), other);
}

TEST(Timeline, KeepsWhatADvrSendsOnOneLine) {
    const std::string log = With(RealLog("clean-2.0"), "file=\"Event1.xml\"", "file=\"a&#10;b.ts\"");
    const std::string text = Timeline(Judged(log).runs.at(0));
    EXPECT_NE(text.find("DVR -->         FILE_COMPLETE Event1 a\\nb.ts\n"), std::string::npos);
}

TEST(Timeline, PassesNoControlByteOfAnotherLogger) {
    const std::string log = With(RealLog("clean-2.0"), "Connected to:", "Connected\x1b[2J to:");
    EXPECT_EQ(Timeline(Judged(log).runs.at(0)).find('\x1b'), std::string::npos);
}

TEST(TextReport, KeepsWhatADvrSendsOnOneLine) {
    const std::string log =
        With(RealLog("d1-wrong-file"), "file=\"no-such-file\"", "file=\"x&#10;PASS&#27;\"");
    const std::string text = TextReport(Judged(log), false);
    EXPECT_NE(text.find("Event1/x\\nPASS\\x1b instead of GET_FILE"), std::string::npos) << text;
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
}

}  // namespace
}  // namespace rig::report
