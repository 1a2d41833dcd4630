#include <gtest/gtest.h>

#include <algorithm>

#include "Export.h"

// A good DVR passes whatever hash it announces, and under each switch that makes it transfer a file again.

namespace {

using Checks = std::set<std::string>;

std::vector<Recipe> Delivering() {
    const std::string deliver = std::string("--deliver ") + kDelivered;
    std::vector<Recipe> recipes;
    for (const std::string dialect : {"1", "2"}) {
        for (const std::string hash : {"crc32", "md5", "sha1", "sha256"}) {
            recipes.push_back({dialect + "_" + hash, dialect, "", "", deliver + " --hash " + hash});
        }
    }
    for (const std::string switches : {"-r", "-t", "-x", "-f", "-t -r", "-c 1"}) {
        std::string name = "2" + switches;
        name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
        std::replace(name.begin(), name.end(), '-', '_');
        recipes.push_back({name, "2", "", switches, deliver});
    }
    return recipes;
}

Checks ExpectedOf(const Recipe& recipe) {
    Checks checks = {"delivery.file", "delivery.length", "delivery.hash", "delivery.unasked",
                     "delivery.in-time"};
    if (recipe.switches.find("-r") not_eq std::string::npos) {
        checks.insert("delivery.new-hash");
    }
    if (recipe.switches.find("-t") not_eq std::string::npos) {
        checks.insert("delivery.half");
    }
    return checks;
}

class Delivered : public testing::TestWithParam<Recipe> {};

TEST_P(Delivered, FilesPassOfAGoodDvr) {
    const Export played(GetParam());
    EXPECT_EQ(played.DvrStatus(), 0);
    const Judged judged = played.Judge();
    EXPECT_EQ(judged.found, (std::map<std::string, std::string>()));
    EXPECT_EQ(judged.verdict, "PASS");
    Checks passed;
    std::copy_if(judged.passed.begin(), judged.passed.end(), std::inserter(passed, passed.end()),
                 [](const std::string& check) { return check.compare(0, 9, "delivery.") == 0; });
    EXPECT_EQ(passed, ExpectedOf(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(GoodDvr, Delivered, testing::ValuesIn(Delivering()),
                         [](const auto& one) { return one.param.name; });

}  // namespace
