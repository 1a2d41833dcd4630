#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "rig/dvr/wire/Message.h"
#include "tests/rig/dvr/Backend.h"
#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/rig/dvr/UsageError.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

// The built program: its command line, its exit statuses, and whole dialogues over TCP.
namespace {

using rig::dvr::Message;
using Arguments = std::vector<std::string>;

INSTANTIATE_TEST_SUITE_P(
    Command, UsageErrorTest,
    testing::Values(
        UsageCase{"NoSubcommand", {}, ": expected a subcommand: dvr, judge, run or diff" + kMoreHelp},
        UsageCase{"OtherSubcommand", {"dvd"}, ": The following argument was not expected: dvd" + kMoreHelp},
        UsageCase{"OtherOption",
                  {"dvr", "--bogus"},
                  " dvr: The following argument was not expected: --bogus" + kMoreDvrHelp},
        UsageCase{"OtherProtocol",
                  {"dvr", "--protocol", "3"},
                  " dvr: --protocol: expected a number from 1 to 2, found '3'" + kMoreDvrHelp},
        UsageCase{"PortZero",
                  {"dvr", "--port", "0"},
                  " dvr: --port: expected a number from 1 to 65535, found '0'" + kMoreDvrHelp},
        UsageCase{"PortTooHigh",
                  {"dvr", "--port", "65536"},
                  " dvr: --port: expected a number from 1 to 65535, found '65536'" + kMoreDvrHelp},
        UsageCase{"PortNotANumber",
                  {"dvr", "--port", "5001x"},
                  " dvr: --port: expected a number from 1 to 65535, found '5001x'" + kMoreDvrHelp},
        UsageCase{"PortForgesALine",
                  {"dvr", "--port", "1\n2"},
                  " dvr: --port: expected a number from 1 to 65535, found '1\\n2'" + kMoreDvrHelp},
        UsageCase{"WaitNegative",
                  {"dvr", "--wait", "-1"},
                  " dvr: --wait: expected a number from 0 to 86400, found '-1'" + kMoreDvrHelp},
        UsageCase{"TimeoutNotANumber",
                  {"dvr", "--timeout", "nan"},
                  " dvr: --timeout: expected a number from 0 to 86400, found 'nan'" + kMoreDvrHelp},
        UsageCase{"FrameTimeoutTooLong",
                  {"dvr", "--frame-timeout", "86401"},
                  " dvr: --frame-timeout: expected a number from 0 to 86400, found '86401'" + kMoreDvrHelp},
        UsageCase{"TransferTimeFraction",
                  {"dvr", "--transfer-time", "1.5"},
                  " dvr: --transfer-time: expected a number from 0 to 3600000, found '1.5'" + kMoreDvrHelp},
        UsageCase{
            "NoRecordings",
            {"dvr", "--recordings", "/nonexistent"},
            " dvr: --recordings: expected a folder that can be read, found '/nonexistent': No such file or "
            "directory"},
        UsageCase{
            "EmptyRecordingsName",
            {"dvr", "--recordings", ""},
            " dvr: --recordings: expected a folder that can be read, found '': No such file or directory"},
        UsageCase{
            "RecordingsInAFile",
            {"dvr", "--recordings", "/dev/null"},
            " dvr: --recordings: expected a folder that can be read, found '/dev/null': Not a directory"}),
    NameOf);

TEST(Command, RefusesAnUnresolvableHost) {
    const ProgramResult result = RunRig({"dvr", "--host", "nosuch.invalid"});
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(CountLines(result.errors), 1U) << result.errors;
    EXPECT_NE(result.errors.find("expected a host that can be resolved, found 'nosuch.invalid'"),
              std::string::npos)
        << result.errors;
}

TEST(Command, RefusesAnEmptyRecordingsFolder) {
    const TemporaryFolder folder;
    const ProgramResult result = RunRig({"dvr", "--recordings", folder.Path().string()});
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(result.errors, "velloran-rig dvr: --recordings: expected a folder for each event, found '" +
                                 folder.Path().string() + "': there is none in it\n");
}

TEST(Command, PrintsItsVersion) {
    const ProgramResult result = RunRig({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "velloran-rig " VELLORAN_VERSION "\n");
    EXPECT_EQ(result.errors, "");
}

TEST(Command, PrintsItsOptions) {
    const ProgramResult all = RunRig({"--help"});
    EXPECT_EQ(all.status, 0);
    EXPECT_NE(all.output.find("dvr"), std::string::npos) << all.output;
    const ProgramResult dvr = RunRig({"dvr", "--help"});
    EXPECT_EQ(dvr.status, 0);
    for (const char* option :
         {"--protocol", "--host", "--port", "--recordings", "--wait", "--timeout", "--frame-timeout",
          "--transfer-time", "--rate", "--deliver", "--segment", "--gap", "Exit status"}) {
        EXPECT_NE(dvr.output.find(option), std::string::npos) << option;
    }
    EXPECT_EQ(dvr.errors, "");
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

TEST(Command, EndsWithStatus1WhenAPrefixAnnouncesTooMuch) {
    const ProgramResult result = PlayDvr({"--frame-timeout", "0.1"}, [](BackendConnection& backend) {
        backend.Read();
        backend.SendBytes("\x1e<msg req=\"GET_XML\"/>");
        EXPECT_TRUE(backend.IsClosedByPeer());
    });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              "velloran-rig dvr: expected GET_XML or UPDATE_CONFIGURATION, found a message that remained "
              "unfinished for 100 ms: announced 30, got 20\n");
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

TEST(Command, EndsWithStatus0AfterARefusedConfiguration) {
    const ProgramResult result = PlayDvr({}, [](BackendConnection& backend) {
        backend.Read();
        backend.Send(R"(<msg req="UPDATE_CONFIGURATION" txt="&lt;FakeConfig /&gt;"/>)");
        EXPECT_EQ(backend.Read(), R"(<msg req="CONFIGURATION_UPDATE_ERROR"/>)");
        EXPECT_TRUE(backend.IsClosedByPeer());
    });
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(LastLine(result.output).find("refused the configuration update, which ends the dialogue"),
              std::string::npos)
        << result.output;
}

TEST(Command, ExportsAFolderIn20) {
    const TemporaryFolder folder;
    folder.Write("E 1/description.xml", "<a/>");
    folder.Write("E 1/video", "abc");
    const ProgramResult result = PlayDvr(
        {"--protocol", "2", "--transfer-time", "1", "--recordings", folder.Path().string()},
        [](BackendConnection& backend) {
            EXPECT_EQ(backend.Read(), R"(<msg req="OK" protocolVersion="2.0"/>)");
            const Message list =
                Message::Parse(RequestOf(backend, R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0"/>)"));
            EXPECT_STREQ(list.Root().child("events").child("event").text().get(), "E 1");
            RequestOf(backend, R"(<msg req="NEXT_EVENT" reid="E 1" protocolVersion="2.0"/>)");
            const std::string start =
                R"(<msg req="GET_FILE" reid="E 1" path="E 1" protocolVersion="2.0" file=)";
            RequestOf(backend, start + R"("description.xml"/>)");
            const Message complete = Message::Parse(RequestOf(backend, start + R"("video" rehash="true"/>)"));
            EXPECT_EQ(complete.Get("hashCode"),
                      "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
            EXPECT_EQ(complete.Get("length"), "3");
            RequestOf(backend, R"(<msg req="EVENT_XFER_COMPLETE" reid="E 1" protocolVersion="2.0"/>)");
            backend.Send(R"(<msg req="DONE" protocolVersion="2.0" duration="5"/>)");
            EXPECT_TRUE(backend.IsClosedByPeer());
        });
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output.find('\033'), std::string::npos);
    EXPECT_NE(LastLine(result.output).find("exported 1 of 1 event, 2 files, 7 bytes"), std::string::npos)
        << result.output;
}

}  // namespace
