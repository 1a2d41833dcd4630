#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "rig/dvr/dialogue/Dialogue_1_0.h"
#include "rig/dvr/dialogue/Dialogue_2_0.h"
#include "rig/dvr/dialogue/Session.h"
#include "tests/rig/dvr/Backend.h"
#include "tests/rig/dvr/Failures.h"
#include "tests/rig/dvr/FixedRecordings.h"
#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using rig::dvr::Connection;
using rig::dvr::DeliveryFolder;
using rig::dvr::Dialogue;
using rig::dvr::Dialogue_1_0;
using rig::dvr::Dialogue_2_0;
using rig::dvr::Endpoint;
using rig::dvr::ExitStatus;
using rig::dvr::Injector;
using rig::dvr::Message;
using rig::dvr::Milliseconds;
using rig::dvr::Session;
using rig::dvr::SessionTimes;
using rig::dvr::Transcript;

class SessionTest : public testing::Test {
 protected:
    /// Plays the dialogue against a backend with the script, to its end.
    void Play(Dialogue& dialogue, const SessionTimes& times, Backend::Script script) {
        Backend backend(std::move(script));
        const Endpoint endpoint("127.0.0.1", backend.Port());
        Connection connection = Connection::Open(endpoint, kLong);
        Transcript transcript(out_, false);
        Session session(connection, dialogue, transcript, times);
        if (injector_.HasDefects()) {
            session.Misbehave(injector_, endpoint);
        }
        if (delivery_) {
            session.Deliver(*delivery_);
        }
        session.Run();
    }

    FixedRecordings recordings_;
    Injector injector_{recordings_, 2, 0};
    std::optional<DeliveryFolder> delivery_;
    std::ostringstream out_;
    TemporaryFolder folder_;
    Dialogue_1_0 one_{recordings_};
    Dialogue_2_0 two_{recordings_, folder_.Path() / "velloranFail"};
};

/// @return the name of the answer
std::string AnswerTo(BackendConnection& backend, const std::string& request) {
    return Message::Parse(RequestOf(backend, request)).Name();
}

TEST_F(SessionTest, PlaysAWholeExportIn10) {
    Play(one_, {kLong, kLong, Milliseconds(1)}, [](BackendConnection& backend) {
        EXPECT_EQ(backend.Read(), R"(<msg req="OK"/>)");
        EXPECT_EQ(AnswerTo(backend, R"(<msg req="GET_XML"/>)"), "XML");
        for (const char* file :
             {R"(path="EVT1" file="m.xml")", R"(path="EVT1" file="a.ts")", R"(path="EVT1" file="b.ts")",
              R"(path="EVT2" file="m.xml")", R"(path="EVT2" file="c.ts")"}) {
            EXPECT_EQ(AnswerTo(backend, std::string(R"(<msg req="GET_FILE" )") + file + "/>"),
                      "FILE_COMPLETE");
        }
        backend.Send(
            R"(<msg req="EVENT_XFER_COMPLETE"><events><string>EVT1</string><string>EVT2</string></events>)"
            R"(</msg>)");
        backend.Send(R"(<msg req="DONE"/>)");
        EXPECT_TRUE(backend.IsClosedByPeer());
    });
    EXPECT_EQ(one_.Summary(), "exported 2 of 2 events, 5 files, 22 bytes");
    EXPECT_NE(out_.str().find(R"(<- GET_FILE path="EVT1" file="a.ts")"), std::string::npos) << out_.str();
}

TEST_F(SessionTest, AnswersTwoMessagesInARow) {
    Play(two_, {kLong, kLong, Milliseconds(1)}, [](BackendConnection& backend) {
        backend.Read();
        backend.Send(R"(<msg req="UPDATE_SOFTWARE" path="p" file="f" protocolVersion="2.0"/>)");
        backend.Send(R"(<msg req="UPDATE_CONFIGURATION" protocolVersion="2.0" message="&lt;a/&gt;"/>)");
        EXPECT_EQ(Message::Parse(backend.Read()).Name(), "SOFTWARE_UPDATE_CONFIRM");
        EXPECT_EQ(Message::Parse(backend.Read()).Name(), "CONFIGURATION_UPDATE_ERROR");
        EXPECT_TRUE(backend.IsClosedByPeer());
    });
}

TEST_F(SessionTest, MeetsASecondRequestWhileTheFileIsInTransfer) {
    Play(two_, {kLong, kLong, Milliseconds(500)}, [](BackendConnection& backend) {
        const auto request = [](const char* file) {
            return std::string(R"(<msg req="GET_FILE" reid="EVT2" path="EVT2" file=")") + file +
                   R"(" protocolVersion="2.0"/>)";
        };
        backend.Read();
        EXPECT_EQ(AnswerTo(backend, R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0"/>)"), "EVENT_LIST");
        EXPECT_EQ(AnswerTo(backend, R"(<msg req="NEXT_EVENT" reid="EVT2" protocolVersion="2.0"/>)"), "EVENT");
        EXPECT_EQ(AnswerTo(backend, request("m.xml")), "FILE_COMPLETE");
        backend.Send(request("c.ts"));
        EXPECT_EQ(AnswerTo(backend, request("c.ts")), "XFER_IN_PROGRESS");
        EXPECT_EQ(Message::Parse(backend.Read()).Name(), "FILE_COMPLETE");
        EXPECT_EQ(AnswerTo(backend, R"(<msg req="EVENT_XFER_COMPLETE" reid="EVT2" protocolVersion="2.0"/>)"),
                  "EVENT_XFER_ACK");
        backend.Send(R"(<msg req="DONE" protocolVersion="2.0"/>)");
    });
    EXPECT_TRUE(two_.IsDone());
}

TEST_F(SessionTest, TransfersAFileAtTheRate) {
    recordings_.contents[{"EVT1", "a.ts"}] = std::string(3000, 'x');
    EXPECT_THROW(Play(two_, {kLong, kLong, {kLong, 10'000}},
                      [](BackendConnection& backend) {
                          StartEvent(backend, "EVT1");
                          const auto start = rig::dvr::Clock::now();
                          EXPECT_EQ(AnswerTo(backend, GetFile("EVT1", "a.ts")), "FILE_COMPLETE");
                          EXPECT_GE(rig::dvr::Clock::now() - start, Milliseconds(300));
                          EXPECT_LT(rig::dvr::Clock::now() - start, kLong);
                      }),
                 rig::dvr::Breach);
}

TEST_F(SessionTest, HandlesRequestsWhileAFileIsTransferredAtARate) {
    recordings_.contents[{"EVT1", "a.ts"}] = std::string(5000, 'x');
    delivery_.emplace(folder_.Path() / "copies", recordings_);
    EXPECT_THROW(Play(two_, {kLong, kLong, {kLong, 10'000}},
                      [](BackendConnection& backend) {
                          StartEvent(backend, "EVT1");
                          for (int again = 0; again < 3; ++again) {
                              backend.Send(GetFile("EVT1", "a.ts"));
                          }
                          EXPECT_EQ(Message::Parse(backend.Read()).Name(), "XFER_IN_PROGRESS");
                          EXPECT_EQ(Message::Parse(backend.Read()).Name(), "XFER_IN_PROGRESS");
                          EXPECT_EQ(Message::Parse(backend.Read()).Name(), "FILE_COMPLETE");
                      }),
                 rig::dvr::Breach);
}

TEST_F(SessionTest, DeliversAFileBeforeItSaysSo) {
    const auto copies = folder_.Path() / "copies";
    delivery_.emplace(copies, recordings_);
    EXPECT_THROW(Play(two_, {kLong, kLong, Milliseconds(1)},
                      [&](BackendConnection& backend) {
                          StartEvent(backend, "EVT1");
                          EXPECT_FALSE(std::filesystem::exists(copies / "EVT1/b.ts"));
                          EXPECT_EQ(AnswerTo(backend, GetFile("EVT1", "b.ts")), "FILE_COMPLETE");
                          EXPECT_TRUE(std::filesystem::exists(copies / "EVT1/b.ts"));
                      }),
                 rig::dvr::Breach);
}

TEST_F(SessionTest, LeavesNothingIfTheHarnessLeavesDuringATransfer) {
    const auto copies = folder_.Path() / "copies";
    delivery_.emplace(copies, recordings_);
    EXPECT_THROW(Play(two_, {kLong, kLong, kLong},
                      [&](BackendConnection& backend) {
                          StartEvent(backend, "EVT1");
                          backend.Send(GetFile("EVT1", "b.ts"));
                          EXPECT_EQ(AnswerTo(backend, GetFile("EVT1", "b.ts")), "XFER_IN_PROGRESS");
                          EXPECT_FALSE(std::filesystem::is_empty(copies / "EVT1"));
                      }),
                 rig::dvr::Breach);
    EXPECT_TRUE(std::filesystem::is_empty(copies / "EVT1"));
}

TEST_F(SessionTest, AbandonsATransferForAnotherFileIfTolerant) {
    injector_.AddDefect("no-answer", {"EVENT_XFER_ACK", 1, "", ""});
    const auto copies = folder_.Path() / "copies";
    delivery_.emplace(copies, recordings_);
    recordings_.contents[{"EVT1", "a.ts"}] = std::string(100'000'000, 'x');
    EXPECT_THROW(Play(two_, {kLong, kLong, {kLong, 100'000}},
                      [&](BackendConnection& backend) {
                          StartEvent(backend, "EVT1");
                          backend.Send(GetFile("EVT1", "a.ts"));
                          backend.Send(GetFile("EVT1", "b.ts"));
                          const Message complete = Message::Parse(backend.Read());
                          EXPECT_EQ(complete.Get("file"), "b.ts");
                          EXPECT_TRUE(std::filesystem::exists(copies / "EVT1/b.ts"));
                          EXPECT_FALSE(std::filesystem::exists(copies / "EVT1/a.ts"));
                      }),
                 rig::dvr::Breach);
    EXPECT_NE(out_.str().find("out of place: GET_FILE for 'EVT1'/'b.ts' while 'EVT1'/'a.ts' is in transfer"),
              std::string::npos)
        << out_.str();
}

TEST_F(SessionTest, AbandonsATransferForAnUnknownFileIfTolerant) {
    injector_.AddDefect("no-answer", {"EVENT_XFER_ACK", 1, "", ""});
    EXPECT_THROW(Play(two_, {kLong, kLong, Milliseconds(300)},
                      [&](BackendConnection& backend) {
                          StartEvent(backend, "EVT1");
                          backend.Send(GetFile("EVT1", "a.ts"));
                          EXPECT_EQ(AnswerTo(backend, GetFile("EVT1", "c.ts")), "INVALID_EVENT");
                          EXPECT_EQ(AnswerTo(backend, GetFile("EVT1", "m.xml")), "FILE_COMPLETE");
                      }),
                 rig::dvr::Breach);
}

TEST_F(SessionTest, SaysWhatWasExpectedWhenNothingComes) {
    const std::string failure = FailureOf(ExitStatus::NothingCame, [&] {
        Play(one_, {kShort, kLong, kShort}, [](BackendConnection& backend) {
            backend.Read();
            EXPECT_TRUE(backend.IsClosedByPeer());
        });
    });
    EXPECT_EQ(failure,
              "expected GET_XML or UPDATE_CONFIGURATION, found nothing within 100 ms in answer to OK");
}

TEST_F(SessionTest, SaysWhatWasExpectedWhenTheHarnessLeaves) {
    const auto leave = [](BackendConnection& backend) { backend.Read(); };
    const std::string breach = BreachOf([&] { Play(one_, {kLong, kLong, kShort}, leave); });
    EXPECT_EQ(
        breach,
        "expected GET_XML or UPDATE_CONFIGURATION, found the end of the connection between two messages");
}

TEST_F(SessionTest, SaysWhatWasExpectedWhenAPrefixAnnouncesTooMuch) {
    const std::string text = R"(<msg req="GET_XML"/>)";
    const std::string breach = BreachOf([&] {
        Play(one_, {kLong, kShort, kShort}, [&](BackendConnection& backend) {
            backend.Read();
            backend.SendBytes(std::string(1, static_cast<char>(text.size() * 3 / 2)) + text);
            EXPECT_TRUE(backend.IsClosedByPeer());
        });
    });
    EXPECT_EQ(
        breach,
        "expected GET_XML or UPDATE_CONFIGURATION, found a message that remained unfinished for 100 ms: "
        "announced 30, got 20");
}

TEST_F(SessionTest, SaysWhatWasExpectedWhenAMessageIsOutOfPlace) {
    EXPECT_EQ(BreachOf([&] {
                  Play(one_, {kLong, kLong, kShort}, [](BackendConnection& backend) {
                      backend.Read();
                      backend.Send(R"(<msg req="DONE"/>)");
                      EXPECT_TRUE(backend.IsClosedByPeer());
                  });
              }),
              "expected GET_XML or UPDATE_CONFIGURATION, found DONE in answer to OK");
    EXPECT_NE(out_.str().find("<- DONE\n"), std::string::npos) << out_.str();
}

}  // namespace
