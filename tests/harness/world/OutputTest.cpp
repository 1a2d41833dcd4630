#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>

#include "tests/harness/world/SmallPipe.h"

namespace {

/// The descriptors of a pipe that replaces the harness's standard output.
class OutputPipe {
 public:
    OutputPipe() { EXPECT_EQ(0, pipe2(ends_, O_CLOEXEC)); }
    ~OutputPipe() {
        close(ends_[0]);
        close(ends_[1]);
    }
    OutputPipe(const OutputPipe&) = delete;
    OutputPipe& operator=(const OutputPipe&) = delete;

    int WriteEnd() const { return ends_[1]; }

    /// Nobody reads it any more, and nobody will.
    void LosesItsReader() {
        close(ends_[0]);
        ends_[0] = -1;
    }

 private:
    int ends_[2] = {-1, -1};
};

/// An export up to the end of the connection, in steps that see no log.
void ExportsE1WithoutLog(ScriptedDvr& dvr) {
    dvr.Sends(Ok());
    dvr.Receives(v1::kGetXml);
    dvr.Sends(Xml({Description("E1", {"m1"})}));
    dvr.Receives(v1::GetFile("E1", "m1"));
    dvr.Sends(FileComplete("E1", "m1"));
    dvr.Receives(v1::EventXferComplete({"E1"}));
    dvr.Receives(v1::kDone);
    dvr.ReceivesEnd();
}

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
    ExportsE1WithoutLog(*dvr);
    Reconnect();
    dvr->Sends(Ok());
    dvr->Receives(v1::kGetXml);
    harness->GetsSignal(SIGINT);
    harness->EndsWithStatus(44);
    EXPECT_EQ("", harness->StandardError());
}

TEST_F(Output, WhoseReaderIsGoneCostsItsLinesOnly) {
    OutputPipe pipe;
    ConnectWithOutput(pipe.WriteEnd());
    dvr->Sends(Ok());
    dvr->Receives(v1::kGetXml);
    pipe.LosesItsReader();
    dvr->Sends(Ok());
    dvr->Receives(v1::kGetXml);
    harness->GetsSignal(SIGINT);
    harness->EndsWithStatus(44);
    EXPECT_EQ("", harness->StandardError());
}

TEST_F(Output, WhoseReaderIsGoneLeavesTheBrokenPipeToThePeer) {
    OutputPipe pipe;
    ConnectWithOutput(pipe.WriteEnd());
    dvr->Sends(Ok());
    dvr->Receives(v1::kGetXml);
    pipe.LosesItsReader();
    dvr->Sends(Ok());
    dvr->HangsUp();
    harness->EndsBySignal(SIGPIPE);
}

}  // namespace
