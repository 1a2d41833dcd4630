#include <gtest/gtest.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "rig/base/Descriptor.h"
#include "tests/support/Dialogue.h"
#include "tests/support/Messages.h"
#include "tests/support/Program.h"
#include "tests/support/RunningProxy.h"
#include "tests/support/Sockets.h"
#include "tests/support/Until.h"

// A proxy that starts the harness itself is the harness, to who starts it and to the DVR.

namespace {

using nlohmann::json;

const std::string kTheHarness = std::string(VELLORAN_PROGRAM) + " -p 2";

class ProxyWithHarness : public SystemTest {};

json EventOf(const RunningProxy& proxy, const std::string& name) {
    for (const std::string& line : proxy.Log()) {
        const json event = json::parse(line);
        if (event.at("event") == name) {
            return event;
        }
    }
    return {};
}

/// The process of its harness, or of the shell that waits for it.
pid_t HarnessOf(const RunningProxy& proxy) {
    EXPECT_TRUE(Until([&] { return not EventOf(proxy, "harness").empty(); })) << proxy.Errors();
    return EventOf(proxy, "harness").at("pid");
}

bool IsGone(pid_t process) {
    const rig::Descriptor end(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    pollfd ended = {end.Number(), POLLIN, 0};
    return not end.IsOpen() or
           poll(&ended, 1, static_cast<int>(kPatience / std::chrono::milliseconds(1))) == 1;
}

void AwaitListening() {
    EXPECT_TRUE(Until([] { return sockets::IsListening(5001); }));
}

struct End {
    const char* name;
    const char* command;
    int status;
    const char* event;
};

class ProxyWithHarnessThatEnds : public ProxyWithHarness, public testing::WithParamInterface<End> {};

TEST_P(ProxyWithHarnessThatEnds, EndsWithItsStatus) {
    RunningProxy proxy(GetParam().command);
    EXPECT_EQ(GetParam().status, proxy.Ends(0));
    EXPECT_EQ(2, proxy.Log().size());
    EXPECT_NE(std::string::npos, proxy.Log().back().find(GetParam().event)) << proxy.Log().back();
}

INSTANTIATE_TEST_SUITE_P(Ends, ProxyWithHarnessThatEnds,
                         testing::Values(End{"By_itself", "exit 3", 3, R"("harness-end","status":3})"},
                                         End{"ByASignal", "kill -9 $$", 137, R"("harness-end","signal":9})"},
                                         End{"Unfound", "no-such-harness -p 2", 127,
                                             R"("harness-end","status":127})"}),
                         [](const auto& end) { return std::string(end.param.name); });

TEST_F(ProxyWithHarness, InterruptsItOnASignalAndEndsWithItsStatus) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        RunningProxy proxy(kTheHarness);
        AwaitListening();
        EXPECT_EQ(44, proxy.Ends(signal));
        EXPECT_EQ(44, EventOf(proxy, "harness-end").value("status", 0));
        EXPECT_NE(std::string::npos, proxy.Output().find("shutting down"));
        EXPECT_EQ("", proxy.Errors());
    }
}

TEST_F(ProxyWithHarness, KillsItOnAnotherSignal) {
    RunningProxy proxy("trap 'echo ignored' INT; sleep 1000 & echo up; while true; do wait; done");
    EXPECT_TRUE(Until([&] { return proxy.Output() == "up\n"; }));
    proxy.Gets(SIGINT);
    EXPECT_TRUE(Until([&] { return proxy.Output() == "up\nignored\n"; }));
    proxy.Gets(SIGTERM);
    poll(nullptr, 0, 1100);
    EXPECT_EQ("up\nignored\n", proxy.Output()) << "both are one wish";
    EXPECT_EQ(1, proxy.Log().size());
    EXPECT_EQ(137, proxy.Ends(SIGTERM));
}

TEST_F(ProxyWithHarness, TakesItAlongWhenKilled) {
    RunningProxy proxy("sleep 1000 & echo $!; wait");
    EXPECT_TRUE(Until([&] { return proxy.Output().find('\n') not_eq std::string::npos; }));
    const pid_t shell = HarnessOf(proxy);
    const pid_t startedByShell = std::stoi(proxy.Output());
    proxy.Ends(SIGKILL);
    EXPECT_TRUE(IsGone(shell));
    EXPECT_TRUE(IsGone(startedByShell));
}

TEST_F(ProxyWithHarness, RefusesTheDvrUntilItListens) {
    RunningProxy proxy("while [ ! -e /mnt/go ]; do sleep 0.01; done; " + kTheHarness);
    HarnessOf(proxy);
    poll(nullptr, 0, 100);
    EXPECT_FALSE(sockets::IsListening(5001));
    std::ofstream("/mnt/go");
    AwaitListening();
    ScriptedDvr dvr;
    dvr.Sends(Ok());
    dvr.Receives(v2::kGetEventList);
    EXPECT_EQ(44, proxy.Ends(SIGINT));
}

TEST_F(ProxyWithHarness, EndsAsItDoesWhenASecondDvrKnocks) {
    RunningProxy proxy(kTheHarness);
    AwaitListening();
    const ScriptedDvr first;
    EXPECT_TRUE(Until([&] { return proxy.Output().find("Connected") not_eq std::string::npos; }));
    const ScriptedDvr second;
    EXPECT_EQ(128 + SIGABRT, proxy.Ends(0));
    EXPECT_EQ(SIGABRT, EventOf(proxy, "harness-end").value("signal", 0));
    EXPECT_NE(std::string::npos, proxy.Errors().find("Assertion `FD_ISSET(g_clientFd, &readFds)' failed"));
}

TEST_F(ProxyWithHarness, PassesOnWhatItHasLeft) {
    RunningProxy proxy(kTheHarness);
    AwaitListening();
    ScriptedDvr dvr;
    dvr.Sends(Ok());
    dvr.Receives(v2::kGetEventList);
    const pid_t harness = HarnessOf(proxy);
    dvr.Sends(EventList({"E1"}));
    EXPECT_TRUE(Until([&] { return proxy.Log().back().find("\"EVENT_LIST\"") not_eq std::string::npos; }));
    proxy.Pauses();
    const auto begun = [&] { return proxy.Output().find("hdr[0]= ", proxy.Output().find("EVENT_LIST\"")); };
    EXPECT_TRUE(Until([&] { return begun() not_eq std::string::npos; }));
    poll(nullptr, 0, 100);  // it is sent after it is logged
    kill(harness, SIGINT);
    EXPECT_TRUE(IsGone(harness));
    proxy.GoesOn();
    dvr.Receives(v2::NextEvent("E1"));
    dvr.ReceivesEnd();
    EXPECT_EQ(44, proxy.Ends(0));
    EXPECT_EQ("harness", EventOf(proxy, "close").value("by", ""));
}

TEST_F(ProxyWithHarness, StopsItWhenTheLogIsFull) {
    ASSERT_EQ(0, mkdir("/mnt/small", 0755));
    ASSERT_EQ(0, mount("none", "/mnt/small", "tmpfs", 0, "size=4k"));
    ProgramSurroundings surroundings;
    surroundings.started = [](pid_t) {
        AwaitListening();
        std::string frames;
        for (int count = 0; count < 100; ++count) {
            frames += Frame("x");
        }
        ScriptedDvr().SendsBytes(frames);
    };
    const ProgramResult ended =
        RunRig({"proxy", "--log", "/mnt/small/log", "--harness-command", kTheHarness}, surroundings);
    EXPECT_EQ(64, ended.status);
    EXPECT_EQ("velloran-rig proxy: --log: expected to write an event, found: No space left on device\n",
              ended.errors);
    EXPECT_NE(std::string::npos, ended.output.find("shutting down"));
    umount2("/mnt/small", MNT_DETACH);
}

TEST_F(ProxyWithHarness, SaysWhereItMayHaveNoNetwork) {
    ProgramSurroundings surroundings;
    surroundings.prepare = [] { unshare(CLONE_NEWUSER); };  // a user without a number may make no namespace
    const ProgramResult ended =
        RunRig({"proxy", "--log", "/mnt/log", "--harness-command", "echo started"}, surroundings);
    EXPECT_EQ(64, ended.status);
    EXPECT_EQ("", ended.output);
    EXPECT_EQ(
        "velloran-rig proxy: --harness-command: expected a network of its own for the harness, found that "
        "the "
        "system refuses it (user and network namespace: Operation not permitted); run as root, or start the "
        "harness on another machine and give --harness\n",
        ended.errors);
}

TEST_F(ProxyWithHarness, DoesNotStartItWhereThePortIsTaken) {
    const RunningProxy other(5002, 5001);
    RunningProxy proxy("echo started");
    EXPECT_EQ(64, proxy.Ends(0));
    EXPECT_EQ(
        "velloran-rig proxy: --listen: expected to listen at 0.0.0.0:5001, found: Address already in use\n",
        proxy.Errors());
    EXPECT_EQ("", proxy.Output());
    EXPECT_TRUE(proxy.Log().empty());
}

}  // namespace
