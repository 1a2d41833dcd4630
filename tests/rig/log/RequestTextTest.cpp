#include <gtest/gtest.h>
#include <tinyxml.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "rig/log/RequestText.h"

// The text of a request is what the harness's own library prints.

namespace rig::log {
namespace {

using Attributes = std::vector<std::pair<const char*, std::string>>;

std::string Printed(const Attributes& attributes) {
    TiXmlDocument document;
    auto* const msg = new TiXmlElement("msg");
    document.LinkEndChild(msg);
    for (const auto& [name, value] : attributes) {
        msg->SetAttribute(name, value);
    }
    std::string text;
    text << document;
    return text;
}

Request RequestOf(const std::string& name, const std::string& reid = "", const std::string& file = "") {
    Request request;
    request.name = name;
    request.reid = reid;
    request.file = file;
    return request;
}

Switches Dialect(int protocol) {
    Switches switches;
    switches.protocol = protocol;
    return switches;
}

TEST(RequestText, HasTheAttributesOfItsDialect) {
    EXPECT_EQ(TextOf(RequestOf("GET_XML"), Dialect(1)), Printed({{"req", "GET_XML"}}));
    EXPECT_EQ(TextOf(RequestOf("GET_FILE", "E", "f"), Dialect(1)),
              Printed({{"req", "GET_FILE"}, {"path", "E"}, {"file", "f"}}));
    EXPECT_EQ(TextOf(RequestOf("NEXT_EVENT", "E"), Dialect(2)),
              Printed({{"req", "NEXT_EVENT"}, {"reid", "E"}, {"protocolVersion", "2.0"}}));
    EXPECT_EQ(TextOf(RequestOf("UPDATE_SOFTWARE"), Dialect(2)), Printed({{"req", "UPDATE_SOFTWARE"},
                                                                         {"path", "/mnt/hd/connectionmgr"},
                                                                         {"file", "upgrade.zip"},
                                                                         {"protocolVersion", "2.0"}}));
}

TEST(RequestText, AsksForANewHashOnlyWhereThatIsTheFault) {
    const Attributes plain = {
        {"req", "GET_FILE"}, {"reid", "E"}, {"path", "E"}, {"file", "f"}, {"protocolVersion", "2.0"}};
    Request request = RequestOf("GET_FILE", "E", "f");
    EXPECT_EQ(TextOf(request, Dialect(2)), Printed(plain));
    request.fault = Fault::Rehash;
    Attributes rehashed = plain;
    rehashed.emplace_back("rehash", "true");
    EXPECT_EQ(TextOf(request, Dialect(2)), Printed(rehashed));
}

TEST(RequestText, HasADurationOnlyWithItsSwitch) {
    Switches switches = Dialect(2);
    EXPECT_EQ(TextOf(RequestOf("DONE"), switches), Printed({{"req", "DONE"}, {"protocolVersion", "2.0"}}));
    switches.doneDuration = -5;
    EXPECT_EQ(TextOf(RequestOf("DONE"), switches),
              Printed({{"req", "DONE"}, {"protocolVersion", "2.0"}, {"duration", "-5"}}));
}

TEST(RequestText, HoldsTheBogusConfigurationOfItsDialect) {
    EXPECT_EQ(
        TextOf(RequestOf("UPDATE_CONFIGURATION"), Dialect(1)),
        Printed({{"req", "UPDATE_CONFIGURATION"},
                 {"txt", "<FakeConfig info=\"This is a bogus config used for protocol 1.0 testing\" />"}}));
    EXPECT_EQ(TextOf(RequestOf("UPDATE_CONFIGURATION"), Dialect(2)),
              Printed({{"req", "UPDATE_CONFIGURATION"},
                       {"protocolVersion", "2.0"},
                       {"message",
                        "<FakeConfig info=\"This is a bogus config used for protocol 2.0 testing\" />"}}));
}

TEST(RequestText, NamesTheEventsOfAFirstDialectsReport) {
    Request request = RequestOf("EVENT_XFER_COMPLETE");
    EXPECT_EQ(TextOf(request, Dialect(1)), "<msg req=\"EVENT_XFER_COMPLETE\"><events /></msg>");
    request.statedEvents = {"A&B", ""};
    EXPECT_EQ(
        TextOf(request, Dialect(1)),
        "<msg req=\"EVENT_XFER_COMPLETE\"><events><string>A&amp;B</string><string></string></events></msg>");
}

TEST(RequestText, IsEscapedAsTheHarnesssLibraryDoes) {
    const std::vector<std::string> pieces = {"&",  "<", ">", "\"", "'", "\n", "\x7f", "\xc3\xa4", "a",
                                             "&#", "x", ";", "1",  " ", "\t", "/",    "&#x"};
    std::mt19937 random(20261122);
    for (int round = 0; round < 20'000; ++round) {
        std::string reid;
        for (std::size_t count = random() % 8; count > 0; --count) {
            reid += pieces[random() % pieces.size()];
        }
        const Request request = RequestOf("NEXT_EVENT", reid);
        const std::string printed =
            Printed({{"req", "NEXT_EVENT"}, {"reid", reid}, {"protocolVersion", "2.0"}});
        ASSERT_EQ(TextOf(request, Dialect(2)), printed);
        ASSERT_EQ(SizeOf(request, Dialect(2)), printed.size());
    }
}

TEST(RequestText, IsAnnouncedHalfAsLongAgainWhereTheHarnessAnnouncesTooMuch) {
    EXPECT_EQ(AnnouncedFor(21, false), 21U);
    EXPECT_EQ(AnnouncedFor(21, true), 31U);
}

}  // namespace
}  // namespace rig::log
