#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "rig/dvr/recordings/EventKinds.h"
#include "rig/dvr/recordings/FolderRecordings.h"
#include "rig/dvr/recordings/Recordings.h"
#include "rig/dvr/recordings/SyntheticRecordings.h"
#include "tests/rig/dvr/Failures.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using rig::dvr::Digest;
using rig::dvr::DigestOf;
using rig::dvr::Event;
using rig::dvr::ExitStatus;
using rig::dvr::FolderRecordings;
using rig::dvr::SyntheticRecordings;
using Names = std::vector<std::string>;

TEST(Event, TakesTheFirstXmlFileAsItsMetadata) {
    const Event event = Event::FromFiles("E", {"a.ts", "b.xml", "c.xml"});
    EXPECT_EQ(event.metadata, "b.xml");
    EXPECT_EQ(event.Files(), (Names{"b.xml", "a.ts", "c.xml"}));
}

TEST(Event, TakesItsFirstFileAsItsMetadataIfNoneIsXml) {
    const Event event = Event::FromFiles("E", {"a.ts", "b.ts"});
    EXPECT_EQ(event.metadata, "a.ts");
    EXPECT_EQ(event.streams, (std::vector<Names>{{"b.ts"}}));
}

TEST(Event, HasAStreamForEachFolder) {
    const Event event = Event::FromFiles("E", {"audio", "front/1", "front/2", "m.xml", "rear/1"});
    EXPECT_EQ(event.streams, (std::vector<Names>{{"audio"}, {"front/1", "front/2"}, {"rear/1"}}));
}

TEST(Event, IsDescribedAsADocument) {
    EXPECT_EQ(
        (Event{"E&1", "m.xml", {{"a", "b"}, {"c"}}}.Describe()),
        "<recording-event reid=\"E&amp;1\"><video><metadata name=\"m.xml\"/><streams><stream><file "
        "name=\"a\"/>"
        "<file name=\"b\"/></stream><stream><file name=\"c\"/></stream></streams></video></recording-event>");
}

TEST(Event, IsDescribedWithoutStreamsIfItHasNone) {
    EXPECT_EQ((Event{"E", "m", {}}.Describe()),
              "<recording-event reid=\"E\"><video><metadata name=\"m\"/></video></recording-event>");
}

TEST(Event, IsDescribedWithoutVideoIfItHasNoFile) {
    const Event event{"E", "", {}};
    EXPECT_EQ(event.Describe(), "<recording-event reid=\"E\"/>");
    EXPECT_EQ(event.Files(), Names());
}

TEST(FolderRecordings, AreSortedAndLeaveOutFilesNextToTheEvents) {
    const TemporaryFolder folder;
    folder.Write("E2/x", "");
    folder.Write("E10/x", "");
    folder.Write("E1/x", "");
    folder.Write("README", "");
    EXPECT_EQ(FolderRecordings(folder.Path()).Events(), (Names{"E1", "E10", "E2"}));
}

TEST(FolderRecordings, KeepAnyName) {
    const Names names{" a  \"b\" & 'c' <d>", "M\xc3\xbcnchen", std::string(200, 'n')};
    const TemporaryFolder folder;
    for (const std::string& name : names) {
        folder.Write((std::filesystem::path(name) / name).string(), name);
    }
    const FolderRecordings recordings(folder.Path());
    for (const std::string& name : names) {
        EXPECT_TRUE(recordings.Has(name));
        EXPECT_EQ(recordings.Find(name).metadata, name);
        EXPECT_EQ(DigestOf(recordings, name, name).length, name.size());
    }
    EXPECT_FALSE(recordings.Has("a"));
    EXPECT_FALSE(recordings.Has(".."));
}

TEST(FolderRecordings, HaveTheFilesOfAnyFolderTree) {
    const TemporaryFolder folder;
    folder.Write("E/m.xml", "");
    folder.Write("E/a/b/c/d/e/f.ts", "");
    folder.Write("E/a/f.ts", "");
    folder.Write("elsewhere", "content");
    std::filesystem::create_directories(folder.Path() / "E/empty/folder");
    std::filesystem::create_symlink("../elsewhere", folder.Path() / "E/link");
    std::filesystem::create_symlink("nowhere", folder.Path() / "E/dangling");
    std::filesystem::create_directory_symlink("..", folder.Path() / "E/loop");
    const FolderRecordings recordings(folder.Path() / "");
    EXPECT_EQ(recordings.Find("E").Files(), (Names{"m.xml", "link", "a/f.ts", "a/b/c/d/e/f.ts"}));
    EXPECT_EQ(DigestOf(recordings, "E", "link").length, 7U);
}

TEST(FolderRecordings, AreDigestedWithSha256) {
    const TemporaryFolder folder;
    folder.Write("E/abc", "abc");
    folder.Write("E/empty", "");
    folder.Write("E/million", std::string(1'000'000, 'a'));
    const FolderRecordings recordings(folder.Path());
    const Digest abc = DigestOf(recordings, "E", "abc");
    EXPECT_EQ(abc.hashCode, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(abc.length, 3U);
    const Digest empty = DigestOf(recordings, "E", "empty");
    EXPECT_EQ(empty.hashCode, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(empty.length, 0U);
    const Digest million = DigestOf(recordings, "E", "million");
    EXPECT_EQ(million.hashCode, "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
    EXPECT_EQ(million.length, 1'000'000U);
}

TEST(FolderRecordings, AreReadInPieces) {
    const TemporaryFolder folder;
    folder.Write("E/big", std::string(1'000'000, 'a'));
    std::size_t largest = 0;
    FolderRecordings(folder.Path()).Read("E", "big", [&](const char*, std::size_t count) {
        largest = std::max(largest, count);
    });
    EXPECT_GT(largest, 0U);
    EXPECT_LE(largest, 256U * 1024U);
}

TEST(FolderRecordings, MustExist) {
    EXPECT_EQ(
        FailureOf(ExitStatus::Unusable, [] { FolderRecordings("/nonexistent"); }),
        "--recordings: expected a folder that can be read, found '/nonexistent': No such file or directory");
}

TEST(FolderRecordings, MustHaveAnEvent) {
    const TemporaryFolder folder;
    folder.Write("file", "");
    EXPECT_EQ(FailureOf(ExitStatus::Unusable, [&] { FolderRecordings{folder.Path()}; }),
              "--recordings: expected a folder for each event, found '" + folder.Path().string() +
                  "': there is none in it");
}

TEST(FolderRecordings, MustHaveAFileInEachEvent) {
    const TemporaryFolder folder;
    folder.Write("E1/file", "");
    std::filesystem::create_directory(folder.Path() / "E2");
    EXPECT_EQ(FailureOf(ExitStatus::Unusable, [&] { FolderRecordings{folder.Path()}; }),
              "--recordings: expected at least one file in each event's folder, found '" +
                  (folder.Path() / "E2").string() + "': it has none");
}

TEST(FolderRecordings, SayWhichFileVanished) {
    const TemporaryFolder folder;
    folder.Write("E1/file", "");
    const FolderRecordings recordings(folder.Path());
    std::filesystem::remove(folder.Path() / "E1/file");
    EXPECT_EQ(FailureOf(ExitStatus::Unusable, [&] { DigestOf(recordings, "E1", "file"); }),
              "--recordings: expected a file that can be read, found '" +
                  (folder.Path() / "E1/file").string() + "': No such file or directory");
}

TEST(SyntheticRecordings, AreTheSameInEveryRun) {
    const SyntheticRecordings first;
    const SyntheticRecordings second;
    ASSERT_EQ(first.Events(), (Names{"EVT-0001", "EVT-0002", "EVT-0003"}));
    for (const std::string& event : first.Events()) {
        ASSERT_EQ(first.Find(event).Files(), second.Find(event).Files());
        for (const std::string& file : first.Find(event).Files()) {
            EXPECT_EQ(DigestOf(first, event, file).hashCode, DigestOf(second, event, file).hashCode);
        }
    }
    EXPECT_EQ(DigestOf(first, "EVT-0001", "front-1.ts").hashCode,
              "214b0f533320ab76cf6426121a304dc5a727dc8620e19cff49fb823f1db08ec0");
}

TEST(MadeUpEvents, OfAllKindsHaveNamesOfTheirOwn) {
    std::set<std::string> names;
    const std::vector<Event> events = rig::dvr::MakeUpEvents({"all"}, 1);
    for (const Event& event : events) {
        names.insert(event.id);
    }
    EXPECT_LT(1000U, names.size());
    EXPECT_EQ(events.size(), names.size());
    EXPECT_EQ(events.back().metadata, "");
}

TEST(MadeUpEvents, OfAllKindsHaveFilesWhereA2_0HarnessWouldWaitForThem) {
    for (const Event& event : rig::dvr::MakeUpEvents({"all"}, 2)) {
        EXPECT_NE(event.metadata, "") << event.id;
    }
}

TEST(SyntheticRecordings, BeginWithAnEventThatGetsFileFaults) {
    const SyntheticRecordings recordings;
    EXPECT_GE(recordings.Find("EVT-0001").Files().size(), 2U);
    EXPECT_EQ(recordings.Find("EVT-0003").Files().size(), 1U);
}

}  // namespace
