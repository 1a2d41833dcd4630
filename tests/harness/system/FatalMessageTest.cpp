#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/Dialogue.h"

namespace {

const char* const kNameless = "<recording-event reid=\"E1\"><video><metadata/></video></recording-event>";

using FatalMessage10 = Dialect10;

TEST_F(FatalMessage10, IsOneThatIsNotXml) {
    Connect();
    dvr->Sends("\n\n <msg req='OK' <");
    harness->Logs(1, "error: 1:Error reading Attributes.");
    harness->Logs(1, "row: 3:16");
    Dies("virtual VelProtocolBase::e_MsgReturn VelProtocol_1_0::HandleMessage()",
         "not incomingMessage.Error()");
}

TEST_F(FatalMessage10, IsOneWhoseDescriptionIsNotXml) {
    Connect();
    dvr->Sends(Xml({Description("E1", {"m1"}), "hello"}));
    harness->Logs(32, "Found event E1");
    harness->Logs(1, "error: 1:Error document empty.");
    harness->Logs(1, "row: 0:0");
    Dies("void VelProtocol_1_0::Handle_XML_msg(TiXmlDocument&)", "not embmsg.Error()");
}

TEST_F(FatalMessage10, IsOneThatListsAFileWithoutName) {
    Connect();
    dvr->Sends(Xml({kNameless}));
    harness->Logs(32, "Found event E1");
    DiesOfAMissingName();
}

using FatalMessage20 = Dialect20;

TEST_F(FatalMessage20, IsOneThatIsNotXml) {
    Start();
    dvr->Sends("<msg req=\"OK\">\n  <broken>\n</msg>");
    harness->Logs(1, "error: 1:Error reading end tag.");
    harness->Logs(1, "row: 3:1");
    Dies("virtual VelProtocolBase::e_MsgReturn VelProtocol_2_0::HandleMessage()",
         "not incomingMessage.Error()");
}

TEST_F(FatalMessage20, IsOneWhoseDescriptionIsNotXml) {
    Start();
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    Describes("E1", "<recording-event reid='E1' <");
    harness->Logs(1, "error: 1:Error reading Attributes.");
    harness->Logs(1, "row: 1:28");
    Dies("void VelProtocol_2_0::Handle_EVENT_msg(TiXmlDocument&)", "not embmsg.Error()");
}

TEST_F(FatalMessage20, IsOneThatListsAFileWithoutName) {
    Start();
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    Describes("E1", kNameless);
    DiesOfAMissingName();
}

class FatalMessage : public Dialogue, public testing::WithParamInterface<const char*> {};

TEST_P(FatalMessage, IsOneWithAnotherTopElementAndLeavesNoLine) {
    Connect({"-p", GetParam()});
    dvr->Sends("<message req=\"OK\"/>");
    harness->EndsBySignal(SIGABRT);
    EXPECT_EQ("", harness->StandardError());
    dvr->ReceivesEnd();
}

INSTANTIATE_TEST_SUITE_P(OfProtocol, FatalMessage, testing::Values("1", "2"),
                         [](const auto& row) { return std::string(row.param); });

}  // namespace
