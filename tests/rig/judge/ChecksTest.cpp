#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "rig/judge/checks/Checks.h"
#include "tests/support/ReadFile.h"

namespace rig::judge {
namespace {

TEST(Checks, HaveAnIdEach) {
    std::set<std::string> ids;
    for (const Check& check : AllChecks()) {
        EXPECT_TRUE(ids.insert(check.id).second) << check.id;
    }
}

TEST(Checks, NameWhatProvesThemAsTheLogHasIt) {
    const std::string page = ReadFile(VELLORAN_LOG_DOC);
    const std::regex quoted("\"([^\"]+)\"");
    for (const Check& check : AllChecks()) {
        const std::string proof = check.proof;
        EXPECT_FALSE(proof.empty()) << check.id;
        for (std::sregex_iterator text(proof.begin(), proof.end(), quoted), end; text != end; ++text) {
            EXPECT_NE(page.find(text->str(1)), std::string::npos) << check.id << ": " << text->str();
        }
    }
}

TEST(Checks, AreListedInTheOrderOfReports) {
    const Listing listing = ListChecks();
    ASSERT_EQ(listing.rows.size(), AllChecks().size());
    for (std::size_t index = 0; index < listing.rows.size(); ++index) {
        const Check& check = AllChecks()[index];
        EXPECT_EQ(listing.rows[index], (std::vector<std::string>{check.id, check.requirement, check.proof}));
    }
}

TEST(Checks, AreThoseOfThePage) {
    EXPECT_NE(ReadFile(VELLORAN_CHECKS_DOC).find(AsMarkdown(ListChecks())), std::string::npos)
        << "scripts/rig-doc writes it";
}

}  // namespace
}  // namespace rig::judge
