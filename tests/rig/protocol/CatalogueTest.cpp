#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>

#include "rig/protocol/Catalogue.h"

namespace rig::protocol {
namespace {

std::string WordsOf(const MessageKind& kind) {
    return std::to_string(kind.dialect) + ".0 " + NameOf(kind.sender) + " " + kind.name;
}

TEST(Catalogue, HasEachMessageOnce) {
    std::set<std::pair<int, std::string>> names;
    for (const MessageKind& kind : Catalogue()) {
        EXPECT_TRUE(names.emplace(kind.dialect, kind.name).second) << WordsOf(kind);
        EXPECT_EQ(Find(kind.dialect, kind.sender, kind.name), &kind);
    }
}

TEST(Catalogue, FindsNoMessageOfTheOtherDialectOrSender) {
    EXPECT_EQ(Find(1, Sender::Harness, "NEXT_EVENT"), nullptr);
    EXPECT_EQ(Find(2, Sender::Dvr, "NEXT_EVENT"), nullptr);
    EXPECT_EQ(Find(2, Sender::Harness, "next_event"), nullptr);
}

TEST(Catalogue, HasAVersionInEveryMessageOfTheHarnessIn20AndInNoneIn10) {
    for (const MessageKind& kind : Catalogue()) {
        const bool isRequired =
            std::set<std::string>(kind.required.begin(), kind.required.end()).count("protocolVersion") > 0;
        EXPECT_EQ(kind.required.front(), std::string("req")) << WordsOf(kind);
        EXPECT_EQ(HasAttribute(kind, "protocolVersion"), VersionOf(kind.dialect) != nullptr) << WordsOf(kind);
        EXPECT_EQ(isRequired, kind.dialect == 2 && kind.sender == Sender::Harness) << WordsOf(kind);
    }
}

TEST(Catalogue, AnswersWithMessagesOfTheOtherSide) {
    for (const MessageKind& kind : Catalogue()) {
        const Sender other = kind.sender == Sender::Dvr ? Sender::Harness : Sender::Dvr;
        for (const std::string_view answer : kind.answers) {
            EXPECT_NE(Find(kind.dialect, other, answer), nullptr) << WordsOf(kind) << ": " << answer;
        }
    }
}

TEST(Catalogue, KnowsWhichDialectAloneHasAMessage) {
    EXPECT_EQ(OnlyDialectOf("XML"), 1);
    EXPECT_EQ(OnlyDialectOf("EVENT_XFER_ACK"), 2);
    EXPECT_EQ(OnlyDialectOf("EVENT_XFER_COMPLETE"), std::nullopt);
    EXPECT_EQ(OnlyDialectOf("HELLO"), std::nullopt);
}

TEST(Catalogue, KnowsTheReportsOfFaults) {
    std::set<std::string> reports;
    for (const MessageKind& kind : Catalogue()) {
        if (IsReport(kind.name)) {
            reports.insert(kind.name);
        }
    }
    EXPECT_EQ(reports, (std::set<std::string>{"INVALID_EVENT", "TRANSPORT_EXCEPTION", "XFER_IN_PROGRESS"}));
}

TEST(Catalogue, KnowsAttributesAndElementsByTheirWholeNames) {
    const MessageKind& list = *Find(2, Sender::Dvr, "EVENT_LIST");
    EXPECT_TRUE(HasAttribute(list, "source"));
    EXPECT_FALSE(HasAttribute(list, "events"));
    EXPECT_TRUE(HasChild(list, "events"));
    EXPECT_TRUE(HasChild(list, "event"));
    EXPECT_FALSE(HasChild(list, "even"));
}

TEST(Catalogue, IsListedForPeople) {
    const std::string table = AsMarkdown(ListMessages());
    for (const char* row :
         {"| message | dialect | from | attributes [optional] | children | answered with |\n",
          "| `DONE` | 1.0 | harness | req | none | nothing |\n",
          "| `DONE` | 2.0 | harness | req, protocolVersion [duration] | none | nothing |\n",
          "| `XML` | 1.0 | DVR | req | xmlFile/string | GET_FILE |\n"}) {
        EXPECT_NE(table.find(row), std::string::npos) << row << table;
    }
    EXPECT_EQ(ListMessages().rows.size(), Catalogue().size());
}

}  // namespace
}  // namespace rig::protocol
