#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "rig/dvr/wire/Message.h"
#include "tests/rig/dvr/Failures.h"

namespace {

using rig::dvr::Message;

TEST(Message, IsPrintedInOneLineWithItsAttributesInOrder) {
    Message message("FILE_COMPLETE");
    message.Set("reid", "E1").Set("file", "a");
    EXPECT_EQ(message.Text(), "<msg req=\"FILE_COMPLETE\" reid=\"E1\" file=\"a\"/>");
}

TEST(Message, RestoresAnyNameUnchanged) {
    const std::string names[] = {
        "plain",      "two  blanks", " leading", "trailing ",        "\"quoted\" & 'quoted' <a>",
        "a\tb\nc\rd", "M\xc3\xbc",   "a]]>b",    "&amp; &#32; &lt;", std::string(200, 'n'),
        "",
    };
    for (const std::string& name : names) {
        Message message("EVENT_LIST");
        message.Set("reid", name);
        message.Root().append_child("event").text().set(name.c_str());
        const Message parsed = Message::Parse(message.Text());
        EXPECT_EQ(parsed.Get("reid"), name);
        EXPECT_EQ(parsed.Root().child("event").text().get(), name);
    }
}

TEST(Message, WritesBlanksThatAReaderMayMergeAsReferences) {
    Message message("EVENT_LIST");
    message.Set("source", "a b");
    message.Root().append_child("event").text().set(" a b  c\td ");
    EXPECT_EQ(message.Text(),
              "<msg req=\"EVENT_LIST\" source=\"a b\"><event>&#32;a b &#32;c&#9;d&#32;</event></msg>");
}

TEST(Message, DistinguishesAMissingAttributeFromAnEmptyOne) {
    const Message message = Message::Parse("<msg req=\"NEXT_EVENT\" reid=\"\"/>");
    EXPECT_EQ(message.Find("reid"), std::string());
    EXPECT_EQ(message.Find("file"), std::nullopt);
    EXPECT_EQ(message.Name(), "NEXT_EVENT");
}

TEST(Message, AcceptsDeclarationsCommentsAndBlanksAroundItsElement) {
    EXPECT_EQ(Message::Parse("<?xml version=\"1.0\"?>\n<!-- hello -->\n<msg req=\"OK\"/>\n").Name(), "OK");
}

struct BadText {
    const char* what;
    std::string text;
    std::string found;
};

void PrintTo(const BadText& tested, std::ostream* out) {
    *out << tested.what;
}

class BadMessageTest : public testing::TestWithParam<BadText> {};

TEST_P(BadMessageTest, IsABreach) {
    const std::string found = BreachOf([] { Message::Parse(GetParam().text); });
    EXPECT_NE(found.find(GetParam().found), std::string::npos) << found;
}

INSTANTIATE_TEST_SUITE_P(
    Message, BadMessageTest,
    testing::Values(BadText{"Empty", "", "not one XML document (0 top-level elements): ''"},
                    BadText{"Unclosed", "<msg req=\"DONE\"", "not one XML document"},
                    BadText{"NotXml", "hello",
                            "not one XML document (text outside the document's element): 'hello'"},
                    BadText{"TextAfter", "<msg req=\"DONE\"/>x", "text outside the document's element"},
                    BadText{"TwoElements", "<msg req=\"DONE\"/><msg req=\"DONE\"/>", "2 top-level elements"},
                    BadText{"NulByte", std::string("<msg req=\"DONE\"/>\0", 18), "a NUL byte"},
                    BadText{"OtherElement", "<message req=\"DONE\"/>", "without a top-level 'msg'"},
                    BadText{"NoReq", "<msg/>", "a message without 'req': '<msg/>'"},
                    BadText{"LowerCaseReqName", "<msg Req=\"DONE\"/>", "a message without 'req'"}),
    [](const testing::TestParamInfo<BadText>& tested) { return std::string(tested.param.what); });

TEST(Message, WantsOneWholeEmbeddedDocument) {
    EXPECT_TRUE(rig::dvr::IsDocument("<FakeConfig info=\"x\" />"));
    EXPECT_FALSE(rig::dvr::IsDocument("<FakeConfig info=\"x\">"));
    EXPECT_FALSE(rig::dvr::IsDocument("<a/><b/>"));
    EXPECT_FALSE(rig::dvr::IsDocument("text"));
    EXPECT_FALSE(rig::dvr::IsDocument(""));
}

}  // namespace
