#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rig/dvr/dialogue/Dialogue_1_0.h"
#include "rig/dvr/dialogue/Dialogue_2_0.h"
#include "tests/rig/dvr/Failures.h"
#include "tests/rig/dvr/FixedRecordings.h"
#include "tests/support/TemporaryFolder.h"

// A DVR that is wrong on purpose also answers what is out of place, as that may well be its own fault.
namespace {

using rig::dvr::Dialogue;
using rig::dvr::Message;
using Texts = std::vector<std::string>;

class ToleranceTest : public testing::Test {
 protected:
    ToleranceTest() {
        one_.Tolerate();
        two_.Tolerate();
    }

    /// @return the names of the answers
    static Texts Answers(Dialogue& dialogue, const std::string& text) {
        Texts names;
        for (const Message& answer : dialogue.Handle(Message::Parse(text))) {
            names.push_back(answer.Name());
        }
        return names;
    }

    Texts One(const std::string& text) { return Answers(one_, "<msg " + text + "/>"); }
    Texts Two(const std::string& text) {
        return Answers(two_, "<msg " + text + R"( protocolVersion="2.0"/>)");
    }

    FixedRecordings recordings_;
    TemporaryFolder folder_;
    rig::dvr::Dialogue_1_0 one_{recordings_};
    rig::dvr::Dialogue_2_0 two_{recordings_, folder_.Path() / "velloranFail"};
};

TEST_F(ToleranceTest, RemarksOnceOnWhatIsOutOfPlace) {
    EXPECT_EQ(Two(R"(req="NEXT_EVENT" reid="EVT1")"), Texts{"EVENT"});
    EXPECT_EQ(two_.TakeRemarks(), Texts{"NEXT_EVENT in answer to OK"});
    EXPECT_EQ(two_.TakeRemarks(), Texts());
}

TEST_F(ToleranceTest, RemarksOnNothingThatIsInPlace) {
    EXPECT_EQ(Two(R"(req="GET_EVENT_LIST")"), Texts{"EVENT_LIST"});
    EXPECT_EQ(Two(R"(req="NEXT_EVENT" reid="EVT1")"), Texts{"EVENT"});
    EXPECT_EQ(two_.TakeRemarks(), Texts());
}

TEST_F(ToleranceTest, StillWantsWellFormedMessages) {
    EXPECT_EQ(BreachOf([&] { Two(R"(req="NEXT_EVENT")"); }), "NEXT_EVENT without its attribute 'reid'");
    EXPECT_EQ(BreachOf([&] { Two(R"(req="HELLO")"); }), "an unknown message, 'HELLO'");
    EXPECT_EQ(BreachOf([&] { One(R"(req="NEXT_EVENT" reid="EVT1")"); }), "an unknown message, 'NEXT_EVENT'");
    EXPECT_EQ(BreachOf([&] { Two(R"(req="GET_FILE" reid="E" path="F" file="a")"); }),
              "GET_FILE with path 'F' but reid 'E'");
}

TEST_F(ToleranceTest, MovesOnToAnotherEventIn20) {
    Two(R"(req="GET_EVENT_LIST")");
    Two(R"(req="NEXT_EVENT" reid="EVT1")");
    EXPECT_EQ(Two(R"(req="NEXT_EVENT" reid="EVT2")"), Texts{"EVENT"});
    EXPECT_EQ(two_.TakeRemarks(), Texts{"NEXT_EVENT while 3 files are still to be transferred from 'EVT1'"});
    EXPECT_EQ(Two(R"(req="GET_FILE" reid="EVT2" path="EVT2" file="c.ts")"), Texts());
    EXPECT_TRUE(two_.IsTransferring());
}

TEST_F(ToleranceTest, AcknowledgesAnotherEventIn20) {
    Two(R"(req="GET_EVENT_LIST")");
    Two(R"(req="NEXT_EVENT" reid="EVT1")");
    EXPECT_EQ(Two(R"(req="EVENT_XFER_COMPLETE" reid="EVT2")"), Texts{"EVENT_XFER_ACK"});
    EXPECT_EQ(two_.TakeRemarks(),
              (Texts{"EVENT_XFER_COMPLETE while 3 files are still to be transferred from 'EVT1'",
                     "EVENT_XFER_COMPLETE for 'EVT2' while 'EVT1' is in progress"}));
}

TEST_F(ToleranceTest, TransfersAnotherFileInsteadIn20) {
    Two(R"(req="GET_EVENT_LIST")");
    Two(R"(req="NEXT_EVENT" reid="EVT1")");
    Two(R"(req="GET_FILE" reid="EVT1" path="EVT1" file="a.ts")");
    EXPECT_EQ(Two(R"(req="GET_FILE" reid="EVT1" path="EVT1" file="b.ts")"), Texts());
    EXPECT_EQ(two_.TakeRemarks(), Texts{"GET_FILE for 'EVT1'/'b.ts' while 'EVT1'/'a.ts' is in transfer"});
    EXPECT_EQ(two_.FinishTransfer().Get("file"), "b.ts");
    EXPECT_EQ(two_.Exported().files, 1U);
}

TEST_F(ToleranceTest, EndsAtADoneAtAnyTimeIn20) {
    Two(R"(req="GET_EVENT_LIST")");
    EXPECT_EQ(Two(R"(req="DONE")"), Texts());
    EXPECT_TRUE(two_.IsDone());
    EXPECT_EQ(two_.TakeRemarks(), Texts{"DONE with no event in progress"});
}

TEST_F(ToleranceTest, TransfersAFileRequestedOutOfPlaceIn10) {
    EXPECT_EQ(One(R"(req="GET_FILE" path="EVT1" file="a.ts")"), Texts());
    EXPECT_EQ(one_.TakeRemarks(),
              (Texts{"GET_FILE in answer to OK",
                     "GET_FILE for 'EVT1'/'a.ts', which is not a file that is still to be transferred"}));
    EXPECT_EQ(one_.FinishTransfer().Get("file"), "a.ts");
}

TEST_F(ToleranceTest, DoesNotAnswerARequestForAnUnknownFileIn10) {
    One(R"(req="GET_XML")");
    EXPECT_EQ(One(R"(req="GET_FILE" path="no-such-event" file="a.ts")"), Texts());
    EXPECT_EQ(One(R"(req="GET_FILE" path="EVT1" file="c.ts")"), Texts());
    EXPECT_EQ(one_.TakeRemarks().size(), 2U);
    EXPECT_FALSE(one_.IsTransferring());
}

TEST_F(ToleranceTest, AcceptsAnotherListIn10) {
    One(R"(req="GET_XML")");
    EXPECT_EQ(Answers(one_, "<msg req=\"EVENT_XFER_COMPLETE\"><events><string>E</string></events></msg>"),
              Texts());
    EXPECT_EQ(
        one_.TakeRemarks(),
        (Texts{"EVENT_XFER_COMPLETE while 5 files are still to be transferred",
               "EVENT_XFER_COMPLETE with a list of 1 event that does not end with the 2 of this export"}));
    EXPECT_EQ(one_.Expected(), "DONE");
}

}  // namespace
