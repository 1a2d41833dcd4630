#include "rig/dvr/dialogue/Dialogue_2_0.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/rig/dvr/Failures.h"
#include "tests/rig/dvr/FixedRecordings.h"
#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using rig::dvr::Dialogue_2_0;
using rig::dvr::Message;
using Texts = std::vector<std::string>;

constexpr const char* kListRequest = R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0"/>)";
constexpr const char* kDone = R"(<msg req="DONE" protocolVersion="2.0"/>)";

std::string NextEvent(const std::string& reid) {
    return R"(<msg req="NEXT_EVENT" reid=")" + reid + R"(" protocolVersion="2.0"/>)";
}

std::string XferComplete(const std::string& reid) {
    return R"(<msg req="EVENT_XFER_COMPLETE" reid=")" + reid + R"(" protocolVersion="2.0"/>)";
}

class Dialogue20Test : public testing::Test {
 protected:
    Texts Handle(const std::string& text) {
        Texts answers;
        for (const Message& answer : dialogue_.Handle(Message::Parse(text))) {
            answers.push_back(answer.Text());
        }
        return answers;
    }

    std::string Breach(const std::string& text) {
        return BreachOf([&] { Handle(text); });
    }

    /// Advances the dialogue until an event is in progress.
    void Start(const std::string& reid) {
        Handle(kListRequest);
        Handle(NextEvent(reid));
    }

    void Transfer(const std::string& reid, const std::string& file) {
        EXPECT_EQ(Handle(GetFile(reid, file)), Texts());
        dialogue_.FinishTransfer();
    }

    void Export2() {
        Handle(NextEvent("EVT2"));
        Transfer("EVT2", "m.xml");
        Transfer("EVT2", "c.ts");
        Handle(XferComplete("EVT2"));
    }

    FixedRecordings recordings_;
    TemporaryFolder folder_;
    Dialogue_2_0 dialogue_{recordings_, folder_.Path() / "velloranFail"};
};

TEST_F(Dialogue20Test, OpensWithAnOkOfItsVersion) {
    EXPECT_EQ(dialogue_.Open().Text(), R"(<msg req="OK" protocolVersion="2.0"/>)");
    EXPECT_EQ(dialogue_.Expected(), "UPDATE_SOFTWARE, UPDATE_CONFIGURATION or GET_EVENT_LIST");
}

TEST_F(Dialogue20Test, ListsItsEvents) {
    EXPECT_EQ(Handle(kListRequest),
              Texts{R"(<msg req="EVENT_LIST" protocolVersion="2.0" source="velloran-rig"><events>)"
                    R"(<event>EVT1</event><event>EVT2</event></events></msg>)"});
}

TEST_F(Dialogue20Test, DescribesTheEventAskedFor) {
    Handle(kListRequest);
    const auto answers = dialogue_.Handle(Message::Parse(NextEvent("EVT2")));
    ASSERT_EQ(answers.size(), 1U);
    const Message parsed = Message::Parse(answers[0].Text());
    EXPECT_EQ(parsed.Name(), "EVENT");
    EXPECT_EQ(parsed.Get("reid"), "EVT2");
    EXPECT_EQ(parsed.Root().child("xmlFile").text().get(), recordings_.Find("EVT2").Describe());
}

TEST_F(Dialogue20Test, RefusesAnUnknownEventWithTheReidAskedFor) {
    Handle(kListRequest);
    EXPECT_EQ(Handle(NextEvent("1")), Texts{R"(<msg req="INVALID_EVENT" protocolVersion="2.0" reid="1"/>)"});
    EXPECT_EQ(Handle(NextEvent("")), Texts{R"(<msg req="INVALID_EVENT" protocolVersion="2.0" reid=""/>)"});
    EXPECT_EQ(dialogue_.Expected(), "NEXT_EVENT");
}

TEST_F(Dialogue20Test, CompletesAFileWhenItsTransferIsOver) {
    Start("EVT1");
    EXPECT_EQ(Handle(GetFile("EVT1", "a.ts")), Texts());
    EXPECT_TRUE(dialogue_.IsTransferring());
    EXPECT_EQ(dialogue_.FinishTransfer().Text(),
              R"(<msg req="FILE_COMPLETE" protocolVersion="2.0" reid="EVT1" file="a.ts" length="4" )"
              R"(hashCode="0d18d4eb377a214157ad45e7ee0f189a2d7370788a483e729c7f269d94cafe41"/>)");
    EXPECT_FALSE(dialogue_.IsTransferring());
}

TEST_F(Dialogue20Test, RefusesAFileOfADamagedEvent) {
    Start("EVT1");
    EXPECT_EQ(Handle(GetFile("1", "a.ts")),
              Texts{R"(<msg req="INVALID_EVENT" protocolVersion="2.0" reid="1" file="a.ts"/>)"});
    EXPECT_FALSE(dialogue_.IsTransferring());
}

TEST_F(Dialogue20Test, RefusesADamagedFileOfTheEvent) {
    Start("EVT1");
    EXPECT_EQ(Handle(GetFile("EVT1", "s")),
              Texts{R"(<msg req="INVALID_EVENT" protocolVersion="2.0" reid="EVT1" file="s"/>)"});
}

TEST_F(Dialogue20Test, RefusesAFileOfAnotherEvent) {
    Start("EVT1");
    EXPECT_EQ(Handle(GetFile("EVT2", "m.xml")),
              Texts{R"(<msg req="INVALID_EVENT" protocolVersion="2.0" reid="EVT2" file="m.xml"/>)"});
}

TEST_F(Dialogue20Test, ReportsAFailedTransferWhileTheMarkerExists) {
    Start("EVT1");
    folder_.Write("velloranFail", "");
    EXPECT_EQ(Handle(GetFile("EVT1", "a.ts")),
              Texts{R"(<msg req="TRANSPORT_EXCEPTION" protocolVersion="2.0" reid="EVT1" file="a.ts"/>)"});
    std::filesystem::remove(folder_.Path() / "velloranFail");
    EXPECT_EQ(Handle(GetFile("EVT1", "a.ts")), Texts());
    EXPECT_TRUE(dialogue_.IsTransferring());
}

TEST_F(Dialogue20Test, RefusesAnUnknownFileEvenWhileTheMarkerExists) {
    Start("EVT1");
    folder_.Write("velloranFail", "");
    EXPECT_EQ(Handle(GetFile("EVT1", "s")),
              Texts{R"(<msg req="INVALID_EVENT" protocolVersion="2.0" reid="EVT1" file="s"/>)"});
}

TEST_F(Dialogue20Test, ReportsTheFileInTransferToASecondRequest) {
    Start("EVT1");
    Handle(GetFile("EVT1", "a.ts"));
    EXPECT_EQ(Handle(GetFile("EVT1", "a.ts")),
              Texts{R"(<msg req="XFER_IN_PROGRESS" protocolVersion="2.0" reid="EVT1" file="a.ts"/>)"});
    EXPECT_TRUE(dialogue_.IsTransferring());
    EXPECT_EQ(dialogue_.FinishTransfer().Name(), "FILE_COMPLETE");
}

TEST_F(Dialogue20Test, TransfersAFileAgainWhenAskedAgain) {
    Start("EVT1");
    Transfer("EVT1", "a.ts");
    Transfer("EVT1", "a.ts");
    EXPECT_EQ(dialogue_.Exported().files, 1U);
}

TEST_F(Dialogue20Test, KeepsTheHashOfAFileUntilARehashIsAskedFor) {
    Start("EVT1");
    Handle(GetFile("EVT1", "a.ts"));
    const std::string first = dialogue_.FinishTransfer().Get("hashCode");
    recordings_.contents[{"EVT1", "a.ts"}] = "changed";
    Handle(GetFile("EVT1", "a.ts"));
    EXPECT_EQ(dialogue_.FinishTransfer().Get("hashCode"), first);
    EXPECT_EQ(recordings_.reads, 1);
    Handle(GetFile("EVT1", "a.ts", R"( rehash="true")"));
    const Message rehashed = dialogue_.FinishTransfer();
    EXPECT_EQ(rehashed.Get("hashCode"), "d67e2e944994496c8d8ec76eed0cf9f09679448d584b532bebf941852a37f5ed");
    EXPECT_EQ(rehashed.Get("length"), "7");
    EXPECT_EQ(recordings_.reads, 2);
}

TEST_F(Dialogue20Test, AcknowledgesAnEventWhoseFilesAreAllTransferred) {
    Start("EVT2");
    Transfer("EVT2", "m.xml");
    EXPECT_EQ(dialogue_.Expected(), "GET_FILE");
    Transfer("EVT2", "c.ts");
    EXPECT_EQ(dialogue_.Expected(), "GET_FILE or EVENT_XFER_COMPLETE");
    EXPECT_EQ(Handle(XferComplete("EVT2")),
              Texts{R"(<msg req="EVENT_XFER_ACK" protocolVersion="2.0" reid="EVT2"/>)"});
    EXPECT_EQ(dialogue_.Expected(), "NEXT_EVENT or DONE");
}

TEST_F(Dialogue20Test, IsDoneWithAnyNumberOfEventsAcknowledged) {
    Handle(kListRequest);
    Export2();
    EXPECT_EQ(Handle(kDone), Texts());
    EXPECT_TRUE(dialogue_.IsDone());
    EXPECT_EQ(dialogue_.Summary(), "exported 1 of 2 events, 2 files, 9 bytes");
}

TEST_F(Dialogue20Test, AcceptsADurationInDone) {
    Handle(kListRequest);
    Export2();
    for (const std::string duration : {"0", "", "-1", "soon", "1.5"}) {
        EXPECT_EQ(Breach(R"(<msg req="DONE" protocolVersion="2.0" duration=")" + duration + R"("/>)"),
                  "DONE with duration '" + duration + "' instead of a number of minutes above 0");
    }
    Handle(R"(<msg req="DONE" protocolVersion="2.0" duration="30"/>)");
    EXPECT_TRUE(dialogue_.IsDone());
}

TEST_F(Dialogue20Test, ConfirmsASoftwareUpdateAndGoesOn) {
    EXPECT_EQ(Handle(R"(<msg req="UPDATE_SOFTWARE" path="/mnt/hd/connectionmgr" file="upgrade.zip" )"
                     R"(protocolVersion="2.0"/>)"),
              Texts{R"(<msg req="SOFTWARE_UPDATE_CONFIRM" protocolVersion="2.0"/>)"});
    EXPECT_EQ(dialogue_.Expected(), "UPDATE_CONFIGURATION or GET_EVENT_LIST");
    EXPECT_EQ(Handle(kListRequest).size(), 1U);
}

TEST_F(Dialogue20Test, RefusesAConfigurationAndIsDone) {
    EXPECT_EQ(
        Handle(R"(<msg req="UPDATE_CONFIGURATION" protocolVersion="2.0" message="&lt;FakeConfig /&gt;"/>)"),
        Texts{R"(<msg req="CONFIGURATION_UPDATE_ERROR" protocolVersion="2.0"/>)"});
    EXPECT_TRUE(dialogue_.IsDone());
}

TEST_F(Dialogue20Test, WantsAConfigurationThatIsADocument) {
    EXPECT_EQ(Breach(R"(<msg req="UPDATE_CONFIGURATION" protocolVersion="2.0" message="bogus"/>)"),
              "UPDATE_CONFIGURATION with a 'message' that is not an XML document: 'bogus'");
}

TEST_F(Dialogue20Test, WantsItsVersionInEveryMessage) {
    EXPECT_EQ(Breach(R"(<msg req="GET_EVENT_LIST"/>)"), "GET_EVENT_LIST without protocolVersion");
    EXPECT_EQ(Breach(R"(<msg req="GET_EVENT_LIST" protocolVersion="1.0"/>)"),
              "GET_EVENT_LIST with protocolVersion '1.0' instead of '2.0'");
}

TEST_F(Dialogue20Test, RefusesAnUnknownMessage) {
    EXPECT_EQ(Breach(R"(<msg req="GET_XML" protocolVersion="2.0"/>)"), "an unknown message, 'GET_XML'");
    EXPECT_EQ(Breach(R"(<msg req="" protocolVersion="2.0"/>)"), "an unknown message, ''");
}

TEST_F(Dialogue20Test, RefusesWrongAttributes) {
    EXPECT_EQ(Breach(R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0" reid="x"/>)"),
              "GET_EVENT_LIST with an unknown attribute 'reid'");
    Start("EVT1");
    EXPECT_EQ(Breach(R"(<msg req="GET_FILE" reid="EVT1" file="a.ts" protocolVersion="2.0"/>)"),
              "GET_FILE without its attribute 'path'");
    EXPECT_EQ(Breach(R"(<msg req="GET_FILE" reid="EVT1" path="/mnt" file="a.ts" protocolVersion="2.0"/>)"),
              "GET_FILE with path '/mnt' but reid 'EVT1'");
    EXPECT_EQ(Breach(GetFile("EVT1", "a.ts", R"( rehash="false")")),
              "GET_FILE with rehash 'false' instead of 'true'");
}

TEST_F(Dialogue20Test, RefusesRequestsThatAreOutOfPlace) {
    EXPECT_EQ(Breach(NextEvent("EVT1")), "NEXT_EVENT in answer to OK");
    Handle(kListRequest);
    EXPECT_EQ(Breach(kListRequest), "GET_EVENT_LIST with no event in progress");
    EXPECT_EQ(Breach(GetFile("EVT1", "a.ts")), "GET_FILE with no event in progress");
    EXPECT_EQ(Breach(XferComplete("EVT1")), "EVENT_XFER_COMPLETE with no event in progress");
    EXPECT_EQ(Breach(kDone), "DONE with no event in progress");
    Handle(NextEvent("EVT2"));
    EXPECT_EQ(Breach(NextEvent("EVT1")), "NEXT_EVENT while 2 files are still to be transferred from 'EVT2'");
    Transfer("EVT2", "m.xml");
    EXPECT_EQ(Breach(XferComplete("EVT2")),
              "EVENT_XFER_COMPLETE while 1 file is still to be transferred from 'EVT2'");
    EXPECT_EQ(Breach(kDone), "DONE while 1 file is still to be transferred from 'EVT2'");
}

TEST_F(Dialogue20Test, RefusesAnotherFileOrMessageDuringATransfer) {
    Start("EVT1");
    Handle(GetFile("EVT1", "a.ts"));
    EXPECT_EQ(Breach(GetFile("EVT1", "b.ts")),
              "GET_FILE for 'EVT1'/'b.ts' while 'EVT1'/'a.ts' is in transfer");
    EXPECT_EQ(Breach(XferComplete("EVT1")), "EVENT_XFER_COMPLETE while 'EVT1'/'a.ts' is in transfer");
}

TEST_F(Dialogue20Test, RefusesToAcknowledgeAnotherEvent) {
    Start("EVT2");
    Transfer("EVT2", "m.xml");
    Transfer("EVT2", "c.ts");
    EXPECT_EQ(Breach(XferComplete("EVT1")), "EVENT_XFER_COMPLETE for 'EVT1' while 'EVT2' is in progress");
}

TEST_F(Dialogue20Test, RefusesASecondSoftwareUpdate) {
    const std::string update = R"(<msg req="UPDATE_SOFTWARE" path="p" file="f" protocolVersion="2.0"/>)";
    Handle(update);
    EXPECT_EQ(Breach(update), "UPDATE_SOFTWARE after UPDATE_SOFTWARE");
}

}  // namespace
