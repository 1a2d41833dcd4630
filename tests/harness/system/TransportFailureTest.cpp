#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "tests/support/LastFile.h"

namespace {

// -t: a transport failure.

TEST_F(FaultsOfTheLastFile, MarkTheTransportAsFailedUntilItIsReported) {
    ReachLastFile({"-t"});
    harness->Logs(32, "processing 'transportException' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    EXPECT_TRUE(FileExists(kFailureMarker)) << "requested ahead of the marker";
    dvr->Sends(TransportException("EVENT1"));
    harness->Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'EVENT1'");
    harness->Logs(32, "filesToReceive size = 1");
    EXPECT_FALSE(FileExists(kFailureMarker));
    RequestsTheLastFile();
    CompletesTheLastFile();
    ExportsASecondEventWithoutAFault();
    EXPECT_FALSE(FileExists(kFailureMarker));
}

TEST_F(FaultsOfTheLastFile, MarkTheTransportAgainWhenTheFileIsDelivered) {
    ReachLastFile({"-t"});
    harness->Logs(32, "processing 'transportException' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    Completes("EVENT1", "video1", 1);
    harness->Logs(32, "processing 'transportException' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    EXPECT_TRUE(FileExists(kFailureMarker));
    Ends();
    EXPECT_TRUE(FileExists(kFailureMarker)) << "nobody reported the failure";
}

TEST_F(FaultsOfTheLastFile, CallAnotherEventsTransportFailureMissingAndUnexpected) {
    ReachLastFile({"-t"});
    harness->Logs(32, "processing 'transportException' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    dvr->Sends(TransportException("E9"));
    harness->Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'E9'");
    harness->Logs(2, "'reid' attribute missing from TRANSPORT_EXCEPTION message");
    harness->Logs(2, "'reid' attribute does not match expected: 'EVENT1'");
    harness->Logs(32, "filesToReceive size = 1");
    EXPECT_FALSE(FileExists(kFailureMarker));
    RequestsTheLastFile();
    Ends();
}

TEST_F(FaultsOfTheLastFile, MissTheReidOfATransportFailure) {
    ReachLastFile({"-t"});
    harness->Logs(32, "processing 'transportException' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    dvr->Sends(Message("TRANSPORT_EXCEPTION"));
    harness->Logs(2, "'reid' attribute missing from TRANSPORT_EXCEPTION message");
    harness->Logs(32, "filesToReceive size = 1");
    EXPECT_FALSE(FileExists(kFailureMarker));
    RequestsTheLastFile();
    Ends();
}

/// The commands that set and remove the marker wait at a gate, so that a request sent before them shows.
class SlowMarker : public FaultsOfTheLastFile {
 protected:
    void SetUp() override {
        ASSERT_EQ(0, mkdir("/mnt/commands", 0755));
        ASSERT_EQ(0, mkfifo("/mnt/gate", 0600));
        WriteCommand("touch", ": > \"$1\"");
        WriteCommand("rm", "unlink \"$1\"");
        slow_.commandFolder = "/mnt/commands";
    }

    /// The command has been started and waits, and the harness waits for it. Then lets it go on.
    void WaitsFor(const std::string& command, Here here = Here::current()) {
        const std::string started = "/mnt/" + command + ".started";
        if (not Until([&] { return FileExists(started); })) {
            FailAt(here, command + " was not started");
        }
        EXPECT_FALSE(dvr->HasSomethingToRead()) << "requested ahead of " << command;
        std::ofstream gate("/mnt/gate");
        gate << "open\n";
    }

    Launch slow_;

 private:
    static void WriteCommand(const std::string& name, const std::string& action) {
        const std::string path = "/mnt/commands/" + name;
        std::ofstream(path) << "#!/bin/sh\n: > /mnt/" << name << ".started\nread line < /mnt/gate\n"
                            << action << "\n";
        ASSERT_EQ(0, chmod(path.c_str(), 0755));
    }
};

TEST_F(SlowMarker, IsSetAheadOfTheRequestAndRemovedAheadOfTheNext) {
    ReachLastFile({"-t"}, slow_);
    harness->Logs(32, "processing 'transportException' option");
    WaitsFor("touch");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    EXPECT_TRUE(FileExists(kFailureMarker));
    dvr->Sends(TransportException("EVENT1"));
    harness->Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'EVENT1'");
    WaitsFor("rm");
    harness->Logs(32, "filesToReceive size = 1");
    EXPECT_FALSE(FileExists(kFailureMarker));
    RequestsTheLastFile();
    Ends();
}

class FaultsReportedUnprovoked : public Dialect20 {
 protected:
    /// The marker is removed whether or not it exists, and the command complains if it does not.
    void EndsWithAComplaintOfRm(Here here = Here::current()) {
        harness->StopsOnInterrupt(here);
        dvr->ReceivesEnd(here);
        EXPECT_EQ(0u, harness->StandardError().find("rm: "));
        EXPECT_NE(std::string::npos, harness->StandardError().find(kFailureMarker));
    }
};

TEST_F(FaultsReportedUnprovoked, TransportFailureDropsTheFile) {
    Start();
    ReachesFirstFile("EVENT1", {"meta.xml", "video1"});
    dvr->Sends(TransportException("EVENT1"));
    harness->Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'EVENT1'");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "calling SendFileRequest(EVENT1/video1, false)");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    EndsWithAComplaintOfRm();
}

TEST_F(FaultsReportedUnprovoked, TransportFailureCancelsTheFaultAhead) {
    Start({"-t"});
    ReachesFirstFile("EVENT1", {"meta.xml", "video1"});
    dvr->Sends(TransportException("EVENT1"));
    harness->Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'EVENT1'");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "calling SendFileRequest(EVENT1/video1, false)");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    EndsWithAComplaintOfRm();
}

TEST_F(FaultsReportedUnprovoked, TransportFailureCompletesTheEventWhenNoFileIsAwaited) {
    Start();
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    dvr->Sends(TransportException("E1"));
    harness->Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'E1'");
    harness->Logs(2, "'reid' attribute missing from TRANSPORT_EXCEPTION message");
    harness->Logs(2, "'reid' attribute does not match expected: ''");
    harness->Logs(32, "filesToReceive size = 0");
    ReceivesEventXferComplete("E1");
    EndsWithAComplaintOfRm();
}

TEST_F(FaultsReportedUnprovoked, TransportFailureCompletesTheEmptyEventWhenThereIsNone) {
    Start();
    dvr->Sends(TransportException(""));
    harness->Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = ''");
    harness->Logs(32, "filesToReceive size = 0");
    ReceivesEventXferComplete("");
    EndsWithAComplaintOfRm();
}

}  // namespace
