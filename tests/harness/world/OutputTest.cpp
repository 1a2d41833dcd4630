#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>

#include "tests/harness/world/SmallPipe.h"

namespace {

TEST_F(SmallPipe, ThatIsFullHoldsTheDialogueUntilItIsReadAndCostsNoLine) {
    ConnectWithASmallPipe();
    IsFilled();
    dvr->Sends(Ok());
    pollfd output = {-1, 0, 0};
    poll(&output, 1, 300);  // longer than the harness takes to answer
    EXPECT_FALSE(dvr->HasSomethingToRead()) << "answered ahead of the lines that are not yet written";
    EXPECT_TRUE(harness->GetProcess().IsRunning());
    LogsWhatFilledIt();
    harness->Logs(1, "got an OK, sending GET_XML");
    dvr->Receives(v1::kGetXml);
    Ends();
}

// The last line may have to wait for room until someone reads; the peer does not wait for it.

TEST_F(SmallPipe, ThatIsFullKeepsTheEndFromNeitherThePeerNorTheReader) {
    ConnectWithASmallPipe();
    IsFilled();
    harness->GetsSignal(SIGINT);
    dvr->ReceivesEnd();
    harness->LogsUpTo(1, "shutting down");
    harness->EndsWithStatus(44);
}

class Output : public Dialect10 {
 protected:
    void ConnectWithOutput(int fd) {
        Launch launch;
        launch.output = fd;
        harness.emplace(std::vector<std::string>{}, launch);
        harness->Listens();
        dvr.emplace();
    }
};

TEST_F(Output, ThatTakesNothingCostsItsLinesOnly) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ConnectWithOutput(full);
    close(full);
    ExportsE1Unseen();
    Reconnect();
    OpensUnseen();
    harness->GetsSignal(SIGINT);
    harness->EndsWithStatus(44);
    EXPECT_EQ("", harness->StandardError());
}

class OutputWhoseReaderIsGone : public Output {
 protected:
    void SetUp() override {
        int ends[2];
        ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
        ConnectWithOutput(ends[1]);
        close(ends[1]);
        OpensUnseen();
        close(ends[0]);
    }
};

TEST_F(OutputWhoseReaderIsGone, CostsItsLinesOnly) {
    OpensUnseen();
    harness->GetsSignal(SIGINT);
    harness->EndsWithStatus(44);
    EXPECT_EQ("", harness->StandardError());
}

TEST_F(OutputWhoseReaderIsGone, LeavesTheBrokenPipeToThePeer) {
    dvr->Sends(Ok());
    dvr->HangsUp();
    harness->EndsBySignal(SIGPIPE);
}

}  // namespace
