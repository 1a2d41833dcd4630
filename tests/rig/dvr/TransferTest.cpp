#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "rig/dvr/dialogue/Transfer.h"
#include "tests/rig/dvr/FixedRecordings.h"
#include "tests/support/TemporaryFolder.h"

// Times are given, not waited for.
namespace {

using rig::dvr::Clock;
using rig::dvr::DeliveryFolder;
using rig::dvr::Milliseconds;
using rig::dvr::Transfer;
using rig::dvr::TransferPace;
using std::chrono::hours;
using std::chrono::microseconds;
using std::chrono::seconds;
namespace fs = std::filesystem;

const Clock::time_point kStart = Clock::time_point() + hours(1);

TEST(TransferPace, GivesEachFileTheSameTimeWithoutARate) {
    const TransferPace pace{Milliseconds(300)};
    EXPECT_EQ(pace.TimeFor(0), Milliseconds(300));
    EXPECT_EQ(pace.TimeFor(1'000'000'000'000), Milliseconds(300));
}

TEST(TransferPace, GivesAFileTheTimeThatItsLengthTakesAtTheRate) {
    EXPECT_EQ((TransferPace{Milliseconds(300), 1000}.TimeFor(2500)), Milliseconds(2500));
    EXPECT_EQ((TransferPace{Milliseconds(300), 1'000'000}.TimeFor(1)), microseconds(1));
    EXPECT_EQ((TransferPace{Milliseconds(300), 1'000'000}.TimeFor(0)), seconds(0));
    EXPECT_GT((TransferPace{Milliseconds(300), 3}.TimeFor(1)), Milliseconds(333)) << "never too fast";
}

TEST(TransferPace, KeepsTheLongestTimeWithinWhatAClockCanTell) {
    const auto longest = TransferPace{Milliseconds(0), 1}.TimeFor(UINT64_MAX);
    EXPECT_GT(longest, hours(24 * 365 * 29));
    EXPECT_GT(Clock::now() + longest, Clock::now());
}

TEST(Transfer, TakesItsTime) {
    Transfer transfer({"EVT1", "a.ts"}, 10'000, {Milliseconds(0), 1000}, nullptr, kStart);
    EXPECT_EQ(transfer.NextAdvance(), kStart);
    transfer.Advance(kStart);
    EXPECT_EQ(transfer.Done(), 0U);
    transfer.Advance(kStart + Milliseconds(2500));
    EXPECT_EQ(transfer.Done(), 2500U);
    transfer.Advance(kStart + seconds(10) - microseconds(1));
    EXPECT_FALSE(transfer.IsOver());
    EXPECT_EQ(transfer.NextAdvance(), kStart + seconds(10));
    transfer.Advance(kStart + seconds(10));
    EXPECT_TRUE(transfer.IsOver());
    EXPECT_EQ(transfer.Done(), 10'000U);
}

TEST(Transfer, IsOverOnlyAfterItsLateness) {
    Transfer transfer({"EVT1", "a.ts"}, 10'000, {seconds(1), {}, seconds(2)}, nullptr, kStart);
    transfer.Advance(kStart + seconds(1));
    EXPECT_EQ(transfer.Done(), 10'000U);
    EXPECT_FALSE(transfer.IsOver());
    EXPECT_EQ(transfer.NextAdvance(), kStart + seconds(3));
    transfer.Advance(kStart + seconds(3));
    EXPECT_TRUE(transfer.IsOver());
}

TEST(Transfer, AdvancesTenTimesASecondAndAtItsEnd) {
    Transfer transfer({"EVT1", "a.ts"}, 10'000, {Milliseconds(250)}, nullptr, kStart);
    transfer.Advance(kStart);
    EXPECT_EQ(transfer.NextAdvance(), kStart + Milliseconds(100));
    transfer.Advance(kStart + Milliseconds(120));
    EXPECT_EQ(transfer.NextAdvance(), kStart + Milliseconds(220));
    transfer.Advance(kStart + Milliseconds(220));
    EXPECT_EQ(transfer.NextAdvance(), kStart + Milliseconds(250));
}

TEST(Transfer, OfAnEmptyFileIsOverAtOnceAtAnyRate) {
    Transfer transfer({"EVT1", "a.ts"}, 0, {Milliseconds(200), 1}, nullptr, kStart);
    transfer.Advance(kStart);
    EXPECT_TRUE(transfer.IsOver());
}

TEST(Transfer, IsLongWhenItTakesMoreThanHalfASecond) {
    const Transfer shorter({"EVT1", "a.ts"}, 500, {Milliseconds(0), 1000}, nullptr, kStart);
    EXPECT_FALSE(shorter.IsLong(kStart));
    EXPECT_TRUE(shorter.IsLong(kStart + Milliseconds(501))) << "its copy lags";
    const Transfer longer({"EVT1", "a.ts"}, 501, {Milliseconds(0), 1000}, nullptr, kStart);
    EXPECT_TRUE(longer.IsLong(kStart));
}

class CopyingTransferTest : public testing::Test {
 protected:
    void SetLength(std::size_t length) { recordings_.contents[{"EVT1", "a.ts"}] = std::string(length, 'x'); }

    Transfer NewTransfer(std::uint64_t length, const TransferPace& pace) const {
        return Transfer({"EVT1", "a.ts"}, length, pace, &delivery_, kStart);
    }

    fs::path Copy() const { return folder_.Path() / "EVT1" / "a.ts"; }

    FixedRecordings recordings_;
    TemporaryFolder folder_;
    DeliveryFolder delivery_{folder_.Path(), recordings_};
};

TEST_F(CopyingTransferTest, CopiesWhatIsDue) {
    SetLength(10'000);
    Transfer transfer = NewTransfer(10'000, {Milliseconds(0), 1000});
    transfer.Advance(kStart + seconds(3));
    EXPECT_EQ(transfer.Done(), 3000U);
    EXPECT_FALSE(fs::exists(Copy()));
    transfer.Advance(kStart + seconds(10));
    EXPECT_EQ(transfer.Done(), 10'000U);
    EXPECT_TRUE(transfer.IsOver());
    EXPECT_EQ(fs::file_size(Copy()), 10'000U);
}

TEST_F(CopyingTransferTest, PausesAfterEachPieceOfALongFile) {
    SetLength(150'000);
    Transfer transfer = NewTransfer(150'000, {Milliseconds(100)});
    const auto late = kStart + seconds(1);
    transfer.Advance(late);
    EXPECT_EQ(transfer.Done(), 65'536U);
    EXPECT_FALSE(transfer.IsOver());
    EXPECT_EQ(transfer.NextAdvance(), late) << "it lags";
    transfer.Advance(late);
    transfer.Advance(late);
    EXPECT_EQ(transfer.Done(), 150'000U);
    EXPECT_TRUE(transfer.IsOver());
    EXPECT_EQ(fs::file_size(Copy()), 150'000U);
}

TEST_F(CopyingTransferTest, CopiesTheWholeFileEvenIfItChangesMeanwhile) {
    SetLength(10'000);
    Transfer grown = NewTransfer(4, {Milliseconds(100)});
    grown.Advance(kStart + seconds(1));
    EXPECT_TRUE(grown.IsOver());
    EXPECT_EQ(fs::file_size(Copy()), 10'000U);
}

TEST_F(CopyingTransferTest, EndsWhereAFileThatBecameShorterEnds) {
    SetLength(4);
    Transfer shrunk = NewTransfer(10'000, {Milliseconds(0), 1000});
    shrunk.Advance(kStart + seconds(5));
    EXPECT_FALSE(shrunk.IsOver());
    EXPECT_GT(shrunk.NextAdvance(), kStart + seconds(5));
    shrunk.Advance(kStart + seconds(10));
    EXPECT_TRUE(shrunk.IsOver());
    EXPECT_EQ(fs::file_size(Copy()), 4U);
}

TEST_F(CopyingTransferTest, LeavesNothingWhenItIsAbandoned) {
    SetLength(10'000);
    NewTransfer(10'000, {Milliseconds(0), 1000}).Advance(kStart + seconds(3));
    EXPECT_TRUE(fs::is_empty(folder_.Path() / "EVT1"));
}

}  // namespace
