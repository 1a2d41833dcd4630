#include <cerrno>
#include <string>
#include <vector>

#include "tests/harness/unit/protocol/GetMessage.h"

namespace {

TEST_F(GetMessage, ReadsPrefixAndTextAndLogsEachStep) {
    FeedBytes("\x05");
    FeedBytes("<ab/>");
    EXPECT_EQ(Message(), "<ab/>");
    EXPECT_JOURNAL(Read(1, 1), Logged(1, "expecting a message of 5 bytes"), Read(5, 5), Paused(250000),
                   Logged(1, "read success:5"), Slice("1 to 5", "<ab/>"));
}

TEST_F(GetMessage, ReadsThePrefixByteByByte) {
    const std::string text = Text(300);
    FeedBytes("\xac\x02" + text);
    EXPECT_EQ(Message(), text);
    EXPECT_JOURNAL(Read(1, 1), Read(1, 1), Logged(1, "expecting a message of 300 bytes"), Read(300, 300),
                   Paused(250000), Logged(1, "read success:300"), Slice("1 to 300", text));
}

TEST_F(GetMessage, TakesAPrefixOfFiveBytes) {
    FeedBytes(std::string("\x82\x80\x80\x80\0", 5) + "ab");
    EXPECT_EQ(Message(), "ab");
    EXPECT_JOURNAL(Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1),
                   Logged(1, "expecting a message of 2 bytes"), Read(2, 2), Paused(250000),
                   Logged(1, "read success:2"), Slice("1 to 2", "ab"));
}

TEST_F(GetMessage, ReadsNoTextOfAnEmptyFrame) {
    FeedBytes(std::string(1, '\0'));
    EXPECT_EQ(Message(), "");
    EXPECT_JOURNAL(Read(1, 1), Logged(1, "expecting a message of 0 bytes"), Logged(1, "read success:0"),
                   Slice("1 to 0", ""));
}

TEST_F(GetMessage, PausesAfterEachOfThreeSegments) {
    FeedBytes("\x0a");
    FeedBytes("abc");
    FeedBytes("defg");
    FeedBytes("hij");
    EXPECT_EQ(Message(), "abcdefghij");
    EXPECT_JOURNAL(Read(1, 1), Logged(1, "expecting a message of 10 bytes"), Read(10, 3), Paused(250000),
                   Read(7, 4), Paused(250000), Read(3, 3), Paused(250000), Logged(1, "read success:10"),
                   Slice("1 to 10", "abcdefghij"));
}

TEST_F(GetMessage, LeavesTheNextFrameUnread) {
    FeedBytes(
        "\x02"
        "ab\x03"
        "cde");
    EXPECT_EQ(Message(), "ab");
    EXPECT_JOURNAL(Received("ab"));
    EXPECT_EQ(Message(), "cde");
    EXPECT_JOURNAL(Received("cde"));
}

TEST_F(GetMessage, RetriesThePrefixAtOnceAfterAReadError) {
    FeedError(EINTR);
    FeedError(ECONNRESET);
    FeedBytes(
        "\x02"
        "ab");
    EXPECT_EQ(Message(), "ab");
    EXPECT_JOURNAL(ReadFailed(1, EINTR), Logged(1, "read error: 4:Interrupted system call"),
                   ReadFailed(1, ECONNRESET), Logged(1, "read error: 104:Connection reset by peer"),
                   Received("ab"));
}

TEST_F(GetMessage, RetriesTheSamePlaceOfThePrefixAfterAReadError) {
    const std::string text = Text(300);
    FeedBytes("\xac");
    FeedError(EAGAIN);
    FeedEnd();
    FeedBytes("\x02" + text);
    EXPECT_EQ(Message(), text);
    EXPECT_JOURNAL(Read(1, 1), ReadFailed(1, EAGAIN),
                   Logged(1, "read error: 11:Resource temporarily unavailable"), Read(1, 0), Read(1, 1),
                   Logged(1, "expecting a message of 300 bytes"), Read(300, 300), Paused(250000),
                   Logged(1, "read success:300"), Slice("1 to 300", text));
}

TEST_F(GetMessage, SpinsSilentlyWhileThePeerIsClosedBeforeAPrefix) {
    std::vector<Entry> spins;
    for (int count = 0; count < 1000; ++count) {
        FeedEnd();
        spins.push_back(Read(1, 0));
    }
    FeedBytes(
        "\x02"
        "ab");
    EXPECT_EQ(Message(), "ab");
    EXPECT_JOURNAL(spins, Received("ab"));
}

TEST_F(GetMessage, RetriesTheTextAtOnceAfterAReadError) {
    FeedBytes("\x04");
    FeedError(EINTR);
    FeedBytes("abc");
    FeedError(EIO);
    FeedError(EINTR);
    FeedBytes("d");
    EXPECT_EQ(Message(), "abcd");
    EXPECT_JOURNAL(Read(1, 1), Logged(1, "expecting a message of 4 bytes"), ReadFailed(4, EINTR),
                   Logged(1, "read errored out:4:Interrupted system call"), Read(4, 3), Paused(250000),
                   ReadFailed(1, EIO), Logged(1, "read errored out:5:Input/output error"),
                   ReadFailed(1, EINTR), Logged(1, "read errored out:4:Interrupted system call"), Read(1, 1),
                   Paused(250000), Logged(1, "read success:4"), Slice("1 to 4", "abcd"));
}

TEST_F(GetMessage, LeavesAUsedBufferAsLongAsTheTextAndItsNul) {
    for (const std::size_t size : {1000U, 4U}) {
        std::vector<char> message(size, 'x');
        Feed("abc");
        protocol.GetMessage(message);
        EXPECT_EQ(message, std::vector<char>({'a', 'b', 'c', '\0'}));
        EXPECT_JOURNAL(Received("abc"));
        Feed("");
        protocol.GetMessage(message);
        EXPECT_EQ(message, std::vector<char>({'\0'}));
        EXPECT_JOURNAL(Received(""));
    }
}

TEST_F(GetMessage, TakesEveryByteAsItIs) {
    std::string text;
    for (int byte = 255; byte >= 0; --byte) {
        text += static_cast<char>(byte);
    }
    Feed(text);
    EXPECT_EQ(Message(), text);
    EXPECT_JOURNAL(Read(1, 1), Read(1, 1), Logged(1, "expecting a message of 256 bytes"), Read(256, 256),
                   Paused(250000), Logged(1, "read success:256"), Slice("1 to 256", text));
}

TEST_F(GetMessage, TracesTheTextInSlicesOfEightHundredBytes) {
    const std::pair<std::size_t, std::vector<std::string>> cases[] = {
        {1, {"1 to 1"}},
        {799, {"1 to 799"}},
        {800, {"1 to 800"}},
        {801, {"1 to 800", "801 to 1600"}},
        {1000, {"1 to 800", "801 to 1600"}},
        {1600, {"1 to 800", "801 to 1600"}},
        {1601, {"1 to 800", "801 to 1600", "1601 to 2400"}}};
    for (const auto& [size, ranges] : cases) {
        SCOPED_TRACE(size);
        const std::string text = Text(size);
        Feed(text);
        EXPECT_EQ(Message(), text);
        std::vector<Entry> slices;
        for (const std::string& range : ranges) {
            slices.push_back(Slice(range, text.substr(800 * slices.size(), 800)));
        }
        EXPECT_JOURNAL(std::vector<Entry>(Prefix(static_cast<std::uint32_t>(size)).size(), Read(1, 1)),
                       Logged(1, "expecting a message of " + std::to_string(size) + " bytes"),
                       Read(size, size), Paused(250000), Logged(1, "read success:" + std::to_string(size)),
                       slices);
    }
}

}  // namespace
