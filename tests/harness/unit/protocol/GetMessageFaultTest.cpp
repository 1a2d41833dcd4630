#include <sys/resource.h>

#include <string>

#include "tests/harness/unit/protocol/GetMessage.h"

namespace {

const std::string kGetMessage = "void VelProtocolBase::GetMessage(std::vector<char>&)";
const std::string kBadPrefix = "Read7BitEncodedInt:badly formatted 7 bit string length prefix";

TEST_F(GetMessage, EndsTheProcessWhenThePeerClosesMidBody) {
    FeedBytes("\x0a");
    FeedBytes("abcd");
    FeedEnd();
    EXPECT_ABORT(Message(), Read(1, 1), Logged(1, "expecting a message of 10 bytes"), Read(10, 4),
                 Paused(250000), Read(6, 0), Logged(1, "EOF at: 4  exp=10"), Logged(1, "read success:4"),
                 AssertionFailed(kGetMessage, "readBytes == expectedSize"));
}

TEST_F(GetMessage, EndsTheProcessWhenThePeerClosesBeforeTheBody) {
    FeedBytes("\x0a");
    FeedEnd();
    EXPECT_ABORT(Message(), Read(1, 1), Logged(1, "expecting a message of 10 bytes"), Read(10, 0),
                 Logged(1, "EOF at: 0  exp=10"), Logged(1, "read success:0"),
                 AssertionFailed(kGetMessage, "readBytes == expectedSize"));
}

TEST_F(GetMessage, EndsTheProcessOnAPrefixOfFiveContinuationBytes) {
    FeedBytes("\x80\x80\x80\x80\x80");
    EXPECT_ABORT(Message(), Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1), Logged(2, kBadPrefix),
                 AssertionFailed(kGetMessage, "expectedSize not_eq -1"));
}

TEST_F(GetMessage, ReadsNoSixthByteOfAPrefix) {
    FeedBytes("\xff\xff\xff\xff\xff\xff\xff\x01");
    EXPECT_ABORT(Message(), Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1), Logged(2, kBadPrefix),
                 AssertionFailed(kGetMessage, "expectedSize not_eq -1"));
}

TEST_F(GetMessage, EndsTheProcessOnTheSizeMinusOne) {
    FeedBytes("\xff\xff\xff\xff\x0f");
    EXPECT_ABORT(Message(), Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1),
                 AssertionFailed(kGetMessage, "expectedSize not_eq -1"));
}

TEST_F(GetMessage, EndsTheProcessOnAnyOtherNegativeSizeWithoutReading) {
    const std::pair<std::string, std::string> sizes[] = {{"\x80\x80\x80\x80\x08", "-2147483648"},
                                                         {"\xff\xff\xff\xff\x08", "-1879048193"},
                                                         {"\x80\x80\x80\x80\x7f", "-268435456"},
                                                         {"\xfe\xff\xff\xff\x0f", "-2"}};
    for (const auto& [prefix, size] : sizes) {
        SCOPED_TRACE(size);
        FeedBytes(prefix + "text");
        const std::string ending = RunToItsEnd([&] { Message(); });
        const std::string expected = Expected({Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1),
                                               Logged(1, "expecting a message of " + size + " bytes")});
        // How the buffer's library reports an invalid size is its own business.
        EXPECT_EQ(ending.substr(0, expected.size()), expected);
        EXPECT_EQ(ending.find("read ", expected.size()), std::string::npos) << ending;
        const std::string end = "\nended by signal 6\n";
        ASSERT_GT(ending.size(), end.size());
        EXPECT_EQ(ending.substr(ending.size() - end.size()), end);
    }
}

TEST_F(GetMessage, AsksForABufferOfTheLargestSizeAndOneByte) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer's own memory does not fit under the limit";
#endif
    // On 32 bits the standard library does not even ask for that much.
    const bool isAsked = std::vector<char>().max_size() > std::size_t{1} << 31;
    const Entries refusal = isAsked ? Uncaught("std::bad_alloc", "std::bad_alloc")
                                    : Uncaught("std::length_error", "vector::_M_default_append");
    FeedBytes("\xff\xff\xff\xff\x07");
    const auto readWithLittleMemory = [this] {
        const rlimit limit = {1 << 30, 1 << 30};  // bytes of address space
        setrlimit(RLIMIT_AS, &limit);
        Message();
    };
    EXPECT_ABORT(readWithLittleMemory(), Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1),
                 Logged(1, "expecting a message of 2147483647 bytes"), refusal);
}

TEST_F(GetMessage, EndsTheProcessJustTheSameWithoutALog) {
    LogMask(0);
    FeedBytes("\x80\x80\x80\x80\x80");
    EXPECT_ABORT(Message(), Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1), Read(1, 1),
                 AssertionFailed(kGetMessage, "expectedSize not_eq -1"));
    FeedBytes("\x0a");
    FeedEnd();
    EXPECT_ABORT(Message(), Read(1, 1), Read(10, 0),
                 AssertionFailed(kGetMessage, "readBytes == expectedSize"));
}

}  // namespace
