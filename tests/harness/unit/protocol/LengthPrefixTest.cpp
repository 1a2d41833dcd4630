#include <climits>
#include <cstring>
#include <memory>

#include "protocol/v1_0/VelProtocol_1_0.h"
#include "tests/harness/unit/support/HarnessTest.h"

namespace {

class LengthPrefix : public HarnessTest {
 protected:
    /// @return the bytes that Write7BitEncodedInt says it has written
    std::string Written(int value) {
        char buffer[6];
        memset(buffer, 0x55, sizeof buffer);
        const int count = protocol.Write7BitEncodedInt(buffer, value);
        EXPECT_GE(count, 1);
        EXPECT_LE(count, 5);
        for (int index = count; index < 6; ++index) {
            EXPECT_EQ(buffer[index], 0x55) << "byte " << index << " is not part of the prefix";
        }
        return std::string(buffer, static_cast<std::size_t>(count));
    }

    /// Decodes a prefix in a buffer of exactly 5 bytes, padded with `filler`.
    int Decoded(const std::string& bytes, char filler = 0) {
        const std::unique_ptr<char[]> buffer(new char[5]);
        memset(buffer.get(), filler, 5);
        memcpy(buffer.get(), bytes.data(), bytes.size());
        return protocol.Read7BitEncodedInt(buffer.get(), &bytesRead);
    }

    void ExpectRoundTrip(std::uint32_t bits) {
        const int value = static_cast<int>(bits);
        char buffer[5] = {};
        const int count = protocol.Write7BitEncodedInt(buffer, value);
        ASSERT_EQ(protocol.Read7BitEncodedInt(buffer, &bytesRead), value) << bits;
        ASSERT_EQ(bytesRead, count) << bits;
        ASSERT_EQ(std::string(buffer, static_cast<std::size_t>(count)), Prefix(bits)) << bits;
    }

    VelProtocol_1_0 protocol{TestOptions(), kSocket};
    int bytesRead = 99;
};

struct Encoding {
    int value;
    std::string bytes;
};

const Encoding kEncodings[] = {{0, std::string(1, '\0')},
                               {1, "\x01"},
                               {126, "\x7e"},
                               {127, "\x7f"},
                               {128, "\x80\x01"},
                               {129, "\x81\x01"},
                               {255, "\xff\x01"},
                               {300, "\xac\x02"},
                               {450, "\xc2\x03"},
                               {16383, "\xff\x7f"},
                               {16384, "\x80\x80\x01"},
                               {2097151, "\xff\xff\x7f"},
                               {2097152, "\x80\x80\x80\x01"},
                               {268435455, "\xff\xff\xff\x7f"},
                               {268435456, "\x80\x80\x80\x80\x01"},
                               {INT_MAX, "\xff\xff\xff\xff\x07"},
                               {INT_MIN, "\x80\x80\x80\x80\x08"},
                               {-2, "\xfe\xff\xff\xff\x0f"},
                               {-1, "\xff\xff\xff\xff\x0f"}};

TEST_F(LengthPrefix, WritesEachLengthAtItsEdges) {
    LogMask(0);
    for (const Encoding& encoding : kEncodings) {
        EXPECT_EQ(Written(encoding.value), encoding.bytes) << encoding.value;
    }
}

TEST_F(LengthPrefix, ReadsEachLengthAtItsEdgesWhateverFollows) {
    for (const Encoding& encoding : kEncodings) {
        for (const char filler : {'\0', '\xff'}) {
            EXPECT_EQ(Decoded(encoding.bytes, filler), encoding.value);
            EXPECT_EQ(bytesRead, static_cast<int>(encoding.bytes.size())) << encoding.value;
        }
    }
}

TEST_F(LengthPrefix, LogsTheOneByteOfAShortPrefix) {
    Written(0);
    EXPECT_JOURNAL(Logged(64, "hdr[0]= 0"));
    Written(10);
    EXPECT_JOURNAL(Logged(64, "hdr[0]= a"));
    Written(127);
    EXPECT_JOURNAL(Logged(64, "hdr[0]= 7f"));
}

TEST_F(LengthPrefix, LogsEachByteInLowerCaseHex) {
    Written(300);
    EXPECT_JOURNAL(Logged(64, "hdr[0]= ac"), Logged(64, "hdr[1]= 2"));
    Written(-1);
    EXPECT_JOURNAL(Logged(64, "hdr[0]= ff"), Logged(64, "hdr[1]= ff"), Logged(64, "hdr[2]= ff"),
                   Logged(64, "hdr[3]= ff"), Logged(64, "hdr[4]= f"));
}

TEST_F(LengthPrefix, RejectsAFifthByteThatSaysMoreFollow) {
    for (const std::string bytes :
         {"\x80\x80\x80\x80\x80", "\xff\xff\xff\xff\xff", "\x81\x82\x83\x84\x8f", "\x80\x80\x80\x80\xff"}) {
        EXPECT_EQ(Decoded(bytes), -1) << Shown(bytes);
        EXPECT_EQ(bytesRead, 5) << Shown(bytes);
        EXPECT_JOURNAL(Logged(2, "Read7BitEncodedInt:badly formatted 7 bit string length prefix"));
    }
}

TEST_F(LengthPrefix, GivesMinusOneAsAnOrdinaryValue) {
    EXPECT_EQ(Decoded("\xff\xff\xff\xff\x0f"), -1);
    EXPECT_EQ(bytesRead, 5);
    EXPECT_JOURNAL(Nothing());
}

TEST_F(LengthPrefix, DropsTheBitsOfTheFifthByteBeyondTheThirtySecond) {
    EXPECT_EQ(Decoded("\x80\x80\x80\x80\x7f"), static_cast<int>(0xF0000000));
    EXPECT_EQ(bytesRead, 5);
    for (unsigned int byte = 0; byte < 0x80; ++byte) {
        const std::string prefix = std::string("\x80\x80\x80\x80") + static_cast<char>(byte);
        EXPECT_EQ(Decoded(prefix), static_cast<int>(byte % 16 * 0x10000000)) << byte;
    }
    EXPECT_JOURNAL(Nothing());
}

TEST_F(LengthPrefix, AcceptsAPrefixThatIsLongerThanItsValueNeeds) {
    EXPECT_EQ(Decoded(std::string("\x80\0", 2)), 0);
    EXPECT_EQ(bytesRead, 2);
    EXPECT_EQ(Decoded(std::string("\xac\x82\x80\x80\0", 5)), 300);
    EXPECT_EQ(bytesRead, 5);
}

TEST_F(LengthPrefix, RoundTripsTheWholeRangeInSteps) {
    LogMask(0);
    for (std::uint64_t bits = 0; bits <= 0xFFFFFFFF; bits += bits < 40000 ? 1 : 40009) {
        ExpectRoundTrip(static_cast<std::uint32_t>(bits));
    }
}

TEST_F(LengthPrefix, RoundTripsAroundEveryPowerOfTwo) {
    LogMask(0);
    for (unsigned int power = 0; power < 32; ++power) {
        for (std::uint32_t distance = 0; distance < 100; ++distance) {
            ExpectRoundTrip((std::uint32_t{1} << power) + distance);
            ExpectRoundTrip((std::uint32_t{1} << power) - distance);
        }
    }
}

}  // namespace
