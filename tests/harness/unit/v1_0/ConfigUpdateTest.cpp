#include "tests/harness/unit/v1_0/Dialogue_1_0.h"

namespace {

// A value that contains double quotes is printed in single quotes.
const std::string kRequest =
    "<msg req=\"UPDATE_CONFIGURATION\" txt='&lt;FakeConfig info=&quot;This is a bogus config used for "
    "protocol "
    "1.0 testing&quot; /&gt;' />";
const std::string kError = "<msg req=\"CONFIGURATION_UPDATE_ERROR\" />";

class ConfigUpdate_1_0 : public Dialogue_1_0 {};

TEST_F(ConfigUpdate_1_0, AnswersEveryOkWithTheBogusConfiguration) {
    protocol.configUpdate = true;
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(Handle(kOk), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(kOk), Logged(1, "got an OK, sending CONFIGURATION_UPDATE"), Sent(kRequest));
        EXPECT_TRUE(protocol.configUpdate);
    }
}

TEST_F(ConfigUpdate_1_0, SendsTheRequestWithoutALineOfItsOwn) {
    protocol.SendConfigUpdateRequest();
    EXPECT_JOURNAL(Sent(kRequest));
}

TEST_F(ConfigUpdate_1_0, StopsAtTheErrorThatItProvoked) {
    protocol.configUpdate = true;
    Given(kOk);
    EXPECT_EQ(Handle(kError), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received(kError), Logged(16, "Got CONFIGURATION_UPDATE_ERROR"));
}

TEST_F(ConfigUpdate_1_0, DidNotExpectTheErrorWithoutTheSwitch) {
    EXPECT_EQ(Handle(kError), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received(kError), Logged(2, "Unexpected CONFIGURATION_UPDATE_ERROR"));
}

TEST_F(ConfigUpdate_1_0, StillTakesAnExport) {
    protocol.configUpdate = true;
    const std::string xml = Xml({Event("E1", "m1")});
    EXPECT_EQ(Handle(xml), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received(xml), FoundEvent("E1"), Sent(GetFile("E1", "m1")));
    EXPECT_EQ(Handle(FileComplete("E1", "m1")), VelProtocolBase::MSG_CLOSE_CLIENT);
    EXPECT_JOURNAL(Received(FileComplete("E1", "m1")), GotFileComplete("E1", "m1"), ExportEnded({"E1"}));
}

TEST_F(ConfigUpdate_1_0, AnnouncesHalfAsMuchAgainWithSizeError) {
    protocol.configUpdate = true;
    protocol.sizeError = true;
    EXPECT_EQ(Handle(kOk), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received(kOk), Logged(1, "got an OK, sending CONFIGURATION_UPDATE"),
                   SentWithSizeError(kRequest));
}

}  // namespace
