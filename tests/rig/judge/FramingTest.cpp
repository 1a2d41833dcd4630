#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "rig/judge/Framing.h"

namespace rig::judge {
namespace {

/// A message of this many bytes.
std::string MessageOf(std::size_t size) {
    const std::string start = "<msg req=\"FILE_COMPLETE\" file=\"";
    return start + std::string(size - start.size() - 3, 'x') + "\"/>";
}

/// What comes as a text if the bytes before the message are taken for a prefix up to the one that ends it.
std::string TextAfter(const std::string& header, const std::string& message) {
    std::uint32_t size = 0;
    std::size_t length = 0;
    unsigned char byte = 0x80;
    for (; (byte & 0x80) != 0; ++length) {
        byte = static_cast<unsigned char>((header + message)[length]);
        size |= (byte & 0x7fU) << (7 * length);
    }
    return (header + message).substr(length, size);
}

TEST(Framing, HasOneShortestPrefixForEachSize) {
    EXPECT_EQ(PrefixFor(0), "00");
    EXPECT_EQ(PrefixFor(127), "7f");
    EXPECT_EQ(PrefixFor(128), "80 01");
    EXPECT_EQ(PrefixFor(300), "ac 02");
    EXPECT_EQ(PrefixFor(0xfffffffe), "fe ff ff ff 0f");
}

TEST(Framing, ProvesALengthInOneByteWhereTheConnectionEnds) {
    const FramingFault fault = ExplainMissing(7680, 127);
    EXPECT_EQ(
        fault.words,
        "prefix 80 3c, which announces 7680 bytes; 127 came: its last byte, 3c, is the \"<\" that a text "
        "begins with, so that 80 was meant as the length; right for 128 bytes is 80 01");
    EXPECT_TRUE(fault.isProved);
    EXPECT_FALSE(ExplainMissing(7680, 126).isProved) << "a good prefix, as far as one can know";
}

TEST(Framing, SaysNoMoreWhereNothingCame) {
    EXPECT_EQ(ExplainMissing(300, 0).words, "prefix ac 02, which announces 300 bytes; 0 came");
    EXPECT_EQ(ExplainMissing(300, 1).words,
              "prefix ac 02, which announces 300 bytes; 1 came; for 1 it would be 01");
}

TEST(Framing, BelievesNoLengthBeyondReason) {
    EXPECT_EQ(
        ExplainText(std::string("\0\1", 2) + MessageOf(126)).words,
        "80 01 00 01 came before the text; right is the length alone, 7 bits in each byte, lowest first");
}

TEST(Framing, TakesNothingElseForDigits) {
    EXPECT_EQ(ExplainText(":" + MessageOf('9' - 1)).words.find("digits"), std::string::npos);
}

TEST(Framing, ProvesALengthWithItsHighestByteFirstWhereTheConnectionEnds) {
    EXPECT_EQ(
        ExplainMissing(983297, 33153).words,
        "prefix 81 82 3c, which announces 983297 bytes; 33153 came: its last byte, 3c, is the \"<\" that a "
        "text begins with, so that 81 82 was meant as the length; right for 33154 bytes is 82 83 02");
}

TEST(Framing, ProvesALengthWithItsLowestByteFirstWhereTheConnectionEnds) {
    const std::string words = ExplainMissing(983297, 33408).words;
    EXPECT_EQ(words.substr(words.find("so that")),
              "so that 81 82 was meant as the length; right for 33409 bytes is 81 85 02");
}

TEST(Framing, TellsOfALengthInOneByteWhereNothingMoreCame) {
    const FramingFault fault = ExplainMissing(7680, std::nullopt);
    EXPECT_EQ(
        fault.words,
        "prefix 80 3c, which announces 7680 bytes; they did not come: its last byte, 3c, may be the \"<\" "
        "that a text begins with, so that 80 was meant as the length; right for 128 bytes is 80 01");
    EXPECT_FALSE(fault.isProved);
}

TEST(Framing, ProvesGroupsWithTheHighestFirst) {
    const FramingFault fault = ExplainMissing(5634, 300);
    EXPECT_EQ(
        fault.words,
        "prefix 82 2c, which announces 5634 bytes; 300 came: that many it announces if the highest 7 bits "
        "come first; right for 300 bytes is ac 02");
    EXPECT_TRUE(fault.isProved);
}

TEST(Framing, SuspectsAPrefixThatCountsItself) {
    const FramingFault fault = ExplainMissing(302, 300);
    EXPECT_EQ(
        fault.words,
        "prefix ae 02, which announces 302 bytes; 300 came: as if it counted itself; right for 300 bytes is "
        "ac 02");
    EXPECT_FALSE(fault.isProved) << "or the connection ended a moment too soon";
}

TEST(Framing, ProvesALengthInWholeBytesBeforeTheText) {
    const std::string message = MessageOf(300);
    for (const auto& [header, words] : std::map<std::string, std::string>{
             {std::string("\x2c\x01", 2),
              "2c 01 came before the text, as if the length had 2 bytes of 8 bits, lowest first; right for "
              "300 bytes is ac 02; or 7 bits in each, and none marked as going on: right for 172 bytes is ac "
              "01"},
             {std::string("\x2c\x01\0\0", 4),
              "2c 01 00 00 came before the text, as if the length had 4 bytes of 8 bits, lowest first; right "
              "for "
              "300 bytes is ac 02"},
             {"000000300",
              "30 30 30 30 30 30 33 30 30 came before the text, the length in digits; right for 300 bytes is "
              "ac 02"},
             {"300\n",
              "33 30 30 0a came before the text, the length in digits; right for 300 bytes is ac 02"}}) {
        const FramingFault fault = ExplainText(TextAfter(header, message));
        EXPECT_EQ(fault.words, words);
        EXPECT_TRUE(fault.isProved);
    }
    const std::string shorter = MessageOf(100);
    EXPECT_EQ(
        ExplainText(TextAfter(std::string("\x64\0\0\0", 4), shorter)).words,
        "64 00 00 00 came before the text, as if the length had 4 bytes of 8 bits, lowest first; right for "
        "100 bytes is 64");
}

TEST(Framing, ProvesThatNoPrefixCame) {
    const FramingFault fault = ExplainText(TextAfter("", MessageOf(300)));
    EXPECT_EQ(fault.words.find("no prefix came: the text's first byte, 3c, was taken for one"), 0U);
    EXPECT_TRUE(fault.isProved);
    const std::string noDeclaration = "?xml-stylesheet";
    EXPECT_FALSE(ExplainText(noDeclaration + std::string('<' - noDeclaration.size(), ' ')).isProved);
}

TEST(Framing, ProvesThatCharactersAreCountedInsteadOfBytes) {
    const std::string message = "<msg req=\"XML\" a=\"\xc3\xa4\xc3\xb6\"></msg>";
    const FramingFault fault = ExplainText(message.substr(0, message.size() - 2));
    EXPECT_EQ(fault.words,
              "prefix 1c, which announces 28 bytes, 2 too few if the text goes on: it breaks off before "
              "\"g>\", as if "
              "characters were counted instead of bytes; right for 30 bytes is 1e");
    EXPECT_TRUE(fault.isProved);
    EXPECT_FALSE(ExplainText(message.substr(0, message.size() - 1)).isProved);
}

TEST(Framing, ShowsWhereATextIsNotXml) {
    const FramingFault fault = ExplainText("<msg req=\"XML\"><a></b></msg>");
    EXPECT_EQ(fault.words,
              "prefix 1c, which announces 28 bytes; mismatched tag at byte 21: <msg "
              "req=\"XML\"><a></b></msg>");
    EXPECT_FALSE(fault.isProved);
}

TEST(Framing, IsNotBlamedForBlanksBeforeADeclaration) {
    const FramingFault fault = ExplainText(" <?xml version=\"1.0\"?><msg req=\"OK\"/>");
    EXPECT_FALSE(fault.isProved);
    EXPECT_NE(fault.words.find("XML or text declaration not at start of entity at byte 2"), std::string::npos)
        << fault.words;
}

TEST(Framing, ShowsATextThatIsShorterThanAnyMessage) {
    EXPECT_EQ(ExplainText("<msg ").words,
              "prefix 05, which announces 5 bytes, fewer than any message has: <msg ");
    EXPECT_EQ(ExplainText("").words, "prefix 00, which announces 0 bytes, fewer than any message has");
}

TEST(Framing, ProvesAPrefixThatTakesInTheNextMessage) {
    const FramingFault fault = ExplainText("<msg req=\"OK\"/>\x0f<msg req=\"OK\"/>");
    EXPECT_EQ(
        fault.words,
        "prefix 1f, which announces 31 bytes: after 15 of them 0f comes, as a prefix, and another message; "
        "right for 15 bytes is 0f");
    EXPECT_TRUE(fault.isProved);
    EXPECT_FALSE(ExplainText("<msg req=\"OK\"/><msg req=\"OK\"/>").isProved);
}

TEST(Framing, IsExplainedAtTheBoundsOfEachNotation) {
    const std::string message = MessageOf(300);
    for (const auto& [header, words] : std::vector<std::pair<std::string, std::string>>{
             {"9",
              "prefix 39, which announces 57 bytes; unclosed token at byte 58: "
              "...le=\"xxxxxxxxxxxxxxxxxxxxxxxxxx"},
             {"1\r\n", "31 0d 0a came before the text, the length in digits; right for 1 bytes is 01"},
             {"\r\n",
              "0d 0a came before the text, as if the length had 2 bytes of 8 bits, lowest first; right for "
              "2573 bytes is 8d 14; or 7 bits in each, and none marked as going on: right for 1293 bytes is "
              "8d 0a"},
             {"3 ", "33 20 came before the text, the length in digits; right for 3 bytes is 03"},
             {"3Z",
              "33 5a came before the text, as if the length had 2 bytes of 8 bits, highest first; right for "
              "13146 bytes is da 66; or 7 bits in each, and none marked as going on: right for 6618 bytes is "
              "da 33"},
             {"0000000300",
              "prefix 30, which announces 48 bytes; not well-formed (invalid token) at byte 10: "
              "000000300<msg req=\"FILE_COMPLETE\" file=\"xxxxxxxx"},
             {std::string("\x40\0\x80\0", 4),
              "40 00 80 00 came before the text, as if the length had 4 bytes of 8 bits, lowest first; right "
              "for 8388672 bytes is c0 80 80 04"},
             {std::string("\x40\0\0\1", 4),
              "40 00 00 01 came before the text; right is the length alone, 7 bits in each byte, lowest "
              "first"},
             {std::string("\x0e\0", 2),
              "8e 00 00 came before the text, as if the length had 3 bytes of 8 bits, lowest first; right "
              "for 142 bytes is 8e 01"},
             {std::string("\x0f\0", 2),
              "0f 00 came before the text, as if the length had 2 bytes of 8 bits, lowest first; right for "
              "15 bytes is 0f"},
             {"\x2c\x80",
              "2c 80 came before the text, as if the length had 2 bytes of 8 bits, highest first; right for "
              "11392 bytes is 80 59"},
             {"\x2c\x2c",
              "2c 2c came before the text, as if the length had 2 bytes of 8 bits, lowest first; right for "
              "11308 bytes is ac 58; or 7 bits in each, and none marked as going on: right for 5676 bytes is "
              "ac 2c"}}) {
        EXPECT_EQ(ExplainText(TextAfter(header, message)).words, words);
    }
}

TEST(Framing, OfATextShowsWhatIsWrongWithIt) {
    for (const auto& [text, words] : std::vector<std::pair<std::string, std::string>>{
             {"<msg req='OK'/",
              "prefix 0e, which announces 14 bytes, fewer than any message has: <msg req='OK'/"},
             {"<msg req='OK'>>",
              "prefix 0f, which announces 15 bytes, 6 too few if the text goes on: it breaks off before "
              "\"</msg>\"; right for 21 bytes is 15"},
             {"\5<msx req=\"OK\"/>",
              "prefix 10, which announces 16 bytes; not well-formed (invalid token) at byte 1: \\x05<msx "
              "req=\"OK\"/>"},
             {"\5<?xm req=\"OK\"?>",
              "prefix 10, which announces 16 bytes; not well-formed (invalid token) at byte 1: \\x05<?xm "
              "req=\"OK\"?>"},
             {"<msg req=\"OK\"></msg>",
              "prefix 14, which announces 20 bytes; the harness's parser alone refuses it: <msg "
              "req=\"OK\"></msg>"},
             {"<msg req=\"A\xc3\xa5\xc3\xb5\"></ms",
              "prefix 15, which announces 21 bytes, 2 too few if the text goes on: it breaks off before "
              "\"g>\", as if characters were counted instead of bytes; right for 23 bytes is 17"},
             {"msg " + std::string(7676, 'x'),
              "prefix 80 3c, which announces 7680 bytes; syntax error at byte 1: msg "
              "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx..."},
             {"msgx" + std::string(56, 'x'),
              "prefix 3c, which announces 60 bytes; syntax error at byte 1: "
              "msgxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"},
             {"?xml " + std::string(55, 'x'),
              "no prefix came: the text's first byte, 3c, was taken for one, and the text is ?xml "
              "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"},
             {"msg " + std::string(56, 'x'),
              "no prefix came: the text's first byte, 3c, was taken for one, and the text is msg "
              "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"},
             {"<msg req=\"OK\">" + std::string(50, 'x') + "</x>" + std::string(50, 'y'),
              "prefix 76, which announces 118 bytes; mismatched tag at byte 67: "
              "...xxxxxxxxxxxxxxxxxxxxxxxxxxxx</x>yyyyyyyyyyyyyyyyyyyyyyyyyyyy..."},
             {"<msg req=\"OK\">" + std::string(50, 'x') + "</x>" + std::string(28, 'y'),
              "prefix 60, which announces 96 bytes; mismatched tag at byte 67: "
              "...xxxxxxxxxxxxxxxxxxxxxxxxxxxx</x>yyyyyyyyyyyyyyyyyyyyyyyyyyyy"}}) {
        EXPECT_EQ(ExplainText(text).words, words);
    }
}

TEST(Framing, TellsWhatIsLeftOutOfTheLastTag) {
    const std::string message = "<msg req=\"OK\"><a/></msg>";
    for (const char* const tail : {">", "g>", "sg>", "msg>", "/msg>", "</msg>"}) {
        const FramingFault fault = ExplainText(message.substr(0, message.size() - std::strlen(tail)));
        EXPECT_NE(
            fault.words.find("it breaks off before \"" + std::string(tail) + "\"; right for 24 bytes is 18"),
            std::string::npos)
            << fault.words;
    }
}

TEST(Framing, IsNotProvedByTheNumberAlone) {
    EXPECT_EQ(ExplainMissing(300, 171).words,
              "prefix ac 02, which announces 300 bytes; 171 came; for 171 it would be ab 01");
    EXPECT_EQ(ExplainMissing(60, 14).words,
              "prefix 3c, which announces 60 bytes; 14 came; for 14 it would be 0e");
    EXPECT_EQ(ExplainMissing(300, std::nullopt).words,
              "prefix ac 02, which announces 300 bytes; they did not come");
    EXPECT_FALSE(ExplainMissing(300, std::nullopt).isProved);
}

}  // namespace
}  // namespace rig::judge
