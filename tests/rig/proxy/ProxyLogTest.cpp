#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <regex>
#include <stdexcept>

#include "rig/base/Descriptor.h"
#include "rig/proxy/ProxyLog.h"
#include "tests/support/TemporaryFolder.h"

namespace rig::proxy {
namespace {

/// @return the one line that is logged, without its time
std::string Logged(const std::function<void(ProxyLog&)>& event) {
    const TemporaryFolder folder;
    const std::string file = (folder.Path() / "log").string();
    ProxyLog log(file);
    event(log);
    std::ifstream written(file);
    std::string line;
    std::string rest;
    std::getline(written, line);
    EXPECT_FALSE(std::getline(written, rest));
    const std::regex time(R"(^\{"time":"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z",)");
    EXPECT_TRUE(std::regex_search(line, time)) << line;
    return std::regex_replace(line, time, "{");
}

TEST(ProxyLog, WritesALineForEachEvent) {
    EXPECT_EQ(R"({"event":"listen","address":"0.0.0.0:5001","harness":"127.0.0.1:5002"})",
              Logged([](ProxyLog& log) { log.Listening("0.0.0.0:5001", "127.0.0.1:5002"); }));
    EXPECT_EQ(R"({"event":"harness","pid":7,"command":"velloran -p 2"})",
              Logged([](ProxyLog& log) { log.HarnessStarted(7, "velloran -p 2"); }));
    EXPECT_EQ(R"({"event":"harness-end","status":44})", Logged([](ProxyLog& log) {
                  log.HarnessEnded({44, {}});
              }));
    EXPECT_EQ(R"({"event":"harness-end","signal":6})", Logged([](ProxyLog& log) {
                  log.HarnessEnded({{}, 6});
              }));
    EXPECT_EQ(R"({"connection":1,"event":"connect","from":"10.0.0.5:40000"})",
              Logged([](ProxyLog& log) { log.Connected(1, "10.0.0.5:40000"); }));
    EXPECT_EQ(R"({"connection":2,"event":"refused","error":"Connection refused"})",
              Logged([](ProxyLog& log) { log.Refused(2, "Connection refused"); }));
    EXPECT_EQ(R"({"connection":3,"event":"half-close","by":"dvr"})",
              Logged([](ProxyLog& log) { log.HalfClosed(3, Party::Dvr); }));
    EXPECT_EQ(R"({"connection":3,"event":"close","by":"harness"})",
              Logged([](ProxyLog& log) { log.Closed(3, Party::Harness); }));
    EXPECT_EQ(R"({"connection":3,"event":"close","by":"proxy"})",
              Logged([](ProxyLog& log) { log.Closed(3, Party::Proxy); }));
    EXPECT_EQ(R"({"connection":4,"event":"reset","by":"dvr","error":"Connection reset by peer"})",
              Logged([](ProxyLog& log) { log.Reset(4, Party::Dvr, "Connection reset by peer"); }));
}

TEST(ProxyLog, WritesWhatAFrameIs) {
    EXPECT_EQ(R"({"connection":1,"event":"frame","direction":"dvr->harness","message":"OK","prefixBytes":1,)"
              R"("textBytes":15})",
              Logged([](ProxyLog& log) {
                  log.Frame(1, Party::Dvr, {"OK", 1, 15, 15});
              }));
    EXPECT_EQ(
        R"({"connection":1,"event":"frame","direction":"harness->dvr","prefixBytes":2,"textBytes":300})",
        Logged([](ProxyLog& log) {
            log.Frame(1, Party::Harness, {"", 2, 300, 300});
        }));
    EXPECT_EQ(R"({"connection":1,"event":"partial","direction":"harness->dvr","prefixBytes":2,"textBytes":7,)"
              R"("announced":300})",
              Logged([](ProxyLog& log) {
                  log.Partial(1, Party::Harness, {"", 2, 7, 300});
              }));
    EXPECT_EQ(
        R"({"connection":1,"event":"partial","direction":"dvr->harness","prefixBytes":1,"textBytes":0})",
        Logged([](ProxyLog& log) {
            log.Partial(1, Party::Dvr, {"", 1, 0, {}});
        }));
}

TEST(ProxyLog, WritesWhatAFrameIsAbout) {
    EXPECT_EQ(
        R"({"connection":1,"event":"frame","direction":"dvr->harness","message":"FILE_COMPLETE","reid":"E",)"
        R"("file":"","prefixBytes":1,"textBytes":60})",
        Logged([](ProxyLog& log) {
            log.Frame(1, Party::Dvr, {"FILE_COMPLETE", 1, 60, 60, "E", ""});
        }));
    EXPECT_EQ(R"({"connection":1,"event":"frame","direction":"dvr->harness","message":"EVENT","reid":"E",)"
              R"("prefixBytes":1,"textBytes":60,"taken":true})",
              Logged([](ProxyLog& log) {
                  log.Taken(1, {"EVENT", 1, 60, 60, "E", {}});
              }));
}

TEST(ProxyLog, WritesWhichFaultsAreToAct) {
    const auto planned = [](const std::string& fault, const std::string& on) {
        return Logged([&](ProxyLog& log) {
            fault::Order order = fault::OrderOf(fault);
            if (!on.empty()) {
                fault::PlaceOn(order, on);
            }
            log.Planned(order);
        });
    };
    EXPECT_EQ(R"({"event":"plan","fault":"bytewise"})", planned("bytewise", ""));
    EXPECT_EQ(R"({"event":"plan","fault":"split","value":"3","on":"GET_FILE"})",
              planned("split=3", "GET_FILE"));
    EXPECT_EQ(R"({"event":"plan","fault":"split","value":"1","on":"GET_FILE:2"})",
              planned("split", "GET_FILE:2"));
}

TEST(ProxyLog, WritesWhatAFaultDoes) {
    EXPECT_EQ(R"({"connection":1,"event":"fault","fault":"split","value":"3","message":"GET_FILE"})",
              Logged([](ProxyLog& log) { log.FaultActs(1, "split", "3", "GET_FILE"); }));
    EXPECT_EQ(R"({"connection":1,"event":"fault","fault":"deep","message":"DONE"})",
              Logged([](ProxyLog& log) { log.FaultActs(1, "deep", "", "DONE"); }));
    EXPECT_EQ(R"({"connection":1,"event":"kept-open","fault":"hang"})",
              Logged([](ProxyLog& log) { log.KeptOpen(1, "hang"); }));
    EXPECT_EQ(R"({"connection":1,"event":"fault-end","fault":"hang"})",
              Logged([](ProxyLog& log) { log.FaultEnds(1, "hang"); }));
}

TEST(ProxyLog, WritesWhichMessagesAFaultHasSent) {
    const auto sent = [](const std::string& bytes) {
        return Logged([&bytes](ProxyLog& log) { log.Sent(1, "flood", bytes); });
    };
    const std::string one = "\x11<msg req=\"DONE\"/>";
    const std::string other = "\x0f<msg req=\"OK\"/>";
    EXPECT_EQ(R"({"connection":1,"event":"sent","fault":"flood","bytes":3,"text":"\\x11<m"})",
              sent(one.substr(0, 3)));
    EXPECT_NE(std::string::npos,
              sent(one + other + one).find(R"("bytes":52,"messages":["DONE","OK"],"text")"));
    std::string many;
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        many += std::string("\x0e<msg req=\"") + letter + "\"/>";
    }
    EXPECT_NE(std::string::npos, sent(many).find(R"(["A","B","C","D","E","F","G","H"])"));
}

TEST(ProxyLog, IsJsonWhateverAMessageIsCalled) {
    const std::string line = Logged([](ProxyLog& log) {
        log.Frame(1, Party::Dvr, {"\"\n\\\xff\x01", 1, 15, 15});
    });
    EXPECT_EQ("\"\n\\\xef\xbf\xbd\x01", nlohmann::json::parse(line).at("message"));
}

TEST(ProxyLog, ReplacesAnOlderFile) {
    const TemporaryFolder folder;
    folder.Write("log", "an older log\n");
    ProxyLog((folder.Path() / "log").string()).Connected(1, "");
    std::ifstream written(folder.Path() / "log");
    std::string line;
    std::getline(written, line);
    EXPECT_EQ('{', line.front());
}

TEST(ProxyLog, SaysThatItCannotBeWritten) {
    ProxyLog full("/dev/full");
    EXPECT_THROW(full.Connected(1, ""), std::runtime_error);
    EXPECT_THROW(ProxyLog("/nowhere/log"), std::runtime_error);
}

/// Standard output is a pipe that nobody reads any more.
class UnreadOutput {
 public:
    UnreadOutput() : before_(dup(STDOUT_FILENO)) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(0, pipe(ends));
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        signal(SIGPIPE, SIG_IGN);
    }
    ~UnreadOutput() {
        dup2(before_.Number(), STDOUT_FILENO);
        signal(SIGPIPE, SIG_DFL);
    }
    UnreadOutput(const UnreadOutput&) = delete;
    UnreadOutput& operator=(const UnreadOutput&) = delete;

 private:
    Descriptor before_;
};

TEST(ProxyLog, LosesNothingThatAReaderOfStandardOutputWants) {
    const UnreadOutput output;
    ProxyLog log("");
    EXPECT_NO_THROW(log.Connected(1, ""));
    EXPECT_NO_THROW(log.Connected(2, ""));
}

TEST(TimeText, HasMicroseconds) {
    EXPECT_EQ("2026-11-20T14:03:07.000456Z", TimeText(1795183387000456));
}

}  // namespace
}  // namespace rig::proxy
