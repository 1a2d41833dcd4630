#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "rig/dvr/wire/Frame.h"
#include "tests/rig/dvr/Backend.h"
#include "tests/rig/dvr/Failures.h"
#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/support/Program.h"

// Frames whose prefix announces the wrong length.
namespace {

using rig::dvr::EncodePrefix;
using rig::dvr::FrameDecoder;

/// @return the frame of a harness that announces half as many bytes again
std::string TooLongFrame(const std::string& text) {
    return EncodePrefix(static_cast<std::uint32_t>(text.size() * 3 / 2)) + text;
}

class DecoderTest : public testing::Test {
 protected:
    DecoderTest() { decoder_.AcceptSizeErrors(); }

    void Append(const std::string& bytes) { decoder_.Append(bytes.data(), bytes.size()); }

    FrameDecoder decoder_;
};

TEST_F(DecoderTest, ReturnsWhatHasComeOfATextThatEndsEarly) {
    Append(TooLongFrame(kGetXml));
    EXPECT_EQ(decoder_.NextText(), std::nullopt);
    EXPECT_EQ(decoder_.GiveUp(), kGetXml);
    EXPECT_EQ(decoder_.LastFrame().announced, 31U);
    EXPECT_EQ(decoder_.LastFrame().prefix, "\x1f");
    EXPECT_FALSE(decoder_.InsideFrame());
}

TEST_F(DecoderTest, ReturnsHalfADocumentIfNoMoreHasCome) {
    Append("\x14<msg");
    EXPECT_EQ(decoder_.NextText(), std::nullopt);
    EXPECT_EQ(decoder_.GiveUp(), "<msg");
}

TEST_F(DecoderTest, DoesNotGiveUpAnUnfinishedPrefix) {
    Append("\x80");
    EXPECT_EQ(decoder_.NextText(), std::nullopt);
    EXPECT_EQ(decoder_.GiveUp(), std::nullopt);
    EXPECT_TRUE(decoder_.InsideFrame());
}

TEST_F(DecoderTest, SeparatesAFrameThatSwallowsTheStartOfTheNext) {
    const std::string first =
        R"(<msg req="UPDATE_SOFTWARE" path="/mnt/hd/x" file="y" protocolVersion="2.0" />)";
    const std::string second = R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0" />)";
    Append(TooLongFrame(first) + TooLongFrame(second));
    EXPECT_EQ(decoder_.NextText(), first);
    EXPECT_EQ(decoder_.LastFrame().announced, first.size() * 3 / 2);
    EXPECT_EQ(decoder_.NextText(), std::nullopt);
    EXPECT_EQ(decoder_.GiveUp(), second);
    EXPECT_EQ(decoder_.LastFrame().announced, second.size() * 3 / 2);
}

TEST_F(DecoderTest, SeparatesAFrameThatSwallowsTheWholeNext) {
    const std::string first = R"(<msg req="EVENT_XFER_COMPLETE"><events><string>E1</string></events></msg>)";
    const std::string second = R"(<msg req="DONE" />)";
    Append(TooLongFrame(first) + TooLongFrame(second));
    EXPECT_EQ(decoder_.NextText(), std::nullopt);
    EXPECT_EQ(decoder_.GiveUp(), first);
    EXPECT_EQ(decoder_.NextText(), std::nullopt);
    EXPECT_EQ(decoder_.GiveUp(), second);
}

TEST_F(DecoderTest, LeavesCorrectFramesUnchanged) {
    const std::string text = kGetXml + "\r\n";
    Append(rig::dvr::EncodeFrame(text) + rig::dvr::EncodeFrame("no document"));
    EXPECT_EQ(decoder_.NextText(), text);
    EXPECT_EQ(decoder_.NextText(), "no document");
    EXPECT_FALSE(decoder_.InsideFrame());
}

TEST(SizeError, IsHandedOutAtOnceIfExpected) {
    FrameDecoder decoder;
    const std::string frame = TooLongFrame(kGetXml);
    decoder.ExpectSizeError(31, 21);
    decoder.Append(frame.data(), frame.size() - 1);
    EXPECT_EQ(decoder.NextText(), std::nullopt);
    decoder.Append(frame.data() + frame.size() - 1, 1);
    EXPECT_EQ(decoder.NextText(), kGetXml);
    decoder.Append(frame.data(), frame.size());
    EXPECT_EQ(decoder.NextText(), std::nullopt) << "only the next one is expected";
}

TEST(SizeError, IsNotGivenUpUnlessAccepted) {
    FrameDecoder decoder;
    const std::string frame = TooLongFrame(kGetXml) + TooLongFrame("<a/>");
    decoder.Append(frame.data(), frame.size());
    EXPECT_EQ(decoder.NextText(), std::nullopt);
    EXPECT_EQ(decoder.GiveUp(), std::nullopt);
    EXPECT_EQ(decoder.Progress(), "announced 31, got 21 and 5 bytes after the end of the document");
}

void AskForTheConfiguration(BackendConnection& backend) {
    backend.SendBytes(
        TooLongFrame(R"(<msg req="UPDATE_SOFTWARE" path="p" file="f" protocolVersion="2.0" />)") +
        TooLongFrame(R"(<msg req="UPDATE_CONFIGURATION" protocolVersion="2.0" message="&lt;a/>" />)"));
}

TEST(SizeError, IsToleratedOnRequest) {
    const ProgramResult result = PlayDvr(
        {"--protocol", "2", "--frame-timeout", "0.1", "--on-size-error", "continue"},
        [](BackendConnection& backend) {
            backend.Read();
            AskForTheConfiguration(backend);
            EXPECT_EQ(backend.Read(), R"(<msg req="SOFTWARE_UPDATE_CONFIRM" protocolVersion="2.0"/>)");
            EXPECT_EQ(backend.Read(), R"(<msg req="CONFIGURATION_UPDATE_ERROR" protocolVersion="2.0"/>)");
            EXPECT_TRUE(backend.IsClosedByPeer());
        });
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output.find("size error: announced 103, got 69\n"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("; 2 size errors\n"), std::string::npos) << result.output;
}

TEST(SizeError, IsToleratedWhenTheHarnessThenCloses) {
    const ProgramResult result =
        PlayDvr({"--on-size-error", "continue", "--wire-check"}, [](BackendConnection& backend) {
            backend.Read();
            backend.SendBytes(TooLongFrame(R"(<msg req="UPDATE_CONFIGURATION" txt="&lt;a/>" />)"));
            backend.Close();
        });
    EXPECT_NE(result.output.find("found one that announces"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("; 1 size error; wire check: 1 frame, 1 wrong\n"), std::string::npos)
        << result.output;
}

TEST(SizeError, EndsTheDialogueOtherwise) {
    const ProgramResult result =
        PlayDvr({"--protocol", "2", "--frame-timeout", "0.1"}, [](BackendConnection& backend) {
            backend.Read();
            backend.SendBytes(TooLongFrame(R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0" />)"));
            EXPECT_TRUE(backend.IsClosedByPeer());
        });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "velloran-rig dvr: expected UPDATE_SOFTWARE, UPDATE_CONFIGURATION or GET_EVENT_LIST, found a "
              "message that remained unfinished for 100 ms: announced 75, got 50\n");
}

TEST(WireCheckOption, EndsTheDialogueAtTheFirstFault) {
    const ProgramResult result = PlayDvr({"--wire-check"}, [](BackendConnection& backend) {
        backend.Read();
        backend.Send("<msg  req=\"GET_XML\"/>");
        EXPECT_TRUE(backend.IsClosedByPeer());
    });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "velloran-rig dvr: wire check: frame 1: expected compact text (without values, '<msg "
              "req=\"\"/>'), found '<msg  req=\"\"/>'\n");
    EXPECT_NE(result.output.find("; wire check: 1 frame, 1 wrong\n"), std::string::npos) << result.output;
}

TEST(WireCheckOption, OnlyNotesFaultsWithADefect) {
    const ProgramResult result = PlayDvr(
        {"--wire-check", "--defect", "unasked-configuration-update-error"}, [](BackendConnection& backend) {
            backend.Read();
            backend.Send("<msg  req=\"UPDATE_CONFIGURATION\" txt=\"&lt;a/>\"/>");
            backend.Read();
        });
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.output.find("wire check: frame 1: expected compact text"), std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("; wire check: 1 frame, 1 wrong\n"), std::string::npos) << result.output;
}

}  // namespace
