#include <gtest/gtest.h>

#include "rig/dvr/wire/Message.h"
#include "rig/dvr/wire/Style.h"
#include "tests/rig/dvr/Failures.h"

// How a DVR can write one and the same message.
namespace {

using rig::dvr::Message;
using rig::dvr::Style;

Message ListOfEvents() {
    Message message("EVENT_LIST");
    message.Set("source", "a>'b'  c");
    pugi::xml_node events = message.Root().append_child("events");
    events.append_child("event").text().set(" E  1");
    events.append_child("event");
    return message;
}

std::string Written(const std::string& manner) {
    Style style;
    style.AddManner(manner);
    return ListOfEvents().Text(style);
}

constexpr const char* kMsg = "<msg req=\"EVENT_LIST\" source=\"a&#62;&#39;b&#39;  c\">";
constexpr const char* kListed = "<events><event>&#32;E &#32;1</event><event/></events></msg>";

TEST(Style, IsCompactUnlessToldOtherwise) {
    EXPECT_TRUE(Style().IsPlain());
    EXPECT_EQ(ListOfEvents().Text(Style()), ListOfEvents().Text());
}

TEST(Style, WritesEachManner) {
    EXPECT_EQ(Written("indented"),
              std::string(kMsg) +
                  "\n\t<events>\n\t\t<event>\n\t\t\t&#32;E &#32;1\n\t\t</event>\n\t\t<event/>"
                  "\n\t</events>\n</msg>\n");
    EXPECT_EQ(Written("crlf"),
              std::string(kMsg) + "<events><event>&#32;E &#32;1</event><event/></events>\r\n</msg>\r\n");
    EXPECT_EQ(Written("declaration"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + std::string(kMsg) + kListed);
    EXPECT_EQ(Written("byte-order-mark"), "\xef\xbb\xbf" + std::string(kMsg) + kListed);
    EXPECT_EQ(Written("single-quotes"),
              std::string("<msg req='EVENT_LIST' source='a&#62;&#39;b&#39;  c'>") + kListed);
    EXPECT_EQ(Written("reversed"),
              std::string("<msg source=\"a&#62;&#39;b&#39;  c\" req=\"EVENT_LIST\">") + kListed);
    EXPECT_EQ(Written("unknown-attributes"),
              "<msg req=\"EVENT_LIST\" source=\"a&#62;&#39;b&#39;  c\" vendor=\"none\"><events "
              "vendor=\"none\"><event "
              "vendor=\"none\">&#32;E &#32;1</event><event vendor=\"none\"/></events></msg>");
    EXPECT_EQ(Written("comments"),
              "<!-- begin -->" + std::string(kMsg) + "<!-- message -->" + kListed + "<!-- end -->");
    EXPECT_EQ(
        Written("references"),
        "<msg req=\"EVENT&#95;LIST\" source=\"a&#62;&#39;b&#39;&#32;&#32;c\"><events><event>&#32;E&#32;&#32;1"
        "</event><event/></events></msg>");
    EXPECT_EQ(Written("cdata"),
              std::string(kMsg) + "<events><event><![CDATA[ E  1]]></event><event/></events></msg>");
    EXPECT_EQ(Written("long-form"),
              std::string(kMsg) + "<events><event>&#32;E &#32;1</event><event></event></events></msg>");
}

TEST(Style, IsRefusedIfThereIsNone) {
    Style style;
    EXPECT_THROW(style.AddManner("pretty"), rig::dvr::Failure);
}

}  // namespace
