#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "rig/dvr/wire/Frame.h"
#include "tests/rig/dvr/Failures.h"

namespace {

using rig::dvr::EncodeFrame;
using rig::dvr::EncodePrefix;
using rig::dvr::FrameDecoder;

/// Feeds bytes to a decoder in pieces. @return the texts of all whole frames
std::vector<std::string> Decode(FrameDecoder& decoder, const std::string& bytes, std::size_t piece) {
    std::vector<std::string> texts;
    for (std::size_t start = 0; start < bytes.size(); start += piece) {
        decoder.Append(bytes.data() + start, std::min(piece, bytes.size() - start));
        while (std::optional<std::string> text = decoder.NextText()) {
            texts.push_back(*text);
        }
    }
    return texts;
}

struct PrefixCase {
    std::uint32_t length;
    std::string bytes;
};

void PrintTo(const PrefixCase& tested, std::ostream* out) {
    *out << tested.length;
}

class PrefixTest : public testing::TestWithParam<PrefixCase> {};

TEST_P(PrefixTest, IsWrittenLeastSignificantGroupFirst) {
    EXPECT_EQ(EncodePrefix(GetParam().length), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Frame, PrefixTest,
    testing::Values(PrefixCase{0, std::string(1, '\0')}, PrefixCase{1, "\x01"}, PrefixCase{127, "\x7f"},
                    PrefixCase{128, "\x80\x01"}, PrefixCase{300, "\xac\x02"}, PrefixCase{450, "\xc2\x03"},
                    PrefixCase{16383, "\xff\x7f"}, PrefixCase{16384, "\x80\x80\x01"},
                    PrefixCase{2097151, "\xff\xff\x7f"}, PrefixCase{2097152, "\x80\x80\x80\x01"},
                    PrefixCase{268435455, "\xff\xff\xff\x7f"}, PrefixCase{268435456, "\x80\x80\x80\x80\x01"},
                    PrefixCase{UINT32_MAX, "\xff\xff\xff\xff\x0f"}));

TEST(Frame, IsThePrefixAndThenTheText) {
    EXPECT_EQ(EncodeFrame("<msg/>"), "\x06<msg/>");
}

TEST(Frame, ComesBackFromPiecesOfAnySize) {
    const std::vector<std::string> texts{
        "", "x", std::string(127, 'a'), std::string(128, 'b'), std::string(20'000, 'c'), "end"};
    std::string bytes;
    for (const std::string& text : texts) {
        bytes += EncodeFrame(text);
    }
    for (const std::size_t piece : {std::size_t{1}, std::size_t{2}, std::size_t{7}, bytes.size()}) {
        FrameDecoder decoder;
        EXPECT_EQ(Decode(decoder, bytes, piece), texts) << "pieces of " << piece;
        EXPECT_FALSE(decoder.InsideFrame());
    }
}

TEST(Frame, SaysHowFarAnUnfinishedOneGot) {
    FrameDecoder decoder;
    EXPECT_FALSE(decoder.InsideFrame());
    decoder.Append("\xc2", 1);
    EXPECT_EQ(decoder.NextText(), std::nullopt);
    EXPECT_TRUE(decoder.InsideFrame());
    EXPECT_EQ(decoder.Progress(), "an unfinished length prefix of 1 byte");
    const std::string rest = "\x03" + std::string(300, 'x');
    decoder.Append(rest.data(), rest.size());
    EXPECT_EQ(decoder.NextText(), std::nullopt);
    EXPECT_TRUE(decoder.InsideFrame());
    EXPECT_EQ(decoder.Progress(), "announced 450, got 300");
}

TEST(Frame, AnnouncesAtMost64MiB) {
    FrameDecoder decoder;
    const std::string most = EncodePrefix(67108864);
    decoder.Append(most.data(), most.size());
    EXPECT_EQ(decoder.NextText(), std::nullopt);
    EXPECT_EQ(decoder.Progress(), "announced 67108864, got 0");
    FrameDecoder other;
    const std::string more = EncodePrefix(67108865);
    other.Append(more.data(), more.size());
    EXPECT_EQ(BreachOf([&] { other.NextText(); }),
              "a length prefix that announces 67108865 bytes (at most 67108864 are accepted)");
}

TEST(Frame, RefusesAPrefixOfMoreThanFiveBytes) {
    FrameDecoder decoder;
    decoder.Append("\x80\x80\x80\x80", 4);
    EXPECT_EQ(decoder.NextText(), std::nullopt);
    decoder.Append("\x80", 1);
    EXPECT_EQ(BreachOf([&] { decoder.NextText(); }), "a length prefix of more than five bytes");
}

TEST(Frame, DropsNoBitOfTheFifthByte) {
    FrameDecoder decoder;
    decoder.Append("\x80\x80\x80\x80\x7f", 5);
    EXPECT_EQ(BreachOf([&] { decoder.NextText(); }),
              "a length prefix that announces 34091302912 bytes (at most 67108864 are accepted)");
}

}  // namespace
