#include <gtest/gtest.h>
#include <tinyxml.h>

#include <algorithm>
#include <map>
#include <set>

#include "rig/fault/Cases.h"
#include "rig/log/Xml.h"
#include "tests/rig/fault/Requests.h"

// What each fault makes of the messages that it acts on.
namespace {

using namespace rig::fault;
using namespace std::string_literals;
using Kind = Act::Kind;

const Request& RequestOf(const FaultCase& one) {
    return *std::find_if(Requests().begin(), Requests().end(), [&](const Request& request) {
        return request.dialect == one.dialect && request.name == one.message;
    });
}

Script ScriptOf(const FaultCase& one) {
    static const Request call = {1, kCall, ""};
    return ScriptOf(*one.fault, one.message == kCall ? call : RequestOf(one), one.value);
}

std::vector<FaultCase> CasesOf(const std::string& name) {
    return Choose(name);
}

/// Elements, attributes and texts as the harness's library reads them.
std::map<std::string, std::string> ContentOf(const std::string& text) {
    TiXmlDocument document;
    document.Parse(text.c_str());
    EXPECT_FALSE(document.Error()) << text;
    std::map<std::string, std::string> content;
    for (const TiXmlElement* at = document.RootElement(); at != nullptr; at = at->FirstChildElement()) {
        for (const TiXmlAttribute* one = at->FirstAttribute(); one != nullptr; one = one->Next()) {
            content[at->ValueStr() + "/" + one->NameTStr()] = one->ValueStr();
        }
        content[at->ValueStr()] = at->GetText() == nullptr ? "" : at->GetText();
    }
    return content;
}

TEST(Faults, HaveNamesOfTheirOwn) {
    std::set<std::string> names;
    for (const Fault& fault : Faults()) {
        EXPECT_TRUE(names.insert(fault.name).second) << fault.name;
        EXPECT_EQ(&fault, Find(fault.name));
    }
    EXPECT_EQ(nullptr, Find("no-such-fault"));
}

TEST(Faults, ActOnEveryMessageOfTheirCases) {
    for (const FaultCase& one : Cases()) {
        const Script script = ScriptOf(one);
        ASSERT_FALSE(script.empty()) << one.Id();
        if (one.message != kCall) {
            const std::string& text = RequestOf(one).text;
            EXPECT_FALSE(script.size() == 1 && script[0].bytes == static_cast<char>(text.size()) + text)
                << one.Id();
        }
    }
}

TEST(Faults, EndTheConnectionOnlyWhereTheExportNeedNotGoOn) {
    for (const FaultCase& one : Cases()) {
        const Script script = ScriptOf(one);
        const bool ends = std::any_of(script.begin(), script.end(), [](const Act& act) {
            return act.kind == Kind::Close || act.kind == Kind::Reset || act.kind == Kind::HalfClose;
        });
        EXPECT_TRUE(!ends || one.fault->duty == Duty::Survives || one.message == kCall) << one.Id();
    }
}

TEST(Faults, OfPiecesSendEveryByteOfTheMessageInMoreThanOnePiece) {
    for (const FaultCase& one :
         CasesOf("bytewise,split,split-at-random,latency,jitter,bandwidth,stall-before")) {
        const std::string& text = RequestOf(one).text;
        const Script script = ScriptOf(one);
        EXPECT_EQ(static_cast<char>(text.size()) + text, SentBy(script)) << one.Id();
        EXPECT_LT(1, script.size()) << one.Id();
    }
}

TEST(Faults, StallAfterOneByteOfAPrefixOfTwo) {
    for (const FaultCase& one : CasesOf("stall-in-prefix")) {
        const Script script = ScriptOf(one);
        ASSERT_EQ(3, script.size());
        EXPECT_EQ("\x80", script[0].bytes);
        EXPECT_EQ(2000, script[1].time.count());
        EXPECT_EQ('\x01', script[2].bytes.at(0));
        EXPECT_EQ(129, script[2].bytes.size());
        EXPECT_EQ(ContentOf(RequestOf(one).text), ContentOf(script[2].bytes.substr(1))) << one.Id();
    }
}

TEST(Faults, OfShapeSayTheSameInXmlThatIsWellFormed) {
    for (const FaultCase& one : CasesOf("shape")) {
        const Script script = ScriptOf(one);
        const std::string text = TextOf(SentBy(script));
        EXPECT_EQ(1, script.size());
        EXPECT_FALSE(rig::log::FaultIn(text)) << one.Id();
        EXPECT_EQ(ContentOf(RequestOf(one).text), ContentOf(text)) << one.Id();
    }
}

TEST(Faults, OfMarkupAreNotWellFormedOrLargeOrHostile) {
    const std::set<std::string> wellFormed = {"other-root", "huge-attribute", "deep", "external-entity"};
    for (const FaultCase& one : CasesOf("markup")) {
        const Script script = ScriptOf(one);
        const std::string text = script.at(0).bytes.substr(script[0].bytes.find_first_of("< G"));
        const bool isMalformed = rig::log::FaultIn(text).has_value();
        EXPECT_EQ(wellFormed.count(one.fault->name) == 0, isMalformed) << one.Id();
    }
}

TEST(Faults, AskAndThenSendTheTrueMessage) {
    for (const FaultCase& one : CasesOf("markup,event-name,file-name,version,unknown-request,no-reid")) {
        const Script script = ScriptOf(one);
        ASSERT_EQ(3, script.size()) << one.Id();
        EXPECT_EQ(Kind::TakeAnswers, script[1].kind);
        EXPECT_EQ(RequestOf(one).text, TextOf(script[2].bytes)) << one.Id();
    }
}

/// To the letter, for one message of each.
TEST(Faults, SendTheseBytes) {
    const std::string text = R"(<msg req="DONE" />)";  // 18 bytes
    const std::map<std::string, std::string> expected = {
        {"prefix-short=1", "\x11" + text},
        {"prefix-long=1000", "\xfa\x07" + text},
        {"prefix-wide=1", "\x92\0"s + text},
        {"prefix-wide=4", "\x92\x80\x80\x80\0"s + text},
        {"prefix-overflow", "\x92\x80\x80\x80\x70" + text},
        {"prefix-endless=64", std::string(64, '\xff')},
        {"length-zero", "\0\x12"s + text},
        {"length-huge", "\xff\xff\xff\xff\x07" + text},
        {"length-negative", "\xff\xff\xff\xff\x0f" + text},
        {"nul-in-text=end", "\x13" + text + "\0\x12"s + text},
        {"trailing-bytes", "\x20" + text + "trailing bytes\x12" + text},
        {"leading-bytes", "HTTP/1.1 400 Bad Request\r\n\r\n\x12" + text},
        {"close=in-prefix", "\x80"},
        {"close=before", ""},
        {"done-twice", "\x12" + text + "\x12" + text},
        {"cut-off", "\x10<msg req=\"DONE\" \x12" + text},
        {"two-roots", "\x24" + text + text + "\x12" + text},
        {"other-root", "\x12<gsm req=\"DONE\" />\x12" + text},
        {"attribute-twice", "\x1d<msg req=\"DONE\"  req=\"DONE\"/>\x12" + text},
        {"empty-request", "\x0d<msg req=\"\"/>\x12" + text},
        {"no-request", "\x06<msg/>\x12" + text},
        {"unknown-request=FORMAT_DISK", "\x2d<msg req=\"FORMAT_DISK\" reid=\"no-such-event\"/>\x12" + text},
        {"duration=-1", "\x1f<msg req=\"DONE\" duration=\"-1\"/>"},
        {"unknown-attribute", "\x1f<msg req=\"DONE\" vendor=\"none\"/>\x12" + text},
    };
    for (const auto& [fault, bytes] : expected) {
        const std::vector<FaultCase> cases = Choose(fault + "@DONE-1.0");
        ASSERT_EQ(1, cases.size()) << fault;
        EXPECT_EQ(bytes, SentBy(ScriptOf(cases[0]))) << fault;
    }
}

TEST(Faults, NameEventsAndFilesThatNoDvrHas) {
    const auto sent = [](const std::string& id) { return ScriptOf(Choose(id).at(0)).at(0).bytes; };
    EXPECT_EQ("K<msg req=\"NEXT_EVENT\" reid=\"../../../../etc/passwd\" protocolVersion=\"2.0\"/>",
              sent("event-name=dot-dot@NEXT_EVENT-2.0"));
    EXPECT_EQ("><msg req=\"GET_FILE\" path=\"/etc/passwd\" file=\"a.ts\"/>",
              sent("event-name=absolute@GET_FILE-1.0").replace(0, 1, ">"));
    EXPECT_NE(std::string::npos, sent("file-of-other-event@GET_FILE-2.0").find(R"(reid="E2" path="E2")"));
    EXPECT_NE(std::string::npos, sent("complete-other@EVENT_XFER_COMPLETE-2.0").find(R"(reid="E2")"));
}

TEST(Faults, TakeTheirOwnValuesAndNumbersWhereTheseAreNumbers) {
    EXPECT_TRUE(Takes(*Find("latency"), "12345"));
    EXPECT_FALSE(Takes(*Find("latency"), "soon"));
    EXPECT_FALSE(Takes(*Find("latency"), "1234567890"));
    EXPECT_TRUE(Takes(*Find("close"), "before"));
    EXPECT_FALSE(Takes(*Find("close"), "3"));
    EXPECT_TRUE(Takes(*Find("two-roots"), ""));
    EXPECT_FALSE(Takes(*Find("two-roots"), "3"));
}

}  // namespace
