#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/Dialogue.h"

namespace {

const char* const kGetMessage = "void VelProtocolBase::GetMessage(std::vector<char>&)";

using std::chrono::milliseconds;
using std::chrono::seconds;

class GetMessage : public Dialogue {
 protected:
    void SetUp() override { Connect(); }

    /// The harness takes this text for an OK.
    void AnswersOk(const std::string& text, Here here = Here::current()) {
        harness->LogsInFull(IncomingTrace(text), here);
        harness->LogsInFull({{1, "got an OK, sending GET_XML"}, {64, "hdr[0]= 15"}}, here);
        dvr->Receives(v1::kGetXml, here);
    }
};

TEST_F(GetMessage, ReadsPrefixAndTextInPiecesAndPausesAfterEachPieceOfTheText) {
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

TEST_F(GetMessage, ReadsOneFrameOfTwoSentTogether) {
    dvr->SendsBytes(Frame(Ok()) + Frame(Message("NONE")));
    AnswersOk(Ok());
    harness->LogsInFull(IncomingTrace(Message("NONE")));
    harness->Logs(1, "UNSUPPORTED MSG RECEIVED: NONE");
    Ends();
}

TEST_F(GetMessage, ReadsALongMessageWhole) {
    const std::string text = "<msg req=\"" + std::string(300000, 'A') + "\"/>";
    dvr->Sends(text);
    harness->Logs(1, "UNSUPPORTED MSG RECEIVED: " + std::string(300000, 'A'));
    Ends();
}

TEST_F(GetMessage, EndsTheProcessAtAPrefixThatDoesNotEnd) {
    dvr->SendsBytes("\x80\x80\x80\x80\x80");
    harness->LogsInFull({{2, "Read7BitEncodedInt:badly formatted 7 bit string length prefix"}});
    Dies(kGetMessage, "expectedSize not_eq -1");
}

TEST_F(GetMessage, EndsTheProcessAtANegativeLength) {
    dvr->SendsBytes("\x80\x80\x80\x80\x7f");
    harness->LogsInFull({{1, "expecting a message of -268435456 bytes"}});
    harness->EndsBySignal(SIGABRT);
    dvr->ReceivesEnd();
    EXPECT_EQ(0u, harness->StandardError().find(
                      "terminate called after throwing an instance of 'std::length_error'"));
}

TEST_F(GetMessage, EndsTheProcessWhenThePeerClosesMidText) {
    dvr->SendsBytes(Frame(Ok()).substr(0, 5));
    dvr->EndsSending();
    harness->LogsInFull(
        {{1, "expecting a message of 15 bytes"}, {1, "EOF at: 4  exp=15"}, {1, "read success:4"}});
    Dies(kGetMessage, "readBytes == expectedSize");
}

TEST_F(GetMessage, LogsAReadErrorInTheTextAndReadsAgain) {
    dvr->SendsBytes(Frame(Ok()).substr(0, 5));
    dvr->Resets();
    harness->LogsInFull({{1, "expecting a message of 15 bytes"},
                         {1, "read errored out:104:Connection reset by peer"},
                         {1, "EOF at: 4  exp=15"},
                         {1, "read success:4"}});
    harness->FailsAssertion(kGetMessage, "readBytes == expectedSize");
}

TEST_F(GetMessage, ReadsAgainAndAgainSilentlyWhenThePeerHasClosedInAPrefix) {
    dvr->SendsBytes("\x8f");
    dvr->HangsUp();
    const milliseconds before = harness->GetProcess().ProcessorTime();
    EXPECT_TRUE(Until([&] { return harness->GetProcess().ProcessorTime() - before >= milliseconds(100); }));
    harness->StopsOnInterrupt();
}

}  // namespace
