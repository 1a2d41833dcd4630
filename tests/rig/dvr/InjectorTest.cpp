#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "rig/dvr/defects/Defect.h"
#include "rig/dvr/defects/Injector.h"
#include "rig/dvr/wire/Frame.h"
#include "tests/rig/dvr/Failures.h"
#include "tests/rig/dvr/FixedRecordings.h"

// When a defect acts, which ones are refused, and how they are listed. What each does is in
// tests/together/defects.txt.
namespace {

using rig::dvr::DefectSite;
using rig::dvr::ExitStatus;
using rig::dvr::Injector;
using rig::dvr::Message;
using rig::dvr::Outgoing;
using Names = std::vector<std::string>;

class InjectorTest : public testing::Test {
 protected:
    /// @return the defects that act on this message
    Names Acting(const std::string& text) { return injector_.Prepare(Message::Parse(text)).defects; }

    Names ActingOnFile(const std::string& event, const std::string& file) {
        return Acting("<msg req=\"FILE_COMPLETE\" reid=\"" + event + "\" file=\"" + file +
                      "\" length=\"4\" hashCode=\"h\"/>");
    }

    std::string Refused(const std::string& defect, const DefectSite& site = {}, int dialect = 2) {
        Injector injector(recordings_, dialect, 0);
        return FailureOf(ExitStatus::Unusable, [&] { injector.AddDefect(defect, site); });
    }

    const Names none_{};
    FixedRecordings recordings_;
    Injector injector_{recordings_, 2, 0};
};

constexpr const char* kAcknowledgement = R"(<msg req="EVENT_XFER_ACK" reid="EVT1"/>)";

TEST_F(InjectorTest, LetsADefectWithoutASiteActOnce) {
    injector_.AddDefect("missing-reid", {});
    EXPECT_EQ(Acting(R"(<msg req="OK"/>)"), none_);
    EXPECT_EQ(ActingOnFile("EVT1", "a.ts"), Names{"missing-reid"});
    EXPECT_EQ(ActingOnFile("EVT1", "b.ts"), none_);
    EXPECT_EQ(Acting(kAcknowledgement), none_);
}

TEST_F(InjectorTest, NamesTheDefectsThatHaveNotActed) {
    injector_.AddDefect("missing-reid", {});
    injector_.AddDefect("missing-source", {});
    injector_.AddDefect("missing-hash", {});
    EXPECT_EQ(injector_.Idle(), "missing-reid, missing-source, missing-hash");
    Acting(kAcknowledgement);
    EXPECT_EQ(injector_.Idle(), "missing-source, missing-hash");
}

TEST_F(InjectorTest, LetsADefectThatAlwaysActsDoSo) {
    injector_.AddDefect("missing-hash", {});
    EXPECT_EQ(ActingOnFile("EVT1", "a.ts"), Names{"missing-hash"});
    EXPECT_EQ(Acting(kAcknowledgement), none_);
    EXPECT_EQ(ActingOnFile("EVT1", "b.ts"), Names{"missing-hash"});
}

TEST_F(InjectorTest, WaitsForAMessageThatTheDefectCanChange) {
    injector_.AddDefect("accept-file", {});
    EXPECT_EQ(Acting(R"(<msg req="INVALID_EVENT" reid="1"/>)"), none_);
    EXPECT_EQ(Acting(R"(<msg req="INVALID_EVENT" reid="1" file="s"/>)"), Names{"accept-file"});
    EXPECT_EQ(Acting(R"(<msg req="INVALID_EVENT" reid="1" file="s"/>)"), none_);
    injector_.AddDefect("case-file", {});
    EXPECT_EQ(ActingOnFile("EVT1", "123"), none_) << "has no letters";
    EXPECT_EQ(ActingOnFile("EVT1", "a.ts"), Names{"case-file"});
}

TEST_F(InjectorTest, LetsADefectActOnEachMessageOfAName) {
    injector_.AddDefect("missing-reid", {"FILE_COMPLETE", 0, "", ""});
    EXPECT_EQ(Acting(kAcknowledgement), none_);
    EXPECT_EQ(ActingOnFile("EVT1", "a.ts"), Names{"missing-reid"});
    EXPECT_EQ(ActingOnFile("EVT1", "b.ts"), Names{"missing-reid"});
}

TEST_F(InjectorTest, CountsTheMessagesOfEachName) {
    injector_.AddDefect("missing-reid", {"FILE_COMPLETE", 2, "", ""});
    EXPECT_EQ(ActingOnFile("EVT1", "a.ts"), none_);
    EXPECT_EQ(Acting(kAcknowledgement), none_);
    EXPECT_EQ(ActingOnFile("EVT1", "b.ts"), Names{"missing-reid"});
    EXPECT_EQ(ActingOnFile("EVT2", "c.ts"), none_);
}

TEST_F(InjectorTest, CountsForADefectThatAlwaysActsToo) {
    injector_.AddDefect("missing-hash", {"FILE_COMPLETE", 2, "", ""});
    EXPECT_EQ(ActingOnFile("EVT1", "a.ts"), none_);
    EXPECT_EQ(ActingOnFile("EVT1", "b.ts"), Names{"missing-hash"});
    EXPECT_EQ(ActingOnFile("EVT2", "c.ts"), none_);
}

TEST_F(InjectorTest, LimitsADefectToAnEvent) {
    injector_.AddDefect("no-answer", {"", 0, "EVT2", ""});
    EXPECT_EQ(Acting(R"(<msg req="OK"/>)"), none_) << "is about no event";
    EXPECT_EQ(ActingOnFile("EVT1", "a.ts"), none_);
    EXPECT_EQ(ActingOnFile("EVT2", "c.ts"), Names{"no-answer"});
    EXPECT_EQ(ActingOnFile("EVT2", "c.ts"), none_) << "once, as without a place";
}

TEST_F(InjectorTest, LimitsADefectToAFile) {
    injector_.AddDefect("missing-hash", {"", 0, "EVT1", "b.ts"});
    EXPECT_EQ(ActingOnFile("EVT1", "a.ts"), none_);
    EXPECT_EQ(ActingOnFile("EVT2", "b.ts"), none_);
    EXPECT_EQ(ActingOnFile("EVT1", "b.ts"), Names{"missing-hash"});
    EXPECT_EQ(ActingOnFile("EVT1", "b.ts"), Names{"missing-hash"});
}

TEST_F(InjectorTest, CombinesAMessageAndAPlace) {
    injector_.AddDefect("double", {"FILE_COMPLETE", 0, "EVT1", "b.ts"});
    EXPECT_EQ(Acting(R"(<msg req="XFER_IN_PROGRESS" reid="EVT1" file="b.ts"/>)"), none_);
    EXPECT_EQ(ActingOnFile("EVT1", "a.ts"), none_);
    EXPECT_EQ(ActingOnFile("EVT1", "b.ts"), Names{"double"});
}

TEST_F(InjectorTest, DecidesByWhatAnHonestDvrWouldSend) {
    injector_.AddDefect("wrong-reid=EVT2", {"FILE_COMPLETE", 0, "", ""});
    injector_.AddDefect("missing-hash", {"", 0, "EVT1", ""});
    EXPECT_EQ(ActingOnFile("EVT1", "a.ts"), (Names{"wrong-reid", "missing-hash"}));
}

TEST_F(InjectorTest, LetsSeveralDefectsActOnOneMessageInTheirOrder) {
    injector_.AddDefect("wrong-file=x", {});
    injector_.AddDefect("wrong-file=y", {});
    injector_.AddDefect("silence", {"FILE_COMPLETE", 1, "", ""});
    const Outgoing outgoing = injector_.Prepare(Message::Parse(R"(<msg req="FILE_COMPLETE" file="a"/>)"));
    EXPECT_EQ(outgoing.defects, (Names{"wrong-file", "wrong-file", "silence"}));
    EXPECT_EQ(outgoing.message.Get("file"), "y");
    EXPECT_TRUE(outgoing.silent);
}

TEST_F(InjectorTest, SendsAMessageTwiceWhateverElseIsWrongWithIt) {
    injector_.AddDefect("no-req", {});
    injector_.AddDefect("double", {});
    const Outgoing outgoing = injector_.Prepare(Message("OK"));
    ASSERT_EQ(outgoing.after.size(), 1U);
    EXPECT_EQ(outgoing.after[0].Text(), "<msg/>");
}

TEST_F(InjectorTest, GarblesWhatAnotherDefectHasLeft) {
    injector_.AddDefect("malformed-xml", {"OK", 0, "", ""});
    injector_.AddDefect("garble", {"OK", 0, "", ""});
    EXPECT_EQ(injector_.Frame(injector_.Prepare(Message("OK"))).size(),
              1 + std::string("<msg req=\"OK\"").size());
    Injector empty(recordings_, 2, 0);
    empty.AddDefect("empty-frame", {});
    empty.AddDefect("garble", {});
    EXPECT_EQ(empty.Prepare(Message("OK")).defects, Names{"empty-frame"});
}

TEST_F(InjectorTest, CompletesNoFileThatAnotherDefectHasRenamed) {
    for (const char* other : {"missing-reid", "wrong-reid"}) {
        Injector injector(recordings_, 2, 0);
        injector.AddDefect(other, {});
        injector.AddDefect("no-exception", {});
        EXPECT_EQ(
            injector.Prepare(Message::Parse(R"(<msg req="TRANSPORT_EXCEPTION" reid="EVT1" file="a.ts"/>)"))
                .defects,
            Names{other});
    }
}

TEST_F(InjectorTest, ChangesNothingWithoutDefects) {
    EXPECT_FALSE(injector_.HasDefects());
    const Outgoing outgoing = injector_.Prepare(Message("OK"));
    EXPECT_EQ(outgoing.defects, none_);
    EXPECT_EQ(injector_.Frame(outgoing), rig::dvr::EncodeFrame("<msg req=\"OK\"/>"));
    injector_.AddDefect("silence", {});
    EXPECT_TRUE(injector_.HasDefects());
}

TEST_F(InjectorTest, NamesTheChoicesForAnUnknownDefect) {
    std::string names;
    for (const rig::dvr::DefectKind& kind : rig::dvr::DefectKinds()) {
        names += (names.empty() ? "" : ", ") + std::string(kind.name);
    }
    EXPECT_EQ(Refused("wrong"), "--defect: expected one of " + names + "; found 'wrong'");
    EXPECT_EQ(Refused("Close=3"), "--defect: expected one of " + names + "; found 'Close'");
    EXPECT_EQ(Refused(""), "--defect: expected one of " + names + "; found ''");
    EXPECT_NE(names.find("wrong-reid, missing-reid, case-reid, "), std::string::npos);
}

TEST_F(InjectorTest, RefusesADefectThatTheDialectCannotShow) {
    EXPECT_EQ(
        Refused("missing-hash", {}, 1),
        "--defect missing-hash: expected protocol 2.0, the only one that can show it, found protocol 1.0");
    for (const rig::dvr::DefectKind& kind : rig::dvr::DefectKinds()) {
        for (const int dialect : {1, 2}) {
            Injector injector(recordings_, dialect, 0);
            if (std::string(kind.dialects).find(std::to_string(dialect)) == std::string::npos) {
                EXPECT_NE(Refused(kind.name, {}, dialect), "") << kind.name;
            } else {
                EXPECT_NO_THROW(injector.AddDefect(kind.name, {})) << kind.name;
            }
        }
    }
}

TEST_F(InjectorTest, RefusesAValueThatTheDefectDoesNotTake) {
    EXPECT_EQ(Refused("double=2"), "--defect double: expected no value, found '2'");
    for (const char* value : {"0", "000", "-1", "x", "1x", " 1", "", "1000000000", "all"}) {
        EXPECT_EQ(Refused("garble=" + std::string(value)),
                  "--defect garble: expected a number of bytes above 0, found '" + std::string(value) + "'");
    }
    for (const char* value : {"-1", "x", "1x", "", "1000000000", "ALL", "any"}) {
        EXPECT_EQ(Refused("close=" + std::string(value)),
                  "--defect close: expected a number of bytes, 'all' or 'random', found '" +
                      std::string(value) + "'");
    }
}

TEST_F(InjectorTest, AcceptsAnythingAsText) {
    for (const char* defect :
         {"wrong-reid=", "wrong-reid=a=b", "double=", "unknown-message=\n", "close=000"}) {
        EXPECT_NO_THROW(injector_.AddDefect(defect, {})) << defect;
    }
}

TEST_F(InjectorTest, NamesTheMessagesThatADefectCanActOn) {
    EXPECT_EQ(Refused("other-file", {"EVENT", 0, "", ""}),
              "--defect other-file: expected one of FILE_COMPLETE with --on, found 'EVENT'");
    EXPECT_EQ(Refused("malformed-description", {"XML", 0, "", ""}),
              "--defect malformed-description: expected one of EVENT with --on, found 'XML'");
    EXPECT_EQ(Refused("malformed-description", {"EVENT", 0, "", ""}, 1),
              "--defect malformed-description: expected one of XML with --on, found 'EVENT'");
    EXPECT_EQ(
        Refused("close", {"event", 0, "", ""}, 1),
        "--defect close: expected one of OK, XML, FILE_COMPLETE, CONFIGURATION_UPDATE_ERROR with --on, found "
        "'event'");
}

TEST(DefectKinds, HaveUniqueNamesAndWords) {
    std::map<std::string, int> names;
    for (const rig::dvr::DefectKind& kind : rig::dvr::DefectKinds()) {
        EXPECT_EQ(++names[kind.name], 1) << kind.name;
        EXPECT_NE(std::string(kind.does), "") << kind.name;
        EXPECT_NE(std::string(kind.logs), "") << kind.name;
        EXPECT_EQ((std::string(kind.does) + kind.logs).find('|'), std::string::npos)
            << kind.name << " breaks the table";
    }
}

}  // namespace
