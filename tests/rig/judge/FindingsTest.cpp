#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "rig/judge/checks/Checks.h"
#include "tests/rig/judge/FindingsTable.h"
#include "tests/support/ReadFile.h"

// Every text that the judge can find, by one example each: doc/findings.md is made of the same table.

namespace {

class Findings : public testing::TestWithParam<FindingsRow> {};

TEST_P(Findings, AreThoseOfTheTable) {
    const std::vector<std::string> all = FindingsOf(GetParam());
    EXPECT_FALSE(GetParam().findings.empty());
    for (const std::string& finding : GetParam().findings) {
        EXPECT_EQ(std::count(all.begin(), all.end(), finding), 1)
            << finding << "\nfound: " << testing::PrintToString(all);
    }
}

std::string WithoutMarks(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](unsigned char letter) { return std::isalnum(letter) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Judge, Findings, testing::ValuesIn(ReadFindings()),
                         [](const auto& row) { return WithoutMarks(row.param.title); });

/// With APPROVE=1 in the environment, what is found now becomes what is approved.
TEST(FindingsTable, IsWhatWouldBeWrittenAnew) {
    const std::string table = FindingsAnew();
    if (std::getenv("APPROVE") != nullptr) {
        std::ofstream(VELLORAN_FINDINGS) << table;
    }
    EXPECT_EQ(ReadFile(VELLORAN_FINDINGS), table);
}

std::string AllFindings() {
    std::string all;
    for (const FindingsRow& row : ReadFindings()) {
        for (const std::string& finding : row.findings) {
            all += finding + "\n";
        }
    }
    return all;
}

std::string SourceOf(const std::string& name) {
    return ReadFile(std::string(VELLORAN_JUDGE) + "/" + name);
}

/// @return the texts in a source, without the table of checks at its end: each literal with those that
/// continue it, cut where a value is put in
std::vector<std::string> TextsIn(std::string source) {
    source.erase(std::min(source.find("> kChecks = {"), source.size()));
    source = std::regex_replace(
        source,
        std::regex("(///?|#include|Holds\\(|StartsWith\\(|Listing listing|proof.note|kShortest =)[^\n]*"),
        "");
    source = std::regex_replace(source, std::regex("\"\\s*\n\\s*\""), "");
    std::vector<std::string> texts;
    const std::regex literal("\"((?:[^\"\\\\\n]|\\\\.)*)\"");
    const std::regex value("\\{[^}]*\\}|\\\\n");
    for (std::sregex_iterator found(source.begin(), source.end(), literal), end; found != end; ++found) {
        const std::string text = std::regex_replace(found->str(1), std::regex("\\\\\""), "\"");
        std::copy(std::sregex_token_iterator(text.begin(), text.end(), value, -1),
                  std::sregex_token_iterator(), std::back_inserter(texts));
    }
    return texts;
}

class Sources : public testing::TestWithParam<const char*> {};

TEST_P(Sources, HaveNoTextThatTheTableLacks) {
    const std::string findings = AllFindings();
    const std::vector<std::string> texts = TextsIn(SourceOf(GetParam()));
    EXPECT_FALSE(texts.empty()) << GetParam();
    for (const std::string& text : texts) {
        const bool isSentence = text.find(' ') != std::string::npos && text.size() > 3;
        EXPECT_TRUE(!isSentence || findings.find(text) != std::string::npos) << GetParam() << ": " << text;
    }
}

INSTANTIATE_TEST_SUITE_P(Judge, Sources,
                         testing::Values("Difference.cpp", "Exchange.cpp", "Findings.cpp", "Framing.cpp",
                                         "Notes.cpp", "checks/Checks.cpp", "checks/ConnectionChecks.cpp",
                                         "checks/DeliveryChecks.cpp", "checks/ExportChecks.cpp",
                                         "checks/FaultChecks.cpp", "checks/MessageChecks.cpp",
                                         "checks/SwitchChecks.cpp", "checks/TimingChecks.cpp",
                                         "checks/WireChecks.cpp", "wire/PlayedFault.cpp",
                                         "wire/WireConnection.cpp", "wire/WireInspection.cpp"),
                         [](const auto& source) { return WithoutMarks(source.param); });

TEST(FindingsTable, HasARowForEachCheck) {
    const std::string findings = AllFindings();
    for (const rig::judge::Check& check : rig::judge::AllChecks()) {
        EXPECT_NE(findings.find(std::string(" ") + check.id + " | "), std::string::npos) << check.id;
    }
}

}  // namespace
