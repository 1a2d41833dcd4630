#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <string>
#include <vector>

#include "rig/dvr/defects/Defect.h"
#include "rig/dvr/defects/Injector.h"
#include "tests/rig/dvr/DefectExpectations.h"
#include "tests/rig/dvr/FixedRecordings.h"
#include "tests/rig/dvr/HonestMessages.h"

// What every kind of defect does to every message that it can act on, byte for byte.
namespace {

using rig::dvr::DefectKind;
using rig::dvr::Injector;
using rig::dvr::Message;
using rig::dvr::Outgoing;

Sent Apply(const std::string& defect, const HonestMessage& honest) {
    const FixedRecordings recordings;
    Injector injector(recordings, honest.dialect, 0);
    injector.AddDefect(defect, {});
    const Outgoing outgoing = injector.Prepare(Message::Parse(honest.text));
    Sent sent{outgoing.dropped ? "" : injector.Frame(outgoing), {}, {}, ""};
    for (const Message& message : outgoing.before) {
        sent.before.push_back(message.Text());
    }
    for (const Message& message : outgoing.after) {
        sent.after.push_back(message.Text());
    }
    sent.then += outgoing.defects.empty() ? "" : "acted ";
    sent.then += outgoing.dropped ? "dropped " : "";
    sent.then += outgoing.copy == rig::dvr::Copy::Good ? "" : "spoils the copy ";
    sent.then += outgoing.silent ? "silent " : "";
    sent.then += outgoing.knocks ? "knocks " : "";
    sent.then += outgoing.reconnects ? "reconnects " : "";
    sent.then += outgoing.end == Outgoing::End::Close ? "closes " : "";
    sent.then += outgoing.end == Outgoing::End::Reset ? "resets " : "";
    return sent;
}

bool ActsOn(const DefectKind& kind, const HonestMessage& honest) {
    const std::vector<const char*>& names = kind.messages;
    return std::string(kind.dialects).find(std::to_string(honest.dialect)) != std::string::npos &&
           (names.empty() || std::find(names.begin(), names.end(), honest.name) != names.end());
}

std::vector<std::string> Defects() {
    std::vector<std::string> defects;
    for (const auto& [defect, expectation] : Expectations()) {
        if (expectation) {
            defects.push_back(defect);
        }
    }
    return defects;
}

class DefectTest : public testing::TestWithParam<std::string> {};

TEST_P(DefectTest, DoesWhatItSaysToEachMessageAndNothingElse) {
    const std::string& defect = GetParam();
    const DefectKind& kind = rig::dvr::FindDefectKind(defect.substr(0, defect.find('=')));
    for (const HonestMessage& honest : HonestMessages()) {
        if (ActsOn(kind, honest)) {
            EXPECT_EQ(Show(Apply(defect, honest)), Show(Expectations().at(defect)(honest)))
                << defect << " on " << honest.text;
        }
    }
}

std::string TestName(const testing::TestParamInfo<std::string>& tested) {
    std::string name = tested.param;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char byte) { return std::isalnum(byte) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Each, DefectTest, testing::ValuesIn(Defects()), TestName);

TEST(DefectKinds, AreAllTested) {
    for (const DefectKind& kind : rig::dvr::DefectKinds()) {
        EXPECT_EQ(Expectations().count(kind.name), 1U) << kind.name;
        EXPECT_TRUE(std::any_of(HonestMessages().begin(), HonestMessages().end(),
                                [&](const HonestMessage& honest) { return ActsOn(kind, honest); }))
            << kind.name << " does not act on any message";
    }
}

TEST(DefectKinds, IgnoreWhatTheyCannotActOn) {
    for (const DefectKind& kind : rig::dvr::DefectKinds()) {
        for (const HonestMessage& honest : HonestMessages()) {
            if (!ActsOn(kind, honest) &&
                std::string(kind.dialects).find(std::to_string(honest.dialect)) != std::string::npos) {
                EXPECT_EQ(Show(Apply(kind.name, honest)), Show(PassedOver(honest))) << kind.name;
            }
        }
    }
}

TEST(DefectKinds, AreListedWithEverythingPeopleNeed) {
    const std::string list = rig::AsMarkdown(rig::dvr::ListDefects());
    EXPECT_EQ(std::count(list.begin(), list.end(), '\n'),
              2 + static_cast<long>(rig::dvr::DefectKinds().size()));
    const std::string head = "| defect | dialect | acts on | what the DVR does | what the harness logs |\n";
    EXPECT_EQ(list.substr(0, head.size()), head);
    for (const char* row :
         {"\n|---|---|---|---|---|\n",
          "\n| `missing-hash` | 2.0 | FILE_COMPLETE, each | leaves `hashCode` out | ",
          "\n| `other-file` | 1.0, 2.0 | FILE_COMPLETE | completes the next file",
          "\n| `wrong-reid[=TEXT]` | 1.0, 2.0 | FILE_COMPLETE, EVENT, ",
          "\n| `garble[=BYTES]` | 1.0, 2.0 | any | ", "\n| `close[=BYTE]` | 1.0, 2.0 | any | "}) {
        EXPECT_NE(list.find(row), std::string::npos) << row;
    }
}

TEST(DefectKinds, HaveUniqueNamesAndWords) {
    std::map<std::string, int> names;
    for (const DefectKind& kind : rig::dvr::DefectKinds()) {
        EXPECT_EQ(++names[kind.name], 1) << kind.name;
        EXPECT_NE(std::string(kind.does), "") << kind.name;
        EXPECT_NE(std::string(kind.logs), "") << kind.name;
        EXPECT_EQ((std::string(kind.does) + kind.logs).find('|'), std::string::npos)
            << kind.name << " breaks the table";
    }
}

}  // namespace
