#include <gtest/gtest.h>

#include "tests/support/Dialogue.h"

namespace {

class FileComplete10 : public Dialect10 {
 protected:
    /// Waits for a.xml and then for b of the event E1.
    void SetUp() override {
        Connect();
        Opens();
        Describes("E1", {"a.xml", "b"});
    }

    /// The awaited file is still a.xml.
    void StillAwaitsTheFirstFile() {
        Completes("E1", "a.xml");
        dvr->Receives(v1::GetFile("E1", "b"));
        Ends();
    }
};

TEST_F(FileComplete10, IgnoresACompletionWithoutReid) {
    dvr->Sends(Message("FILE_COMPLETE", " file=\"a.xml\""));
    harness->Logs(2, "Got FILE_COMPLETE without both reid and file");
    StillAwaitsTheFirstFile();
}

TEST_F(FileComplete10, IgnoresACompletionWithoutFile) {
    dvr->Sends(Message("FILE_COMPLETE", " reid=\"E1\""));
    harness->Logs(2, "Got FILE_COMPLETE without both reid and file");
    StillAwaitsTheFirstFile();
}

TEST_F(FileComplete10, IgnoresACompletionOfAnotherFile) {
    dvr->Sends(FileComplete("E1", "b", " length='7'"));
    harness->Logs(
        1,
        "invalid file in FILE_COMPLETE: <msg req=\"FILE_COMPLETE\" reid=\"E1\" file=\"b\" length=\"7\" />");
    StillAwaitsTheFirstFile();
}

TEST_F(FileComplete10, IgnoresACompletionOfAnotherEvent) {
    dvr->Sends(FileComplete("E2", "a.xml"));
    harness->Logs(1,
                  "invalid file in FILE_COMPLETE: <msg req=\"FILE_COMPLETE\" reid=\"E2\" file=\"a.xml\" />");
    StillAwaitsTheFirstFile();
}

TEST_F(FileComplete10, HeedsTheCaseOfACompletion) {
    dvr->Sends(FileComplete("e1", "a.xml"));
    harness->Logs(1,
                  "invalid file in FILE_COMPLETE: <msg req=\"FILE_COMPLETE\" reid=\"e1\" file=\"a.xml\" />");
    dvr->Sends(FileComplete("E1", "A.xml"));
    harness->Logs(1,
                  "invalid file in FILE_COMPLETE: <msg req=\"FILE_COMPLETE\" reid=\"E1\" file=\"A.xml\" />");
    StillAwaitsTheFirstFile();
}

TEST_F(FileComplete10, PrintsTheWholeDocumentOfAnInvalidCompletion) {
    dvr->Sends(
        "<?xml version=\"1.0\"?><!--x--><msg req=\"FILE_COMPLETE\" reid=\"E9\" file=\"b\"><a>t</a></msg>");
    harness->Logs(1,
                  "invalid file in FILE_COMPLETE: <?xml version=\"1.0\" ?><!--x--><msg req=\"FILE_COMPLETE\" "
                  "reid=\"E9\" file=\"b\"><a>t</a></msg>");
    StillAwaitsTheFirstFile();
}

using FileComplete10Unasked = Dialect10;

TEST_F(FileComplete10Unasked, IsInvalidWhileNoFileIsAwaited) {
    Connect();
    dvr->Sends(FileComplete("E1", "m1"));
    harness->Logs(1, "invalid file in FILE_COMPLETE: <msg req=\"FILE_COMPLETE\" reid=\"E1\" file=\"m1\" />");
    dvr->Sends(FileComplete("", ""));
    harness->Logs(1, "invalid file in FILE_COMPLETE: <msg req=\"FILE_COMPLETE\" reid=\"\" file=\"\" />");
    Opens();
    Ends();
}

}  // namespace
