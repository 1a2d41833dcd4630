#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>

#include "tests/support/Messages.h"
#include "tests/support/Process.h"
#include "tests/support/ScriptedDvr.h"
#include "tests/support/Sockets.h"
#include "tests/support/Until.h"
#include "tests/support/World.h"

namespace {

constexpr std::uint64_t kAddressSpace = std::uint64_t{1} << 32;

/// Whether a line of "smaps" is the head of a mapping: "START-END PERMISSIONS OFFSET DEVICE INODE [PATH]".
bool IsHead(const std::string& line) {
    return line.find('-') < line.find(' ');
}

/// The memory of an emulated program, in kB, as the target's kernel would count it in VmRSS: the used part of
/// the program's own 4 GiB of addresses. They start at a multiple of 4 GiB; the emulator's own memory is
/// elsewhere.
long TargetsMemory(const Process& process, const std::string& program) {
    std::ifstream mappings("/proc/" + std::to_string(process.Id()) + "/smaps");
    std::vector<std::pair<std::uint64_t, long>> sizes;  // which 4 GiB the mapping is in, kB in use
    std::uint64_t space = 0;
    for (std::string line; std::getline(mappings, line);) {
        if (IsHead(line)) {
            sizes.emplace_back(std::stoull(line, nullptr, 16) / kAddressSpace, 0);
            space = line.find(program) == std::string::npos ? space : sizes.back().first;
        } else if (line.compare(0, 4, "Rss:") == 0) {
            sizes.back().second = std::stol(line.substr(4));
        }
    }
    long sum = 0;
    for (const auto& [itsSpace, size] : sizes) {
        sum += itsSpace == space ? size : 0;
    }
    return sum;
}

std::string LastWord(const std::string& words) {
    return words.substr(words.rfind(' ') + 1);
}

/// The harness in an export, with memory that is never given back, so that its current use is its peak.
class Memory : public testing::Test {
 protected:
    void SetUp() override {
        const char* const command = std::getenv("VELLORAN_HARNESS");
        ASSERT_NE(nullptr, command) << "names the harness to measure";
        program_ = LastWord(command);
        setenv("GLIBC_TUNABLES", "glibc.malloc.mmap_max=0:glibc.malloc.trim_threshold=2147483647", 1);
        harness_.emplace(std::vector<std::string>{"-p", "2"}, Launch{});
        unsetenv("GLIBC_TUNABLES");
        Until([this] { return sockets::IsListening(5001) or not harness_->IsRunning(); });
        dvr_.emplace();
    }

    /// One event with `count` files from a list of `count` events, up to the request for its first file.
    void ReachesFirstFile(std::size_t count) {
        dvr_->Sends(Ok());
        dvr_->Receives(v2::kGetEventList);
        std::vector<std::string> events;
        std::vector<std::string> files;
        for (std::size_t number = 0; number < count; ++number) {
            events.push_back("EVENT" + std::to_string(number));
            files.push_back("video" + std::to_string(number) + ".ts");
        }
        dvr_->Sends(EventList(events));
        dvr_->Receives(v2::NextEvent("EVENT0"));
        dvr_->Sends(Event("EVENT0", Description("EVENT0", files)));
        dvr_->Receives(v2::GetFile("EVENT0", "video0.ts"));
    }

    /// Prints how much the program uses, and expects no more than `most`.
    void Takes(long most, const std::string& after) const {
        const long size = TargetsMemory(*harness_, program_);
        std::cout << "memory after " << after << ": " << size << " kB" << std::endl;
        EXPECT_GT(size, 500);
        EXPECT_LE(size, most);
    }

 private:
    World world_;
    std::string program_;
    std::optional<Process> harness_;
    std::optional<ScriptedDvr> dvr_;
};

TEST_F(Memory, OfASmallExport) {
    ReachesFirstFile(5);
    Takes(2000, "a list of 5 events and an event of 5 files");
}

TEST_F(Memory, OfALargeExport) {
    ReachesFirstFile(1000);
    Takes(4000, "a list of 1000 events and an event of 1000 files");
}

}  // namespace
