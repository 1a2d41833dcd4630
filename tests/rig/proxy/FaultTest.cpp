#include <gtest/gtest.h>
#include <poll.h>

#include "rig/fault/FaultTables.h"
#include "tests/rig/proxy/Peers.h"
#include "tests/support/Until.h"

// What faults do to the DVR, and what of that the harness sees.
namespace {

const std::string kOk = rig::fault::FrameOf(R"(<msg req="OK"/>)");
const std::string kNextEvent =
    rig::fault::FrameOf(R"(<msg req="NEXT_EVENT" reid="E1" protocolVersion="2.0" />)");
const std::string kEvent = rig::fault::FrameOf(R"(<msg req="EVENT" reid="E1"/>)");
const std::string kInvalid = rig::fault::FrameOf(R"(<msg req="INVALID_EVENT" reid="x"/>)");
const std::string kDone = rig::fault::FrameOf(R"(<msg req="DONE" />)");

/// A DVR and a harness with a faulty proxy between them.
class Wronged {
 public:
    explicit Wronged(const std::string& fault, const std::string& on = "")
        : proxy_(port_.Number(), 0, OptionsFor(fault, on)) {}

    Peer Calls() const { return CallAt(proxy_.Port()); }
    Peer Accepts() const { return port_.Accepts(); }
    bool HasCall() const { return port_.HasCall(); }

    /// What the log tells of the fault, and of ends.
    std::vector<std::string> Told() const {
        std::vector<std::string> told;
        for (const std::string& line : proxy_.Log()) {
            for (const char* const part :
                 {"\"event\":\"fault\"", "fault-end", "\"taken\":true",
                  "\"event\":\"close\",\"by\":\"proxy\"", "\"event\":\"close\",\"by\":\"dvr\"",
                  "\"event\":\"reset\",\"by\":\"proxy\""}) {
                if (line.find(part) != std::string::npos) {
                    told.emplace_back(part);
                }
            }
        }
        return told;
    }

 private:
    static std::vector<std::string> OptionsFor(const std::string& fault, const std::string& on) {
        std::vector<std::string> options = {"--fault", fault, "--seed", "1"};
        if (not on.empty()) {
            options.insert(options.end(), {"--on", on});
        }
        return options;
    }

    HarnessPort port_;
    RunningProxy proxy_;
};

TEST(ProxyFault, SplitsAMessageAndPassesTheOthersAsTheyAre) {
    const Wronged wronged("split=3", "NEXT_EVENT:2");
    Peer dvr = wronged.Calls();
    Peer harness = wronged.Accepts();
    harness.Sends(kNextEvent);
    EXPECT_EQ(kNextEvent, dvr.ReceivesPiece());
    harness.Sends(kNextEvent);
    EXPECT_EQ(kNextEvent.substr(0, 3), dvr.ReceivesPiece());
    EXPECT_EQ(kNextEvent.substr(3), dvr.ReceivesPiece());
    harness.Sends(kNextEvent);
    EXPECT_EQ(kNextEvent, dvr.ReceivesPiece());
}

TEST(ProxyFault, KeepsTheAnswerToWhatItMadeUpFromTheHarness) {
    const Wronged wronged("event-name=absolute");
    Peer dvr = wronged.Calls();
    Peer harness = wronged.Accepts();
    dvr.Sends(kOk);
    EXPECT_EQ(kOk, harness.Receives(kOk.size()));
    harness.Sends(kNextEvent);
    EXPECT_NE(std::string::npos, dvr.ReceivesPiece().find("/etc/passwd"));
    dvr.Sends(kInvalid);
    EXPECT_EQ(kNextEvent, dvr.Receives(kNextEvent.size()));
    dvr.Sends(kEvent);
    EXPECT_EQ(kEvent, harness.Receives(kEvent.size()));
}

TEST(ProxyFault, PassesWhatTheDvrHadBegunBefore) {
    const Wronged wronged("event-name=absolute");
    Peer dvr = wronged.Calls();
    Peer harness = wronged.Accepts();
    dvr.Sends(kEvent.substr(0, 5));
    EXPECT_EQ(kEvent.substr(0, 5), harness.Receives(5));
    harness.Sends(kNextEvent);
    EXPECT_NE("", dvr.ReceivesPiece());
    dvr.Sends(kEvent.substr(5) + kInvalid);
    EXPECT_EQ(kEvent.substr(5), harness.Receives(kEvent.size() - 5));
    EXPECT_EQ(kNextEvent, dvr.Receives(kNextEvent.size()));
}

TEST(ProxyFault, TakesOnlyTheMessagesThatItIsAfter) {
    const std::string getFile =
        rig::fault::FrameOf(R"(<msg req="GET_FILE" reid="E1" path="E1" file="a" protocolVersion="2.0" />)");
    const std::string complete = rig::fault::FrameOf(R"(<msg req="FILE_COMPLETE" reid="E1"/>)");
    const std::string inProgress = rig::fault::FrameOf(R"(<msg req="XFER_IN_PROGRESS" reid="E1"/>)");
    const Wronged wronged("repeat-file");
    Peer dvr = wronged.Calls();
    Peer harness = wronged.Accepts();
    harness.Sends(getFile);
    EXPECT_EQ(getFile + getFile, dvr.Receives(2 * getFile.size()));
    dvr.Sends(complete + inProgress + complete);
    EXPECT_EQ(complete + complete, harness.Receives(2 * complete.size()));
}

TEST(ProxyFault, ClosesInTheMiddleOfAMessage) {
    const Wronged wronged("close=in-prefix");
    Peer dvr = wronged.Calls();
    Peer harness = wronged.Accepts();
    harness.Sends(kNextEvent);
    EXPECT_EQ("\x80", dvr.ReceivesPiece());
    dvr.ReceivesEnd();
    EXPECT_TRUE(Until([&] { return wronged.Told().size() == 3; }));
    EXPECT_EQ("\"event\":\"close\",\"by\":\"proxy\"", wronged.Told().at(1));
}

TEST(ProxyFault, ResetsInPlaceOfAMessage) {
    const Wronged wronged("reset=before");
    Peer dvr = wronged.Calls();
    Peer harness = wronged.Accepts();
    harness.Sends(kNextEvent);
    dvr.ReceivesReset();
}

TEST(ProxyFault, HalfClosesAndStillReads) {
    const Wronged wronged("half-close=after");
    Peer dvr = wronged.Calls();
    Peer harness = wronged.Accepts();
    harness.Sends(kNextEvent);
    EXPECT_NE(std::string::npos, dvr.ReceivesPiece().find("NEXT_EVENT"));
    dvr.ReceivesEnd();
    dvr.Sends(kEvent);
    EXPECT_TRUE(Until([&] { return wronged.Told().size() == 4; }));
    EXPECT_EQ("\"taken\":true", wronged.Told().at(1));
}

TEST(ProxyFault, LetsTheDvrHangUp) {
    const Wronged wronged("cut-off");
    Peer dvr = wronged.Calls();
    Peer harness = wronged.Accepts();
    harness.Sends(kNextEvent);
    EXPECT_NE("", dvr.ReceivesPiece());
    dvr.Closes();
    EXPECT_TRUE(Until([&] { return wronged.Told().size() == 2; }));
    EXPECT_EQ("\"event\":\"close\",\"by\":\"dvr\"", wronged.Told().at(1));
}

TEST(ProxyFault, OfTheCallIsNotSeenByTheHarness) {
    const Wronged wronged("close-call");
    Peer first = wronged.Calls();
    first.ReceivesEnd();
    EXPECT_FALSE(wronged.HasCall());
    Peer second = wronged.Calls();
    Peer harness = wronged.Accepts();
    second.Sends(kOk);
    EXPECT_EQ(kOk, harness.Receives(kOk.size()));
}

TEST(ProxyFault, RefusesCallsForAWhile) {
    const Wronged wronged("refuse-calls=1000");
    Peer first = wronged.Calls();
    first.ReceivesReset();
    const auto isTaken = [&] {
        try {
            wronged.Calls();
            return true;
        } catch (const std::exception&) {
            return false;
        }
    };
    EXPECT_TRUE(Until([&] { return !isTaken(); }));
    poll(nullptr, 0, 1100);  // many calls to such a port would in the end meet themselves
    EXPECT_TRUE(Until(isTaken));
}

TEST(ProxyFault, SendsTwoMessagesInOnePieceAndNoneOfThemAgain) {
    const std::string complete = rig::fault::FrameOf(R"(<msg req="EVENT_XFER_COMPLETE"><events/></msg>)");
    const std::string done = rig::fault::FrameOf(R"(<msg req="DONE"/>)");
    const Wronged wronged("together-with-done");
    Peer dvr = wronged.Calls();
    Peer harness = wronged.Accepts();
    harness.Sends(complete);
    EXPECT_EQ(complete + done, dvr.ReceivesPiece());
    harness.Sends(kDone + kNextEvent);
    EXPECT_EQ(kNextEvent, dvr.ReceivesPiece());
}

TEST(ProxyFault, PassesWhatIsTooLongToBeTouched) {
    const std::string large = rig::fault::FrameOf(std::string(100'000, 'x'));
    const Wronged wronged("cut-off");
    Peer dvr = wronged.Calls();
    Peer harness = wronged.Accepts();
    harness.Sends(large);
    EXPECT_EQ(large, dvr.Receives(large.size()));
}

}  // namespace
