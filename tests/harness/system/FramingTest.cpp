#include <gtest/gtest.h>

#include "tests/support/Dialogue.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class Framing : public Dialogue {
 protected:
    void SetUp() override { Connect(); }

    /// The harness takes this text for an OK.
    void AnswersOk(const std::string& text, Here here = Here::current()) {
        harness->LogsInFull(IncomingTrace(text), here);
        harness->LogsInFull({{1, "got an OK, sending GET_XML"}, {64, "hdr[0]= 15"}}, here);
        dvr->Receives(v1::kGetXml, here);
    }
};

TEST_F(Framing, ReadsPrefixAndTextInPiecesAndPausesAfterEachPieceOfTheText) {
    const std::string text = "<msg req=\"OK\"><!--" + std::string(200, '-') + "--></msg>";
    const std::string frame = Frame(text);
    dvr->SendsAndSeesRead(frame.substr(0, 1));
    const Clock::time_point start = Clock::now();
    dvr->SendsAndSeesRead(frame.substr(1, 1));
    dvr->SendsAndSeesRead(frame.substr(2, 6));
    dvr->SendsAndSeesRead(frame.substr(8, 1));
    dvr->SendsBytes(frame.substr(9));
    AnswersOk(text);
    const Clock::duration taken = Clock::now() - start;
    EXPECT_GE(taken, milliseconds(3 * 250));
    EXPECT_LT(taken, milliseconds(3 * 250) + seconds(3));
    Ends();
}

TEST_F(Framing, ReadsOneFrameOfTwoSentTogether) {
    dvr->SendsBytes(Frame(Ok()) + Frame(Message("NONE")));
    AnswersOk(Ok());
    harness->LogsInFull(IncomingTrace(Message("NONE")));
    harness->Logs(1, "UNSUPPORTED MSG RECEIVED: NONE");
    Ends();
}

TEST_F(Framing, ReadsALongMessageWhole) {
    const std::string text = "<msg req=\"" + std::string(300000, 'A') + "\"/>";
    dvr->Sends(text);
    harness->Logs(1, "UNSUPPORTED MSG RECEIVED: " + std::string(300000, 'A'));
    Ends();
}

TEST_F(Framing, ReadsAgainAndAgainSilentlyWhenThePeerHasClosedInAPrefix) {
    dvr->SendsBytes("\x8f");
    dvr->HangsUp();
    const milliseconds before = harness->GetProcess().ProcessorTime();
    EXPECT_TRUE(Until([&] { return harness->GetProcess().ProcessorTime() - before >= milliseconds(100); }));
    harness->StopsOnInterrupt();
}

TEST_F(Framing, LogsAFailedWriteOfTheTextAndEndsTheProcess) {
    // The prefix is answered by the reset: the text then finds a broken connection.
    dvr->SendsAndSeesRead(Frame(Ok()));
    dvr->Vanishes();
    harness->LogsInFull(IncomingTrace(Ok()));
    harness->LogsInFull({{1, "got an OK, sending GET_XML"},
                         {64, "hdr[0]= 15"},
                         {2, "SendMessage: msg: size= 21  errorno=Connection reset by peer"}});
    harness->FailsAssertion("void VelProtocolBase::SendMessage(TiXmlDocument&)",
                            "writelen == static_cast<int>(msgSize)");
}

}  // namespace
