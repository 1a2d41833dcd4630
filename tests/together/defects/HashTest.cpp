#include "tests/together/defects/DefectTest.h"

// What a FILE_COMPLETE says about the file's content. The harness looks at it if it has asked for a new hash.

namespace {

struct OnRehash : Defect20 {
    /// Up to the FILE_COMPLETE for the request with rehash="true".
    void Rehashes(const std::vector<std::string>& place = {}, Here here = Here::current()) {
        Start({"-r"}, place, "", here);
        ReachesFirstFile(here);
        CompletesFile("Meta.xml", 1, here);
        Logs(32, "processing 'rehash' option", here);
        CompletesFile("Video.ts", 1, here);
        RequestsVideo(true, here);
    }

    /// The export without -r does not reveal the defect.
    void GoesUnnoticed(Here here = Here::current()) {
        Start({}, {}, "", here);
        ReachesFirstFile(here);
        ExportsFiles(here);
        Completes("exported 1 of 1 event, 2 files, 9 bytes", here);
        Marks({"FILE_COMPLETE", "FILE_COMPLETE"}, here);
    }

    const std::vector<std::string> kEach = {"FILE_COMPLETE", "FILE_COMPLETE", "FILE_COMPLETE"};
};

struct MissingHash20 : OnRehash {};

TEST_F(MissingHash20, IsReportedOnARehash) {
    Rehashes();
    Logs(2, "'hashCode' attribute not present when requested");
    ExportsRest();
    Completes();
    Marks(kEach);
}

TEST_F(MissingHash20, IsReportedBehindAMissingLength) {
    Rehashes({"--defect", "missing-length"});
    Logs(2, "'length' attribute not present when requested");
    Logs(2, "'hashCode' attribute not present when requested");
    ExportsRest();
    Completes();
    Marks(kEach);
}

TEST_F(MissingHash20, OnTheFirstHashLeavesTheOneBeforeToCompareWith) {
    Rehashes({"--on", "FILE_COMPLETE:2"});
    Logs(16, std::string("rehash resulted in new hash: old='") + kMetadataHash + "'  new='" + kVideoHash +
                 "'  len=5");
    ExportsRest();
    Completes();
    Marks({"FILE_COMPLETE"});
}

TEST_F(MissingHash20, GoesUnnoticedOtherwise) {
    GoesUnnoticed();
}

struct MissingLength20 : OnRehash {};

TEST_F(MissingLength20, IsReportedOnARehash) {
    Rehashes();
    Logs(2, "'length' attribute not present when requested");
    Logs(16, std::string("rehash resulted in same hash: '") + kVideoHash + "'  len=");
    ExportsRest();
    Completes();
    Marks(kEach);
}

TEST_F(MissingLength20, GoesUnnoticedOtherwise) {
    GoesUnnoticed();
}

struct NewHash20 : OnRehash {};

TEST_F(NewHash20, IsReportedOnARehash) {
    // The random numbers of this seed; the C++ library's distribution is part of it.
    Rehashes({"--seed", "1", "--on", "FILE_COMPLETE:3"});
    const LogLine line = NextLine();
    const std::string start = std::string("rehash resulted in new hash: old='") + kVideoHash + "'  new='";
    ASSERT_EQ(16U, line.level) << line;
    ASSERT_EQ(start, line.text.substr(0, start.size()));
    const std::string hash = line.text.substr(start.size(), 64);
    EXPECT_EQ(start + hash + "'  len=5", line.text);
    EXPECT_EQ(std::string::npos, hash.find_first_not_of("0123456789abcdef"));
    ExportsRest();
    Completes();
    Marks({"FILE_COMPLETE"});
    Notes("seed 1");
}

TEST_F(NewHash20, IsAnotherEachTime) {
    Rehashes();
    const LogLine line = NextLine();
    ASSERT_TRUE(StartsWith(line.text, "rehash resulted in new hash: old='")) << line;
    EXPECT_EQ(std::string::npos, line.text.find(kVideoHash));
    ExportsRest();
    Completes();
    Marks(kEach);
}

TEST_F(NewHash20, GoesUnnoticedOtherwise) {
    GoesUnnoticed();
}

}  // namespace
