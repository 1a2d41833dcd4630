#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/Dialogue.h"

namespace {

const char* const kHandleMessage10 = "virtual VelProtocolBase::e_MsgReturn VelProtocol_1_0::HandleMessage()";
const char* const kHandleXml = "void VelProtocol_1_0::Handle_XML_msg(TiXmlDocument&)";

using Protocol10 = Dialect10;

class Protocol10DoesNotSupport : public Dialect10, public testing::WithParamInterface<const char*> {};

TEST_P(Protocol10DoesNotSupport, TheMessage) {
    Connect();
    dvr->Sends(Message(GetParam(), " reid=\"E1\" file=\"m1\""));
    harness->Logs(1, std::string("UNSUPPORTED MSG RECEIVED: ") + GetParam());
    Opens();
    Ends();
}

INSTANTIATE_TEST_SUITE_P(Of20, Protocol10DoesNotSupport,
                         testing::Values("EVENT_LIST", "EVENT", "EVENT_XFER_ACK", "INVALID_EVENT",
                                         "TRANSPORT_EXCEPTION", "XFER_IN_PROGRESS",
                                         "SOFTWARE_UPDATE_CONFIRM"),
                         [](const auto& row) { return std::string(row.param); });

INSTANTIATE_TEST_SUITE_P(Otherwise, Protocol10DoesNotSupport,
                         testing::Values("ok", "OKAY", "GET_XML", "FILE_COMPLETED", "_"),
                         [](const auto& row) { return std::string(row.param); });

TEST_F(Protocol10, IgnoresAMessageWithoutAName) {
    Connect();
    dvr->Sends("<msg reid=\"E1\"/>");
    harness->Logs(1, "INVALID XML RECEIVED");
    Opens();
    Ends();
}

TEST_F(Protocol10, TakesADeclarationAndACommentAheadOfTheMessage) {
    Connect();
    dvr->Sends(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- from the recorder -->\n<msg req=\"OK\"></msg>\n");
    harness->Logs(1, "got an OK, sending GET_XML");
    dvr->Receives(v1::kGetXml);
    Ends();
}

class Protocol10Aborts : public Dialect10,
                         public testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(Protocol10Aborts, WithoutALogLine) {
    Connect();
    dvr->Sends(GetParam().second);
    harness->EndsBySignal(SIGABRT);
    EXPECT_EQ("", harness->StandardError());
    dvr->ReceivesEnd();
}

INSTANTIATE_TEST_SUITE_P(At, Protocol10Aborts,
                         testing::Values(std::pair{"AnotherTopElement", "<message req=\"OK\"/>"},
                                         std::pair{"AMessageFurtherIn", "<frame><msg req=\"OK\"/></frame>"},
                                         std::pair{"UpperCase", "<MSG req=\"OK\"/>"},
                                         std::pair{"ACommentOfThatName", "<!--msg--><msg req=\"OK\"/>"}),
                         [](const auto& row) { return std::string(row.param.first); });

struct Malformed {
    std::string name;
    std::string text;
    std::string error;
    std::string place;
};

std::ostream& operator<<(std::ostream& out, const Malformed& row) {
    return out << row.text;
}

class Protocol10Dies : public Dialect10, public testing::WithParamInterface<Malformed> {};

TEST_P(Protocol10Dies, OfAMalformedMessage) {
    Connect();
    dvr->Sends(GetParam().text);
    harness->Logs(1, "error: 1:" + GetParam().error);
    harness->Logs(1, "row: " + GetParam().place);
    Dies(kHandleMessage10, "not incomingMessage.Error()");
}

TEST_P(Protocol10Dies, OfAMalformedDescription) {
    Connect();
    dvr->Sends(Xml({Description("E1", {"m1"}), GetParam().text}));
    harness->Logs(32, "Found event E1");
    harness->Logs(1, "error: 1:" + GetParam().error);
    harness->Logs(1, "row: " + GetParam().place);
    Dies(kHandleXml, "not embmsg.Error()");
}

INSTANTIATE_TEST_SUITE_P(
    Such, Protocol10Dies,
    testing::Values(Malformed{"NoMarkup", "hello", "Error document empty.", "0:0"},
                    Malformed{"NameOnly", "<msg", "Failed to read Element name", "1:2"},
                    Malformed{"Unclosed", "<msg req=\"OK\">", "Error reading Element value.", "0:0"},
                    Malformed{"WrongEnd", "<msg req=\"A\"> <broken> </msg>", "Error reading end tag.",
                              "1:24"},
                    Malformed{"BrokenAttribute", "<msg req='OK' <", "Error reading Attributes.", "1:15"}),
    [](const auto& row) { return row.param.name; });

TEST_F(Protocol10, SaysInWhichRowAMessageIsMalformed) {
    Connect();
    dvr->Sends("\n\n <msg req='OK' <");
    harness->Logs(1, "error: 1:Error reading Attributes.");
    harness->Logs(1, "row: 3:16");
    Dies(kHandleMessage10, "not incomingMessage.Error()");
}

}  // namespace
