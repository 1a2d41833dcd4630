#include <gtest/gtest.h>

#include "tests/support/LastFile.h"

namespace {

// -r: a new hash.

class Rehash : public FaultsOfTheLastFile {
 protected:
    /// Has received the last file with this hash, if any, and requested it again with a new hash.
    void RequestWithANewHash(const std::string& hash = " hashCode=\"H1\"",
                             const std::vector<std::string>& switches = {"-r"}) {
        ReachLastFile(switches);
        harness->Logs(32, "processing 'rehash' option");
        dvr->Receives(v2::GetFile("EVENT1", "video1"));
        Completes("EVENT1", "video1", 1, hash);
        RequestsTheLastFile(true);
    }

    /// The answer to that request, and the lines logged when its hash is compared.
    void Compares(const std::string& attributes, const std::vector<LogLine>& lines) {
        dvr->Sends(FileComplete("EVENT1", "video1", attributes));
        for (const LogLine& line : lines) {
            harness->Logs(line.level, line.text);
        }
        harness->Logs(64, "Got FILE_COMPLETE for: reid=EVENT1  file=video1");
        harness->Logs(32, "filesToReceive size = 0");
        ReceivesEventXferComplete("EVENT1");
    }
};

TEST_F(Rehash, RequestsTheLastFileTwiceAndFindsTheSameHash) {
    RequestWithANewHash();
    Compares(" hashCode=\"H1\" length=\"1234\"", {{16, "rehash resulted in same hash: 'H1'  len=1234"}});
    ExportsASecondEventWithoutAFault();
}

TEST_F(Rehash, FindsANewHash) {
    RequestWithANewHash();
    Compares(" hashCode=\"H2\" length=\"99\"",
             {{16, "rehash resulted in new hash: old='H1'  new='H2'  len=99"}});
    Ends();
}

TEST_F(Rehash, MissesTheLength) {
    RequestWithANewHash();
    Compares(" hashCode=\"H1\"", {{2, "'length' attribute not present when requested"},
                                  {16, "rehash resulted in same hash: 'H1'  len="}});
    Ends();
}

TEST_F(Rehash, MissesTheLengthOfANewHash) {
    RequestWithANewHash();
    Compares(" hashCode=\"h1\"", {{2, "'length' attribute not present when requested"},
                                  {16, "rehash resulted in new hash: old='H1'  new='h1'  len="}});
    Ends();
}

TEST_F(Rehash, MissesTheHash) {
    RequestWithANewHash();
    Compares(" length=\"5\"", {{2, "'hashCode' attribute not present when requested"}});
    Ends();
}

TEST_F(Rehash, MissesBoth) {
    RequestWithANewHash();
    Compares("", {{2, "'length' attribute not present when requested"},
                  {2, "'hashCode' attribute not present when requested"}});
    Ends();
}

TEST_F(Rehash, ComparesWithTheHashOfAnEarlierFileWhereTheLastHadNone) {
    RequestWithANewHash("");
    Compares(" hashCode=\"H0\" length=\"5\"", {{16, "rehash resulted in same hash: 'H0'  len=5"}});
    Ends();
}

TEST_F(Rehash, KeepsTheHashOfACompletionOfAnotherFile) {
    ReachLastFile({"-r"});
    harness->Logs(32, "processing 'rehash' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    dvr->Sends(FileComplete("EVENT1", "other", " hashCode=\"HX\""));
    harness->Logs(1,
                  "invalid file in FILE_COMPLETE: <msg req=\"FILE_COMPLETE\" reid=\"EVENT1\" file=\"other\" "
                  "hashCode=\"HX\" />");
    Completes("EVENT1", "video1", 1);
    RequestsTheLastFile(true);
    Compares(" hashCode=\"HX\" length=\"5\"", {{16, "rehash resulted in same hash: 'HX'  len=5"}});
    Ends();
}

TEST_F(Rehash, DoesNotKeepTheHashOfACompletionWithoutFile) {
    RequestWithANewHash();
    dvr->Sends(Message("FILE_COMPLETE", " reid=\"EVENT1\" hashCode=\"HX\""));
    harness->Logs(2, "Got FILE_COMPLETE without both reid and file");
    Compares(" hashCode=\"H1\" length=\"5\"", {{16, "rehash resulted in same hash: 'H1'  len=5"}});
    Ends();
}

TEST_F(Rehash, IsComparedAheadOfTheCheckOfTheFile) {
    RequestWithANewHash();
    dvr->Sends(FileComplete("EVENT1", "other", " hashCode=\"H2\" length=\"5\""));
    harness->Logs(16, "rehash resulted in new hash: old='H1'  new='H2'  len=5");
    harness->Logs(1,
                  "invalid file in FILE_COMPLETE: <msg req=\"FILE_COMPLETE\" reid=\"EVENT1\" file=\"other\" "
                  "hashCode=\"H2\" length=\"5\" />");
    Compares(" hashCode=\"H2\" length=\"5\"", {});
    Ends();
}

TEST_F(Rehash, IsNeverRequestedWithXferInProgress) {
    ReachLastFile({"-r", "-x"});
    harness->Logs(32, "processing 'rehash' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    Completes("EVENT1", "video1", 1, " hashCode=\"H1\"");
    harness->Logs(32, "processing 'xferInProgress' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    Compares(" hashCode=\"H2\" length=\"7\"",
             {{16, "rehash resulted in new hash: old='H1'  new='H2'  len=7"}});
    ExportsASecondEventWithoutAFault();
}

}  // namespace
