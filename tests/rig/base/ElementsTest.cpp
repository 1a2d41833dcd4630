#include <gtest/gtest.h>

#include <sstream>

#include "rig/base/Elements.h"
#include "rig/base/ValidText.h"

namespace rig {
namespace {

const std::string kReplaced = "\xef\xbf\xbd";

TEST(ValidText, KeepsWhatDocumentsMayHold) {
    for (const std::string text : {"plain", "tab\tand\nline", "\xc3\xa4 \xe2\x82\xac \xf0\x9f\x8e\xa5", ""}) {
        EXPECT_EQ(ValidText(text), text);
    }
}

TEST(ValidText, ReplacesBytesThatAreNotUtf8) {
    EXPECT_EQ(ValidText("a\xff"
                        "b"),
              "a" + kReplaced + "b");
    EXPECT_EQ(ValidText("cut \xe2\x82"), "cut " + kReplaced);
    EXPECT_EQ(ValidText("overlong \xc0\xaf."), "overlong " + kReplaced + ".");
    EXPECT_EQ(ValidText("surrogate \xed\xa0\x80").substr(0, 13), "surrogate " + kReplaced);
}

TEST(ValidText, ReplacesControlCharacters) {
    EXPECT_EQ(ValidText(std::string("a\0b", 3)), "a" + kReplaced + "b");
    EXPECT_EQ(ValidText("\x01\x1b\r\x7f\xc2\x85"), kReplaced + kReplaced + kReplaced + kReplaced + kReplaced);
}

TEST(ValidText, ReplacesNoncharacters) {
    EXPECT_EQ(ValidText("\xef\xbf\xbe \xef\xb7\x90"), kReplaced + " " + kReplaced);
}

TEST(Elements, HoldAnyBytes) {
    pugi::xml_document document;
    const pugi::xml_node node = Add(document, "p", "</p><script>&\x01", "a\"b");
    AddText(node, " more");
    Set(node, "title", "'\"<\xff");
    std::ostringstream text;
    document.save(text, "", pugi::format_raw | pugi::format_no_declaration);
    EXPECT_EQ(text.str(), "<p class=\"a&quot;b\" title=\"'&quot;&lt;" + kReplaced +
                              "\">&lt;/p&gt;&lt;script&gt;&amp;" + kReplaced + " more</p>");
}

}  // namespace
}  // namespace rig
