#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

class OK : public Dialogue {
 protected:
    /// The same answer to each OK.
    template <typename... Steps>
    void ExpectEachTime(const Steps&... answer) {
        for (int time = 0; time < 3; ++time) {
            EXPECT_REACTION(Msg("OK"), answer...);
        }
    }
};

TEST_F(OK, IsAnsweredByTheRequestForTheEventList) {
    ExpectEachTime(Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
}

TEST_F(OK, IsAnsweredByTheSoftwareUpdateAndThenTheEventList) {
    protocol.upgrade = true;
    ExpectEachTime(Logged(1, "got an OK, sending UPDATE_SOFTWARE"), Sent(kUpdateSoftware),
                   Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
}

TEST_F(OK, IsAnsweredByTheConfigurationUpdateAlone) {
    protocol.configUpdate = true;
    ExpectEachTime(Logged(1, "got an OK, sending CONFIGURATION_UPDATE"), Sent(kUpdateConfiguration));
}

TEST_F(OK, IsAnsweredBySoftwareAndConfigurationUpdate) {
    protocol.upgrade = true;
    protocol.configUpdate = true;
    ExpectEachTime(Logged(1, "got an OK, sending UPDATE_SOFTWARE"), Sent(kUpdateSoftware),
                   Logged(1, "got an OK, sending CONFIGURATION_UPDATE"), Sent(kUpdateConfiguration));
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

}  // namespace
