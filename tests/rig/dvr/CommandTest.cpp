#include <gtest/gtest.h>

#include <string>

#include "tests/rig/dvr/Backend.h"
#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/support/Program.h"

// The built program: its exit statuses. UsageTest has what it refuses.
namespace {

TEST(Command, PrintsItsVersion) {
    const ProgramResult result = RunRig({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "velloran-rig " VELLORAN_VERSION "\n");
    EXPECT_EQ(result.errors, "");
}

TEST(Command, EndsWithStatus3WhenNobodyListens) {
    const std::string port = std::to_string(UnusedPort());
    const ProgramResult result = RunRig({"dvr", "--port", port, "--wait", "0.1"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.errors, "velloran-rig dvr: expected the harness to listen at 127.0.0.1:" + port +
                                 " within 100 ms, found: Connection refused\n");
}

std::string LastLine(const std::string& text) {
    const auto start = text.rfind('\n', text.size() - 2);
    return text.substr(start + 1);
}

TEST(Command, EndsWithStatus3WhenNothingComes) {
    const ProgramResult result = PlayDvr({"--timeout", "0.1"}, [](BackendConnection& backend) {
        backend.Read();
        EXPECT_TRUE(backend.IsClosedByPeer());
    });
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.errors,
              "velloran-rig dvr: expected GET_XML or UPDATE_CONFIGURATION, found nothing within 100 ms "
              "in answer to OK\n");
    EXPECT_NE(LastLine(result.output).find("not finished: exported 0 of 3 events, 0 files, 0 bytes"),
              std::string::npos)
        << result.output;
}

TEST(Command, EndsWithStatus1WhenTheHarnessLeavesEarly) {
    const ProgramResult result =
        PlayDvr({"--protocol", "2"}, [](BackendConnection& backend) { backend.Read(); });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "velloran-rig dvr: expected UPDATE_SOFTWARE, UPDATE_CONFIGURATION or GET_EVENT_LIST, found the "
              "end of "
              "the connection between two messages\n");
}

TEST(Command, EndsWithStatus1AndOneLineOnMalformedXml) {
    const ProgramResult result = PlayDvr({}, [](BackendConnection& backend) {
        backend.Read();
        backend.Send("<msg req=\"GET\nXML\"");
        EXPECT_TRUE(backend.IsClosedByPeer());
    });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(CountLines(result.errors), 1U) << result.errors;
    EXPECT_NE(result.errors.find("found text that is not one XML document"), std::string::npos)
        << result.errors;
}

}  // namespace
