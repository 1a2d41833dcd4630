#include <gtest/gtest.h>

#include "rig/campaign/execution/Watch.h"

namespace rig::campaign {
namespace {

constexpr Patience kPatience{10, 5, 20, 100, 3};

/// A watch whose clock the test sets.
class WatchTest : public testing::Test {
 protected:
    /// @param switches  begin with "-p DIALECT"
    void Begin(const std::string& switches) {
        watch_.emplace(Case{"x", switches.at(3) - '0', switches, ""}, kPatience, begin_);
        reader_.emplace();
    }

    void Add(double seconds, const std::string& text, bool isOver = false) {
        using Event = log::RunReader::Event;
        judge::ReadLine read("");
        read.statement = log::StatementOf(text);
        const Event event = reader_->Add(*read.statement);
        read.message = event == Event::Message ? &reader_->LastMessage() : nullptr;
        read.request = event == Event::Request ? &reader_->LastRequest() : nullptr;
        watch_->Add(read, isOver, At(seconds));
    }

    /// The DVR has sent this.
    void Receive(double seconds, const std::string& message) {
        const std::string size = std::to_string(message.size());
        Add(seconds, "expecting a message of " + size + " bytes");
        Add(seconds, "GetMessage:incoming message, bytes 1 to " + size + ":" + message);
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
    std::optional<log::RunReader> reader_;
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

TEST_F(WatchTest, GivesATransferItsOwnTime) {
    Begin("-p 2");
    Add(0, "'protocol' option set to 2");
    Add(0, "Connected to: fam=2  127.0.0.1:4000");
    Receive(1, R"(<msg req="EVENT_XFER_ACK" reid="E1"/>)");
    Add(1, "hdr[0]= 32");
    EXPECT_EQ(LookAt(6.1), End::IdleTimeout);
    Receive(6, R"(<msg req="EVENT" reid="E1"/>)");
    Add(6, "hdr[0]= 32");
    EXPECT_EQ(LookAt(25.9), End::None) << "a slow recorder";
    EXPECT_EQ(LookAt(26.1), End::TransferTimeout);
    EXPECT_EQ(words_, "transfer time-out: no new line in the log for 20 s after a request for a file");
}

TEST_F(WatchTest, EndsWithoutEvents) {
    Begin("-p 2");
    Receive(0, R"(<msg req="EVENT_LIST" source="x"><events/></msg>)");
    EXPECT_EQ(LookAt(0), End::None);
    Add(0, "Got EVENT_LIST message with no events");
    EXPECT_EQ(LookAt(0), End::NoEvents);
    EXPECT_NE(words_.find("--before-case"), std::string::npos);
    Begin("-p 1");
    Receive(0, R"(<msg req="XML"><xmlFile/></msg>)");
    EXPECT_EQ(LookAt(2.9), End::None);
    EXPECT_EQ(LookAt(3.1), End::NoEvents);
}

TEST_F(WatchTest, EndsWhereTheHarnessHasNothingToAskFor) {
    Begin("-p 2");
    Add(0, "Got EVENT message with no files to receive");
    EXPECT_EQ(LookAt(2.9), End::None);
    EXPECT_EQ(LookAt(3.1), End::Stuck);
    Add(3.1, "hdr[0]= 32");
    EXPECT_EQ(LookAt(6.3), End::None) << "it asked for something";
    Begin("-p 1");
    Receive(0, R"(<msg req="XML"><xmlFile><string>&lt;recording-event reid="E"/></string></xmlFile></msg>)");
    EXPECT_EQ(LookAt(3.1), End::Stuck);
}

TEST_F(WatchTest, EndsWhereTheConnectionIsLost) {
    Begin("-p 2");
    Add(0, "Connected to: fam=2  127.0.0.1:4000");
    Add(0, "read error: 4:Interrupted system call");
    EXPECT_EQ(LookAt(0), End::None);
    Add(0, "read error: 104:Connection reset by peer");
    EXPECT_EQ(LookAt(0), End::Lost);
    EXPECT_NE(words_.find("104:Connection reset by peer"), std::string::npos);
    Begin("-p 2");
    Add(0, "Connected to: fam=2  127.0.0.1:4000");
    watch_->ConnectionClosed();
    EXPECT_EQ(LookAt(3.4), End::None) << "the harness may still read what came before";
    EXPECT_EQ(LookAt(3.6), End::Lost);
}

TEST_F(WatchTest, LetsTheDvrCloseAfterAWrongPrefix) {
    Begin("-p 2 -z");
    Add(0, "sent: size= 32/50/33  'x'");
    Add(0, "read error: 104:Connection reset by peer");
    watch_->ConnectionClosed();
    EXPECT_EQ(LookAt(3), End::None);
    EXPECT_EQ(LookAt(3.3), End::Silence);
}

TEST_F(WatchTest, EndsWhereTheDialogueGoesRoundInCircles) {
    Begin("-p 2");
    for (int round = 0; round < 20; ++round) {
        Add(round, "hdr[0]= 32");
        EXPECT_EQ(LookAt(round), End::None);
        Receive(round, R"(<msg req="TRANSPORT_EXCEPTION" reid="E1"/>)");
        EXPECT_EQ(LookAt(round), End::None);
    }
    Add(20, "hdr[0]= 32");
    EXPECT_EQ(LookAt(20), End::Endless);
    EXPECT_EQ(words_, "20 times in a row, with nothing new: GET_FILE, TRANSPORT_EXCEPTION E1");
}

TEST_F(WatchTest, EndsWhereTheHarnessGoesRoundInCircles) {
    Begin("-p 1");
    Add(0, "Found event with no REID");
    EXPECT_EQ(LookAt(0), End::Endless);
    EXPECT_EQ(words_, "the harness logs for ever: Found event with no REID");
    Begin("-p 2");
    Add(0, "'protocol' option set to 2");
    Add(0, "Escaped XML for event contains no REID");
    EXPECT_EQ(LookAt(0), End::None);
}

TEST_F(WatchTest, KnowsWhenTheDvrCalledAndWasLetGo) {
    Begin("-p 2 -d 1");
    EXPECT_FALSE(watch_->ConnectedAt());
    Add(1, "Connected to: fam=2  127.0.0.1:4000");
    Add(2, "expecting a message of 3 bytes");
    EXPECT_FALSE(watch_->DoneAt());
    EXPECT_FALSE(watch_->HeardAgainAt());
    Add(3, "Sending DONE");
    Add(7, "expecting a message of 3 bytes");
    Add(8, "expecting a message of 3 bytes");
    EXPECT_EQ(watch_->ConnectedAt(), At(1));
    EXPECT_EQ(watch_->FirstCaller(), 4000);
    EXPECT_EQ(watch_->DoneAt(), At(3));
    EXPECT_EQ(watch_->HeardAgainAt(), At(7));
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
