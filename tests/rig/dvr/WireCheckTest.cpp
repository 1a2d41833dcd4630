#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "rig/dvr/wire/WireCheck.h"
#include "tests/rig/dvr/Failures.h"

namespace {

using rig::dvr::EncodePrefix;
using rig::dvr::FindWireFaults;
using rig::dvr::ReceivedFrame;
using rig::dvr::Transcript;
using rig::dvr::WireCheck;

ReceivedFrame HonestFrame(const std::string& text) {
    return {EncodePrefix(static_cast<std::uint32_t>(text.size())), text.size()};
}

struct Faultless {
    int dialect;
    const char* text;
};

void PrintTo(const Faultless& tested, std::ostream* out) {
    *out << tested.text;
}

class FaultlessTest : public testing::TestWithParam<Faultless> {};

TEST_P(FaultlessTest, IsAMessageOfTheProtocol) {
    const std::string text = GetParam().text;
    EXPECT_EQ(FindWireFaults(HonestFrame(text), text, GetParam().dialect), std::vector<std::string>());
}

INSTANTIATE_TEST_SUITE_P(
    WireCheck, FaultlessTest,
    testing::Values(
        Faultless{1, R"(<msg req="GET_XML" />)"}, Faultless{1, R"(<msg req="GET_XML"/>)"},
        Faultless{1, R"(<msg req="GET_FILE" path="E 1" file='a"b' />)"},
        Faultless{1, R"(<msg req="EVENT_XFER_COMPLETE"><events><string>E1</string><string> </string>)"
                     R"(</events></msg>)"},
        Faultless{1, R"(<msg req="EVENT_XFER_COMPLETE"><events /></msg>)"},
        Faultless{1, R"(<msg req="UPDATE_CONFIGURATION" txt="&lt;FakeConfig info=&quot;x&quot; /&gt;" />)"},
        Faultless{2, R"(<msg req="NEXT_EVENT" reid="&#x0A;>" protocolVersion="2.0" />)"},
        Faultless{2, R"(<msg req="GET_FILE" reid="" path="" file="f" protocolVersion="2.0" />)"},
        Faultless{2,
                  R"(<msg req="GET_FILE" reid="E" path="E" file="f" protocolVersion="2.0" rehash="true" />)"},
        Faultless{2, R"(<msg req="UPDATE_CONFIGURATION" protocolVersion="2.0" message="&lt;a /&gt;" />)"}));

struct Faulty {
    const char* name;
    int dialect;
    std::string text;
    const char* fault;
};

void PrintTo(const Faulty& tested, std::ostream* out) {
    *out << tested.name;
}

class FaultTest : public testing::TestWithParam<Faulty> {};

TEST_P(FaultTest, IsFound) {
    const std::string& text = GetParam().text;
    EXPECT_EQ(FindWireFaults(HonestFrame(text), text, GetParam().dialect),
              std::vector<std::string>{GetParam().fault});
}

INSTANTIATE_TEST_SUITE_P(
    WireCheck, FaultTest,
    testing::Values(
        Faulty{"Empty", 1, "", "expected the document's element at the start of the text, found ''"},
        Faulty{"Malformed", 1, "<msg req=",
               "expected one XML document, found Error parsing element attribute "
               "at byte 8: '<msg req='"},
        Faulty{
            "Declaration", 1, R"(<?xml version="1.0" ?><msg req="GET_XML" />)",
            "expected the document's element at the start of the text, found '<?xml version=\"1.0\" ?><msg "
            "req=\"GET_XML\" />'"},
        Faulty{"BlankBefore", 1, R"( <msg req="GET_XML" />)",
               "expected the document's element at the start of the text, found ' <msg req=\"GET_XML\" />'"},
        Faulty{"NewlineAfter", 1, "<msg req=\"GET_XML\" />\n",
               "expected nothing after the document's element, found 1 byte: '\\n'"},
        Faulty{"NulAfter", 1, std::string("<msg req=\"GET_XML\" />\0", 22),
               "expected nothing after the document's element, found 1 byte: '\\x00'"},
        Faulty{"TwoDocuments", 1, R"(<msg req="GET_XML" /><msg req="GET_XML" />)",
               "expected nothing after the document's element, found 21 bytes: '<msg req=\"GET_XML\" />'"},
        Faulty{"LineBreak", 1, "<msg\nreq=\"GET_XML\" />",
               "expected compact text without line breaks, found a byte 0a at offset 4"},
        Faulty{"Indentation", 1, R"(<msg req="EVENT_XFER_COMPLETE"> <events /></msg>)",
               "expected compact text (without values, '<msg req=\"\"><events/></msg>'), found '<msg "
               "req=\"\"> <events/></msg>'"},
        Faulty{"TwoBlanks", 1, R"(<msg  req="GET_XML" />)",
               "expected compact text (without values, '<msg req=\"\"/>'), found '<msg  req=\"\"/>'"},
        Faulty{"BlanksAtTheEnd", 1, R"(<msg req="GET_XML"  />)",
               "expected compact text (without values, '<msg req=\"\"/>'), found '<msg req=\"\"  />'"},
        Faulty{"Comment", 1, R"(<msg req="DONE"><!-- it's --></msg>)",
               "expected compact text (without values, '<msg req=\"\"></msg>'), found '<msg "
               "req=\"\"><!-- it\"\"'"},
        Faulty{"OtherElement", 1, R"(<message req="DONE" />)", "expected an element 'msg', found 'message'"},
        Faulty{"OtherDialect", 1, R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0" />)",
               "expected a message of protocol 1.0, found 'GET_EVENT_LIST'"},
        Faulty{"NoName", 1, "<msg />", "expected a message of protocol 1.0, found ''"},
        Faulty{"VersionIn10", 1, R"(<msg req="DONE" protocolVersion="2.0" />)",
               "expected the attributes of DONE in the order req, found req, protocolVersion"},
        Faulty{"NoVersionIn20", 2, R"(<msg req="DONE" />)",
               "expected the attributes of DONE in the order req, protocolVersion, found req"},
        Faulty{"OtherVersion", 2, R"(<msg req="DONE" protocolVersion="2.1" />)",
               "expected DONE with protocolVersion '2.0', found '2.1'"},
        Faulty{"VersionNotLast", 2, R"(<msg req="NEXT_EVENT" protocolVersion="2.0" reid="E" />)",
               "expected the attributes of NEXT_EVENT in the order req, reid, protocolVersion, found req, "
               "protocolVersion, reid"},
        Faulty{"RehashBeforeTheVersion", 2,
               R"(<msg req="GET_FILE" reid="E" path="E" file="f" rehash="true" protocolVersion="2.0" />)",
               "expected the attributes of GET_FILE in the order req, reid, path, file, protocolVersion, "
               "rehash, "
               "found req, reid, path, file, rehash, protocolVersion"},
        Faulty{"VersionAfterTheConfiguration", 2,
               R"(<msg req="UPDATE_CONFIGURATION" message="m" protocolVersion="2.0" />)",
               "expected the attributes of UPDATE_CONFIGURATION in the order req, protocolVersion, message, "
               "found req, message, protocolVersion"}),
    [](const testing::TestParamInfo<Faulty>& tested) { return std::string(tested.param.name); });

TEST(WireCheck, FindsAPrefixThatIsNotTheShortest) {
    const std::string text = R"(<msg req="GET_XML" />)";
    EXPECT_EQ(FindWireFaults({std::string("\x95\x80\x00", 3), 21}, text, 1),
              std::vector<std::string>{"expected the prefix 15, the shortest form of 21, found 95 80 00"});
}

TEST(WireCheck, FindsAWrongLengthAndWhatElseIsWrong) {
    const std::string text = R"(<msg  req="GET_XML" />)";
    const std::vector<std::string> faults = FindWireFaults({"\x21", 33}, text, 1);
    ASSERT_EQ(faults.size(), 2U);
    EXPECT_EQ(faults[0],
              "expected a prefix that announces the 22 bytes of the text, found one that announces 33");
    EXPECT_NE(faults[1].find("compact text"), std::string::npos);
}

class InspectionTest : public testing::Test {
 protected:
    void Inspect(WireCheck& check, const std::string& text) {
        check.Inspect(HonestFrame(text), text, transcript_);
    }

    std::ostringstream out_;
    Transcript transcript_{out_, false};
};

TEST_F(InspectionTest, EndsAtTheFirstFault) {
    WireCheck check(1, false);
    Inspect(check, R"(<msg req="GET_XML" />)");
    EXPECT_EQ(check.Summary(), "wire check: 1 frame, none wrong");
    EXPECT_EQ(BreachOf([&] { Inspect(check, "<msg />"); }),
              "wire check: frame 2: expected a message of protocol 1.0, found ''");
    EXPECT_EQ(check.Summary(), "wire check: 2 frames, 1 wrong");
    EXPECT_EQ(out_.str(), "");
}

TEST_F(InspectionTest, NotesFaultsIfTolerant) {
    WireCheck check(1, true);
    Inspect(check, "<msg />");
    EXPECT_NE(out_.str().find("wire check: frame 1: expected a message of protocol 1.0, found ''\n"),
              std::string::npos)
        << out_.str();
    EXPECT_EQ(check.Summary(), "wire check: 1 frame, 1 wrong");
}

TEST_F(InspectionTest, NotesAWrongLengthInAnyCase) {
    WireCheck check(1, false);
    check.Inspect({"\x1f", 31}, R"(<msg req="GET_XML" />)", transcript_);
    EXPECT_NE(out_.str().find("found one that announces 31\n"), std::string::npos) << out_.str();
    EXPECT_EQ(check.Summary(), "wire check: 1 frame, 1 wrong");
}

}  // namespace
