#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/Dialogue.h"

namespace {

const char* const kSendMessage = "void VelProtocolBase::SendMessage(TiXmlDocument&)";

using SizeError = Dialogue;

TEST_F(SizeError, ActsOnEveryFrameOf10) {
    Connect({"-z"});
    for (int round = 0; round < 2; ++round) {
        dvr->Sends(Ok());
        harness->LogsInFull(IncomingTrace(Ok()));
        harness->LogsInFull({{1, "got an OK, sending GET_XML"},
                             {64, "hdr[0]= 1f"},
                             {8, "sent: size= 1/31/21  '<msg req=\"GET_XML\" />'"}});
        dvr->ReceivesBytes("\x1f<msg req=\"GET_XML\" />");
    }
    Ends();
}

TEST_F(SizeError, ActsOnEveryFrameOf20) {
    Connect({"-p", "2", "-z", "-u"});
    dvr->Sends(Ok());
    harness->LogsInFull(IncomingTrace(Ok()));
    harness->LogsInFull({{1, "got an OK, sending UPDATE_SOFTWARE"},
                         {64, "hdr[0]= 94"},
                         {64, "hdr[1]= 1"},
                         {8, std::string("sent: size= 2/148/99  '") + v2::kUpdateSoftware + "'"},
                         {1, "got an OK, sending GET_EVENT_LIST"},
                         {64, "hdr[0]= 4b"},
                         {8, std::string("sent: size= 1/75/50  '") + v2::kGetEventList + "'"}});
    dvr->ReceivesBytes(std::string("\x94\x01") + v2::kUpdateSoftware + "\x4b" + v2::kGetEventList);
    Ends();
}

class SendMessage : public Dialogue {
 protected:
    void SetUp() override { Connect(); }
};

TEST_F(SendMessage, LogsAFailedWriteOfThePrefixAndEndsTheProcess) {
    dvr->SendsBytes(Frame(Ok()));
    dvr->Resets();
    harness->LogsInFull(IncomingTrace(Ok()));
    harness->LogsInFull({{1, "got an OK, sending GET_XML"},
                         {64, "hdr[0]= 15"},
                         {2, "SendMessage: msg: size= 21  errorno=Connection reset by peer"}});
    harness->FailsAssertion(kSendMessage, "writelen == static_cast<ssize_t>(headerLength)");
}

TEST_F(SendMessage, LogsAFailedWriteOfTheTextAndEndsTheProcess) {
    // The prefix is answered by the reset: the text then finds a broken connection.
    dvr->SendsAndSeesRead(Frame(Ok()));
    dvr->Vanishes();
    harness->LogsInFull(IncomingTrace(Ok()));
    harness->LogsInFull({{1, "got an OK, sending GET_XML"},
                         {64, "hdr[0]= 15"},
                         {2, "SendMessage: msg: size= 21  errorno=Connection reset by peer"}});
    harness->FailsAssertion(kSendMessage, "writelen == static_cast<int>(msgSize)");
}

TEST_F(SendMessage, IsEndedByTheBrokenPipeSignalWhenThePeerHasClosedAndReset) {
    dvr->SendsBytes(Frame(Ok()));
    dvr->EndsSending();
    dvr->Resets();
    harness->LogsInFull(IncomingTrace(Ok()));
    harness->LogsInFull({{1, "got an OK, sending GET_XML"}, {64, "hdr[0]= 15"}});
    harness->EndsBySignal(SIGPIPE);
    EXPECT_EQ("", harness->StandardError());
}

}  // namespace
