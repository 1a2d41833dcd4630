#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

const char* const kHandleMessage = "virtual VelProtocolBase::e_MsgReturn VelProtocol_2_0::HandleMessage()";

class OK : public Dialogue {};

TEST_F(OK, IsAnsweredByTheRequestForTheEventList) {
    EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
}

TEST_F(OK, IsAnsweredByTheSoftwareUpdateAndThenTheEventList) {
    protocol.upgrade = true;
    EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending UPDATE_SOFTWARE"), Sent(kUpdateSoftware),
                    Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
}

TEST_F(OK, IsAnsweredByTheConfigurationUpdateAlone) {
    protocol.configUpdate = true;
    EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending CONFIGURATION_UPDATE"),
                    Sent(kUpdateConfiguration));
}

TEST_F(OK, IsAnsweredBySoftwareAndConfigurationUpdate) {
    protocol.upgrade = true;
    protocol.configUpdate = true;
    EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending UPDATE_SOFTWARE"), Sent(kUpdateSoftware),
                    Logged(1, "got an OK, sending CONFIGURATION_UPDATE"), Sent(kUpdateConfiguration));
}

TEST_F(OK, IsAnsweredTheSameWayEachTime) {
    for (int time = 0; time < 3; ++time) {
        EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
    }
}

TEST_F(OK, IsAnsweredByTheUpdatesEachTime) {
    protocol.upgrade = true;
    protocol.configUpdate = true;
    for (int time = 0; time < 3; ++time) {
        EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending UPDATE_SOFTWARE"), Sent(kUpdateSoftware),
                        Logged(1, "got an OK, sending CONFIGURATION_UPDATE"), Sent(kUpdateConfiguration));
    }
}

TEST_F(OK, InTheMiddleOfAnExportChangesNoListAndNoFlag) {
    protocol.events = {"E1", "E2"};
    protocol.filesToReceive = {{"E1", "a"}};
    protocol.eventRequestPending = true;
    EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
    EXPECT_EQ(protocol.events, (Events{"E1", "E2"}));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"E1", "a"}}));
    EXPECT_TRUE(protocol.eventRequestPending);
    EXPECT_FALSE(protocol.fileRequestPending);
}

TEST_F(OK, IsTakenWhateverElseTheMessageHolds) {
    const std::string text = Msg("OK", R"( protocolVersion="1.0" more="x")", "<child>text</child>");
    EXPECT_REACTION(text, Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
}

TEST_F(OK, IsFoundBehindADeclarationAndAComment) {
    const std::string text = R"(<?xml version="1.0" ?><!-- hello -->)" + Msg("OK");
    EXPECT_REACTION(text, Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
}

TEST_F(OK, IsTakenFromTheFirstMsgOfADocument) {
    EXPECT_REACTION("<other />" + Msg("OK") + Msg("EVENT"), Logged(1, "got an OK, sending GET_EVENT_LIST"),
                    Sent(kGetEventList));
}

TEST_F(OK, IsAnsweredWithAWrongPrefixWhenTheSizeErrorIsOn) {
    protocol.sizeError = true;
    protocol.upgrade = true;
    EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending UPDATE_SOFTWARE"),
                    SentWithSizeError(kUpdateSoftware), Logged(1, "got an OK, sending GET_EVENT_LIST"),
                    SentWithSizeError(kGetEventList));
    EXPECT_TRUE(protocol.sizeError);
}

class ConfigUpdateRequest : public Dialogue {};

TEST_F(ConfigUpdateRequest, IsSentWithoutALineOfItsOwn) {
    protocol.SendConfigUpdateRequest();
    EXPECT_JOURNAL(Sent(kUpdateConfiguration));
}

/// Reports on what the harness may have provoked.
class ProvokedReport : public Dialogue {};

TEST_F(ProvokedReport, SoftwareUpdateConfirmIsExpectedWhenAnUpgradeWasOrdered) {
    protocol.upgrade = true;
    EXPECT_REACTION(Msg("SOFTWARE_UPDATE_CONFIRM"), Logged(16, "Got SOFTWARE_UPDATE_CONFIRM"));
    EXPECT_TRUE(protocol.upgrade);
}

TEST_F(ProvokedReport, SoftwareUpdateConfirmIsUnexpectedWhenNoUpgradeWasOrdered) {
    protocol.configUpdate = true;
    EXPECT_REACTION(Msg("SOFTWARE_UPDATE_CONFIRM"), Logged(2, "Unexpected SOFTWARE_UPDATE_CONFIRM"));
}

TEST_F(ProvokedReport, ConfigurationUpdateErrorIsExpectedWhenAConfigurationWasPushed) {
    protocol.configUpdate = true;
    EXPECT_REACTION(Msg("CONFIGURATION_UPDATE_ERROR"), Logged(16, "Got CONFIGURATION_UPDATE_ERROR"));
    EXPECT_TRUE(protocol.configUpdate);
}

TEST_F(ProvokedReport, ConfigurationUpdateErrorIsUnexpectedWhenNoConfigurationWasPushed) {
    protocol.upgrade = true;
    EXPECT_REACTION(Msg("CONFIGURATION_UPDATE_ERROR"), Logged(2, "Unexpected CONFIGURATION_UPDATE_ERROR"));
}

class UnsupportedMessage : public Dialogue {};

TEST_F(UnsupportedMessage, IsReportedAndTheConnectionKept) {
    EXPECT_REACTION(Msg("HELLO"), Logged(1, "UNSUPPORTED MSG RECEIVED: HELLO"));
    EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
}

TEST_F(UnsupportedMessage, IsAnOkInLowerCase) {
    EXPECT_REACTION(Msg("ok"), Logged(1, "UNSUPPORTED MSG RECEIVED: ok"));
}

TEST_F(UnsupportedMessage, IsAnyOtherSpellingOfAKnownOne) {
    protocol.events = {"E1"};
    for (const std::string req : {"OK ", " OK", "EVENT_LISTS", "EVENT_LIS", "EVENT_", "event_list", "EVENTS",
                                  "FILE_COMPLETED", "EVENT_XFER_AC", "INVALID_EVENTS", "XFER_IN_PROGRES"}) {
        EXPECT_REACTION(Msg(req), Logged(1, "UNSUPPORTED MSG RECEIVED: " + req));
    }
    EXPECT_EQ(protocol.events, Events{"E1"});
}

TEST_F(UnsupportedMessage, IsTheOlderDialectsXml) {
    EXPECT_REACTION(Msg("XML"), Logged(1, "UNSUPPORTED MSG RECEIVED: XML"));
}

TEST_F(UnsupportedMessage, IsEveryMessageThatTheHarnessItselfSends) {
    for (const std::string req :
         {"GET_XML", "GET_EVENT_LIST", "NEXT_EVENT", "GET_FILE", "EVENT_XFER_COMPLETE", "DONE",
          "UPDATE_CONFIGURATION", "UPDATE_SOFTWARE", "CONFIGURATION_UPDATE"}) {
        EXPECT_REACTION(Msg(req), Logged(1, "UNSUPPORTED MSG RECEIVED: " + req));
    }
}

TEST_F(UnsupportedMessage, IsAnEmptyName) {
    EXPECT_REACTION(Msg(""), Logged(1, "UNSUPPORTED MSG RECEIVED: "));
}

TEST_F(UnsupportedMessage, IsReportedUnescaped) {
    EXPECT_REACTION(Msg("&lt;O&amp;K&gt;"), Logged(1, "UNSUPPORTED MSG RECEIVED: <O&K>"));
}

class InvalidMessage : public Dialogue {};

TEST_F(InvalidMessage, WithoutReqIsReportedAndTheConnectionKept) {
    EXPECT_REACTION(R"(<msg REQ="OK" reid="E1" />)", Logged(1, "INVALID XML RECEIVED"));
    EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
}

TEST_F(InvalidMessage, WithoutMsgEndsTheProcessWithoutALine) {
    const std::string text = R"(<message req="OK" />)";
    Feed(text);
    EXPECT_ABORT(protocol.HandleMessage(), Received(text));
}

TEST_F(InvalidMessage, WithMsgInAnotherCaseEndsTheProcess) {
    const std::string text = R"(<MSG req="OK" />)";
    Feed(text);
    EXPECT_ABORT(protocol.HandleMessage(), Received(text));
}

TEST_F(InvalidMessage, WithMsgBelowTheTopEndsTheProcess) {
    const std::string text = "<top>" + Msg("OK") + "</top>";
    Feed(text);
    EXPECT_ABORT(protocol.HandleMessage(), Received(text));
}

TEST_F(InvalidMessage, WithACommentThatHidesMsgEndsTheProcess) {
    const std::string text = "<!--msg-->" + Msg("OK");
    Feed(text);
    EXPECT_ABORT(protocol.HandleMessage(), Received(text));
}

TEST_F(InvalidMessage, ThatIsNoXmlEndsTheProcessAfterSayingWhere) {
    const std::string text = "<msg req=\"OK\">\n  <open>\n</msg>";
    for (const unsigned int mask : kMasks) {
        LogMask(mask);
        Feed(text);
        EXPECT_ABORT(protocol.HandleMessage(), Received(text), Logged(1, "error: 1:Error reading end tag."),
                     Logged(1, "row: 3:1"), AssertionFailed(kHandleMessage, "not incomingMessage.Error()"));
    }
}

TEST_F(InvalidMessage, ThatIsEmptyEndsTheProcess) {
    FeedBytes(std::string(1, '\0'));
    EXPECT_ABORT(protocol.HandleMessage(), Received(""), Logged(1, "error: 1:Error document empty."),
                 Logged(1, "row: 0:0"), AssertionFailed(kHandleMessage, "not incomingMessage.Error()"));
}

TEST_F(InvalidMessage, ThatBreaksOffEndsTheProcess) {
    const std::string text = R"(<msg req="OK")";
    Feed(text);
    EXPECT_ABORT(protocol.HandleMessage(), Received(text), Logged(1, "error: 1:Error parsing Element."),
                 Logged(1, "row: 1:6"), AssertionFailed(kHandleMessage, "not incomingMessage.Error()"));
}

TEST_F(InvalidMessage, IsNotExcusedByAMsgAheadOfTheFault) {
    const std::string text = Msg("OK") + "<open>";
    Feed(text);
    EXPECT_ABORT(protocol.HandleMessage(), Received(text), Logged(1, "error: 1:Error reading Element value."),
                 Logged(1, "row: 0:0"), AssertionFailed(kHandleMessage, "not incomingMessage.Error()"));
}

}  // namespace
