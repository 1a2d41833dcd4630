#include <gtest/gtest.h>

#include <set>
#include <string>

#include "rig/dvr/defects/Injector.h"
#include "rig/dvr/wire/Frame.h"
#include "tests/rig/dvr/FixedRecordings.h"

// Defects that choose at random: what they choose from, and that a seed repeats every choice.
namespace {

using rig::dvr::Injector;
using rig::dvr::Message;
using rig::dvr::Outgoing;

const std::string kComplete =
    R"(<msg req="FILE_COMPLETE" protocolVersion="2.0" reid="EVT1" file="a.ts" length="4" hashCode="old"/>)";

/// @return what goes out for that many messages in a row, as bytes
std::string Play(const std::string& defect, std::uint32_t seed, int messages) {
    const FixedRecordings recordings;
    Injector injector(recordings, 2, seed);
    injector.AddDefect(defect, {"FILE_COMPLETE", 0, "", ""});
    std::string bytes;
    for (int count = 0; count < messages; ++count) {
        bytes += injector.Frame(injector.Prepare(Message::Parse(kComplete)));
    }
    return bytes;
}

class SeedTest : public testing::TestWithParam<const char*> {};

TEST_P(SeedTest, RepeatsEveryByte) {
    EXPECT_EQ(Play(GetParam(), 1, 20), Play(GetParam(), 1, 20));
    EXPECT_NE(Play(GetParam(), 1, 20), Play(GetParam(), 2, 20));
}

INSTANTIATE_TEST_SUITE_P(Random, SeedTest,
                         testing::Values("new-hash", "garble", "garble=20", "close=random", "reset=random"));

TEST(NewHash, IsAnotherSha256EachTime) {
    const FixedRecordings recordings;
    Injector injector(recordings, 2, 0);
    injector.AddDefect("new-hash", {});
    std::set<std::string> hashes;
    for (int count = 0; count < 10; ++count) {
        const Outgoing outgoing = injector.Prepare(Message::Parse(kComplete));
        const std::string hash = outgoing.message.Get("hashCode");
        EXPECT_EQ(hash.size(), 64U);
        EXPECT_EQ(hash.find_first_not_of("0123456789abcdef"), std::string::npos) << hash;
        hashes.insert(hash);
    }
    EXPECT_EQ(hashes.size(), 10U);
}

TEST(Garble, ReplacesAtMostThatManyBytesAndKeepsTheLength) {
    for (std::uint32_t seed = 0; seed < 100; ++seed) {
        const std::string frame = Play("garble=3", seed, 1);
        const std::string honest = rig::dvr::EncodeFrame(kComplete);
        ASSERT_EQ(frame.size(), honest.size());
        EXPECT_EQ(frame[0], honest[0]) << "the prefix stays right";
        int changed = 0;
        for (std::size_t index = 0; index < frame.size(); ++index) {
            changed += frame[index] == honest[index] ? 0 : 1;
        }
        EXPECT_LE(changed, 3);
    }
}

TEST(Garble, ReachesTheFirstAndTheLastByte) {
    std::set<std::size_t> places;
    for (std::uint32_t seed = 0; seed < 3000; ++seed) {
        const std::string frame = Play("garble", seed, 1);
        const std::string honest = rig::dvr::EncodeFrame(kComplete);
        for (std::size_t index = 0; index < frame.size(); ++index) {
            if (frame[index] != honest[index]) {
                places.insert(index);
            }
        }
    }
    EXPECT_EQ(places.size(), kComplete.size());
}

TEST(RandomEnd, ComesBeforeTheMessageIsWhole) {
    std::set<std::size_t> sizes;
    const std::string honest = rig::dvr::EncodeFrame(kComplete);
    for (std::uint32_t seed = 0; seed < 3000; ++seed) {
        const std::string frame = Play("close=random", seed, 1);
        ASSERT_LT(frame.size(), honest.size());
        EXPECT_EQ(frame, honest.substr(0, frame.size()));
        sizes.insert(frame.size());
    }
    EXPECT_EQ(sizes.size(), honest.size()) << "any number of bytes, none included";
}

TEST(RandomCut, LeavesAnythingFromNothingToAllButTheLastByte) {
    std::set<std::size_t> sizes;
    for (std::uint32_t seed = 0; seed < 3000; ++seed) {
        sizes.insert(Play("close=random", seed, 1).size());
    }
    EXPECT_EQ(sizes.size(), rig::dvr::EncodeFrame(kComplete).size());
    EXPECT_EQ(*sizes.rbegin(), sizes.size() - 1);
}

}  // namespace
