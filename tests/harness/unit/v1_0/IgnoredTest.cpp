#include "tests/harness/unit/v1_0/Dialogue_1_0.h"

namespace {

class Ignored_1_0 : public Dialogue_1_0 {
 protected:
    const std::string xml_ = Xml({Event("E1", "A", {"B"}), Event("E2", "D")});
};

TEST_F(Ignored_1_0, MessagesLeaveListsAndSwitchesToTheExport) {
    protocol.configUpdate = true;
    protocol.sizeError = true;
    Given(xml_);
    for (const char* const text :
         {"<msg req=\"HELLO\" />", "<msg />", "<msg req=\"CONFIGURATION_UPDATE_ERROR\" />",
          "<msg req=\"FILE_COMPLETE\" />", "<msg req=\"FILE_COMPLETE\" reid=\"E1\" file=\"B\" />"}) {
        SCOPED_TRACE(text);
        Given(text);
        EXPECT_EQ(protocol.events, EventList({"E1", "E2"}));
        EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "A"}, {"E1", "B"}, {"E2", "D"}}));
        EXPECT_TRUE(protocol.configUpdate);
        EXPECT_TRUE(protocol.sizeError);
    }
    Given(FileComplete("E1", "A"));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "B"}, {"E2", "D"}}));
    EXPECT_TRUE(protocol.configUpdate);
    EXPECT_TRUE(protocol.sizeError);
}

}  // namespace
