#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <utility>

#include "rig/campaign/evidence/Coverage.h"
#include "rig/judge/checks/Checks.h"
#include "tests/rig/campaign/Statements.h"
#include "tests/support/ReadFile.h"

namespace rig::campaign {
namespace {

using result::Step;
using result::Verdict;

/// @return the run with these checks, as "ID VERDICT"
result::RunResult RunWith(const std::vector<std::pair<std::string_view, Verdict>>& checks) {
    result::RunResult run;
    for (const auto& [id, verdict] : checks) {
        run.checks.push_back({id, "", verdict, "", "", {}});
    }
    return run;
}

/// @return those that were reached
std::string Show(const std::vector<Coverage::Use>& uses) {
    std::string text;
    for (const Coverage::Use& use : uses) {
        text += use.cases.empty() ? "" : fmt::format("{}: {}\n", use.name, fmt::join(use.cases, ", "));
    }
    return text;
}

/// @return all that the coverage tells
std::string Show(const Coverage& coverage) {
    std::string text;
    for (const auto& [item, count] : coverage.Items()) {
        text += count == 0 ? ""
                           : fmt::format("{}.0 {}: {}{}{}: {}\n", item.protocol, item.from, item.message,
                                         item.field.empty() ? "" : " ", item.field, count);
    }
    return text + Show(coverage.Switches()) + Show(coverage.Rules()) +
           fmt::format("unreached: {}\n", fmt::join(coverage.Unreached(), ", ")) + coverage.Text();
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

/// What it tells of these runs stands in coverage.txt. With APPROVE=1 in the environment, what it tells now
/// becomes what is approved.
TEST(Coverage, IsAsApproved) {
    Coverage coverage;
    EXPECT_EQ(coverage.Text(), "");
    coverage.Add({"config-1.0", 1, "-p 1 -g", ""},
                 RunWith({{"config.fired", Verdict::Pass}, {"size.fired", Verdict::Fail}}), {{"OK", {}}});
    const std::string first = Show(coverage);
    result::RunResult run = RunWith({{"xfer.fired", Verdict::Pass},
                                     {"xfer.answer", Verdict::Fail},
                                     {"rehash.fired", Verdict::Pass},
                                     {"rehash.answer", Verdict::KnownFailure},
                                     {"event.files", Verdict::Warning},
                                     {"event.described", Verdict::Inconclusive},
                                     {"log.start", Verdict::Environment},
                                     {"reaction.time", Verdict::Pass},
                                     {"export.done", Verdict::NotReached}});
    run.steps = {{Step::Kind::FromHarness, {}, "GET_FILE E/f", 1},
                 {Step::Kind::FromHarness, {}, "DONE", 2},
                 {Step::Kind::FromDvr, {}, "DONE", 3}};
    const std::vector<DvrMessage> messages = {
        {"FILE_COMPLETE", {"reid", "file"}}, {"FILE_COMPLETE", {"reid"}}, {"NEWS", {}}};
    coverage.Add({"x-2.0", 2, "-p 2 -d 30 -r -x", ""}, run, messages);
    coverage.Add({"x-2.0", 2, "-p 2 -d 30 -r -x", ""}, run, messages);
    run.checks.resize(2);
    coverage.Add({"y-2.0", 2, "-p 2 -x", ""}, run, {});
    const std::string all = "== 1.0\n" + first + "\n== and 2.0\n" + Show(coverage);
    if (std::getenv("APPROVE")) {
        std::ofstream(VELLORAN_COVERAGE) << all;
    }
    EXPECT_EQ(ReadFile(VELLORAN_COVERAGE), all);
}

/// A case of that fault, in which it acted or not.
void AddFault(Coverage& coverage, const std::string& id, Verdict acted) {
    Case plan{id, 2, "-p 2 -c 1", ""};
    plan.fault = fault::Choose(id).at(0);
    coverage.Add(plan, RunWith({{"fault.acted", acted}, {"export.done", Verdict::NotReached}}), {});
}

TEST(Coverage, TellsWhereFaultsHaveActed) {
    Coverage coverage;
    AddFault(coverage, "split=2@GET_FILE-2.0", Verdict::Pass);
    AddFault(coverage, "split=1@DONE-2.0", Verdict::Inconclusive);
    AddFault(coverage, "split=1@GET_FILE-2.0", Verdict::Pass);
    const std::vector<Coverage::FaultUse> uses = coverage.Faults();
    ASSERT_EQ(uses.size(), 1U);
    EXPECT_EQ(uses[0].protocol, 2);
    EXPECT_EQ(uses[0].message, "GET_FILE");
    EXPECT_EQ(uses[0].fault, "split");
    EXPECT_EQ(uses[0].cases, (std::vector<std::string>{"split=2@GET_FILE-2.0", "split=1@GET_FILE-2.0"}));
    EXPECT_EQ(coverage.Text().substr(0, coverage.Text().find('\n')),
              "coverage: 0 of 31 messages and fields, 1 of 2 pairs of fault and message");
}

TEST(Coverage, OfFaultsMissesOnlyWhatAPlainExportHas) {
    Coverage coverage;
    AddFault(coverage, "split=1@DONE-2.0", Verdict::Inconclusive);
    const std::string missed = fmt::format("{}\n", fmt::join(coverage.Unreached(), "\n"));
    for (const char* item : {"2.0 harness: DONE\n", "2.0 DVR: EVENT_LIST source\n", "rule export.done\n"}) {
        EXPECT_NE(missed.find(item), std::string::npos) << item << " in " << missed;
    }
    for (const char* item : {"switch", "rule xfer", "UPDATE", "INVALID_EVENT", "rehash"}) {
        EXPECT_EQ(missed.find(item), std::string::npos) << item << " in " << missed;
    }
}

TEST(Coverage, OfAllIsShort) {
    Coverage coverage;
    result::RunResult run;
    std::vector<DvrMessage> messages;
    for (const ProtocolItem& item : ProtocolItems()) {
        if (item.protocol == 1) {
            messages.push_back({item.message, {std::string(item.field)}});
            run.steps.push_back({Step::Kind::FromHarness, {}, item.message, 1});
        }
    }
    for (const judge::Check& check : judge::AllChecks()) {
        run.checks.push_back({check.id, "", Verdict::Pass, "", "", {}});
    }
    coverage.Add({"x", 1, "-p 1", ""}, run, messages);
    EXPECT_EQ(coverage.Unreached(), std::vector<std::string>());
    EXPECT_EQ(coverage.Text().find("reached by no case"), std::string::npos) << coverage.Text();
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
