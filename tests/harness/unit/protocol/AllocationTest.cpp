#include <tinyxml.h>

#include "protocol/v1_0/VelProtocol_1_0.h"
#include "tests/harness/unit/protocol/Allocations.h"
#include "tests/harness/unit/support/HarnessTest.h"

namespace {

class Allocating : public HarnessTest {
 protected:
    template <typename Code>
    static Allocations During(Code code) {
        g_allocations = Allocations();
        g_allocations.counting = true;
        code();
        g_allocations.counting = false;
        return g_allocations;
    }

    /// What is allocated when 1600 bytes are read into a buffer with room for them.
    Allocations WhileReading() {
        std::vector<char> message;
        message.reserve(2000);
        Feed(std::string(1600, 'x'));
        const Allocations allocations = During([&] { protocol.GetMessage(message); });
        TakeJournal();
        return allocations;
    }

    VelProtocol_1_0 protocol{TestOptions(), kSocket};
};

TEST_F(Allocating, ThePrefixCodecTakesNoMemory) {
    LogMask(0);
    char buffer[5] = {};
    int bytesRead = 0;
    const Allocations allocations = During([&] {
        protocol.Write7BitEncodedInt(buffer, -1);
        protocol.Read7BitEncodedInt(buffer, &bytesRead);
        protocol.Read7BitEncodedInt("\x80\x80\x80\x80\x80", &bytesRead);
    });
    EXPECT_EQ(allocations.all, 0U);
}

TEST_F(Allocating, SlicesAreBuiltOnlyWhileTheirLevelIsOn) {
    LogMask(127 - 32);
    WhileReading();  // what the recorder allocates once
    EXPECT_EQ(WhileReading().ofASlice, 0U);
    LogMask(32);
    EXPECT_GE(WhileReading().ofASlice, 2U);
}

TEST_F(Allocating, EachFrameReadTakesAHeaderBufferOfFiveBytes) {
    LogMask(0);
    EXPECT_EQ(WhileReading().ofFiveBytes, 1U);
}

TEST_F(Allocating, EachFrameWrittenTakesAHeaderBufferOfFiveBytes) {
    LogMask(0);
    TiXmlDocument document;
    document.LinkEndChild(new TiXmlText("text"));
    EXPECT_EQ(During([&] { protocol.SendMessage(document); }).ofFiveBytes, 1U);
    TakeJournal();
}

}  // namespace
