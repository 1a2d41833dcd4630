#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "rig/dvr/recordings/Delivery.h"
#include "tests/rig/dvr/Failures.h"
#include "tests/rig/dvr/FixedRecordings.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using rig::dvr::Delivery;
using rig::dvr::DeliveryFolder;
using rig::dvr::Event;
using rig::dvr::ExitStatus;
namespace fs = std::filesystem;

/// One event with one file besides its metadata; the test chooses the names.
class NamedRecordings : public rig::dvr::Recordings {
 public:
    NamedRecordings(const std::string& event, const std::string& file) : events_{event}, file_(file) {}
    const std::vector<std::string>& Events() const override { return events_; }
    Event Find(const std::string& event) const override { return {event, "m.xml", {{file_}}}; }
    Source Open(const std::string&, const std::string&) const override { return rig::dvr::SourceOf(file_); }
    std::string Origin() const override { return "a test"; }

 private:
    std::vector<std::string> events_;
    std::string file_;
};

/// @return the path and contents of each file below a folder
std::map<std::string, std::string> FilesIn(const fs::path& folder) {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_directory()) {
            std::ostringstream content;
            content << std::ifstream(entry.path(), std::ios::binary).rdbuf();
            files[entry.path().lexically_relative(folder).string()] = content.str();
        }
    }
    return files;
}

using Files = std::map<std::string, std::string>;

class DeliveryTest : public testing::Test {
 protected:
    fs::path Place() const { return folder_.Path() / "a" / "b"; }

    TemporaryFolder folder_;
    FixedRecordings recordings_;
};

TEST_F(DeliveryTest, CreatesItsFolderAndLeavesItEmpty) {
    const DeliveryFolder folder(Place(), recordings_);
    EXPECT_TRUE(fs::is_directory(Place()));
    EXPECT_EQ(FilesIn(folder_.Path()), Files());
}

TEST_F(DeliveryTest, CopiesAFileThatAppearsWhenItIsComplete) {
    const DeliveryFolder folder(Place(), recordings_);
    {
        Delivery delivery(folder, "EVT1", "a.ts");
        EXPECT_EQ(delivery.Copy(3), 3U);
        EXPECT_FALSE(fs::exists(Place() / "EVT1/a.ts"));
        EXPECT_EQ(FilesIn(Place() / "EVT1").size(), 1U) << "the temporary one, in the same folder";
        EXPECT_EQ(delivery.Copy(100), 1U);
        EXPECT_EQ(delivery.Copy(100), 0U);
        EXPECT_FALSE(fs::exists(Place() / "EVT1/a.ts"));
        delivery.Complete();
        EXPECT_EQ(FilesIn(Place()), (Files{{"EVT1/a.ts", "a.ts"}}));
    }
    EXPECT_EQ(FilesIn(Place()), (Files{{"EVT1/a.ts", "a.ts"}}));
}

TEST_F(DeliveryTest, LeavesNothingOfAnAbandonedFile) {
    const DeliveryFolder folder(Place(), recordings_);
    Delivery(folder, "EVT1", "a.ts").Copy(3);
    EXPECT_EQ(FilesIn(Place()), Files());
}

TEST_F(DeliveryTest, ReplacesAnEarlierCopyAsAWhole) {
    const DeliveryFolder folder(Place(), recordings_);
    folder_.Write("a/b/EVT1/a.ts", "an earlier and longer content");
    Delivery(folder, "EVT1", "a.ts").Copy(3);
    EXPECT_EQ(FilesIn(Place()), (Files{{"EVT1/a.ts", "an earlier and longer content"}}));
    Delivery again(folder, "EVT1", "a.ts");
    again.Copy(100);
    again.Complete();
    EXPECT_EQ(FilesIn(Place()), (Files{{"EVT1/a.ts", "a.ts"}}));
}

TEST_F(DeliveryTest, HasTheModeOfAnyNewFile) {
    const DeliveryFolder folder(Place(), recordings_);
    folder_.Write("other", "");
    Delivery delivery(folder, "EVT1", "a.ts");
    delivery.Complete();
    EXPECT_EQ(fs::status(Place() / "EVT1/a.ts").permissions(),
              fs::status(folder_.Path() / "other").permissions());
}

TEST_F(DeliveryTest, AcceptsAnyNameThatStaysInTheFolder) {
    for (const std::string& name :
         std::vector<std::string>{" a  \"b\" & 'c' <d>", "M\xc3\xbcnchen", std::string(255, 'n'), "...",
                                  "..a", "a\nb", "-rf", "\\"}) {
        const NamedRecordings recordings(name, name);
        const DeliveryFolder folder(Place(), recordings);
        Delivery delivery(folder, name, name);
        delivery.Copy(1000);
        delivery.Complete();
        EXPECT_EQ(FilesIn(Place()), (Files{{fs::path(name) / name, name}}));
        fs::remove_all(Place());
    }
}

TEST_F(DeliveryTest, MakesTheFoldersInsideAnEvent) {
    const NamedRecordings recordings("E", "front/left/1.ts");
    const DeliveryFolder folder(Place(), recordings);
    Delivery delivery(folder, "E", "front/left/1.ts");
    delivery.Complete();
    EXPECT_EQ(FilesIn(Place()), (Files{{"E/front/left/1.ts", ""}}));
}

TEST_F(DeliveryTest, CopiesALongFileInPieces) {
    recordings_.contents[{"EVT1", "a.ts"}] = std::string(1'000'000, 'x');
    const DeliveryFolder folder(Place(), recordings_);
    Delivery delivery(folder, "EVT1", "a.ts");
    std::size_t all = 0;
    while (const std::size_t count = delivery.Copy(Delivery::kMostBytes)) {
        all += count;
    }
    EXPECT_EQ(all, 1'000'000U);
}

TEST_F(DeliveryTest, RefusesEventsThatCannotNameAFolder) {
    for (const std::string& name : std::vector<std::string>{"..", ".", "", "/etc", "a/b", "../a"}) {
        EXPECT_EQ(
            FailureOf(ExitStatus::Unusable, [&] { DeliveryFolder(Place(), NamedRecordings(name, "a.ts")); }),
            "--deliver: expected events that can name a folder, found '" + name + "'");
    }
    EXPECT_FALSE(fs::exists(Place())) << "nothing is created for recordings that cannot be delivered";
}

TEST_F(DeliveryTest, RefusesFilesThatLeaveTheFolderOfTheirEvent) {
    for (const std::string& name :
         std::vector<std::string>{"..", ".", "", "/etc/passwd", "../a", "a/../../b", "a/..", "a//b", "a/"}) {
        EXPECT_EQ(
            FailureOf(ExitStatus::Unusable, [&] { DeliveryFolder(Place(), NamedRecordings("E", name)); }),
            "--deliver: expected files that stay in the folder of their event, found '" + name + "' in 'E'");
    }
    EXPECT_FALSE(fs::exists(Place()));
}

TEST_F(DeliveryTest, RefusesAFolderThatCannotBeCreated) {
    folder_.Write("file", "");
    const fs::path inside = folder_.Path() / "file" / "x";
    EXPECT_EQ(
        FailureOf(ExitStatus::Unusable, [&] { DeliveryFolder(inside, recordings_); }),
        "--deliver: expected a folder that can be created, found '" + inside.string() + "': Not a directory");
    EXPECT_EQ(FailureOf(ExitStatus::Unusable, [&] { DeliveryFolder("", recordings_); }),
              "--deliver: expected a folder that can be created, found '': Invalid argument");
}

TEST_F(DeliveryTest, RefusesAFolderThatCannotBeWritten) {
    EXPECT_EQ(FailureOf(ExitStatus::Unusable, [&] { DeliveryFolder("/proc", recordings_); }),
              "--deliver: expected a folder that can be written, found '/proc': No such file or directory");
}

TEST_F(DeliveryTest, RefusesToReplaceAFolderByAFile) {
    const DeliveryFolder folder(Place(), recordings_);
    fs::create_directories(Place() / "EVT1" / "a.ts");
    EXPECT_EQ(FailureOf(ExitStatus::Unusable, [&] { Delivery(folder, "EVT1", "a.ts").Complete(); }),
              "--deliver: expected a file that can be written, found '" + (Place() / "EVT1/a.ts").string() +
                  "': Is a directory");
    EXPECT_EQ(FilesIn(Place()), Files());
}

/// Limits the size of this process's files.
class FileSizeLimit {
 public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
    rlimit before_{};
    void (*handler_)(int);
};

TEST_F(DeliveryTest, LeavesNothingWhenNotAllCanBeWritten) {
    recordings_.contents[{"EVT1", "a.ts"}] = std::string(10'000, 'x');
    const DeliveryFolder folder(Place(), recordings_);
    const std::string failure = FailureOf(ExitStatus::Unusable, [&] {
        const FileSizeLimit limit(4096);
        Delivery delivery(folder, "EVT1", "a.ts");
        delivery.Copy(10'000);
    });
    EXPECT_EQ(failure, "--deliver: expected a file that can be written, found '" +
                           (Place() / "EVT1/a.ts").string() + "': File too large");
    EXPECT_EQ(FilesIn(Place()), Files());
}

}  // namespace
