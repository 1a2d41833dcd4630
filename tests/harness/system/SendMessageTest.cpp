#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/Dialogue.h"

namespace {

const char* const kSendMessage = "void VelProtocolBase::SendMessage(TiXmlDocument&)";

struct Sent {
    std::size_t size;  // of the text
    std::string prefix;
    std::vector<std::string> trace;       // of the prefix
    std::string wrongPrefix;              // with -z
    std::vector<std::string> wrongTrace;  // with -z
    std::size_t announced;                // with -z
};

std::ostream& operator<<(std::ostream& out, const Sent& sent) {
    return out << sent.size << " bytes";
}

class SendMessageOfSize : public Dialect20, public testing::WithParamInterface<Sent> {
 protected:
    /// The harness sends back an identifier of any length, and so a message of any size.
    std::string Provoke() {
        std::string text = v2::NextEvent(std::string(GetParam().size - v2::NextEvent("").size(), 'i'));
        dvr->Sends(EventList({std::string(GetParam().size - v2::NextEvent("").size(), 'i')}));
        harness->Logs(16, "'source' attribute = 'DVR'");
        return text;
    }

    void LogsTrace(const std::vector<std::string>& trace) {
        for (std::size_t index = 0; index < trace.size(); ++index) {
            harness->LogsInFull({{64, "hdr[" + std::to_string(index) + "]= " + trace[index]}});
        }
    }
};

TEST_P(SendMessageOfSize, AnnouncesItsSize) {
    Start();
    const std::string text = Provoke();
    dvr->ReceivesBytes(GetParam().prefix + text);
    LogsTrace(GetParam().trace);
    Ends();
}

TEST_P(SendMessageOfSize, AnnouncesHalfAsMuchAgainOnDemand) {
    Start({"-z"});
    const std::string text = Provoke();
    dvr->ReceivesBytes(GetParam().wrongPrefix + text);
    LogsTrace(GetParam().wrongTrace);
    harness->LogsInFull({{8, "sent: size= " + std::to_string(GetParam().wrongPrefix.size()) + "/" +
                                 std::to_string(GetParam().announced) + "/" + std::to_string(text.size()) +
                                 "  '" + text + "'"}});
    Ends();
}

INSTANTIATE_TEST_SUITE_P(
    Of, SendMessageOfSize,
    testing::Values(Sent{85, "\x55", {"55"}, "\x7f", {"7f"}, 127},
                    Sent{86, "\x56", {"56"}, "\x81\x01", {"81", "1"}, 129},
                    Sent{127, "\x7f", {"7f"}, "\xbe\x01", {"be", "1"}, 190},
                    Sent{128, "\x80\x01", {"80", "1"}, "\xc0\x01", {"c0", "1"}, 192},
                    Sent{300, "\xac\x02", {"ac", "2"}, "\xc2\x03", {"c2", "3"}, 450},
                    Sent{16383, "\xff\x7f", {"ff", "7f"}, "\xfe\xbf\x01", {"fe", "bf", "1"}, 24574},
                    Sent{16384, "\x80\x80\x01", {"80", "80", "1"}, "\x80\xc0\x01", {"80", "c0", "1"}, 24576}),
    [](const auto& row) { return std::to_string(row.param.size) + "Bytes"; });

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
