#include <csignal>

#include "tests/together/defects/DefectTest.h"

// The description of an event, which is a document in the text of a message.

namespace {

constexpr const char* kNothingToReceive = "Got EVENT message with no files to receive";
constexpr const char* kNoErrorInside = "not embmsg.Error()";

/// A description that tells the harness of no file.
struct WithoutFiles10 : Defect10 {
    void LeavesNothingToAskFor(bool found, Here here = Here::current()) {
        Start({}, {}, "", here);
        Opens(here);
        if (found) {
            Describes("Event1", here);
        }
        Stalls("GET_FILE", here);
        Marks({"XML"}, here);
    }
};

struct WithoutFiles20 : Defect20 {
    void LeavesNothingToAskFor(const std::string& line, bool saved, Here here = Here::current()) {
        Start({}, {}, "", here);
        ReachesFirstFile(here);
        if (not line.empty()) {
            Logs(2, line, here);
        }
        Logs(4, kNothingToReceive, here);
        Stalls("GET_FILE", here);
        Marks({"EVENT"}, here);
        EXPECT_EQ(saved, FileExists("/mnt/hd/incoming_Event1"));
    }
};

struct MalformedDescription10 : Defect10 {};
struct MalformedDescription20 : Defect20 {};

TEST_F(MalformedDescription10, EndsTheHarness) {
    Start({});
    Opens();
    Logs(1, "error: 1:Error reading Element value.");
    Logs(1, "row: 0:0");
    Fails("void VelProtocol_1_0::Handle_XML_msg(TiXmlDocument&)", kNoErrorInside, "GET_FILE");
    Marks({"XML"});
}

TEST_F(MalformedDescription20, EndsTheHarness) {
    Start({});
    ReachesFirstFile();
    Logs(1, "error: 1:Error reading Element value.");
    Logs(1, "row: 0:0");
    Fails("void VelProtocol_2_0::Handle_EVENT_msg(TiXmlDocument&)", kNoErrorInside, "GET_FILE");
    Marks({"EVENT"});
}

struct DescriptionWithoutReid10 : Defect10 {};
struct DescriptionWithoutReid20 : Defect20 {};

TEST_F(DescriptionWithoutReid10, RepeatsForEver) {
    Start({});
    Opens();
    for (int time = 0; time < 1000; ++time) {
        Logs(2, "Found event with no REID");
    }
    dvr->EndsWithStatus(3, "expected GET_FILE, found nothing within 1000 ms");
    harness->GetsSignal(SIGINT);
    harness->LogsUpTo(1, "shutting down");
    harness->EndsWithStatus(44);
    Marks({"XML"});
}

TEST_F(DescriptionWithoutReid20, IsNotSaved) {
    Start({});
    ReachesFirstFile();
    Logs(2, "Escaped XML for event contains no REID");
    ExportsFiles();
    Completes();
    Marks({"EVENT"});
    EXPECT_FALSE(FileExists("/mnt/hd/incoming_Event1"));
}

struct DescriptionOtherReid10 : Defect10 {};
struct DescriptionOtherReid20 : Defect20 {};

TEST_F(DescriptionOtherReid10, LeadsToTheOtherEvent) {
    Start({});
    Opens();
    Describes("no-such-event");
    Stalls("GET_FILE");
    Marks({"XML"});
    Notes(
        "out of place: GET_FILE for 'no-such-event'/'Meta.xml', which is not a file that is still to be "
        "transferred");
}

TEST_F(DescriptionOtherReid20, IsSavedUnderItsOwnName) {
    Start({});
    ReachesFirstFile();
    Logs(2, "Handle_EVENT_msg: 'reid' in escaped XML incorrect: exp='Event1'  act='no-such-event'");
    ExportsFiles();
    Completes();
    Marks({"EVENT"});
    EXPECT_TRUE(FileExists("/mnt/hd/incoming_no-such-event"));
    EXPECT_FALSE(FileExists("/mnt/hd/incoming_Event1"));
}

struct DescriptionWithoutVideo10 : WithoutFiles10 {};
struct DescriptionWithoutVideo20 : WithoutFiles20 {};

TEST_F(DescriptionWithoutVideo10, LeavesNothingToAskFor) {
    LeavesNothingToAskFor(true);
}

TEST_F(DescriptionWithoutVideo20, LeavesNothingToAskFor) {
    LeavesNothingToAskFor("", true);
}

struct DescriptionWithoutName10 : Defect10 {};
struct DescriptionWithoutName20 : Defect20 {};

TEST_F(DescriptionWithoutName10, EndsTheHarness) {
    Start({});
    Opens();
    Describes();
    harness->EndsBySignal(SIGABRT);
    EXPECT_EQ(
        "terminate called after throwing an instance of 'std::logic_error'\n"
        "  what():  basic_string::_M_construct null not valid\n",
        harness->StandardError());
    DvrMissesTheHarness("GET_FILE");
    Marks({"XML"});
}

TEST_F(DescriptionWithoutName20, EndsTheHarness) {
    Start({});
    ReachesFirstFile();
    harness->EndsBySignal(SIGABRT);
    EXPECT_EQ(
        "terminate called after throwing an instance of 'std::logic_error'\n"
        "  what():  basic_string::_M_construct null not valid\n",
        harness->StandardError());
    DvrMissesTheHarness("GET_FILE");
    Marks({"EVENT"});
    EXPECT_TRUE(FileExists("/mnt/hd/incoming_Event1"));
}

struct DescriptionWithoutEvent10 : WithoutFiles10 {};
struct DescriptionWithoutEvent20 : WithoutFiles20 {};

TEST_F(DescriptionWithoutEvent10, IsSkipped) {
    LeavesNothingToAskFor(false);
}

TEST_F(DescriptionWithoutEvent20, LeavesNothingToAskFor) {
    LeavesNothingToAskFor("", false);
}

struct EmptyDescription10 : WithoutFiles10 {};
struct EmptyDescription20 : WithoutFiles20 {};

TEST_F(EmptyDescription10, IsSkipped) {
    LeavesNothingToAskFor(false);
}

TEST_F(EmptyDescription20, LeavesNothingToAskFor) {
    LeavesNothingToAskFor("EVENT message 'xmlFile' tag does not contain data", false);
}

struct NoDescription10 : WithoutFiles10 {};
struct NoDescription20 : WithoutFiles20 {};

TEST_F(NoDescription10, IsSkipped) {
    LeavesNothingToAskFor(false);
}

TEST_F(NoDescription20, LeavesNothingToAskFor) {
    LeavesNothingToAskFor("EVENT message does not contain 'xmlFile' tag", false);
}

}  // namespace
