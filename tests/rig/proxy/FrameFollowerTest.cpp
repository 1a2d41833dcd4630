#include <gtest/gtest.h>

#include <vector>

#include "rig/proxy/FrameFollower.h"

namespace rig::proxy {
namespace {

const std::string kOk = R"(<msg req="OK"/>)";

/// Follows the bytes in pieces of a size. @return the frames, as "MESSAGE PREFIX+TEXT"
std::vector<std::string> FramesIn(const std::string& bytes, std::size_t pieceBytes, FrameFollower& follower) {
    std::vector<std::string> frames;
    const auto note = [&](const FollowedFrame& frame, const std::string&) {
        frames.push_back(frame.message + " " + std::to_string(frame.prefixBytes) + "+" +
                         std::to_string(frame.textBytes));
    };
    for (std::size_t at = 0; at < bytes.size(); at += pieceBytes) {
        const std::string piece = bytes.substr(at, pieceBytes);
        follower.Follow(piece.data(), piece.size(), note);
    }
    return frames;
}

std::vector<std::string> FramesIn(const std::string& bytes, std::size_t pieceBytes) {
    FrameFollower follower;
    return FramesIn(bytes, pieceBytes, follower);
}

TEST(FrameFollower, FindsTheSameFramesInPiecesOfAnySize) {
    const std::string padded = "<msg req=\"EVENT\">" + std::string(283, ' ') + "</msg>";  // 306 bytes
    const std::string bytes = "\x0f" + kOk + "\xb2\x02" + padded + "\x0f" + kOk;
    for (std::size_t pieceBytes = 1; pieceBytes <= bytes.size(); ++pieceBytes) {
        EXPECT_EQ((std::vector<std::string>{"OK 1+15", "EVENT 2+306", "OK 1+15"}),
                  FramesIn(bytes, pieceBytes))
            << pieceBytes;
    }
}

TEST(FrameFollower, FollowsAPrefixThatIsLongerThanNeedBe) {
    EXPECT_EQ(
        (std::vector<std::string>{"OK 2+15", "OK 5+15"}),
        FramesIn("\x8f" + std::string(1, '\0') + kOk + "\x8f\x80\x80\x80" + std::string(1, '\0') + kOk, 7));
}

TEST(FrameFollower, TakesTheLow32BitsOfAPrefixAsTheHarnessDoes) {
    EXPECT_EQ((std::vector<std::string>{"OK 5+15"}), FramesIn("\x8f\x80\x80\x80\x70" + kOk, 3));
}

TEST(FrameFollower, FindsAnEmptyText) {
    EXPECT_EQ((std::vector<std::string>{" 1+0", "OK 1+15"}),
              FramesIn(std::string(1, '\0') + "\x0f" + kOk, 2));
}

TEST(FrameFollower, KeepsATextUpToItsLimitAndCountsALongerOne) {
    const std::string start = "<msg req=\"XML\">";
    const std::string kept = start + std::string(kMostKeptBytes - start.size() - 6, ' ') + "</msg>";
    EXPECT_EQ((std::vector<std::string>{"XML 3+65536"}), FramesIn("\x80\x80\x04" + kept, 1000));
    EXPECT_EQ((std::vector<std::string>{" 3+65537", "OK 1+15"}),
              FramesIn("\x81\x80\x04 " + kept + "\x0f" + kOk, 1000));
}

TEST(FrameFollower, HasNothingUnfinishedBetweenFrames) {
    FrameFollower follower;
    EXPECT_FALSE(follower.Unfinished());
    FramesIn("\x0f" + kOk, 3, follower);
    EXPECT_FALSE(follower.Unfinished());
}

TEST(FrameFollower, TellsWhatHasComeOfAText) {
    FrameFollower follower;
    EXPECT_EQ(std::vector<std::string>{}, FramesIn("\xac\x02<msg", 1, follower));
    ASSERT_TRUE(follower.Unfinished());
    EXPECT_EQ(2U, follower.Unfinished()->prefixBytes);
    EXPECT_EQ(4U, follower.Unfinished()->textBytes);
    EXPECT_EQ(300U, follower.Unfinished()->announced);
}

TEST(FrameFollower, TellsThatAPrefixHasNotEnded) {
    FrameFollower follower;
    FramesIn("\xac", 1, follower);
    ASSERT_TRUE(follower.Unfinished());
    EXPECT_EQ(1U, follower.Unfinished()->prefixBytes);
    EXPECT_FALSE(follower.Unfinished()->announced);
}

TEST(FrameFollower, CountsWhatFollowsAPrefixWithoutEndAndFindsNoFrameInIt) {
    FrameFollower follower;
    EXPECT_EQ(std::vector<std::string>{}, FramesIn("\xff\xff\xff\xff\xff\x0f" + kOk, 4, follower));
    ASSERT_TRUE(follower.Unfinished());
    EXPECT_EQ(5U, follower.Unfinished()->prefixBytes);
    EXPECT_EQ(16U, follower.Unfinished()->textBytes);
    EXPECT_FALSE(follower.Unfinished()->announced);
}

std::string NameOfMessage(const std::string& text) {
    FollowedFrame frame;
    TakeNames(text, frame);
    return frame.message;
}

TEST(NameOfMessage, IsReadAsFarAsTheTextIsXml) {
    EXPECT_EQ("OK", NameOfMessage(kOk));
    EXPECT_EQ("a&b", NameOfMessage("<?xml version='1.0'?><msg x='' req='a&amp;b'/>"));
    EXPECT_EQ("EVENT", NameOfMessage("<msg req='EVENT'><open></msg>"));
    EXPECT_EQ("", NameOfMessage("<msg/>"));
    EXPECT_EQ("", NameOfMessage("<other req='OK'/>"));
    EXPECT_EQ("", NameOfMessage("no XML"));
    EXPECT_EQ("", NameOfMessage(""));
}

TEST(TakeNames, FindsWhatTheMessageIsAbout) {
    const auto about = [](const std::string& text) {
        FollowedFrame frame;
        TakeNames(text, frame);
        return frame.reid.value_or("-") + "/" + frame.file.value_or("-");
    };
    EXPECT_EQ("E/a", about("<msg req='GET_FILE' reid='E' path='P' file='a'/>"));
    EXPECT_EQ("P/a", about("<msg req='GET_FILE' path='P' file='a'/>"));
    EXPECT_EQ("/-", about("<msg req='EVENT' reid=''/>"));
    EXPECT_EQ("-/-", about("<msg req='OK'/>"));
}

}  // namespace
}  // namespace rig::proxy
