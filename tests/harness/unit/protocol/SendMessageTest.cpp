#include <tinyxml.h>

#include <cerrno>
#include <string>

#include "protocol/v1_0/VelProtocol_1_0.h"
#include "tests/harness/unit/support/HarnessTest.h"

namespace {

const std::string kSendMessage = "void VelProtocolBase::SendMessage(TiXmlDocument&)";
const std::string kHeaderWritten = "writelen == static_cast<ssize_t>(headerLength)";
const std::string kTextWritten = "writelen == static_cast<int>(msgSize)";

class SendMessage : public HarnessTest {
 protected:
    /// Sends a document that prints as exactly that text.
    void Send(const std::string& text) {
        TiXmlDocument document;
        if (not text.empty()) {
            document.LinkEndChild(new TiXmlText(text));
        }
        protocol.SendMessage(document);
    }

    VelProtocol_1_0 protocol{TestOptions(), kSocket};
};

TEST_F(SendMessage, LogsAndWritesThePrefixAndThenTheText) {
    TiXmlDocument document;
    auto* const msg = new TiXmlElement("msg");
    document.LinkEndChild(msg);
    msg->SetAttribute("req", "DONE");
    protocol.SendMessage(document);
    EXPECT_JOURNAL(Logged(64, "hdr[0]= 12"), Wrote("\x12"), Wrote("<msg req=\"DONE\" />"));
}

TEST_F(SendMessage, AnnouncesThreeHundredBytesInTwo) {
    const std::string text(300, 'x');
    Send(text);
    EXPECT_JOURNAL(Logged(64, "hdr[0]= ac"), Logged(64, "hdr[1]= 2"), Wrote("\xac\x02"), Wrote(text));
}

TEST_F(SendMessage, PrintsCompactly) {
    TiXmlDocument document;
    document.Parse("<?xml version='1.0' ?>\n<msg a='1'>\n  <list>\n <i>x &amp; y</i><i/> </list>\n</msg>\n");
    protocol.SendMessage(document);
    EXPECT_JOURNAL(Sent("<?xml version=\"1.0\" ?><msg a=\"1\"><list><i>x &amp; y</i><i /></list></msg>"));
}

TEST_F(SendMessage, WritesAnEmptyDocumentAsAnEmptyFrame) {
    Send("");
    EXPECT_JOURNAL(Logged(64, "hdr[0]= 0"), Wrote(std::string(1, '\0')), Wrote(""));
}

TEST_F(SendMessage, WritesALongTextWithOneCall) {
    const std::string text(2100000, 'x');
    Send(text);
    EXPECT_JOURNAL(Logged(64, "hdr[0]= a0"), Logged(64, "hdr[1]= 96"), Logged(64, "hdr[2]= 80"),
                   Logged(64, "hdr[3]= 1"), Wrote("\xa0\x96\x80\x01"), Wrote(text));
}

TEST_F(SendMessage, WritesBytesBeyondAsciiAsTheyAre) {
    const std::string text = "caf\xc3\xa9 \xe2\x82\xac";
    Send(text);
    EXPECT_JOURNAL(Logged(64, "hdr[0]= 9"), Wrote("\x09"), Wrote(text));
}

TEST_F(SendMessage, AnnouncesHalfAsMuchAgainWithSizeError) {
    struct {
        std::size_t size;
        std::string announced;
        std::string prefix;
    } const cases[] = {{0, "1/0/0", std::string(1, '\0')},
                       {1, "1/1/1", "\x01"},
                       {2, "1/3/2", "\x03"},
                       {3, "1/4/3", "\x04"},
                       {85, "1/127/85", "\x7f"},
                       {86, "2/129/86", "\x81\x01"},
                       {300, "2/450/300", "\xc2\x03"},
                       {10923, "3/16384/10923", "\x80\x80\x01"}};
    protocol.sizeError = true;
    for (const auto& [size, announced, prefix] : cases) {
        SCOPED_TRACE(size);
        const std::string text(size, 'x');
        Send(text);
        std::vector<Entry> headerLines;
        for (const char byte : prefix) {
            char line[16];
            snprintf(line, sizeof line, "hdr[%zu]= %x", headerLines.size(), static_cast<unsigned char>(byte));
            headerLines.push_back(Logged(64, line));
        }
        EXPECT_JOURNAL(headerLines, Wrote(prefix), Wrote(text),
                       Logged(8, "sent: size= " + announced + "  '" + text + "'"));
    }
}

TEST_F(SendMessage, KeepsSizeErrorForEveryFrame) {
    protocol.sizeError = true;
    Send("ab");
    Send("ab");
    EXPECT_JOURNAL(SentWithSizeError("ab"), SentWithSizeError("ab"));
    EXPECT_TRUE(protocol.sizeError);
}

TEST_F(SendMessage, EndsTheProcessWhenNothingOfThePrefixIsTaken) {
    NextWriteTakes(0);
    EXPECT_ABORT(Send("text"), Logged(64, "hdr[0]= 4"), WroteOnly("\x04", 0),
                 AssertionFailed(kSendMessage, kHeaderWritten));
}

TEST_F(SendMessage, EndsTheProcessWhenThePrefixIsCutShort) {
    NextWriteTakes(1);
    EXPECT_ABORT(Send(std::string(300, 'x')), Logged(64, "hdr[0]= ac"), Logged(64, "hdr[1]= 2"),
                 WroteOnly("\xac\x02", 1), AssertionFailed(kSendMessage, kHeaderWritten));
}

TEST_F(SendMessage, EndsTheProcessWhenTheTextIsCutShort) {
    NextWriteSucceeds();
    NextWriteTakes(3);
    EXPECT_ABORT(Send("text"), Logged(64, "hdr[0]= 4"), Wrote("\x04"), WroteOnly("text", 3),
                 AssertionFailed(kSendMessage, kTextWritten));
}

TEST_F(SendMessage, LogsNoSizeErrorWhenAWriteFails) {
    protocol.sizeError = true;
    NextWriteSucceeds();
    NextWriteFails(EPIPE);
    EXPECT_ABORT(Send("text"), Logged(64, "hdr[0]= 6"), Wrote("\x06"), WroteOnly("text", -1),
                 Logged(2, "SendMessage: msg: size= 4  errorno=Broken pipe"),
                 AssertionFailed(kSendMessage, kTextWritten));
}

TEST_F(SendMessage, EndsTheProcessWhenThePrefixCannotBeWrittenWhateverIsLogged) {
    for (const unsigned int mask : kMasks) {
        SCOPED_TRACE(mask);
        LogMask(mask);
        NextWriteFails(EPIPE);
        EXPECT_ABORT(Send("text"), Logged(64, "hdr[0]= 4"), WroteOnly("\x04", -1),
                     Logged(2, "SendMessage: msg: size= 4  errorno=Broken pipe"),
                     AssertionFailed(kSendMessage, kHeaderWritten));
    }
}

TEST_F(SendMessage, EndsTheProcessWhenTheTextCannotBeWrittenWhateverIsLogged) {
    for (const unsigned int mask : kMasks) {
        SCOPED_TRACE(mask);
        LogMask(mask);
        NextWriteSucceeds();
        NextWriteFails(ECONNRESET);
        EXPECT_ABORT(Send("text"), Logged(64, "hdr[0]= 4"), Wrote("\x04"), WroteOnly("text", -1),
                     Logged(2, "SendMessage: msg: size= 4  errorno=Connection reset by peer"),
                     AssertionFailed(kSendMessage, kTextWritten));
    }
}

}  // namespace
