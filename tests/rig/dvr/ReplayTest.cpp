#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "rig/dvr/replay/Replay.h"
#include "tests/rig/dvr/Backend.h"
#include "tests/rig/dvr/Failures.h"
#include "tests/rig/dvr/HarnessLog.h"
#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using rig::dvr::Clock;
using rig::dvr::EarlierRun;
using rig::dvr::Endpoint;
using rig::dvr::ExitStatus;
using rig::dvr::Milliseconds;
using rig::dvr::Replay;
using rig::dvr::Transcript;
using rig::dvr::WireCheck;

const std::string kOkIn10 = R"(<msg req="OK"/>)";
const std::string kXml = R"(<msg req="XML"><xmlFile/></msg>)";
const std::string kFileComplete = R"(<msg req="FILE_COMPLETE"/>)";
const std::string kGetFile = R"(<msg req="GET_FILE" path="E1" file="a" />)";
const std::string kUnasked = R"(<msg req="NOISE"/>)";

/// A run with two requests, and an unanswered message between them.
HarnessLog Export() {
    HarnessLog log;
    log.Connected().Received(kOkIn10).Line("got an OK, sending GET_XML").Sent(kGetXml.size());
    log.Received(kUnasked).Line("UNSUPPORTED MSG RECEIVED: NOISE");
    log.Received(kXml).Sent(kGetFile.size());
    log.Received(kFileComplete).Line("Got FILE_COMPLETE for: reid=E1  file=a");
    return log;
}

const std::string kInsteadOfGetXml =
    "run.log:6: expected GET_XML, announced with 21 bytes (got an OK, sending GET_XML), found ";

class ReplayTest : public testing::Test {
 protected:
    /// Plays the log to a backend with the script.
    void Play(const std::string& log, Backend::Script script, bool paced = false) {
        folder_.Write("run.log", log);
        EarlierRun run = rig::dvr::ReadEarlierRun((folder_.Path() / "run.log").string());
        run.log = "run.log";
        Backend backend(std::move(script));
        const Endpoint endpoint("127.0.0.1", backend.Port());
        Transcript transcript(out_, false);
        Replay replay(run, endpoint, transcript, {silence_, kShort, paced, piece_, Milliseconds(0)});
        replay.Check(check_);
        try {
            replay.Run(kLong);
        } catch (...) {
            summary_ = replay.Summary();
            throw;
        }
        summary_ = replay.Summary();
    }

    /// @return what the replay of that run finds when the backend plays this script
    std::string DeviationOf(Backend::Script script) {
        return BreachOf([&] { Play(Export().Text(), std::move(script)); });
    }

    TemporaryFolder folder_;
    std::ostringstream out_;
    std::string summary_;
    WireCheck check_{1, true};
    Milliseconds silence_ = kLong;
    std::optional<std::size_t> piece_;
};

TEST_F(ReplayTest, SendsEveryMessageAndEndsWell) {
    Play(Export().Text(), [](BackendConnection& backend) {
        EXPECT_EQ(backend.Read(), kOkIn10);
        backend.Send(kGetXml);
        EXPECT_EQ(backend.Read(), kUnasked);
        EXPECT_EQ(backend.Read(), kXml);
        backend.Send(kGetFile);
        EXPECT_EQ(backend.Read(), kFileComplete);
    });
    EXPECT_EQ(summary_, "replayed 4 of 4 messages, 2 requests as in run.log");
    EXPECT_NE(out_.str().find("-> XML (xmlFile: 0 bytes)\n"), std::string::npos) << out_.str();
    EXPECT_NE(out_.str().find("<- GET_FILE path=\"E1\" file=\"a\"\n"), std::string::npos) << out_.str();
    EXPECT_EQ(check_.Summary(), "wire check: 2 frames, none wrong");
}

TEST_F(ReplayTest, SendsWhatIsNotAMessageToo) {
    const std::string malformed = std::string("<msg\n\0", 6) + std::string(900, 'x');
    HarnessLog log;
    piece_ = 100;
    Play(log.Connected().Received(malformed).Received("").Text(), [&](BackendConnection& backend) {
        EXPECT_EQ(backend.Read(), malformed);
        EXPECT_EQ(backend.Read(), "");
    });
    EXPECT_NE(out_.str().find("-> '<msg\\n\\x00xxx"), std::string::npos) << out_.str();
}

TEST_F(ReplayTest, KeepsThePausesOfTheDvrWhenTold) {
    const auto log = [](const std::string& second) {
        HarnessLog timed("2026-11-20T14:03:01.0Z velloran 1 ");
        timed.Connected().From("2026-11-20T14:03:01.2Z velloran 1 ").Received(kOkIn10);
        return timed.From("2026-11-20T14:03:" + second + "Z velloran 1 ").Received(kUnasked).Text();
    };
    Clock::duration waited{};
    const Backend::Script measure = [&](BackendConnection& backend) {
        const auto start = Clock::now();
        backend.Read();
        backend.Read();
        waited = Clock::now() - start;
    };
    Play(log("01.5"), measure, true);
    EXPECT_GE(waited, Milliseconds(480));
    Play(log("11.5"), measure, false);
    EXPECT_LT(waited, Milliseconds(5000));
}

TEST_F(ReplayTest, NamesTheFirstRequestOfAnotherLength) {
    EXPECT_EQ(DeviationOf([](BackendConnection& backend) {
                  backend.Read();
                  backend.Send(R"(<msg req="UPDATE_CONFIGURATION" txt="x" />)");
                  EXPECT_TRUE(backend.IsClosedByPeer());
              }),
              kInsteadOfGetXml + "UPDATE_CONFIGURATION txt=\"x\", announced with 42 bytes");
    EXPECT_EQ(summary_, "replayed 1 of 4 messages, 0 requests as in run.log");
}

TEST_F(ReplayTest, NamesARequestOfAnotherName) {
    EXPECT_EQ(DeviationOf([](BackendConnection& backend) {
                  backend.Read();
                  backend.Send(R"(<msg req="GET_ALL" />)");
              }),
              kInsteadOfGetXml + "GET_ALL, announced with 21 bytes");
}

TEST_F(ReplayTest, NamesARequestAboutSomethingElse) {
    EXPECT_EQ(
        DeviationOf([](BackendConnection& backend) {
            backend.Read();
            backend.Send(kGetXml);
            backend.Read();
            backend.Read();
            backend.Send(R"(<msg req="GET_FILE" path="E1" file="b" />)");
        }),
        "run.log:14: expected GET_FILE about reid=E1  file=a, announced with 41 bytes (in answer to XML), "
        "found GET_FILE path=\"E1\" file=\"b\", announced with 41 bytes");
}

TEST_F(ReplayTest, NamesARequestThatIsNotAMessage) {
    EXPECT_EQ(DeviationOf([](BackendConnection& backend) {
                  backend.Read();
                  backend.Send(std::string(21, 'x'));
              }),
              kInsteadOfGetXml + "'xxxxxxxxxxxxxxxxxxxxx', announced with 21 bytes");
}

TEST_F(ReplayTest, NamesAnExtraRequest) {
    EXPECT_EQ(DeviationOf([](BackendConnection& backend) {
                  backend.Read();
                  const std::string frame = rig::dvr::EncodeFrame(kGetXml);
                  backend.SendBytes(frame + frame);
                  EXPECT_TRUE(backend.IsClosedByPeer());
              }),
              "run.log:7: expected nothing more before NOISE, found GET_XML, announced with 21 bytes");
}

TEST_F(ReplayTest, NamesAnExtraRequestAtTheEnd) {
    HarnessLog log;
    log.Connected().Received(kUnasked).Line("UNSUPPORTED MSG RECEIVED: NOISE").Line("shutting down");
    EXPECT_EQ(BreachOf([&] {
                  Play(log.Text(), [](BackendConnection& backend) {
                      backend.Read();
                      backend.Send(kGetXml);
                      EXPECT_TRUE(backend.IsClosedByPeer());
                  });
              }),
              "run.log:2: expected nothing more after NOISE, found GET_XML, announced with 21 bytes");
}

TEST_F(ReplayTest, WaitsForNothingAfterTheEndOfTheLog) {
    HarnessLog log;
    Play(log.Connected().Received(kOkIn10).Text(), [](BackendConnection& backend) {
        backend.Read();
        EXPECT_TRUE(backend.IsClosedByPeer());
    });
    EXPECT_EQ(summary_, "replayed 1 of 1 message, 0 requests as in run.log");
}

TEST_F(ReplayTest, NamesTheRequestThatIsMissing) {
    silence_ = kShort;
    EXPECT_EQ(FailureOf(ExitStatus::NothingCame,
                        [&] {
                            Play(Export().Text(), [](BackendConnection& backend) {
                                backend.Read();
                                EXPECT_TRUE(backend.IsClosedByPeer());
                            });
                        }),
              kInsteadOfGetXml + "nothing within 100 ms");
}

TEST_F(ReplayTest, NamesTheRequestAtWhichTheHarnessLeaves) {
    EXPECT_EQ(DeviationOf([](BackendConnection& backend) { backend.Read(); }),
              kInsteadOfGetXml + "the end of the connection between two messages");
}

TEST_F(ReplayTest, ExpectsTheEndOfTheConnectionWhereTheLogHasIt) {
    HarnessLog log;
    log.Connected().Received(kOkIn10).Line("Closing client socket...");
    Play(log.Text(), [](BackendConnection& backend) { backend.Read(); });
    EXPECT_EQ(
        BreachOf([&] {
            Play(log.Text(), [](BackendConnection& backend) {
                backend.Read();
                backend.Send(kGetXml);
            });
        }),
        "run.log:2: expected the end of the connection after OK, found GET_XML, announced with 21 bytes");
    silence_ = kShort;
    EXPECT_EQ(BreachOf([&] {
                  Play(log.Text(), [](BackendConnection& backend) {
                      backend.Read();
                      EXPECT_TRUE(backend.IsClosedByPeer());
                  });
              }),
              "run.log:2: expected the end of the connection after OK, found it still open after 100 ms");
}

TEST_F(ReplayTest, AcceptsAWrongPrefixThatTheLogHas) {
    HarnessLog log;
    log.Connected({"'sizeError' flag set"}).Received(kOkIn10).Line("got an OK, sending GET_XML").Sent(31);
    log.Line("sent: size= 1/31/21  '" + kGetXml + "'").Received(kUnasked);
    Play(log.Text(), [](BackendConnection& backend) {
        backend.Read();
        backend.SendBytes("\x1f" + kGetXml);
        EXPECT_EQ(backend.Read(), kUnasked);
    });
    EXPECT_EQ(summary_, "replayed 2 of 2 messages, 1 request as in run.log");
    EXPECT_EQ(
        BreachOf([&] {
            Play(log.Text(), [](BackendConnection& backend) {
                backend.Read();
                backend.SendBytes("\x1f<msg req=\"GET_ALL\" />");
            });
        }),
        "run.log:7: expected GET_XML, announced with 31 bytes (got an OK, sending GET_XML), found GET_ALL, "
        "announced with 31 bytes, got 21");
}

TEST_F(ReplayTest, NamesAWrongPrefixThatTheLogDoesNotHave) {
    EXPECT_EQ(DeviationOf([](BackendConnection& backend) {
                  backend.Read();
                  backend.SendBytes("\x1f" + kGetXml);
                  EXPECT_TRUE(backend.IsClosedByPeer());
              }),
              kInsteadOfGetXml + "GET_XML, announced with 31 bytes, got 21");
}

TEST_F(ReplayTest, DoesNotCompareWhatTheLogShowsInAnotherForm) {
    const std::string request = R"(<msg req="GET_FILE" path="E1" file="&#x41;" />)";
    HarnessLog log;
    log.Connected().Received(kXml).Sent(request.size()).Received(kFileComplete);
    log.Line("Got FILE_COMPLETE for: reid=E1  file=&#x41;");
    Play(log.Text(), [&](BackendConnection& backend) {
        backend.Read();
        backend.Send(request);
        backend.Read();
    });
    EXPECT_EQ(summary_, "replayed 2 of 2 messages, 1 request as in run.log");
}

/// Plays the harness of Export().
void ServeExport(BackendConnection& backend) {
    backend.Read();
    RequestOf(backend, kGetXml);
    backend.Read();
    RequestOf(backend, kGetFile);
}

TEST(ReplayOption, EndsWithStatus0AndAClosingLine) {
    const TemporaryFolder folder;
    folder.Write("run.log", Export().Line("shutting down").Connected().Received(kOkIn10).Text());
    const std::string log = (folder.Path() / "run.log").string();
    const ProgramResult result = PlayDvr({"--replay", log, "--wire-check"}, [](BackendConnection& backend) {
        ServeExport(backend);
        EXPECT_TRUE(backend.IsClosedByPeer());
    });
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output.find("replaying 4 messages of " + log + ", protocol 1.0, at full speed\n"),
              std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find(log + " holds more than one run"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("replayed 4 of 4 messages, 2 requests as in " + log +
                                 "; wire check: 2 frames, none wrong\n"),
              std::string::npos)
        << result.output;
}

TEST(ReplayOption, SaysWhereTheLogEnds) {
    const TemporaryFolder folder;
    folder.Write("run.log", Export().Line("expecting a message of 900 bytes").Text());
    const std::string log = (folder.Path() / "run.log").string();
    const ProgramResult result = PlayDvr({"--replay", log, "--protocol", "1"}, ServeExport);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.output.find("; its last line is 19, and the message announced in line 19 is "
                                 "incomplete\n"),
              std::string::npos)
        << result.output;
}

}  // namespace
