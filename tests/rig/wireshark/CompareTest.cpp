#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/rig/wireshark/Capture.h"
#include "tests/support/Dvr.h"
#include "tests/support/Harness.h"
#include "tests/support/World.h"

// Live captures of exports compared with the harness's log of them.

namespace {

using Words = std::vector<std::string>;

constexpr const char* kRecordings = "/mnt/recordings";
constexpr const char* kCapture = "/mnt/run.pcapng";
constexpr const char* kLog = "/mnt/run.log";

struct Run {
    const char* name;
    Words switches;   // of the harness
    Words arguments;  // of the DVR
    const char* result;
};

/// Writes the log up to and including "shutting down" to kLog.
void WriteLog(Harness& harness) {
    std::ofstream log(kLog, std::ios::binary);
    std::string line;
    do {
        line = harness.TakesRawLine();
        log << line << "\n";
    } while (line.find(" shutting down") == std::string::npos);
}

/// Lets the DVR export one event with two files, and captures that.
void Record(const Run& run) {
    for (const char* file : {"a&b.xml", "<v>"}) {
        const std::filesystem::path path = std::string(kRecordings) + "/Event 1/" + file;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << file;
    }
    Words arguments = run.arguments;
    arguments.insert(arguments.end(), {"--recordings", kRecordings});
    Capture capture(kCapture);
    Harness harness(run.switches);
    harness.Listens();
    Dvr dvr(arguments);
    dvr.EndsWithStatus(0);
    harness.GetsSignal(SIGINT);
    WriteLog(harness);
    harness.EndsWithStatus(44);
    capture.Stop();
}

/// If the environment names a folder, the captures and logs stay there: that is how those next to this file
/// are made.
void Keep(const std::string& name) {
    const char* const folder = std::getenv("VELLORAN_KEEP_CAPTURES");
    if (folder) {
        const auto overwrite = std::filesystem::copy_options::overwrite_existing;
        std::filesystem::copy_file(kCapture, std::string(folder) + "/" + name + ".pcapng", overwrite);
        std::filesystem::copy_file(kLog, std::string(folder) + "/" + name + ".log", overwrite);
    }
}

struct Outcome {
    int status;
    std::string output;  // with standard error
};

Outcome Compare(const std::string& capture, const std::string& log) {
    FILE* const pipe = popen(
        ("VELLORAN_RIG=" VELLORAN_RIG " " VELLORAN_COMPARE " " + capture + " " + log + " 2>&1").c_str(), "r");
    std::string output;
    for (int byte = fgetc(pipe); byte not_eq EOF; byte = fgetc(pipe)) {
        output += static_cast<char>(byte);
    }
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

class LiveCapture : public testing::TestWithParam<Run> {};

TEST_P(LiveCapture, HasTheMessagesOfTheLog) {
    World world;
    Record(GetParam());
    Keep(GetParam().name);
    const Outcome outcome = Compare(kCapture, kLog);
    EXPECT_EQ(GetParam().result, outcome.output) << ReadFile(kLog);
    EXPECT_EQ(0, outcome.status);
}

const Words kGoesOn = {"--on-size-error", "continue", "--frame-timeout", "0.3"};
const Words kGoesOn20 = {"--protocol", "2", "--on-size-error", "continue", "--frame-timeout", "0.3"};

INSTANTIATE_TEST_SUITE_P(
    Compare, LiveCapture,
    testing::Values(
        Run{"Export10", {}, {}, "the same: 4 messages of the DVR, 5 of the harness\n"},
        Run{"TwoConnections10",
            {},
            {"--defect", "reconnect"},
            "the same: 8 messages of the DVR, 10 of the harness\n"},
        Run{"Export20",
            {"-p", "2", "-e", "-x"},
            {"--protocol", "2"},
            "the same: 8 messages of the DVR, 8 of the harness\n"},
        Run{"WrongPrefixes10", {"-z"}, kGoesOn, "the same: 4 messages of the DVR, 5 of the harness\n"},
        Run{"WrongPrefixes20",
            {"-p", "2", "-z", "-u"},
            kGoesOn20,
            "the same: 7 messages of the DVR, 7 of the harness\n"},
        Run{"SplitFrames",
            {"-p", "2"},
            {"--protocol", "2", "--segment", "11", "--gap", "1"},
            "the same: 6 messages of the DVR, 6 of the harness\n"}),
    [](const testing::TestParamInfo<Run>& tested) { return std::string(tested.param.name); });

}  // namespace
