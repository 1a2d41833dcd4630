#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <optional>

#include "tests/support/Messages.h"
#include "tests/support/Process.h"
#include "tests/support/ScriptedDvr.h"
#include "tests/support/Sockets.h"
#include "tests/support/TargetsMemory.h"
#include "tests/support/Until.h"
#include "tests/support/World.h"

namespace {

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
        setenv("GLIBC_TUNABLES", kNothingGivenBack, 1);
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
        const long size = TargetsMemory(harness_->Id(), program_);
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
