#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>

#include "tests/support/Dialogue.h"

namespace {

/// What happens while the harness waits for the shell command that sets the failure marker. The command is
/// replaced by one that waits at a gate.
class ShellCommand : public Dialect20 {
 protected:
    void SetUp() override {
        ASSERT_EQ(0, mkdir("/mnt/commands", 0755));
        ASSERT_EQ(0, mkfifo("/mnt/gate", 0600));
        std::ofstream("/mnt/commands/touch")
            << "#!/bin/sh\necho $$ > /mnt/number\nmv /mnt/number /mnt/started\nread line < /mnt/gate\n";
        ASSERT_EQ(0, chmod("/mnt/commands/touch", 0755));
        Launch launch;
        launch.commandFolder = "/mnt/commands";
        Start({"-t"}, launch);
        ReachesFirstFile("EVENT1", {"meta.xml", "video1"});
        Completes("EVENT1", "meta.xml", 1);
        harness->Logs(32, "processing 'transportException' option");
        ASSERT_TRUE(Until([] { return FileExists("/mnt/started"); }));
        EXPECT_FALSE(dvr->HasSomethingToRead()) << "requested before the marker is set";
    }

    static void Ends() { std::ofstream("/mnt/gate") << "open\n"; }
};

TEST_F(ShellCommand, KeepsTheInterruptFromTheHarnessAsTheSystemCallDoes) {
    harness->GetsSignal(SIGINT);
    Ends();
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    harness->StopsOnInterrupt();
    dvr->ReceivesEnd();
}

TEST_F(ShellCommand, IsFollowedByAFailedWriteIfThePeerHasReset) {
    dvr->Resets();
    Ends();
    const std::string size = std::to_string(v2::GetFile("EVENT1", "video1").size());
    harness->Logs(2, "SendMessage: msg: size= " + size + "  errorno=Connection reset by peer");
    harness->FailsAssertion("void VelProtocolBase::SendMessage(TiXmlDocument&)",
                            "writelen == static_cast<ssize_t>(headerLength)");
}

TEST_F(ShellCommand, MayEndByASignal) {
    // As Ctrl-C at a terminal ends it.
    ASSERT_EQ(0, system("kill -INT $(cat /mnt/started)"));
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    harness->StopsOnInterrupt();
}

}  // namespace
