#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "LogClient.h"
#include "SysLogMsg.h"

namespace {

bool sendsToSyslog = false;

}  // namespace

extern "C" {
ssize_t __real_sendmsg(int descriptor, const msghdr* message, int flags);

/// The others write to a file only, and so does our logger unless its syslog is what is measured.
ssize_t __wrap_sendmsg(int descriptor, const msghdr* message, int flags) {
    return sendsToSyslog ? __real_sendmsg(descriptor, message, flags) : 0;
}
}

namespace {

constexpr const char* kText = "Got FILE_COMPLETE for: reid=EV0001  file=EV0001_1.mp4";

std::string TemporaryFile() {
    std::string path = "/tmp/velloran-bench-XXXXXX";
    const int descriptor = mkstemp(path.data());
    if (descriptor == -1) {
        std::abort();
    }
    close(descriptor);
    return path;
}

/// Sends standard output to a file that vanishes with this object.
class OutputToFile {
 public:
    OutputToFile() : path_(TemporaryFile()), saved_(dup(STDOUT_FILENO)) {
        const int file = open(path_.c_str(), O_WRONLY | O_APPEND);
        dup2(file, STDOUT_FILENO);
        close(file);
    }
    ~OutputToFile() {
        dup2(saved_, STDOUT_FILENO);
        close(saved_);
        unlink(path_.c_str());
    }
    OutputToFile(const OutputToFile&) = delete;
    OutputToFile& operator=(const OutputToFile&) = delete;

 private:
    std::string path_;
    int saved_;
};

void LogOneLine(benchmark::State& state) {
    LogClient::Instance()->ProcessName("velloran");
    LogClient::Instance()->Level(127);
    const OutputToFile output;
    for (auto _ : state) {
        SysLogMsg().Log(64, LogClient::Instance()->ProcessName()) << "velloran:" << __LINE__ << " " << kText;
    }
}

void LogOneLineToSyslogAsWell(benchmark::State& state) {
    sendsToSyslog = true;
    LogOneLine(state);
    sendsToSyslog = false;
}

void LogOneLineBySpdlog(benchmark::State& state) {
    const std::string path = TemporaryFile();
    {
        spdlog::logger logger("velloran", std::make_shared<spdlog::sinks::basic_file_sink_st>(path));
        logger.set_pattern("%Y-%m-%dT%H:%M:%S.%fZ %n %l %v");
        logger.flush_on(spdlog::level::trace);
        for (auto _ : state) {
            logger.info("velloran:{} {}", __LINE__, kText);
        }
    }
    unlink(path.c_str());
}

void WriteOneLine(benchmark::State& state) {
    const OutputToFile output;
    const std::string line =
        std::string("2026-11-20T14:03:07.123456Z velloran 64 velloran:52 ") + kText + "\n";
    for (auto _ : state) {
        benchmark::DoNotOptimize(write(STDOUT_FILENO, line.data(), line.size()));
    }
}

BENCHMARK(LogOneLine);
BENCHMARK(LogOneLineToSyslogAsWell);
BENCHMARK(LogOneLineBySpdlog);
BENCHMARK(WriteOneLine);

}  // namespace

BENCHMARK_MAIN();
