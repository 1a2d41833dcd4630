#include <gtest/gtest.h>

#include "rig/result/TextReport.h"
#include "tests/rig/judge/Judging.h"

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
