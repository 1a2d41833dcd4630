#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "rig/base/Descriptor.h"
#include "rig/log/LogReader.h"
#include "rig/merge/Part.h"
#include "tests/rig/merge/MadeUp.h"

namespace {

namespace fs = std::filesystem;

/// What cannot be merged: one line, status 66, and no folder.
class BadPartsTest : public MergeTest {
 protected:
    BadPartsTest() { Campaign("a", Around({"xfer-2.0"})); }

    std::string RefusalOf(const std::vector<std::string>& parts = {"a"}) const { return Refusal(66, parts); }
};

TEST_F(BadPartsTest, IsAFolderWithoutACampaign) {
    fs::create_directory(PathOf("b"));
    folder_.Write("c", "");
    const std::string expected = "/campaign.json: expected the record of a campaign, found nothing\n";
    EXPECT_EQ(RefusalOf({"a", "b"}), "b" + expected);
    EXPECT_EQ(RefusalOf({"c"}), "c" + expected);
    EXPECT_EQ(RefusalOf({"nowhere"}), "nowhere" + expected);
}

TEST_F(BadPartsTest, IsARecordCutAtAnyByte) {
    const std::string text = JsonOf("a/campaign.json").dump();
    for (std::size_t length = 0; length < text.size(); length += 41) {
        folder_.Write("a/campaign.json", text.substr(0, length));
        try {
            rig::merge::ReadPart(PathOf("a"));
            ADD_FAILURE() << length << " bytes were taken";
        } catch (const rig::log::Unreadable& refusal) {
            const std::string expected =
                "a/campaign.json: expected the record of a campaign (format 1), found ";
            EXPECT_NE(std::string(refusal.what()).find(expected), std::string::npos) << refusal.what();
        }
    }
}

TEST_F(BadPartsTest, IsAnotherKindOfRecord) {
    const std::string expected = "a/campaign.json: expected the record of a campaign (format 1), found ";
    Change("a/campaign.json", [](Json& json) { json["format"] = 2; });
    EXPECT_EQ(RefusalOf(), expected + "format 2\n");
    Change("a/campaign.json", [](Json& json) {
        json["format"] = 1;
        json["commandLine"] = Strings{"velloran-rig", "run", "--search", "5"};
    });
    EXPECT_EQ(RefusalOf(), expected + "a search\n");
    Campaign("b", Around({"event-2.0"}));
    EXPECT_EQ(Merge({"b", "--out", "merged"}).status, 0);
    EXPECT_EQ(RefusalOf({"merged"}),
              "merged/campaign.json: expected the record of a campaign (format 1), found "
              "campaigns that are merged already\n");
}

TEST_F(BadPartsTest, LacksEvidence) {
    fs::remove(PathOf("a/cases/xfer-2.0/harness.log"));
    EXPECT_EQ(RefusalOf(),
              "a/cases/xfer-2.0/harness.log: expected the evidence that case.json names, found nothing\n");
    fs::remove(PathOf("a/cases/xfer-2.0/case.json"));
    EXPECT_EQ(RefusalOf().find("a/cases/xfer-2.0/case.json: expected the record of a case, found: "), 0U);
    fs::remove_all(PathOf("a/cases"));
    EXPECT_EQ(RefusalOf().find("a/cases/clean-2.0/case.json: expected the record of a case, found: "), 0U);
}

TEST_F(BadPartsTest, HasEvidenceThatIsCut) {
    folder_.Write("a/cases/xfer-2.0/verdict.json", "{\"runs\": [");
    EXPECT_EQ(RefusalOf().find("a/cases/xfer-2.0/verdict.json: expected a case's verdict, found: "), 0U);
    folder_.Write("a/cases/xfer-2.0/case.json", "{");
    EXPECT_EQ(RefusalOf().find("a/cases/xfer-2.0/case.json: expected the record of a case, found: "), 0U);
}

TEST_F(BadPartsTest, PassesWithoutAVerdict) {
    Change("a/cases/xfer-2.0/case.json", [](Json& json) { json["files"] = Strings{"case.json"}; });
    EXPECT_EQ(RefusalOf(),
              "a/cases/xfer-2.0: expected the verdict of a case that has come to its end, found none\n");
}

TEST_F(BadPartsTest, HasALinkOrAPipeInItsEvidence) {
    const std::string place = PathOf("a/cases/xfer-2.0/more");
    fs::create_symlink("/etc/passwd", place);
    EXPECT_EQ(RefusalOf(),
              "a/cases/xfer-2.0/more: expected a file or a folder of evidence, found a symbolic link\n");
    fs::remove(place);
    ASSERT_EQ(mkfifo(place.c_str(), 0600), 0);
    EXPECT_EQ(RefusalOf(),
              "a/cases/xfer-2.0/more: expected a file or a folder of evidence, found neither a file nor a "
              "folder\n");
    fs::remove(place);
    fs::rename(PathOf("a/cases"), PathOf("elsewhere"));
    fs::create_directory_symlink("../elsewhere", PathOf("a/cases"));
    EXPECT_EQ(RefusalOf(), "a/cases: expected a folder of evidence, found a symbolic link\n");
}

TEST_F(BadPartsTest, HasNamesThatLeadElsewhere) {
    const std::string expected = "a/campaign.json: expected the record of a campaign (format 1), found the ";
    Change("a/campaign.json", [](Json& json) { json["cases"][1]["folder"] = "../b"; });
    EXPECT_EQ(RefusalOf(), expected + "folder '../b'\n");
    for (const char* id : {"../x", "..", "", "a/b"}) {
        Change("a/campaign.json", [id](Json& json) {
            json["cases"][1]["id"] = id;
            json["cases"][1]["folder"] = std::string("cases/") + id;
        });
        EXPECT_EQ(RefusalOf(), expected + "name '" + id + "'\n");
    }
    Campaign("b", Around({"xfer-2.0"}));
    Change("b/cases/xfer-2.0/case.json", [](Json& json) {
        json["files"] = Strings{"verdict.json", "../../../a"};
    });
    EXPECT_EQ(
        RefusalOf({"b"}),
        "b/cases/xfer-2.0/../../../a: expected the evidence that case.json names, found another place\n");
}

TEST_F(BadPartsTest, IsThereTwice) {
    EXPECT_EQ(RefusalOf({"a", "./a"}), "./a: expected each campaign once, found the same as in a\n");
    fs::copy(PathOf("a"), PathOf("b"), fs::copy_options::recursive);
    Change("b/campaign.json", [](Json& json) { json["state"] = "running"; });
    EXPECT_EQ(RefusalOf({"a", "b"}), "b: expected each campaign once, found the same as in a\n");
}

TEST_F(BadPartsTest, StillRuns) {
    const rig::Descriptor folder(open(PathOf("a").c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(flock(folder.Number(), LOCK_EX), 0);
    EXPECT_EQ(RefusalOf(), "expected a folder to which no other campaign writes, found 'a'\n");
}

TEST_F(BadPartsTest, HasTheFolderForAllOfItInIt) {
    const ProgramResult inside = Merge({"a", "--out", "a/cases/out"});
    EXPECT_EQ(inside.status, 64);
    EXPECT_EQ(inside.errors,
              "velloran-rig merge: --out: expected a folder outside the parts, found 'a/cases/out' in 'a'\n");
    EXPECT_FALSE(fs::exists(PathOf("a/cases/out")));
    const ProgramResult full = Merge({"a", "--out", "a"});
    EXPECT_EQ(full.status, 64);
    EXPECT_EQ(full.errors, "velloran-rig merge: --out: expected a folder that is new or empty, found a\n");
}

TEST_F(BadPartsTest, WantsAFolderThatCannotBeWritten) {
    folder_.Write("file", "");
    const ProgramResult result = Merge({"a", "--out", "file/out"});
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(CountLines(result.errors), 1U) << result.errors;
    EXPECT_NE(result.errors.find("expected to write evidence there, found: Not a directory"),
              std::string::npos)
        << result.errors;
}

}  // namespace
