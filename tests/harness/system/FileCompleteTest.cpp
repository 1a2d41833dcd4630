#include <gtest/gtest.h>

#include "tests/support/Dialogue.h"

namespace {

class FileComplete20 : public Dialect20 {
 protected:
    /// Waits for a.xml and then for b of the event E1.
    void SetUp() override {
        Start();
        ReachesFirstFile("E1", {"a.xml", "b"});
    }

    void StillAwaitsTheFirstFile() {
        Completes("E1", "a.xml", 1);
        harness->Logs(32, "calling SendFileRequest(E1/b, false)");
        dvr->Receives(v2::GetFile("E1", "b"));
        Ends();
    }
};

TEST_F(FileComplete20, IgnoresACompletionWithoutReid) {
    dvr->Sends(Message("FILE_COMPLETE", " file=\"a.xml\" hashCode=\"H\""));
    harness->Logs(2, "Got FILE_COMPLETE without both reid and file");
    StillAwaitsTheFirstFile();
}

TEST_F(FileComplete20, IgnoresACompletionWithoutFile) {
    dvr->Sends(Message("FILE_COMPLETE", " reid=\"E1\" hashCode=\"H\""));
    harness->Logs(2, "Got FILE_COMPLETE without both reid and file");
    StillAwaitsTheFirstFile();
}

TEST_F(FileComplete20, IgnoresACompletionOfAnotherFile) {
    dvr->Sends(FileComplete("E1", "b", " hashCode=\"H\""));
    harness->Logs(
        1,
        "invalid file in FILE_COMPLETE: <msg req=\"FILE_COMPLETE\" reid=\"E1\" file=\"b\" hashCode=\"H\" />");
    StillAwaitsTheFirstFile();
}

TEST_F(FileComplete20, HeedsTheCaseOfACompletion) {
    dvr->Sends(FileComplete("e1", "a.xml"));
    harness->Logs(1,
                  "invalid file in FILE_COMPLETE: <msg req=\"FILE_COMPLETE\" reid=\"e1\" file=\"a.xml\" />");
    StillAwaitsTheFirstFile();
}

using FileComplete20Unasked = Dialect20;

TEST_F(FileComplete20Unasked, IsInvalidWhileNoFileIsAwaited) {
    Start();
    dvr->Sends(FileComplete("E1", "m1"));
    harness->Logs(1, "invalid file in FILE_COMPLETE: <msg req=\"FILE_COMPLETE\" reid=\"E1\" file=\"m1\" />");
    dvr->Sends(FileComplete("", ""));
    harness->Logs(1, "invalid file in FILE_COMPLETE: <msg req=\"FILE_COMPLETE\" reid=\"\" file=\"\" />");
    Opens();
    Ends();
}

TEST_F(FileComplete20, SavesEachReportOfACompleteEvent) {
    Completes("E1", "a.xml", 1);
    harness->Logs(32, "calling SendFileRequest(E1/b, false)");
    dvr->Receives(v2::GetFile("E1", "b"));
    Completes("E1", "b", 0);
    ReceivesEventXferComplete("E1");
    EXPECT_EQ("<msg req=\"EVENT_XFER_COMPLETE\" reid=\"E1\" protocolVersion=\"2.0\" />\n",
              ReadFile("/mnt/hd/outgoingETCstring"));
    Acknowledges("E1");
    ReceivesDone();
    Lists({"X"});
    dvr->Receives(v2::NextEvent("X"));
    Describes("X", Description("X", {"m"}));
    dvr->Receives(v2::GetFile("X", "m"));
    Completes("X", "m", 0);
    ReceivesEventXferComplete("X");
    EXPECT_EQ("<msg req=\"EVENT_XFER_COMPLETE\" reid=\"X\" protocolVersion=\"2.0\" />\n",
              ReadFile("/mnt/hd/outgoingETCstring"));
    Ends();
}

}  // namespace
