#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>

#include "tests/rig/campaign/CampaignTest.h"
#include "tests/support/Until.h"

namespace {

using RigFailuresTest = CampaignTest;

TEST_F(RigFailuresTest, NameAHarnessThatIsNotThere) {
    const Json one = RunCase("clean-2.0", {"--dvr", Dvr(), "--velloran", "/no/such/harness"});
    EXPECT_EQ(result_.status, 3);
    EXPECT_EQ(one["outcome"], "ENVIRONMENT");
    ExpectHolds(one["reason"], "the harness ended with status 127: ");
    ExpectHolds(one["reason"], "/no/such/harness");
    EXPECT_TRUE(one["verdict"].is_null());
    EXPECT_TRUE(FileExists(out_ + "/cases/clean-2.0/verdict.json"));
}

TEST_F(RigFailuresTest, NameADvrThatIsNotThere) {
    const Json one = RunCase("clean-2.0", {"--dvr", "/no/such/dvr", "--patience", "0.2"});
    EXPECT_EQ(one["outcome"], "ENVIRONMENT");
    EXPECT_EQ(one["reason"], "the DVR's command ended with status 127, and no DVR had connected");
    ExpectHolds(EvidenceText("cases/clean-2.0/dvr.log"), "/no/such/dvr");
}

TEST_F(RigFailuresTest, NameAPortThatSomebodyElseListensOn) {
    const int other = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(5001);
    ASSERT_EQ(bind(other, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(other, 1), 0);
    const Json one = RunCase("clean-2.0", {"--dvr", Dvr()});
    close(other);
    EXPECT_EQ(result_.status, 3);
    EXPECT_EQ(one["reason"], "port 5001 was taken");
    EXPECT_EQ(one["attempts"], 1);
}

TEST_F(RigFailuresTest, DoNotCountWhereThePortIsHeldOnlyForAWhile) {
    std::ofstream("/mnt/harness") << "if [ -e /mnt/tried ]; then exec " << HarnessCommand().Line()
                                  << " \"$@\"; fi\n"
                                     "touch /mnt/tried\nexit 99\n";
    const Json one =
        RunCase("config-2.0", {"--dvr", Dvr(), "--velloran", "sh /mnt/harness", "--patience", "0"});
    EXPECT_EQ(one["outcome"], "PASS") << one["reason"];
    EXPECT_EQ(one["attempts"], 2);
    const double waited = one["times"]["waited"];
    const double duration = one["times"]["duration"];
    EXPECT_GE(waited, 3);
    EXPECT_LE(waited + duration, (one["end"].get<double>() - one["begin"].get<double>()) / 1e6)
        << "the wait is not the case's own time";
}

TEST_F(RigFailuresTest, EndWithAnInterruptWhileThePortIsHeld) {
    ProgramSurroundings surroundings;
    surroundings.started = [this](pid_t campaign) {
        EXPECT_TRUE(Until([this] { return FileExists(out_ + "/cases/config-2.0/harness.err"); }));
        kill(campaign, SIGINT);
    };
    const ProgramResult result =
        RunCampaign({"--bare", "--cases", "config-2.0", "--dvr", Dvr(), "--velloran", "sh -c 'exit 99' sh"},
                    surroundings);
    EXPECT_EQ(result.status, 130);
    EXPECT_EQ(Evidence()["state"], "interrupted");
    EXPECT_EQ(Evidence()["cases"][0]["outcome"], "INTERRUPTED");
}

/// Two ends of a connection over port 5001, on which nobody listens any more. @return them, open
std::array<int, 2> OldConnection() {
    const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(5001);
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(bind(server, any, sizeof address), 0);
    EXPECT_EQ(listen(server, 1), 0);
    const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(connect(client, any, sizeof address), 0);
    const int accepted = accept4(server, nullptr, nullptr, SOCK_CLOEXEC);
    close(server);
    return {client, accepted};
}

TEST_F(RigFailuresTest, DoNotCountWhereAnOldConnectionHoldsThePort) {
    const std::array<int, 2> ends = OldConnection();
    ProgramSurroundings surroundings;
    surroundings.started = [this, &ends](pid_t) {
        EXPECT_TRUE(Until([this] { return FileExists(out_ + "/cases/config-2.0"); }));
        poll(nullptr, 0, 1000);  // for which it must wait
        const linger none = {1, 0};
        setsockopt(ends[0], SOL_SOCKET, SO_LINGER, &none, sizeof none);  // so that nothing is held longer
        close(ends[0]);
        close(ends[1]);
    };
    const ProgramResult result =
        RunCampaign({"--bare", "--cases", "config-2.0", "--dvr", Dvr()}, surroundings);
    const Json one = Evidence()["cases"][0];
    EXPECT_EQ(one["outcome"], "PASS") << one["reason"];
    EXPECT_EQ(one["attempts"], 1);
    EXPECT_GE(one["times"]["waited"], 0.2);
    ExpectHolds(result.output, "waiting for port 5001, which the last connection still holds");
}

TEST_F(RigFailuresTest, EndALogWithoutBounds) {
    const Json one = RunCase("clean-1.0", {"--velloran", "sh -c 'yes \"$(printf %060000d 1)\"' sh"});
    EXPECT_EQ(one["outcome"], "ENVIRONMENT");
    EXPECT_EQ(one["reason"], "the harness wrote no line of a log; the log grew beyond 16 MiB");
    EXPECT_LT(EvidenceText("cases/clean-1.0/harness.log").size(), std::size_t{24} << 20);
}

}  // namespace
