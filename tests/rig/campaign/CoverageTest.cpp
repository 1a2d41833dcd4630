#include <gtest/gtest.h>

#include <algorithm>

#include "rig/campaign/evidence/Coverage.h"
#include "rig/judge/checks/Checks.h"
#include "tests/rig/campaign/Statements.h"

namespace rig::campaign {
namespace {

using result::Step;
using result::Verdict;

std::uint64_t CountOf(const Coverage& coverage, const std::string& message, const std::string& field) {
    for (const Coverage::ItemCount& one : coverage.Items()) {
        if (one.item.message == message && one.item.field == field) {
            return one.count;
        }
    }
    ADD_FAILURE() << "no item " << message << " " << field;
    return 0;
}

bool Holds(const std::vector<std::string>& list, const std::string& text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

TEST(DvrMessage, HasItsFieldsOnce) {
    const std::string text =
        "<msg req='EVENT_LIST' source='s'><events><event>E</event><event/></events></msg>";
    pugi::xml_document document;
    document.load_string(text.c_str());
    log::Message message;
    message.root = document.child("msg");
    message.name = "EVENT_LIST";
    const DvrMessage counted = DvrMessageOf(message);
    EXPECT_EQ(counted.name, "EVENT_LIST");
    EXPECT_EQ(counted.fields, (std::vector<std::string>{"source", "events", "events/event"}));
}

TEST(Coverage, CountsMessagesAndFields) {
    Coverage coverage;
    result::RunResult run;
    run.steps = {{Step::Kind::FromHarness, {}, "GET_FILE E/f", 1},
                 {Step::Kind::FromHarness, {}, "DONE", 2},
                 {Step::Kind::FromDvr, {}, "EVENT E", 3}};
    run.checks = {{"rehash.fired", "", Verdict::Pass, "", "", {}}};
    coverage.Add({"x", 2, "-p 2 -d 30 -r", ""}, run,
                 {{"FILE_COMPLETE", {"reid", "file"}}, {"FILE_COMPLETE", {"reid"}}, {"NEWS", {}}});
    EXPECT_EQ(CountOf(coverage, "FILE_COMPLETE", ""), 2U);
    EXPECT_EQ(CountOf(coverage, "FILE_COMPLETE", "file"), 1U);
    EXPECT_EQ(CountOf(coverage, "FILE_COMPLETE", "length"), 0U);
    EXPECT_EQ(CountOf(coverage, "GET_FILE", "rehash"), 1U);
    EXPECT_EQ(CountOf(coverage, "DONE", "duration"), 1U);
    EXPECT_TRUE(Holds(coverage.Unreached(), "2.0 DVR: FILE_COMPLETE length"));
    EXPECT_FALSE(Holds(coverage.Unreached(), "2.0 harness: DONE"));
}

TEST(Coverage, NamesTheCasesOfSwitchesAndRules) {
    Coverage coverage;
    result::RunResult run;
    run.checks = {{"xfer.fired", "", Verdict::Pass, "", "", {}},
                  {"xfer.answer", "", Verdict::Fail, "", "", {}},
                  {"event.files", "", Verdict::Warning, "", "", {}},
                  {"export.done", "", Verdict::NotReached, "", "", {}}};
    coverage.Add({"x", 2, "-p 2 -x", ""}, run, {});
    const auto unreached = coverage.Unreached();
    EXPECT_FALSE(Holds(unreached, "switch -x"));
    EXPECT_FALSE(Holds(unreached, "rule xfer.answer"));
    EXPECT_FALSE(Holds(unreached, "rule event.files")) << "a warning is a verdict";
    EXPECT_TRUE(Holds(unreached, "rule export.done")) << "what was not reached proves nothing";
    EXPECT_TRUE(Holds(unreached, "switch -e"));
    EXPECT_FALSE(Holds(unreached, "rule reaction.time")) << "no limit was given";
    EXPECT_NE(coverage.Text().find("1 of 11 switches"), std::string::npos) << coverage.Text();
    EXPECT_NE(coverage.Text().find("rule close.*, rule duration.*"), std::string::npos) << coverage.Text();
    EXPECT_EQ(coverage.Text().find("EVENT_LIST source"), std::string::npos)
        << "EVENT_LIST itself did not come";
}

TEST(Coverage, NamesACaseOfSeveralRunsOnce) {
    Coverage coverage;
    result::RunResult run;
    run.checks = {{"xfer.fired", "", Verdict::Pass, "", "", {}}};
    coverage.Add({"x", 2, "-p 2 -x", ""}, run, {});
    coverage.Add({"x", 2, "-p 2 -x", ""}, run, {});
    for (const Coverage::Use& use : coverage.Switches()) {
        EXPECT_LE(use.cases.size(), 1U) << use.name;
    }
    for (const Coverage::Use& use : coverage.Rules()) {
        EXPECT_LE(use.cases.size(), 1U) << use.name;
    }
}

TEST(Coverage, AsksForNothingOfADialectThatDidNotRun) {
    Coverage coverage;
    EXPECT_EQ(coverage.Text(), "");
    coverage.Add({"x", 1, "-p 1", ""}, {}, {});
    for (const Coverage::ItemCount& one : coverage.Items()) {
        EXPECT_EQ(one.item.protocol, 1);
    }
    EXPECT_EQ(coverage.Switches().size(), 2U);
}

TEST(Coverage, KnowsOnlyChecksThatTheJudgeHas) {
    for (const SwitchItem& item : SwitchItems()) {
        for (const std::string& id : item.checks) {
            const auto& checks = judge::AllChecks();
            EXPECT_TRUE(std::any_of(checks.begin(), checks.end(), [&id](const judge::Check& check) {
                return id == check.id;
            })) << id;
        }
    }
}

}  // namespace
}  // namespace rig::campaign
