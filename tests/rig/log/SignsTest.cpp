#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "rig/base/Affix.h"
#include "rig/log/Statement.h"
#include "rig/protocol/Catalogue.h"

namespace rig::log {
namespace {

TEST(Sign, FollowsFromTheBeginningOfTheText) {
    EXPECT_EQ(StatementOf("Sending DONE").sign, Sign::SendingDone);
    EXPECT_EQ(StatementOf("hdr[3]= ac").sign, Sign::HeaderByte);
    EXPECT_EQ(StatementOf("Found event E1").sign, Sign::None);
    EXPECT_EQ(StatementOf("").sign, Sign::None);
    EXPECT_EQ(StatementOf("filesToReceive size = 4").detail, "4");
    EXPECT_EQ(StatementOf("filesToReceive size = 4").Number(), 4);
    EXPECT_EQ(StatementOf("filesToReceive size = ").Number(), 0);
}

TEST(Sign, HasOneBeginningThatFits) {
    for (const Beginning& one : Beginnings()) {
        EXPECT_EQ(BeginningOf(one.text).sign, one.sign) << one.text;
        for (const Beginning& other : Beginnings()) {
            EXPECT_FALSE(&one != &other && StartsWith(one.text, other.text))
                << one.text << ", " << other.text;
        }
    }
}

/// @return the fixed beginnings of the texts in the page about the log: "Got " of "| 16 | `Got NAME` |"
std::vector<std::string> DocumentedTexts() {
    static const std::regex kRow(R"(^\| \d+ \| `([^`]+)`)");
    static const std::regex kPlaceholder(R"(\b(NAME|NUMBER)\b.*)");
    std::ifstream page(VELLORAN_LOG_DOC);
    std::vector<std::string> texts;
    std::smatch row;
    for (std::string line; std::getline(page, line);) {
        if (std::regex_search(line, row, kRow)) {
            const std::string fixed = std::regex_replace(row[1].str(), kPlaceholder, "");
            if (!fixed.empty()) {
                texts.push_back(fixed);
            }
        }
    }
    return texts;
}

/// @return whether the text begins so, up to a value, or goes no further; or the text is "Got ", and the
/// beginning goes on with a message of the DVR
bool IsWholeBeginning(const std::string& beginning, const std::string& text) {
    static const std::regex kValue("([A-Z0-9']|exp=|old=|reid=).*");
    if (StartsWith(text, beginning)) {
        const bool endsInWord = std::isalnum(static_cast<unsigned char>(beginning.back())) != 0;
        return text == beginning || (!endsInWord && std::regex_match(text.substr(beginning.size()), kValue));
    }
    return StartsWith(beginning, text) &&
           protocol::Find(2, protocol::Sender::Dvr, beginning.substr(text.size())) != nullptr;
}

TEST(Sign, StandsForATextThatTheHarnessLogs) {
    const std::vector<std::string> texts = DocumentedTexts();
    for (const Beginning& beginning : Beginnings()) {
        const bool isDocumented =
            std::any_of(texts.begin(), texts.end(), [&beginning](const std::string& text) {
                return IsWholeBeginning(std::string(beginning.text), text);
            });
        EXPECT_TRUE(isDocumented) << beginning.text;
    }
}

}  // namespace
}  // namespace rig::log
