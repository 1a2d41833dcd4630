#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/Dialogue.h"

namespace {

using Paths = std::vector<std::string>;

/// Everything on the world's disks, folders with a trailing slash.
Paths Tree() {
    Paths paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator("/mnt")) {
        paths.push_back(entry.path().string() + (entry.is_directory() ? "/" : ""));
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

/// An event's identifier becomes part of a file's name. Its slashes have no folder to lead through: the
/// harness makes only files, and their names all begin with "incoming_".
class IdentifierWithSlashes : public Dialect20 {
 protected:
    void SetUp() override {
        ASSERT_EQ(0, mkdir("/mnt/outside", 0777));
        Start();
    }

    /// The harness gets a description of the event E1 under this identifier, which decides the file's name.
    void IsGivenAsDescribed(const std::string& id, Here here = Here::current()) {
        dvr->Sends(Event("E1", Description(id, {})), here);
        harness->Logs(16, "'reid' attribute in EVENT msg = 'E1'", here);
        harness->Logs(2, "Handle_EVENT_msg: 'reid' in escaped XML incorrect: exp='E1'  act='" + id + "'",
                      here);
        harness->Logs(4, "Got EVENT message with no files to receive", here);
    }
};

const char* const kIdentifiers[] = {"../../escaped",          "/etc/escaped",    "../outside/escaped",
                                    "/../../outside/escaped", "a/../../escaped", "/"};

class IdentifierOfAnEvent : public IdentifierWithSlashes, public testing::WithParamInterface<const char*> {};

TEST_P(IdentifierOfAnEvent, WithSlashesWritesNothingOutsideTheDisk) {
    const std::string id = GetParam();
    ReachesFirstFile(id, {"m"});
    EXPECT_EQ((Paths{"/mnt/hd/", "/mnt/outside/"}), Tree());
    Completes(id, "m", 0);
    ReceivesEventXferComplete(id);
    Acknowledges(id);
    ReceivesDone(v2::kDone);
    Ends();
    EXPECT_EQ((Paths{"/mnt/hd/", "/mnt/hd/outgoingETCstring", "/mnt/outside/"}), Tree());
    EXPECT_FALSE(FileExists("/etc/escaped"));
    EXPECT_FALSE(FileExists("/escaped"));
}

INSTANTIATE_TEST_SUITE_P(Such, IdentifierOfAnEvent, testing::ValuesIn(kIdentifiers));

TEST_F(IdentifierWithSlashes, LeadsNowhereThroughTheFilesSavedBefore) {
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    IsGivenAsDescribed("");
    IsGivenAsDescribed("a");
    IsGivenAsDescribed("..");
    const Paths saved = {"/mnt/hd/", "/mnt/hd/incoming_", "/mnt/hd/incoming_..", "/mnt/hd/incoming_a",
                         "/mnt/outside/"};
    EXPECT_EQ(saved, Tree());
    IsGivenAsDescribed("/../../outside/escaped");
    IsGivenAsDescribed("a/../../outside/escaped");
    IsGivenAsDescribed("../../outside/escaped");
    IsGivenAsDescribed("a/");
    EXPECT_EQ(saved, Tree());
    Ends();
}

}  // namespace
