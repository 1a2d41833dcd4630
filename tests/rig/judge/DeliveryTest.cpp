#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <vector>

#include "rig/judge/delivery/DeliveryFacts.h"
#include "tests/rig/judge/Judging.h"
#include "tests/rig/judge/MadeUpLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TimeNow.h"

// What a look at a folder of delivered files says, beside a made-up log or one of a real run.

namespace {

namespace fs = std::filesystem;
using rig::judge::DeliveryPlace;
using rig::result::Verdict;

constexpr const char* kAbc = R"( length="3" hashCode="900150983cd24fb0d6963f7d28e17f72")";  // MD5 of "abc"

/// What FILE_COMPLETE says of a file.
struct Completed {
    std::string event;
    std::string file;
    std::string attributes = {};  // of the message: ` length="3"`
};

/// The log of an export in protocol 1.0, an event for each file. It begins a minute before now, and the files
/// are complete in a minute: what is written while the test runs was delivered during the export.
/// @param shift  seconds by which it was later
std::string MadeUpExport(const std::vector<Completed>& files, int shift = 0) {
    MadeUpLog log(1, "", (TimeNow() + shift - 60) * 1'000'000);
    log.Dvr(R"(<msg req="OK"/>)").Say("got an OK, sending GET_XML").Ask(R"(<msg req="GET_XML" />)");
    std::string described;
    std::string reported;
    for (const Completed& one : files) {
        described += fmt::format(
            "<string>&lt;recording-event reid=\"{}\"&gt;&lt;video&gt;&lt;metadata "
            "name=\"{}\"/&gt;&lt;/video&gt;"
            "&lt;/recording-event&gt;</string>",
            one.event, one.file);
        reported += "<string>" + one.event + "</string>";
    }
    log.Dvr("<msg req=\"XML\"><xmlFile>" + described + "</xmlFile></msg>").After(120);
    for (const Completed& one : files) {
        log.Ask(fmt::format(R"(<msg req="GET_FILE" path="{}" file="{}" />)", one.event, one.file));
        log.Dvr(fmt::format(R"(<msg req="FILE_COMPLETE" reid="{}" file="{}"{}/>)", one.event, one.file,
                            one.attributes));
        log.Say(fmt::format("Got FILE_COMPLETE for: reid={}  file={}", one.event, one.file));
    }
    log.Say("Sending EVENT_XFER_COMPLETE");
    for (const Completed& one : files) {
        log.Say("HandleMessage: event = '" + one.event + "'");
    }
    log.Ask("<msg req=\"EVENT_XFER_COMPLETE\"><events>" + reported + "</events></msg>");
    log.Say("Sending DONE").Ask(R"(<msg req="DONE" />)").After(1).Say("Closing client socket...");
    return log.After(1).Say("shutting down").Text();
}

class DeliveryTest : public testing::Test {
 protected:
    DeliveryTest() { place_.folder = folder_.Path().string(); }

    void Deliver(const std::string& path, const std::string& content) { folder_.Write(path, content); }

    /// What is said of the runs in a log.
    void Look(const std::string& log) {
        rig::judge::Limits limits;
        limits.delivered = place_;
        result_ = Judged(log, limits);
    }

    void Look(const std::vector<Completed>& files, int shift = 0) { Look(MadeUpExport(files, shift)); }

    /// "PASS no other"; of the last run unless told otherwise
    std::string Of(const std::string& id, std::size_t run = SIZE_MAX) const {
        for (const auto& check : result_.runs.at(std::min(run, result_.runs.size() - 1)).checks) {
            if (check.id == "delivery." + id) {
                return NameOf(check.verdict) + std::string(" ") + check.found;
            }
        }
        return "left out";
    }

    TemporaryFolder folder_;
    DeliveryPlace place_;
    rig::result::Result result_;
};

TEST_F(DeliveryTest, PassesWhatIsAsAnnounced) {
    Deliver("E1/a.ts", "abc");
    for (const std::string hash :
         {"352441c2", "900150983cd24fb0d6963f7d28e17f72", "a9993e364706816aba3e25717850c26c9cd0d89d",
          "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD"}) {
        Look({{"E1", "a.ts", " length=\"3\" hashCode=\"" + hash + "\""}});
        EXPECT_EQ(Of("file"), "PASS 1 file, 1 with a length, 1 with a hash");
        EXPECT_EQ(Of("length"), "PASS no other");
        EXPECT_EQ(Of("hash"), "PASS no other") << hash;
        EXPECT_EQ(Of("unasked"), "PASS no other");
        EXPECT_EQ(Of("in-time"), "PASS no other");
        EXPECT_EQ(Of("half"), "left out");
        EXPECT_EQ(Of("new-hash"), "left out");
        EXPECT_EQ(rig::result::WorstOf(result_), Verdict::Pass);
    }
}

TEST(DeliveryFacts, CountAllFilesAndShowTheFirst) {
    rig::judge::Files files;
    for (const char* const name : {"a", "b", "c", "d", "e", "f"}) {
        files.Add(name, {"test.log", 7, ""});
    }
    EXPECT_EQ(files.Count(), 6U);
    EXPECT_EQ(files.Words(), "a, b, c, d, e and 1 more");
    ASSERT_EQ(files.Lines().size(), 4U);
    EXPECT_EQ(files.Lines().back().note, "d");
}

TEST_F(DeliveryTest, IsNotLookedAtUnasked) {
    result_ = Judged(MadeUpExport({{"E1", "a.ts", kAbc}}));
    for (const auto& check : result_.runs.at(0).checks) {
        EXPECT_EQ(check.id.find("delivery."), std::string::npos) << check.id;
    }
}

TEST_F(DeliveryTest, PassesAFileThatIsStillOnItsWayWhenTheLogEnds) {
    Deliver("E1/a.ts", "abc");
    const std::string whole = MadeUpExport({{"E1", "a.ts", kAbc}});
    const std::size_t answer = whole.rfind("expecting a message", whole.find("FILE_COMPLETE"));
    Look(whole.substr(0, whole.rfind('\n', answer) + 1));
    EXPECT_EQ(Of("unasked"), "PASS no other");
}

TEST_F(DeliveryTest, FailsAFileThatIsNotThere) {
    Deliver("E1/a.ts", "abc");
    Look({{"E1", "a.ts", kAbc}, {"E1", "b.ts", kAbc}, {"E2", "a.ts", kAbc}});
    EXPECT_EQ(Of("file"), "FAIL a file that is not there (E1/b.ts, E2/a.ts)");
    for (const auto& check : result_.runs.at(0).checks) {
        if (check.id == "delivery.file") {
            ASSERT_EQ(check.evidence.size(), 2U);
            EXPECT_NE(check.evidence[0].text.find("file=\"b.ts\""), std::string::npos);
            EXPECT_EQ(check.evidence[0].note, "E1/b.ts");
        }
    }
}

TEST_F(DeliveryTest, FailsWhatIsNotAFileWithoutWaitingForIt) {
    fs::create_directories(folder_.Path() / "E1" / "a.ts");
    ASSERT_EQ(mkfifo((folder_.Path() / "E1" / "pipe").c_str(), 0600), 0);
    Look({{"E1", "a.ts", kAbc}, {"E1", "pipe", kAbc}});
    EXPECT_EQ(Of("file"), "FAIL something that is not a file (E1/a.ts, E1/pipe)");
}

TEST_F(DeliveryTest, FailsAnotherHashAndSaysWhoseItIs) {
    Deliver("E1/a.ts", "abc");
    Deliver("E2/a.ts", "abc");
    Look({{"E1", "a.ts", R"( hashCode="00000000000000000000000000000000")"}});
    EXPECT_EQ(Of("hash"),
              "FAIL a file with another hash (E1/a.ts: announced md5 00000000000000000000000000000000, found "
              "900150983cd24fb0d6963f7d28e17f72)");
    Look({{"E1", "a.ts", R"( hashCode="0123456789abcdef0123456789abcdef")"}, {"E2", "a.ts", kAbc}});
    EXPECT_EQ(Of("hash"),
              "FAIL a file with another hash (E1/a.ts: announced md5 0123456789abcdef0123456789abcdef, found "
              "900150983cd24fb0d6963f7d28e17f72, which is that of E2/a.ts)");
}

TEST_F(DeliveryTest, NeverLeavesTheFolder) {
    const TemporaryFolder elsewhere;
    elsewhere.Write("secret", "abc");
    const std::string secret = (elsewhere.Path() / "secret").string();
    fs::create_directories(folder_.Path() / "E1");
    fs::create_symlink(secret, folder_.Path() / "E1" / "link");
    fs::create_directory_symlink(elsewhere.Path(), folder_.Path() / "E2");
    place_.progress = [](const std::string& file, std::uint64_t, std::uint64_t) {
        ADD_FAILURE() << "read " << file;
        return true;
    };
    const std::string up = "../../" + elsewhere.Path().filename().string() + "/secret";
    Look({{"E1", up, kAbc},
          {"E1", secret, kAbc},
          {"..", "a.ts", kAbc},
          {"E1", "link", kAbc},
          {"E2", "secret", kAbc}});
    EXPECT_EQ(Of("file"), "FAIL a name that leads out of the folder, where nobody looked (E1/" + up +
                              ", E1/" + secret + ", ../a.ts, E1/link, by a link, E2/secret, by a link)");
}

TEST_F(DeliveryTest, FollowsLinksThatStayInTheFolder) {
    Deliver("store/a.ts", "abc");
    fs::create_directory_symlink("store", folder_.Path() / "E1");
    Look({{"E1", "a.ts", kAbc}});
    EXPECT_EQ(Of("hash"), "PASS no other");
    EXPECT_EQ(Of("unasked"), "PASS no other");
}

TEST_F(DeliveryTest, NamesWhatNobodyAskedFor) {
    Deliver("E1/a.ts", "abc");
    for (const std::string number : {"1", "2", "3", "4", "5", "6"}) {
        Deliver("E1/x" + number, "");
    }
    Look({{"E1", "a.ts", kAbc}});
    EXPECT_EQ(Of("unasked"),
              "FAIL a file that nobody asked for (E1/x1, E1/x2, E1/x3, E1/x4, E1/x5 and 1 more)");
}

TEST_F(DeliveryTest, JudgesTheLastRunThatDeliveredAFile) {
    Deliver("E1/a.ts", "abc");
    const std::string other = R"( length="5" hashCode="0123456789abcdef0123456789abcdef")";
    const std::string first = MadeUpExport({{"E1", "a.ts", other}});
    Look(first + MadeUpExport({{"E1", "a.ts", kAbc}}));
    ASSERT_EQ(result_.runs.size(), 2U);
    EXPECT_EQ(Of("file", 0).substr(0, 101),
              "INCONCLUSIVE a file that a later FILE_COMPLETE, which announces something else, has replaced "
              "(E1/a.ts");
    EXPECT_EQ(Of("length", 0), "left out");
    EXPECT_EQ(Of("file", 1), "PASS 1 file, 1 with a length, 1 with a hash");
    const std::string same = MadeUpExport({{"E1", "a.ts", kAbc}});
    Look(same + same);
    EXPECT_EQ(Of("hash", 0), "PASS no other");
    EXPECT_EQ(Of("hash", 1), "PASS no other");
}

TEST_F(DeliveryTest, FindsFilesWhereThePatternSays) {
    Deliver("E1-a.ts.mpg", "abc");
    place_.pattern = "{event}-{file}.mpg";
    Look({{"E1", "a.ts", kAbc}});
    EXPECT_EQ(Of("hash"), "PASS no other");
    Deliver("a.ts", "abc");
    place_.pattern = "{file}";
    Look({{"E1", "a.ts", R"( length="5")"}, {"E2", "a.ts", kAbc}});
    EXPECT_EQ(Of("file").substr(0, 30), "INCONCLUSIVE a file that a lat") << "of an event, that of another";
}

TEST_F(DeliveryTest, KnowsWhatWasThereBeforeWhereItLooksInTime) {
    Deliver("E1/a.ts", "abc");
    Deliver("E1/b.ts", "abc");
    Deliver("E1/old.ts", "abc");
    place_.isLive = true;
    rig::judge::Limits limits;
    limits.delivered = place_;
    rig::judge::Judge judge(limits, {},
                            [this](rig::result::RunResult run) { result_.runs.push_back(std::move(run)); });
    fs::remove(folder_.Path() / "E1/b.ts");
    Deliver("E1/b.ts", "abc");
    Deliver("E1/new.ts", "abc");
    std::istringstream lines(MadeUpExport({{"E1", "a.ts", kAbc}, {"E1", "b.ts", kAbc}}));
    for (std::string line; std::getline(lines, line);) {
        judge.Add("test.log", 1, line);
    }
    judge.Finish();
    EXPECT_EQ(
        Of("file"),
        "INCONCLUSIVE a file that was there before the run and has not been written since: whether it was "
        "delivered again cannot be told (E1/a.ts)");
    EXPECT_EQ(Of("unasked"), "FAIL a file that nobody asked for (E1/new.ts)");
}

TEST(Stamp, HasTheMicrosecondsOfItsTimes) {
    struct stat found = {};
    found.st_mtim = {1, 999'999'999};
    found.st_ctim = {2, 1'000};
    EXPECT_EQ(rig::judge::StampOf(found).written, 1'999'999);
    EXPECT_EQ(rig::judge::StampOf(found).changed, 2'000'001);
}

TEST_F(DeliveryTest, TakesTheLogInTheFolderForNoDelivery) {
    Deliver("E1/a.ts", "abc");
    Deliver("run.log", "");
    rig::judge::Limits limits;
    limits.delivered = place_;
    rig::judge::Judge judge(limits, {},
                            [this](rig::result::RunResult run) { result_.runs.push_back(std::move(run)); });
    std::istringstream lines(MadeUpExport({{"E1", "a.ts", kAbc}}));
    for (std::string line; std::getline(lines, line);) {
        judge.Add((folder_.Path() / "run.log").string(), 1, line);
    }
    judge.Finish();
    EXPECT_EQ(Of("unasked"), "PASS no other");
}

TEST_F(DeliveryTest, ReadsPieceByPieceAndStopsWhenTold) {
    Deliver("E1/a.ts", "");
    fs::resize_file(folder_.Path() / "E1/a.ts", 3'000'000);
    int pieces = 0;
    place_.progress = [&pieces](const std::string& file, std::uint64_t done, std::uint64_t total) {
        EXPECT_EQ(file, "E1/a.ts");
        EXPECT_LE(done, total);
        EXPECT_EQ(total, 3'000'000U);
        return ++pieces < 5;
    };
    Look({{"E1", "a.ts", kAbc}});
    EXPECT_EQ(pieces, 5);
    EXPECT_EQ(Of("file"), "ENVIRONMENT a file that cannot be read (E1/a.ts: interrupted)");
}

/// Delivers what the log of a real run tells of, at its time.
class RealDeliveryTest : public DeliveryTest {
 protected:
    void DeliverThen(const std::string& path, const std::string& content) {
        Deliver(path, content);
        const std::int64_t then = *Judged(log_).runs.at(0).begin / 1'000'000;
        const timespec times[] = {{then, 0}, {then, 0}};
        utimensat(AT_FDCWD, (folder_.Path() / path).c_str(), times, 0);
    }

    void DeliverAll() {
        DeliverThen("Event1/Event1.xml", "<recording of=\"Event1\"/>\n");
        DeliverThen("Event1/Front.ts", "Event1 Front.ts\n");
        DeliverThen("Event1/Rear.ts", "Event1 Rear.ts\n");
        DeliverThen("Event2/Event2.xml", "<recording of=\"Event2\"/>\n");
    }

    std::string log_;
};

TEST_F(RealDeliveryTest, PassesWithItsNewHash) {
    log_ = RealLog("rehash-2.0");
    DeliverAll();
    Look(log_);
    EXPECT_EQ(Of("new-hash"), "PASS no other");
    EXPECT_EQ(rig::result::WorstOf(result_), Verdict::Pass);
    DeliverThen("Event1/Rear.ts", "Event1 rear.ts\n");
    Look(log_);
    EXPECT_EQ(Of("new-hash").substr(0, 45), "FAIL a file with another hash (Event1/Rear.ts");
    EXPECT_EQ(Of("hash"), "PASS no other");
}

TEST_F(RealDeliveryTest, PassesAfterATransferThatFailed) {
    log_ = RealLog("transport-2.0");
    DeliverAll();
    Look(log_);
    EXPECT_EQ(Of("half"), "PASS nothing");
    EXPECT_EQ(rig::result::WorstOf(result_), Verdict::Pass);
}

TEST_F(RealDeliveryTest, FailsWhatATransferThatFailedHasLeft) {
    log_ = RealLog("transport-2.0");
    DeliverAll();
    DeliverThen("Event1/.Rear.ts.tmp", "Eve");
    DeliverThen("Event1/other", "Eve");
    Look(log_);
    EXPECT_EQ(Of("half"), "FAIL what is left of a transfer that failed (Event1/.Rear.ts.tmp)");
    EXPECT_EQ(Of("unasked"), "FAIL a file that nobody asked for (Event1/other)");
    const std::size_t end = log_.find('\n', log_.find("TRANSPORT_EXCEPTION 'reid'"));
    fs::remove(folder_.Path() / "Event1/.Rear.ts.tmp");
    Look(log_.substr(0, end + 1));
    EXPECT_EQ(Of("half"), "FAIL what is left of a transfer that failed (Event1/Rear.ts: 15 bytes)");
    fs::remove(folder_.Path() / "Event1/Rear.ts");
    Look(log_.substr(0, end + 1));
    EXPECT_EQ(Of("half"), "PASS nothing");
}

}  // namespace
