#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>

#include "tests/support/Dialogue.h"

namespace {

int NumberOr(int standard, const char* variable) {
    const char* const number = std::getenv(variable);
    return number ? std::atoi(number) : standard;
}

/// What the process holds in memory, in kB. Counted page by page; the sum in "statm" lags behind.
long ResidentSize(const Process& process) {
    std::ifstream sizes("/proc/" + std::to_string(process.Id()) + "/smaps_rollup");
    std::string word;
    while (sizes >> word and word not_eq "Rss:") {
    }
    long size = 0;
    sizes >> size;
    return size;
}

constexpr long kFlat = 16;  // kB; losing 32 bytes with each of 1000 messages is more

/// A harness without its pauses (NoPause.cpp) and without a log, whose DVR sends many messages at a time.
class Endurance : public Dialect10 {
 protected:
    void StartWithoutPauses(const std::vector<std::string>& switches) {
        setenv("LD_PRELOAD", VELLORAN_NO_PAUSE, 1);
        Launch launch;
        launch.output = open("/dev/null", O_WRONLY | O_CLOEXEC);
        harness.emplace(switches, launch);
        close(launch.output);
        unsetenv("LD_PRELOAD");
        harness->Listens();
        dvr.emplace();
    }

    void Stops() {
        harness->GetsSignal(SIGINT);
        harness->EndsWithStatus(44);
        EXPECT_EQ("", harness->StandardError());
    }

    /// Sends the messages again and again on one connection, and checks the size of the process after each
    /// tenth of it.
    void StaysFlat(const std::vector<std::string>& messages, const std::vector<std::string>& answers) {
        constexpr int kAtATime = 10;  // as a peer that waits for each answer mostly waits
        const int perRound = kAtATime * static_cast<int>(messages.size());
        const int rounds = 1 + NumberOr(1000, "VELLORAN_MESSAGES") / 10 / perRound;
        std::vector<long> sizes;
        for (int part = 0; part < 10; ++part) {
            for (int round = 0; round < rounds; ++round) {
                dvr->SendsBytes(Frames(messages, kAtATime));
                dvr->ReceivesBytes(Frames(answers, kAtATime));
            }
            sizes.push_back(ResidentSize(harness->GetProcess()));
        }
        EXPECT_LT(0, sizes.front());
        EXPECT_LE(sizes.back(), sizes.front() + kFlat) << "kB, after the first tenth and at the end";
        std::cout << "figure: resident size " << sizes.front() << " kB after a tenth, " << sizes.back()
                  << " kB after all of " << 10 * rounds * perRound << " messages\n";
    }

 private:
    static std::string Frames(const std::vector<std::string>& texts, int times) {
        std::string frames;
        for (; times > 0; --times) {
            for (const std::string& text : texts) {
                frames += Frame(text);
            }
        }
        return frames;
    }
};

TEST_F(Endurance, LeaksNoDescriptorOverManyConnections) {
    StartWithoutPauses({});
    const int connections = NumberOr(100, "VELLORAN_CONNECTIONS");
    OpensUnseen();
    const std::vector<int> descriptors = harness->GetProcess().Descriptors();
    for (int count = 1; count < connections; ++count) {
        dvr->SendsBytes(Frame(Ok()) + Frame(Xml({Description("E1", {"m1"})})) +
                        Frame(FileComplete("E1", "m1")));
        ASSERT_TRUE(dvr->IsClosedBefore(Clock::now() + kPatience)) << "after " << count << " connections";
        dvr.emplace();
    }
    OpensUnseen();
    EXPECT_EQ(descriptors, harness->GetProcess().Descriptors());
    std::cout << "figure: " << descriptors.size() << " descriptors on the first connection, "
              << harness->GetProcess().Descriptors().size() << " on the " << connections << "th\n";
    Stops();
}

TEST_F(Endurance, StaysAsLargeAsItIsOverManyExportsOf20) {
    StartWithoutPauses({"-p", "2"});
    StaysFlat({Ok(), EventList({"E1"}), Event("E1", Description("E1", {"m", "v", "w"})),
               FileComplete("E1", "m"), FileComplete("E1", "v"), FileComplete("E1", "w"), EventXferAck("E1")},
              {v2::kGetEventList, v2::NextEvent("E1"), v2::GetFile("E1", "m"), v2::GetFile("E1", "v"),
               v2::GetFile("E1", "w"), v2::EventXferComplete("E1"), v2::kDone});
    Stops();
}

// A 1.0 harness lists the events of all exports in each report, so only other messages leave it unchanged.

TEST_F(Endurance, StaysAsLargeAsItIsOverManyMessagesOf10) {
    StartWithoutPauses({"-p", "1"});
    StaysFlat({Ok(), FileComplete("E9", "m"), Message("NONE"), Xml({}), Ok()}, {v1::kGetXml, v1::kGetXml});
    Stops();
}

}  // namespace
