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
        session.Adopt(habits_);
        session.Run();
    }

    FixedRecordings recordings_;
    Injector injector_{recordings_, 2, 0};
    std::optional<DeliveryFolder> delivery_;
    rig::dvr::Habits habits_;
    std::ostringstream out_;
    TemporaryFolder folder_;
    Dialogue_1_0 one_{recordings_};
    Dialogue_2_0 two_{recordings_, folder_.Path() / "velloranFail"};
};

/// @return the name of the answer
std::string AnswerTo(BackendConnection& backend, const std::string& request) {
    return Message::Parse(RequestOf(backend, request)).Name();
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

TEST_F(SessionTest, KeepsAMessageThatSharesTheSegmentOfTheNext) {
    habits_.sharesSegments = true;
    EXPECT_THROW(Play(two_, {kLong, kLong, Milliseconds(200)},
                      [](BackendConnection& backend) {
                          StartEvent(backend, "EVT1");
                          const auto start = rig::dvr::Clock::now();
                          backend.Send(GetFile("EVT1", "a.ts"));
                          backend.Send(GetFile("EVT1", "a.ts"));
                          EXPECT_EQ(Message::Parse(backend.Read()).Name(), "XFER_IN_PROGRESS");
                          EXPECT_GE(rig::dvr::Clock::now() - start, Milliseconds(200));
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
