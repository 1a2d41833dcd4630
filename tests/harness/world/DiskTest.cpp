#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/Dialogue.h"

namespace {

const char* const kDisk = "/mnt/hd";

void Mount(const std::string& options) {
    ASSERT_EQ(0, mount("none", kDisk, "tmpfs", 0, options.c_str()));
}

void RemoveTheDisk() {
    ASSERT_EQ(0, rmdir(kDisk));
}

/// No more bytes fit on it; a file can still be made.
void FillTheDisk() {
    Mount("size=64k");
    const int fd = open("/mnt/hd/other", O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
    const std::string page(4096, 'x');
    while (write(fd, page.data(), page.size()) > 0) {
    }
    close(fd);
}

/// No more files can be made on it.
void TakeTheDisksInodes() {
    Mount("nr_inodes=1");
}

void ForbidWriting() {
    Mount("size=64k");
    ASSERT_EQ(0, mount("none", kDisk, nullptr, MS_REMOUNT | MS_RDONLY, nullptr));
}

struct Trouble {
    std::string name;
    void (*makes)();
    bool markerFails;                 // the shell commands complain
    std::vector<std::string> leaves;  // the disk's files after an export
};

std::ostream& operator<<(std::ostream& out, const Trouble& trouble) {
    return out << trouble.name;
}

std::vector<std::string> FilesOnTheDisk() {
    std::error_code missing;
    std::vector<std::string> files;
    for (const auto& file : std::filesystem::directory_iterator(kDisk, missing)) {
        files.push_back(file.path().filename().string() + ", " + std::to_string(file.file_size()));
    }
    std::sort(files.begin(), files.end());
    return files;
}

class Disk20 : public Dialect20, public testing::WithParamInterface<Trouble> {};

TEST_P(Disk20, IsNotNeededForAnExport) {
    GetParam().makes();
    Start({"-t"});
    ReachesFirstFile("E1", {"m", "v"});
    Completes("E1", "m", 1);
    harness->Logs(32, "processing 'transportException' option");
    dvr->Receives(v2::GetFile("E1", "v"));
    dvr->Sends(TransportException("E1"));
    harness->Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'E1'");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "calling SendFileRequest(E1/v, false)");
    dvr->Receives(v2::GetFile("E1", "v"));
    Completes("E1", "v", 0);
    ReceivesEventXferComplete("E1");
    Acknowledges("E1");
    ReceivesDone(v2::kDone);
    harness->StopsOnInterrupt();
    EXPECT_EQ(GetParam().leaves, FilesOnTheDisk());
    const std::string& complaints = harness->StandardError();
    if (GetParam().markerFails) {
        EXPECT_EQ(0U, complaints.find("touch: ")) << complaints;
        EXPECT_NE(std::string::npos, complaints.find("\nrm: ")) << complaints;
    } else {
        EXPECT_EQ("", complaints);
    }
}

const Trouble kTroubles[] = {
    {"Missing", RemoveTheDisk, true, {}},
    {"Full", FillTheDisk, false, {"incoming_E1, 0", "other, 65536", "outgoingETCstring, 0"}},
    {"WithoutInodes", TakeTheDisksInodes, true, {}},
    {"ReadOnly", ForbidWriting, true, {}}};

INSTANTIATE_TEST_SUITE_P(That, Disk20, testing::ValuesIn(kTroubles),
                         [](const auto& row) { return row.param.name; });

}  // namespace
