#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/Dvr.h"
#include "tests/support/Harness.h"
#include "tests/support/World.h"

namespace {

using Words = std::vector<std::string>;

constexpr const char* kRecordings = "/mnt/recordings";
constexpr const char* kLog = "/mnt/run.log";

void WriteFile(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

/// Takes all lines up to and including "shutting down". @return them as in the log
std::string RestOfLog(Harness& harness) {
    std::string log;
    std::string line;
    do {
        line = harness.TakesRawLine();
        log += line + "\n";
    } while (line.find(" shutting down") == std::string::npos);
    return log;
}

/// Lets the DVR export two events with two files each. @return the harness's log
std::string Record(const Words& switches, Words arguments) {
    World world;
    for (const char* file : {"Event 1/a&b", "Event 1/c", "E2/a&b", "E2/c"}) {
        WriteFile(std::string(kRecordings) + "/" + file, file);
    }
    arguments.insert(arguments.end(), {"--wire-check", "--recordings", kRecordings});
    Harness harness(switches);
    harness.Listens();
    Dvr dvr(arguments);
    dvr.EndsWithStatus(0);
    harness.GetsSignal(SIGINT);
    std::string log = RestOfLog(harness);
    harness.EndsWithStatus(44);
    return log;
}

/// Replays the log to a harness with these switches.
void Replay(const std::string& log, const Words& switches, int status, const std::string& why = "",
            Words arguments = {}) {
    World world;
    WriteFile(kLog, log);
    Harness harness(switches);
    harness.Listens();
    arguments.insert(arguments.end(), {"--wire-check", "--replay", kLog});
    Dvr dvr(arguments);
    dvr.EndsWithStatus(status, why);
    harness.GetsSignal(SIGINT);
    RestOfLog(harness);
    harness.EndsWithStatus(44);
}

struct RecordedRun {
    const char* name;
    Words switches;   // of the harness
    Words arguments;  // of the recording DVR
};

class SameRunTest : public testing::TestWithParam<RecordedRun> {};

TEST_P(SameRunTest, AsksForTheSame) {
    const std::string log = Record(GetParam().switches, GetParam().arguments);
    Replay(log, GetParam().switches, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Replay, SameRunTest,
    testing::Values(
        RecordedRun{"Export10", {}, {}}, RecordedRun{"Export20", {"-p", "2"}, {"--protocol", "2"}},
        RecordedRun{"Faults", {"-p", "2", "-e", "-f", "-t", "-r", "-x"}, {"--protocol", "2"}},
        RecordedRun{"Rehash", {"-p", "2", "-r", "-d", "30"}, {"--protocol", "2"}},
        RecordedRun{"SoftwareUpdate", {"-p", "2", "-u", "-c", "1"}, {"--protocol", "2"}},
        RecordedRun{"Configuration10", {"-g"}, {}},
        RecordedRun{"Configuration20", {"-p", "2", "-g", "-u"}, {"--protocol", "2"}},
        RecordedRun{"TwoConnections20", {"-p", "2", "-c", "1"}, {"--protocol", "2", "--defect", "reconnect"}},
        RecordedRun{"TwoConnections10", {}, {"--defect", "reconnect"}},
        RecordedRun{"WrongPrefixes20",
                    {"-p", "2", "-z", "-u"},
                    {"--protocol", "2", "--on-size-error", "continue", "--frame-timeout", "0.3"}},
        RecordedRun{"WrongPrefixes10", {"-z"}, {"--on-size-error", "continue", "--frame-timeout", "0.3"}}),
    [](const testing::TestParamInfo<RecordedRun>& tested) { return std::string(tested.param.name); });

TEST(ReplayedRun, KeepsItsSpeedWhenTold) {
    const std::string log = Record({"-p", "2"}, {"--protocol", "2"});
    Replay(log, {"-p", "2"}, 0, "", {"--replay-speed", "recorded"});
}

TEST(ReplayedRun, MayComeFromTheSyslog) {
    std::string log = Record({"-p", "2", "-f"}, {"--protocol", "2"});
    for (std::size_t at = log.find("velloran:"); at != std::string::npos; at = log.find("velloran:", at)) {
        const std::size_t start = log.rfind('\n', at) + 1;  // npos + 1 is the first byte
        const std::string prefix = "Nov 20 14:03:07 rig velloran[212]: ";
        log.replace(start, at - start, prefix);
        at = std::min(log.find('\n', start), log.size());
    }
    Replay(log, {"-p", "2", "-f"}, 0);
}

TEST(ReplayedRun, DiffersInTheDialect) {
    const std::string log = Record({"-p", "2"}, {"--protocol", "2"});
    const std::string line = "got an OK, sending GET_EVENT_LIST";
    const auto end = log.begin() + static_cast<std::ptrdiff_t>(log.find('\n', log.find(line)));
    const auto prefix = std::count(log.begin(), end, '\n') + 2;  // the line after it, counted from 1
    Replay(log, {}, 1,
           std::string(kLog) + ":" + std::to_string(prefix) +
               ": expected GET_EVENT_LIST, announced with 50 bytes (" + line +
               "), found GET_XML, announced with 21 bytes");
}

}  // namespace
