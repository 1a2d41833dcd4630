#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "tests/support/Dialogue.h"

namespace {

const char* const kGetMessage = "void VelProtocolBase::GetMessage(std::vector<char>&)";

using std::chrono::milliseconds;
using std::chrono::seconds;

class GetMessage : public Dialogue {
 protected:
    void SetUp() override { Connect(); }

    /// The harness takes these bytes for an OK.
    void AnswersOk(Here here = Here::current()) {
        harness->LogsInFull(IncomingTrace(Ok()), here);
        harness->LogsInFull({{1, "got an OK, sending GET_XML"}, {64, "hdr[0]= 15"}}, here);
        dvr->Receives(v1::kGetXml, here);
    }
};

TEST_F(GetMessage, ReadsAFrameInOnePiece) {
    dvr->Sends(Ok());
    AnswersOk();
    Ends();
}

TEST_F(GetMessage, PausesAQuarterOfASecondAfterTheText) {
    const Clock::time_point start = Clock::now();
    dvr->Sends(Ok());
    dvr->Receives(v1::kGetXml);
    const Clock::duration taken = Clock::now() - start;
    EXPECT_GE(taken, milliseconds(250));
    EXPECT_LT(taken, milliseconds(250) + seconds(3));
}

TEST_F(GetMessage, PausesAQuarterOfASecondAfterEachPieceOfTheText) {
    const std::string frame = Frame(Ok());
    const Clock::time_point start = Clock::now();
    dvr->SendsAndSeesRead(frame.substr(0, 5));
    dvr->SendsAndSeesRead(frame.substr(5, 6));
    dvr->SendsBytes(frame.substr(11));
    AnswersOk();
    const Clock::duration taken = Clock::now() - start;
    EXPECT_GE(taken, milliseconds(3 * 250));
    EXPECT_LT(taken, milliseconds(3 * 250) + seconds(3));
    Ends();
}

TEST_F(GetMessage, ReadsAFrameByteByByte) {
    const std::string text = "<msg req=''/>";
    dvr->SendsAndSeesRead(Prefix(static_cast<std::uint32_t>(text.size())));
    const Clock::time_point start = Clock::now();
    for (const char byte : text) {
        dvr->SendsAndSeesRead(std::string(1, byte));
    }
    harness->LogsInFull(IncomingTrace(text));
    EXPECT_GE(Clock::now() - start, milliseconds(250) * text.size());
    harness->Logs(1, "UNSUPPORTED MSG RECEIVED: ");
    Ends();
}

TEST_F(GetMessage, ReadsAPrefixInPieces) {
    const std::string text = "<msg req=\"OK\"><!--" + std::string(200, '-') + "--></msg>";
    const std::string frame = Frame(text);
    dvr->SendsAndSeesRead(frame.substr(0, 1));
    dvr->SendsAndSeesRead(frame.substr(1, 1));
    dvr->SendsBytes(frame.substr(2));
    harness->LogsInFull(IncomingTrace(text));
    harness->Logs(1, "got an OK, sending GET_XML");
    dvr->Receives(v1::kGetXml);
    Ends();
}

TEST_F(GetMessage, ReadsOneFrameOfTwoSentTogether) {
    dvr->SendsBytes(Frame(Ok()) + Frame(Message("NONE")));
    AnswersOk();
    harness->LogsInFull(IncomingTrace(Message("NONE")));
    harness->Logs(1, "UNSUPPORTED MSG RECEIVED: NONE");
    Ends();
}

TEST_F(GetMessage, TakesAPrefixThatIsLongerThanNeeded) {
    dvr->SendsBytes(std::string("\x8f\x80\x80\x00", 4) + Ok());
    AnswersOk();
    Ends();
}

TEST_F(GetMessage, DropsTheBitsOfTheFifthByteBeyondThe32nd) {
    dvr->SendsBytes("\x8f\x80\x80\x80\x70" + Ok());
    AnswersOk();
    Ends();
}

TEST_F(GetMessage, ReadsNothingForALengthOfZero) {
    dvr->SendsBytes(std::string(1, '\0'));
    harness->LogsInFull({{1, "expecting a message of 0 bytes"},
                         {1, "read success:0"},
                         {32, "GetMessage:incoming message, bytes 1 to 0:"},
                         {1, "error: 1:Error document empty."},
                         {1, "row: 0:0"}});
    Dies("virtual VelProtocolBase::e_MsgReturn VelProtocol_1_0::HandleMessage()",
         "not incomingMessage.Error()");
}

TEST_F(GetMessage, EndsTheProcessAtAPrefixThatDoesNotEnd) {
    dvr->SendsBytes("\x80\x80\x80\x80\x80");
    harness->LogsInFull({{2, "Read7BitEncodedInt:badly formatted 7 bit string length prefix"}});
    Dies(kGetMessage, "expectedSize not_eq -1");
}

TEST_F(GetMessage, ReadsNoMoreThanFiveBytesOfAPrefix) {
    dvr->SendsBytes(std::string(64, '\x80'));
    harness->LogsInFull({{2, "Read7BitEncodedInt:badly formatted 7 bit string length prefix"}});
    harness->FailsAssertion(kGetMessage, "expectedSize not_eq -1");
}

TEST_F(GetMessage, EndsTheProcessAtALengthOfMinusOne) {
    dvr->SendsBytes("\xff\xff\xff\xff\x0f");
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

TEST_F(GetMessage, EndsTheProcessAtTheMostNegativeLength) {
    dvr->SendsBytes("\x80\x80\x80\x80\x08");
    harness->LogsInFull({{1, "expecting a message of -2147483648 bytes"}});
    harness->EndsBySignal(SIGABRT);
    dvr->ReceivesEnd();
}

TEST_F(GetMessage, EndsTheProcessWhenThePeerClosesMidText) {
    dvr->SendsBytes(Frame(Ok()).substr(0, 5));
    dvr->EndsSending();
    harness->LogsInFull(
        {{1, "expecting a message of 15 bytes"}, {1, "EOF at: 4  exp=15"}, {1, "read success:4"}});
    Dies(kGetMessage, "readBytes == expectedSize");
}

TEST_F(GetMessage, EndsTheProcessWhenThePeerClosesAheadOfTheText) {
    dvr->SendsBytes(Prefix(300));
    dvr->EndsSending();
    harness->LogsInFull(
        {{1, "expecting a message of 300 bytes"}, {1, "EOF at: 0  exp=300"}, {1, "read success:0"}});
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

class GetMessageSpins : public GetMessage {
 protected:
    /// Reads again and again, silently, until interrupted.
    void Spins() {
        const milliseconds before = harness->GetProcess().ProcessorTime();
        EXPECT_TRUE(
            Until([&] { return harness->GetProcess().ProcessorTime() - before >= milliseconds(100); }));
        EXPECT_TRUE(harness->GetProcess().IsRunning());
        harness->StopsOnInterrupt();
    }
};

TEST_F(GetMessageSpins, WhenThePeerHasClosed) {
    dvr->HangsUp();
    Spins();
}

TEST_F(GetMessageSpins, WhenThePeerHasClosedAfterADialogue) {
    dvr->Sends(Ok());
    AnswersOk();
    dvr->HangsUp();
    Spins();
}

TEST_F(GetMessageSpins, WhenThePeerClosesInAPrefix) {
    dvr->SendsBytes("\x8f");
    dvr->EndsSending();
    Spins();
}

TEST_F(GetMessageSpins, AfterOneReadErrorWhenThePeerHasReset) {
    dvr->Resets();
    harness->Logs(1, "read error: 104:Connection reset by peer");
    Spins();
}

struct Slices {
    std::size_t size;
    std::vector<std::pair<std::size_t, std::size_t>> ranges;  // as logged; the last may go beyond the text
};

std::ostream& operator<<(std::ostream& out, const Slices& slices) {
    return out << slices.size << " bytes";
}

class GetMessageLogsSlices : public Dialogue, public testing::WithParamInterface<Slices> {};

TEST_P(GetMessageLogsSlices, OfUpTo800Bytes) {
    Connect();
    const Slices& slices = GetParam();
    std::string text = "<msg req=\"NONE\"><!--";
    for (int number = 0; text.size() < slices.size; ++number) {
        text += std::to_string(number) + " ";
    }
    const std::string end = "--></msg>";
    text = text.substr(0, slices.size - end.size()) + end;

    dvr->Sends(text);
    const std::string size = std::to_string(slices.size);
    std::vector<LogLine> lines = {{1, "expecting a message of " + size + " bytes"},
                                  {1, "read success:" + size}};
    for (const auto& [from, to] : slices.ranges) {
        lines.push_back({32, "GetMessage:incoming message, bytes " + std::to_string(from) + " to " +
                                 std::to_string(to) + ":" + text.substr(from - 1, 800)});
    }
    harness->LogsInFull(lines);
    harness->Logs(1, "UNSUPPORTED MSG RECEIVED: NONE");
    Ends();
}

INSTANTIATE_TEST_SUITE_P(Of, GetMessageLogsSlices,
                         testing::Values(Slices{799, {{1, 799}}}, Slices{800, {{1, 800}}},
                                         Slices{801, {{1, 800}, {801, 1600}}},
                                         Slices{1000, {{1, 800}, {801, 1600}}},
                                         Slices{1600, {{1, 800}, {801, 1600}}},
                                         Slices{1601, {{1, 800}, {801, 1600}, {1601, 2400}}}),
                         [](const auto& row) { return std::to_string(row.param.size) + "Bytes"; });

TEST_F(GetMessage, ReadsALongMessageWhole) {
    const std::string text = "<msg req=\"" + std::string(300000, 'A') + "\"/>";
    dvr->Sends(text);
    harness->Logs(1, "UNSUPPORTED MSG RECEIVED: " + std::string(300000, 'A'));
    Ends();
}

TEST_F(GetMessage, ParsesTheTextUpToANulByte) {
    dvr->Sends(Ok() + std::string("\0<garbage", 9));
    harness->Logs(1, "got an OK, sending GET_XML");
    dvr->Receives(v1::kGetXml);
    Ends();
}

}  // namespace
