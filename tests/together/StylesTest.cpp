#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "Export.h"
#include "rig/dvr/wire/Style.h"

// A good DVR passes however it writes its XML.

namespace {

/// Each style, and all at once, under switches that make the judge follow what the DVR lists and answers.
std::vector<Recipe> Styled() {
    std::vector<std::string> styles = {"all"};
    for (const auto& row : rig::dvr::ListStyles().rows) {
        styles.push_back(row.front());
    }
    std::vector<Recipe> recipes;
    for (const std::string& style : styles) {
        std::string name = style;
        std::replace(name.begin(), name.end(), '-', '_');
        recipes.push_back({name + "_1", "1", "", "", style});
        recipes.push_back({name + "_2_e_f", "2", "", "-e -f", style});
        recipes.push_back({name + "_2_t_r", "2", "", "-t -r", style});
    }
    return recipes;
}

class Styles : public testing::TestWithParam<Recipe> {};

TEST_P(Styles, FailNoCheckOfAGoodDvr) {
    const Export played(GetParam());
    EXPECT_EQ(played.DvrStatus(), 0);
    const Judged judged = played.Judge();
    EXPECT_EQ(judged.found, (std::map<std::string, std::string>()));
    EXPECT_EQ(judged.verdict, "PASS");
}

INSTANTIATE_TEST_SUITE_P(GoodDvr, Styles, testing::ValuesIn(Styled()),
                         [](const auto& one) { return one.param.name; });

}  // namespace
