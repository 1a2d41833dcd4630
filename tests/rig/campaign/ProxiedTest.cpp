#include <netinet/in.h>
#include <sched.h>
#include <sys/socket.h>

#include <array>
#include <filesystem>
#include <fstream>

#include "rig/base/Descriptor.h"
#include "tests/rig/campaign/CampaignTest.h"

namespace {

/// Campaigns whose harness runs in a network of its own, and those where it cannot.
class ProxiedTest : public CampaignTest {
 protected:
    /// Runs a short case. @return whether the harness was called without a proxy
    bool IsRunDirect(std::vector<std::string> arguments, ProgramSurroundings surroundings = {}) {
        std::filesystem::remove_all(out_);
        arguments.insert(arguments.end(), {"--bare", "--cases", "config-2.0", "--dvr", Dvr()});
        const ProgramResult result = RunCampaign(arguments, std::move(surroundings));
        EXPECT_EQ(result.status, 0) << result.output << result.errors;
        const bool isDirect = Evidence()["options"]["direct"];
        EXPECT_NE(FileExists(out_ + "/cases/config-2.0/proxy.jsonl"), isDirect);
        return isDirect;
    }
};

TEST_F(ProxiedTest, CampaignsAreWhereTheHarnessIsAProgramHere) {
    EXPECT_FALSE(IsRunDirect({}));
    ExpectHolds(Evidence()["cases"][0]["harness"]["command"], " --harness-command ");
    ExpectHolds(EvidenceText("cases/config-2.0/proxy.jsonl"), R"("event":"harness-end","status":44})");
    EXPECT_FALSE(IsRunDirect({"--velloran", VELLORAN_PROGRAM}));
}

TEST_F(ProxiedTest, CampaignsAreNotWhereItMayRunElsewhere) {
    std::ofstream("/mnt/harness") << "#!/bin/sh\nexec " VELLORAN_PROGRAM " \"$@\"\n";
    std::filesystem::permissions("/mnt/harness", std::filesystem::perms::owner_all);
    EXPECT_TRUE(IsRunDirect({"--velloran", "/mnt/harness"}));
    EXPECT_TRUE(IsRunDirect({"--velloran", "env " VELLORAN_PROGRAM}));
    for (const char* const option : {"--log", "--stop"}) {
        std::filesystem::remove_all(out_);
        RunCampaign({"--bare", "--cases", "config-2.0", "--connect-timeout", "0", option, "true"});
        EXPECT_EQ(Evidence()["options"]["direct"], true);
    }
}

TEST_F(ProxiedTest, CampaignsAreNotWhereNobodyWantsItOrTheSystemRefusesIt) {
    EXPECT_TRUE(IsRunDirect({"--direct"}));
    ProgramSurroundings surroundings;
    surroundings.prepare = [] { unshare(CLONE_NEWUSER); };  // a user without a number may make no namespace
    EXPECT_TRUE(IsRunDirect({}, surroundings));
}

/// @return the two ends of a connection over port 5001, as a proxy leaves it
std::array<rig::Descriptor, 2> OldConnectionOfAProxy() {
    const rig::Descriptor server(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    rig::Descriptor client(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(5001);
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    const int on = 1;
    EXPECT_EQ(setsockopt(server.Number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on), 0);
    EXPECT_EQ(bind(server.Number(), any, sizeof address), 0);
    EXPECT_EQ(listen(server.Number(), 1), 0);
    EXPECT_EQ(connect(client.Number(), any, sizeof address), 0);
    return {std::move(client), rig::Descriptor(accept4(server.Number(), nullptr, nullptr, SOCK_CLOEXEC))};
}

TEST_F(ProxiedTest, CampaignsDoNotWaitForThePort) {
    const std::array<rig::Descriptor, 2> ends = OldConnectionOfAProxy();
    const Json one = RunCase("config-2.0", {"--dvr", Dvr()});
    EXPECT_EQ(one["outcome"], "PASS") << one["reason"];
    EXPECT_EQ(one["times"]["waited"], 0.0);
}

}  // namespace
