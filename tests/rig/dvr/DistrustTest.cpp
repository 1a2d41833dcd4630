#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "rig/dvr/dialogue/Dialogue_1_0.h"
#include "rig/dvr/dialogue/Dialogue_2_0.h"
#include "tests/rig/dvr/Failures.h"
#include "tests/rig/dvr/FixedRecordings.h"
#include "tests/rig/dvr/ScriptedExport.h"

// What a dialogue that distrusts its backend refuses, leaves unanswered, or takes as the end.
namespace {

using rig::dvr::Dialogue_1_0;
using rig::dvr::Dialogue_2_0;
using rig::dvr::Message;
using Names = std::vector<std::string>;

/// "NAME reid/file" of each answer.
Names AnswersTo(rig::dvr::Dialogue& dialogue, const std::string& text) {
    Names names;
    for (const Message& answer : dialogue.Handle(Message::Parse(text))) {
        const std::string subject = answer.Get("reid") + "/" + answer.Get("file");
        names.push_back(answer.Name() + (subject == "/" ? "" : " " + subject));
    }
    return names;
}

class Distrust20 : public testing::Test {
 protected:
    Distrust20() { dialogue_.Distrust(); }

    Names Handle(const std::string& text) { return AnswersTo(dialogue_, text); }
    Names HandleOf(const char* name, const std::string& event) { return Handle(Request(name, event).Text()); }
    std::string Breach(const std::string& text) {
        return BreachOf([&] { Handle(text); });
    }

    void Start(const std::string& event) {
        Handle(R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0"/>)");
        EXPECT_EQ(HandleOf("NEXT_EVENT", event), Names{"EVENT " + event + "/"});
    }

    void Transfer(const std::string& event, const std::string& file) {
        EXPECT_EQ(Handle(GetFile(event, file)), Names());
        dialogue_.FinishTransfer();
    }

    FixedRecordings recordings_;
    Dialogue_2_0 dialogue_{recordings_, "/nonexistent"};
};

TEST_F(Distrust20, RefusesAFileBeforeTheList) {
    EXPECT_EQ(Handle(GetFile("EVT1", "a.ts")), Names{"INVALID_EVENT EVT1/a.ts"});
    Start("EVT1");
    Transfer("EVT1", "a.ts");
}

TEST_F(Distrust20, RefusesFilesThatAreNotOfTheEventInProgress) {
    Start("EVT1");
    for (const char* file : {"c.ts", "", "../EVT2/c.ts", "/etc/passwd", "%n%n", "; reboot"}) {
        EXPECT_EQ(Handle(GetFile("EVT1", file)), Names{std::string("INVALID_EVENT EVT1/") + file});
    }
    for (const char* event : {"EVT2", "EVT3", "../EVT1", "EVT1/."}) {
        EXPECT_EQ(Handle(GetFile(event, "a.ts")), Names{std::string("INVALID_EVENT ") + event + "/a.ts"});
    }
    EXPECT_EQ(recordings_.reads, 0);
}

TEST_F(Distrust20, RefusesAnEventUnlessItIsTimeForOne) {
    EXPECT_EQ(HandleOf("NEXT_EVENT", "EVT1"), Names{"INVALID_EVENT EVT1/"});
    Start("EVT1");
    EXPECT_EQ(HandleOf("NEXT_EVENT", "EVT2"), Names{"INVALID_EVENT EVT2/"});
    EXPECT_EQ(HandleOf("NEXT_EVENT", "none"), Names{"INVALID_EVENT none/"});
    Transfer("EVT1", "a.ts");
}

TEST_F(Distrust20, GoesOnWithATransferWhateverElseIsAskedFor) {
    Start("EVT1");
    Handle(GetFile("EVT1", "a.ts"));
    EXPECT_EQ(Handle(GetFile("EVT1", "a.ts")), Names{"XFER_IN_PROGRESS EVT1/a.ts"});
    EXPECT_EQ(Handle(GetFile("EVT1", "b.ts")), Names{"XFER_IN_PROGRESS EVT1/b.ts"});
    EXPECT_EQ(Handle(GetFile("EVT1", "c.ts")), Names{"INVALID_EVENT EVT1/c.ts"});
    EXPECT_EQ(HandleOf("NEXT_EVENT", "EVT2"), Names{"INVALID_EVENT EVT2/"});
    EXPECT_EQ(dialogue_.FinishTransfer().Get("file"), "a.ts");
}

TEST_F(Distrust20, TransfersAFileOfTheEventAgain) {
    Start("EVT1");
    Transfer("EVT1", "a.ts");
    Transfer("EVT1", "a.ts");
    EXPECT_EQ(dialogue_.Exported().files, 1U);
}

TEST_F(Distrust20, RefusesAnEventThatIsDone) {
    Start("EVT2");
    Transfer("EVT2", "m.xml");
    Transfer("EVT2", "c.ts");
    EXPECT_EQ(HandleOf("EVENT_XFER_COMPLETE", "EVT2"), Names{"EVENT_XFER_ACK EVT2/"});
    EXPECT_EQ(Handle(GetFile("EVT2", "c.ts")), Names{"INVALID_EVENT EVT2/c.ts"});
}

TEST_F(Distrust20, RefusesAmbiguousRequests) {
    Start("EVT1");
    EXPECT_EQ(Handle(R"(<msg req="GET_FILE" reid="EVT1" path=".." file="a.ts" protocolVersion="2.0"/>)"),
              Names{"INVALID_EVENT EVT1/a.ts"});
    EXPECT_EQ(Handle(GetFile("EVT1", "a.ts", " rehash=\"maybe\"")), Names{"INVALID_EVENT EVT1/a.ts"});
}

TEST_F(Distrust20, AcknowledgesNoEventTooEarly) {
    Start("EVT1");
    EXPECT_EQ(Breach(Request("EVENT_XFER_COMPLETE", "EVT1").Text()),
              "EVENT_XFER_COMPLETE while 3 files are still to be transferred from 'EVT1'");
}

TEST_F(Distrust20, AcknowledgesNoOtherEvent) {
    Start("EVT2");
    Transfer("EVT2", "m.xml");
    Transfer("EVT2", "c.ts");
    EXPECT_EQ(Breach(Request("EVENT_XFER_COMPLETE", "EVT1").Text()),
              "EVENT_XFER_COMPLETE for 'EVT1' while 'EVT2' is in progress");
}

TEST_F(Distrust20, DoesNotObeyDoneInMidTransfer) {
    Start("EVT1");
    Handle(GetFile("EVT1", "a.ts"));
    EXPECT_EQ(Breach(R"(<msg req="DONE" protocolVersion="2.0"/>)"),
              "DONE while 'EVT1'/'a.ts' is in transfer");
}

TEST_F(Distrust20, StaysAwayForAWeekAtMost) {
    Start("EVT2");
    Transfer("EVT2", "m.xml");
    Transfer("EVT2", "c.ts");
    HandleOf("EVENT_XFER_COMPLETE", "EVT2");
    for (const char* duration : {"10081", "2147483647", "2147483648", "-1", "0", "soon", ""}) {
        const std::string breach =
            Breach(std::string(R"(<msg req="DONE" protocolVersion="2.0" duration=")") + duration + "\"/>");
        EXPECT_NE(breach.find("DONE with "), std::string::npos) << duration << ": " << breach;
        EXPECT_FALSE(dialogue_.IsDone());
    }
    Handle(R"(<msg req="DONE" protocolVersion="2.0" duration="10080"/>)");
    EXPECT_EQ(dialogue_.Absence(), std::chrono::minutes(10'080));
}

TEST_F(Distrust20, RefusesConfigurationsAtAnyTime) {
    const std::string order = R"(<msg req="UPDATE_CONFIGURATION" protocolVersion="2.0" message="&lt;"/>)";
    EXPECT_EQ(Handle(order), Names{"CONFIGURATION_UPDATE_ERROR"});
    Start("EVT1");
    EXPECT_EQ(Handle(order), Names{"CONFIGURATION_UPDATE_ERROR"});
    Handle(GetFile("EVT1", "a.ts"));
    EXPECT_EQ(Handle(order), Names{"CONFIGURATION_UPDATE_ERROR"});
    EXPECT_FALSE(dialogue_.IsDone());
    EXPECT_TRUE(dialogue_.IsTransferring());
}

class Distrust10 : public testing::Test {
 protected:
    Distrust10() { dialogue_.Distrust(); }

    Names Handle(const std::string& text) { return AnswersTo(dialogue_, text); }
    static std::string GetFile10(const std::string& event, const std::string& file) {
        return R"(<msg req="GET_FILE" path=")" + event + R"(" file=")" + file + "\"/>";
    }

    FixedRecordings recordings_;
    Dialogue_1_0 dialogue_{recordings_};
};

TEST_F(Distrust10, LeavesUnansweredWhatItHasNoReportFor) {
    EXPECT_EQ(Handle(GetFile10("EVT1", "a.ts")), Names()) << "before the descriptions";
    EXPECT_FALSE(dialogue_.IsTransferring());
    Handle(R"(<msg req="GET_XML"/>)");
    for (const char* file : {"c.ts", "", "../EVT2/c.ts", "/etc/passwd"}) {
        EXPECT_EQ(Handle(GetFile10("EVT1", file)), Names());
        EXPECT_FALSE(dialogue_.IsTransferring()) << file;
    }
    EXPECT_EQ(dialogue_.TakeRemarks().size(), 5U);
    Handle(GetFile10("EVT1", "a.ts"));
    Handle(GetFile10("EVT1", "b.ts"));
    EXPECT_EQ(dialogue_.FinishTransfer().Get("file"), "a.ts");
}

TEST_F(Distrust10, TransfersAFileAgain) {
    Handle(R"(<msg req="GET_XML"/>)");
    for (int time = 0; time < 2; ++time) {
        Handle(GetFile10("EVT1", "a.ts"));
        EXPECT_EQ(dialogue_.FinishTransfer().Get("file"), "a.ts");
    }
}

TEST_F(Distrust10, ReadsAListInAnyShape) {
    Handle(R"(<msg req="GET_XML"/>)");
    for (const char* file : {"EVT1/m.xml", "EVT1/a.ts", "EVT1/b.ts", "EVT2/m.xml", "EVT2/c.ts"}) {
        Handle(GetFile10(std::string(file).substr(0, 4), file + 5));
        dialogue_.FinishTransfer();
    }
    Handle(
        "<msg req='EVENT_XFER_COMPLETE'>\n<events>\n<string>E<!-- -->VT1</string>"
        "<string><![CDATA[EV]]>T2</string></events></msg>");
    Handle("<msg req='DONE'/>");
    EXPECT_TRUE(dialogue_.IsDone());
}

TEST_F(Distrust10, HangsUpOnAListThatComesTooEarly) {
    Handle(R"(<msg req="GET_XML"/>)");
    EXPECT_EQ(BreachOf([&] {
                  Handle("<msg req='EVENT_XFER_COMPLETE'><events><string>EVT1</string></events></msg>");
              }),
              "EVENT_XFER_COMPLETE while 5 files are still to be transferred");
}

}  // namespace
