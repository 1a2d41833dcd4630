#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

class FirstHash : public Dialogue {};

TEST_F(FirstHash, OfAProcessIsComparedWithAnEmptyOne) {
    protocol.events = {"E1"};
    protocol.filesToReceive = {{"E1", "c"}};
    protocol.rehashPending = true;
    EXPECT_REACTION(FileComplete("E1", "c", R"( hashCode="H" length="5")"),
                    Logged(16, "rehash resulted in new hash: old=''  new='H'  len=5"),
                    Logged(64, "Got FILE_COMPLETE for: reid=E1  file=c"), CompletedEvent("E1"));
}

}  // namespace
