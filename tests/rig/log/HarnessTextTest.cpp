#include <gtest/gtest.h>
#include <tinyxml.h>

#include <random>
#include <string>
#include <vector>

#include "rig/log/HarnessText.h"

namespace rig::log {
namespace {

/// @return the text of `a` in a document as the judge takes it and its attribute `b`, in brackets; "none"
/// where the document is not well formed
std::string Taken(const std::string& document) {
    pugi::xml_document parsed;
    if (!LoadAsTheHarness(document, parsed)) {
        return "none";
    }
    const pugi::xml_node element = parsed.child("a");
    return std::string("[") + TextOf(element) + "][" + element.attribute("b").value() + "]";
}

/// The same by the harness's own parser.
std::string Given(const std::string& document) {
    TiXmlDocument parsed;
    parsed.Parse(document.c_str());
    if (parsed.Error()) {
        return "none";
    }
    const TiXmlElement* const element = parsed.FirstChildElement("a");
    const char* const text = element == nullptr ? nullptr : element->GetText();
    const char* const value = element == nullptr ? nullptr : element->Attribute("b");
    return "[" + std::string(text == nullptr ? "" : text) + "][" + (value == nullptr ? "" : value) + "]";
}

TEST(HarnessText, HasNoBlanksAtItsEndsAndOneInPlaceOfSeveral) {
    EXPECT_EQ(Taken("<a>\r\n\t two  words\n</a>"), "[two words][]");
    EXPECT_EQ(Taken("<a> \n </a>"), "[][]");
    EXPECT_EQ(Taken("<a> one</a>"), "[one][]");
}

TEST(HarnessText, KeepsBlanksThatAreWrittenAsReferences) {
    EXPECT_EQ(Taken("<a> &#32;&#32;two&#10;words&#32; </a>"), "[  two\nwords ][]");
}

TEST(HarnessText, EndsAtACommentOrSection) {
    EXPECT_EQ(Taken("<a>one<!-- -->two</a>"), "[one][]");
    EXPECT_EQ(Taken("<a><!-- -->two</a>"), "[][]");
    EXPECT_EQ(Taken("<a><![CDATA[  as  is ]]>two</a>"), "[  as  is ][]");
}

TEST(HarnessText, TakesWhatTheHarnesssParserTakesThoughItIsNotWellFormed) {
    pugi::xml_document document;
    ASSERT_TRUE(LoadAsTheHarness("<msg req=OK reid='a & b'/>", document));
    EXPECT_STREQ(document.child("msg").attribute("req").value(), "OK");
    EXPECT_STREQ(document.child("msg").attribute("reid").value(), "a  b");
    EXPECT_FALSE(LoadAsTheHarness("<msg req='OK'", document));
}

TEST(HarnessText, MayHaveOneByteForACharacterReference) {
    EXPECT_EQ(Taken("<a>&#xE4;</a>"), "[\xe4][]");
    EXPECT_EQ(Taken("<?xml version='1.0' encoding='UTF-8'?><a>&#xE4;</a>"), "[\xc3\xa4][]");
}

TEST(HarnessText, IsWhatTheHarnesssParserGives) {
    const std::vector<std::string> pieces = {" ",          "\t",
                                             "\n\t",       "x",
                                             "E1",         "&#32;",
                                             "&amp;",      "&#228;",
                                             "&#x20AC;",   "\r\n",
                                             "&lt;",       "<!-- c -->",
                                             "<b> y </b>", "\xc3\xa4",
                                             "<b/>",       "\xe4",
                                             "<b c=d/>",   "&nbsp;",
                                             "\x01",       "&lt",
                                             "&gt",        "&quot",
                                             "&apos",      "&apos;",
                                             "&am",        "<![CDATA[ c\r\n ]]>"};
    const std::vector<std::string> starts = {"", " ", "\n", "<!-- c -->", "<?xml version='1.0'?>", "x", " x"};
    std::mt19937 random(20261122);
    std::uniform_int_distribution<std::size_t> piece(0, pieces.size() - 1);
    std::uniform_int_distribution<int> length(0, 6);
    for (int round = 0; round < 20'000; ++round) {
        const auto some = [&] {
            std::string text;
            for (int left = length(random); left > 0; --left) {
                text += pieces[piece(random)];
            }
            return text;
        };
        const std::string document =
            starts[piece(random) % starts.size()] + "<a b=\"" + some() + "\">" + some() + "</a>";
        ASSERT_EQ(Taken(document), Given(document)) << document;
    }
}

}  // namespace
}  // namespace rig::log
