#include "tests/rig/campaign/CampaignTest.h"

namespace {

/// A dialogue that leads nowhere, what the campaign makes of it, and what it says.
struct DeadEnd {
    const char* name;
    const char* plan;  // the case's name
    const char* defect;
    const char* outcome;
    const char* over;
    const char* reason;
};

std::ostream& operator<<(std::ostream& out, const DeadEnd& deadEnd) {
    return out << deadEnd.name;
}

class DeadEndsTest : public CampaignTest, public testing::WithParamInterface<DeadEnd> {};

TEST_P(DeadEndsTest, EndTheCaseLongBeforeItsTimeouts) {
    const DeadEnd& deadEnd = GetParam();
    const Json one = RunCase(deadEnd.plan, {"--dvr", Dvr(deadEnd.defect), "--patience", "1"});
    EXPECT_EQ(one["outcome"], deadEnd.outcome);
    EXPECT_EQ(one["over"], deadEnd.over);
    ExpectHolds(one["reason"], deadEnd.reason);
    ExpectHolds(EvidenceText("index.html"), deadEnd.reason);
    EXPECT_LT(one["times"]["duration"], 20);
    EXPECT_EQ(one["harness"]["status"], 44);
}

const DeadEnd kDeadEnds[] = {
    {"NoEvents", "clean-2.0", "--defect empty-list", "INCONCLUSIVE", "no events",
     "if earlier cases have used them up, have --before-case make new ones"},
    {"NoFiles", "clean-2.0", "--defect description-without-video", "FAIL", "stuck",
     "; the DVR gave no file to ask for, and the harness waits"},
    {"Reset", "clean-2.0", "--defect reset=0 --on EVENT", "FAIL", "connection lost",
     "read error: 104:Connection reset by peer"},
    {"Closed", "clean-2.0", "--defect close=0 --on EVENT", "FAIL", "connection lost",
     "the DVR closed the connection before the export was done"},
    {"HarnessInCircles", "clean-1.0", "--defect description-without-reid", "FAIL", "endless",
     "the harness logs for ever: Found event with no REID"},
    {"Circle", "transport-2.0", "--defect no-exception --on TRANSPORT_EXCEPTION", "FAIL", "endless",
     "20 times in a row, with nothing new: GET_FILE E1 E1_1, FILE_COMPLETE E1 E1_1"},
};

INSTANTIATE_TEST_SUITE_P(All, DeadEndsTest, testing::ValuesIn(kDeadEnds),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
