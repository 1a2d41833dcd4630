#include <gtest/gtest.h>

#include "rig/campaign/execution/Watch.h"

namespace rig::campaign {
namespace {

constexpr Patience kPatience{10, 5, 100, 3};

/// A watch whose clock the test sets.
class WatchTest : public testing::Test {
 protected:
    void Begin(const std::string& switches) { watch_.emplace(Case{"x", 2, switches, ""}, kPatience, begin_); }

    void Add(double seconds, const std::string& text, bool isOver = false) {
        watch_->Add(log::StatementOf(text), isOver, At(seconds));
    }

    End LookAt(double seconds) {
        words_.clear();
        return watch_->Look(At(seconds), words_);
    }

    Clock::time_point At(double seconds) const {
        return begin_ + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    }

    Clock::time_point begin_ = Clock::now();
    std::optional<Watch> watch_;
    std::string words_;
};

TEST_F(WatchTest, EndsWithTheDialogue) {
    Begin("-p 2");
    Add(0, "Connected to: fam=2  127.0.0.1:4000");
    EXPECT_EQ(LookAt(1), End::None);
    Add(1, "Sending DONE", true);
    EXPECT_EQ(LookAt(1), End::Done);
    Add(1.1, "expecting a message of 3 bytes", false);
    EXPECT_EQ(LookAt(50), End::Done) << "what is over stays so";
    EXPECT_TRUE(watch_->IsDone());
}

TEST_F(WatchTest, DoesNotMistakeTheHarnesssEndForTheDialogues) {
    Begin("-p 2");
    Add(0, "bind failed: 98", true);
    EXPECT_FALSE(watch_->IsDone());
    Add(1, "Connected to: fam=2  127.0.0.1:4000");
    Add(2, "shutting down", true);
    EXPECT_FALSE(watch_->IsDone());
}

TEST_F(WatchTest, EndsWithTheRefusalOfAConfiguration) {
    Begin("-p 2 -g");
    Add(0, "Got CONFIGURATION_UPDATE_ERROR");
    EXPECT_EQ(LookAt(0), End::Done);
    Begin("-p 2 -u -g");
    Add(0, "Got CONFIGURATION_UPDATE_ERROR");
    EXPECT_EQ(LookAt(0), End::None) << "the update is still to be confirmed";
    Add(0, "Got SOFTWARE_UPDATE_CONFIRM");
    EXPECT_EQ(LookAt(0), End::Done);
    Begin("-p 2");
    Add(0, "Got CONFIGURATION_UPDATE_ERROR");
    EXPECT_EQ(LookAt(0), End::None);
}

TEST_F(WatchTest, TakesSilenceForTheEndAfterAWrongPrefix) {
    Begin("-p 2 -z");
    Add(0, "sent: size= 32/50/33  'x'");
    EXPECT_EQ(LookAt(3), End::None);
    EXPECT_EQ(LookAt(3.3), End::Silence);
    Add(3.3, "expecting a message of 3 bytes");
    EXPECT_EQ(LookAt(3.4), End::None);
}

TEST_F(WatchTest, TimesOutWithoutAConnection) {
    Begin("-p 2");
    EXPECT_EQ(LookAt(9.9), End::None);
    EXPECT_DOUBLE_EQ(watch_->LeftToConnect(At(4)), 6);
    EXPECT_DOUBLE_EQ(watch_->LeftToConnect(At(40)), 0);
    EXPECT_EQ(LookAt(10.1), End::ConnectTimeout);
    EXPECT_EQ(words_, "connect time-out: no DVR connected within 10 s");
}

TEST_F(WatchTest, TimesOutWithoutALine) {
    Begin("-p 2");
    Add(8, "Connected to: fam=2  127.0.0.1:4000");
    EXPECT_TRUE(watch_->IsConnected());
    EXPECT_EQ(LookAt(12.9), End::None);
    EXPECT_EQ(LookAt(13.1), End::IdleTimeout);
    EXPECT_EQ(words_, "idle time-out: no new line in the log for 5 s");
    EXPECT_DOUBLE_EQ(watch_->SilentFor(At(13)), 5);
}

TEST_F(WatchTest, TimesOutWithoutAnEnd) {
    Begin("-p 2");
    for (int second = 0; second < 100; second += 4) {
        Add(second, "expecting a message of 3 bytes");
        EXPECT_EQ(LookAt(second), End::None);
    }
    EXPECT_EQ(LookAt(100.1), End::CaseTimeout);
}

TEST_F(WatchTest, GivesUpOnALogWithoutBounds) {
    Begin("-p 2");
    watch_->LogHas(std::uint64_t{16} << 20);
    EXPECT_EQ(LookAt(0), End::None);
    watch_->LogHas((std::uint64_t{16} << 20) + 1);
    EXPECT_EQ(LookAt(0), End::LogTooLarge);
}

TEST_F(WatchTest, GivesUpOnADvrWhoseCommandFailed) {
    Begin("-p 2");
    Add(0, "Connected to: fam=2  127.0.0.1:4000");
    watch_->DvrFailed(At(1));
    Add(2, "expecting a message of 3 bytes");
    watch_->DvrFailed(At(3));
    EXPECT_EQ(LookAt(5.1), End::None) << "the harness may still have lines to write";
    EXPECT_EQ(LookAt(5.25), End::DvrFailed);
}

}  // namespace
}  // namespace rig::campaign
