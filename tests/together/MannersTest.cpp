#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <random>

#include "Export.h"
#include "rig/dvr/dialogue/Habits.h"
#include "rig/dvr/recordings/EventKinds.h"
#include "rig/dvr/wire/Style.h"

// A good DVR passes however it writes its XML, whatever its events are called, and whatever its habits are.

namespace {

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) not_eq std::string::npos;
}

std::vector<std::string> NamesIn(const rig::Listing& listing) {
    std::vector<std::string> names;
    for (const auto& row : listing.rows) {
        names.push_back(row.front().substr(0, row.front().find('[')));
    }
    return names;
}

Recipe RecipeOf(const std::string& dialect, const std::string& switches, const std::string& manners) {
    std::string name;
    for (const char letter : manners + " " + dialect + " " + switches) {
        if (std::isalnum(static_cast<unsigned char>(letter)) not_eq 0) {
            name += letter;
        } else if (not name.empty() and name.back() not_eq '_') {
            name += '_';
        }
    }
    return {name.substr(0, name.find_last_not_of('_') + 1), dialect, "", switches, manners};
}

/// Under switches that make the judge follow what the DVR lists and answers.
std::vector<Recipe> Styled() {
    std::vector<Recipe> recipes;
    std::vector<std::string> styles = NamesIn(rig::dvr::ListStyles());
    styles.emplace_back("all");
    for (const std::string& style : styles) {
        recipes.push_back(RecipeOf("1", "", "--style " + style));
        recipes.push_back(RecipeOf("2", "-e -f", "--style " + style));
        recipes.push_back(RecipeOf("2", "-t -r", "--style " + style));
    }
    return recipes;
}

/// Many events take minutes unless -c ends the export; after an event without files a 2.0 harness waits.
std::vector<Recipe> MadeUp() {
    std::vector<Recipe> recipes = {RecipeOf("2", "-c 2 -e", "--events many"),
                                   RecipeOf("1", "", "--events file-less")};
    for (const std::string& kind : NamesIn(rig::dvr::ListEvents())) {
        if (kind not_eq "many" and kind not_eq "file-less") {
            recipes.push_back(RecipeOf("1", "", "--events " + kind));
            recipes.push_back(RecipeOf("2", "-e -f", "--events " + kind));
            recipes.push_back(RecipeOf("2", "-t -r", "--events " + kind));
        }
    }
    return recipes;
}

/// With a value with which the habit shows during the short transfers here.
std::string Shown(const std::string& habit, const std::string& switches) {
    const bool isShort = habit == "progress" and not Has(switches, "-x");
    return "--habit " + habit + (isShort ? "=15" : "");
}

std::vector<Recipe> Habitual() {
    std::vector<Recipe> recipes;
    for (const std::string& habit : NamesIn(rig::dvr::ListHabits())) {
        recipes.push_back(RecipeOf("1", "", Shown(habit, "")));
        recipes.push_back(RecipeOf("2", "-c 1 -u", Shown(habit, "")));
        recipes.push_back(RecipeOf("2", "-c 1 -x", Shown(habit, "-x")));
    }
    return recipes;
}

/// What the DVR's transcript shows of a habit; empty: nothing that it does not show without.
std::string TraceOf(const Recipe& recipe) {
    if (Has(recipe.manners, "progress")) {
        return recipe.dialect == "2" ? "-> XFER_IN_PROGRESS" : "";
    }
    return Has(recipe.manners, "call-again")    ? "calling again in 0 min"
           : Has(recipe.manners, "await-close") ? "the harness has closed the connection"
                                                : "";
}

bool Shows(const Dvr& dvr, const std::string& trace) {
    const std::vector<std::string> lines = dvr.Transcript();
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) { return Has(line, trace); });
}

/// Nothing fails, and nothing is open but what the harness never injected.
void PassesAsGood(const Recipe& recipe) {
    const Export played(recipe);
    EXPECT_EQ(played.DvrStatus(), 0) << played.GetDvr().StandardError();
    EXPECT_TRUE(Shows(played.GetDvr(), TraceOf(recipe)));
    for (const auto& [check, found] : played.Judge().found) {
        const bool isOpen = check.back() == '?' and Has(check, ".fired");
        EXPECT_TRUE(isOpen or check.back() == '!') << check << ": " << found;
    }
}

class Styles : public testing::TestWithParam<Recipe> {};
class Manners : public testing::TestWithParam<Recipe> {};

std::string NameIn(const testing::TestParamInfo<Recipe>& info) {
    return info.param.name;
}

TEST_P(Styles, FailNoCheckOfAGoodDvr) {
    const Export played(GetParam());
    EXPECT_EQ(played.DvrStatus(), 0);
    const Judged judged = played.Judge();
    EXPECT_EQ(judged.found, (std::map<std::string, std::string>()));
    EXPECT_EQ(judged.verdict, "PASS");
}

TEST_P(Manners, FailNoCheckOfAGoodDvr) {
    PassesAsGood(GetParam());
}

INSTANTIATE_TEST_SUITE_P(GoodDvr, Styles, testing::ValuesIn(Styled()), NameIn);
INSTANTIATE_TEST_SUITE_P(Events, Manners, testing::ValuesIn(MadeUp()), NameIn);
INSTANTIATE_TEST_SUITE_P(Habits, Manners, testing::ValuesIn(Habitual()), NameIn);

/// Draws from the same table for each number. Of the switches: -d keeps from calling again for a minute, with
/// -z a good DVR answers nothing.
class Draw {
 public:
    explicit Draw(unsigned int seed) : random_(seed) {}

    Recipe Next() {
        const std::string dialect = One({"1", "2"});
        const std::string switches = One({"-e", "-f", "-t", "-u", "-r", "-x"}) + " -c 1";
        const std::string habit = One(NamesIn(rig::dvr::ListHabits()));
        return RecipeOf(dialect, switches,
                        "--style " + One(NamesIn(rig::dvr::ListStyles())) + " --events " +
                            One({"long", "short", "odd", "clashing", "single-file"}) + " " +
                            Shown(habit, switches));
    }

 private:
    std::string One(const std::vector<std::string>& names) { return names[random_() % names.size()]; }

    std::mt19937 random_;
};

class Sample : public testing::TestWithParam<unsigned int> {};

/// VELLORAN_SEED chooses: in CI the commit.
TEST_P(Sample, OfMannersFailsNoCheckOfAGoodDvr) {
    const char* const seed = std::getenv("VELLORAN_SEED");
    Draw draw(static_cast<unsigned int>(std::strtoul(seed == nullptr ? "1" : seed, nullptr, 10)) +
              GetParam());
    const Recipe recipe = draw.Next();
    SCOPED_TRACE("velloran -p " + recipe.dialect + " " + recipe.switches + ", dvr " + recipe.manners);
    PassesAsGood(recipe);
}

INSTANTIATE_TEST_SUITE_P(GoodDvr, Sample, testing::Range(0U, 12U));

}  // namespace
