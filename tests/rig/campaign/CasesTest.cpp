#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <set>

#include "rig/campaign/Cases.h"
#include "rig/campaign/RunCommand.h"
#include "rig/judge/checks/Checks.h"

namespace rig::campaign {
namespace {

std::vector<std::string> Names(const Selection& selection) {
    std::vector<std::string> names;
    for (const Case& plan : Select(selection)) {
        names.push_back(plan.name);
    }
    return names;
}

TEST(Cases, HaveNamesOfTheirOwnAndASentence) {
    std::set<std::string> names;
    for (const Case& plan : AllCases()) {
        EXPECT_TRUE(names.insert(plan.name).second) << plan.name;
        EXPECT_EQ(plan.name.find_first_not_of("abcdefghijklmnopqrstuvwxyz012.-"), std::string::npos)
            << plan.name;
        EXPECT_EQ(plan.sentence.back(), '.') << plan.name;
        EXPECT_EQ(plan.switches.substr(0, 4), "-p " + std::to_string(plan.protocol)) << plan.name;
    }
}

TEST(Cases, HaveEachSwitchAloneInTheSecondDialect) {
    for (const char* alone : {"-e", "-f", "-t", "-r", "-x", "-z", "-g", "-u", "-c 1", "-d 1", "-s 2"}) {
        const bool isThere = std::any_of(AllCases().begin(), AllCases().end(), [alone](const Case& plan) {
            return plan.switches == std::string("-p 2 ") + alone;
        });
        EXPECT_TRUE(isThere) << alone;
    }
}

TEST(Cases, ExcludeOnlyChecksThatTheJudgeHas) {
    for (const Case& plan : AllCases()) {
        for (const std::string& id : plan.excluded) {
            const auto& checks = judge::AllChecks();
            EXPECT_TRUE(std::any_of(checks.begin(), checks.end(),
                                    [&id](const judge::Check& check) { return id == check.id; }))
                << plan.name << " " << id;
        }
    }
}

TEST(Cases, OfADialectBeginAndEndWithItsCleanExport) {
    for (const char* protocol : {"1", "2"}) {
        const std::vector<Case> plans = Select({"all", protocol, false});
        EXPECT_EQ(plans.front().role, Case::Role::First);
        EXPECT_EQ(plans.back().role, Case::Role::Last);
        EXPECT_EQ(plans.front().switches, plans.back().switches);
        for (const Case& plan : plans) {
            EXPECT_EQ(std::to_string(plan.protocol), protocol);
        }
    }
    EXPECT_EQ(Names({"all", "both", false}).size(), AllCases().size());
}

TEST(Cases, ChosenByNameAreFramedByTheirDialectsCleanExports) {
    EXPECT_EQ(Names({"xfer-2.0,event-2.0", "2", false}),
              (std::vector<std::string>{"clean-2.0", "event-2.0", "xfer-2.0", "recovery-2.0"}));
    EXPECT_EQ(Names({"config-1.0", "2", false}),
              (std::vector<std::string>{"clean-1.0", "config-1.0", "recovery-1.0"}));
    EXPECT_EQ(Names({"clean-2.0", "2", false}), (std::vector<std::string>{"clean-2.0", "recovery-2.0"}));
}

TEST(Cases, ChosenBareRunAlone) {
    EXPECT_EQ(Names({"xfer-2.0", "2", true}), (std::vector<std::string>{"xfer-2.0"}));
    EXPECT_EQ(Names({"recovery-1.0", "2", true}), (std::vector<std::string>{"recovery-1.0"}));
    const auto all = Names({"all", "2", true});
    EXPECT_EQ(std::count(all.begin(), all.end(), "clean-2.0"), 0);
}

TEST(Cases, ThatDoNotExistAreRefused) {
    EXPECT_EQ(Names({"xfer-2.0,", "2", true}).size(), 1U) << "a comma at the end names nothing";
    for (const char* names : {"", ",", "xfer", "all,xfer-2.0", "xfer-2.0,,event-2.0"}) {
        EXPECT_THROW(Select({names, "2", false}), std::runtime_error) << names;
    }
}

TEST(Cases, AreListedWithSwitchesAndSentence) {
    const std::string list = ListCases({});
    for (const Case& plan : AllCases()) {
        EXPECT_NE(("\n" + list).find("\n" + plan.name + " "), std::string::npos);
        EXPECT_NE(list.find(plan.switches + " "), std::string::npos);
        EXPECT_NE(list.find(" " + plan.sentence + "\n"), std::string::npos);
    }
}

TEST(Cases, KnowForHowLongTheySendTheDvrAway) {
    EXPECT_EQ(SecondsAway({"x", 2, "-p 2 -c 1 -d 30", ""}), 1800);
    EXPECT_EQ(SecondsAway({"x", 2, "-p 2 -c 1", ""}), 0);
}

TEST(Cases, KnowTheirSwitches) {
    const Case plan{"x", 2, "-p 2 -c 1 -d 30 -g", ""};
    for (const char letter : {'p', 'c', 'd', 'g'}) {
        EXPECT_TRUE(Has(plan, letter)) << letter;
    }
    for (const char letter : {'1', 'z', 'e'}) {
        EXPECT_FALSE(Has(plan, letter)) << letter;
    }
}

TEST(FaultCases, BeginWithTheCleanExportOfTheirDialect) {
    const std::string both = "split=1@GET_FILE-2.0,reset-call";
    EXPECT_EQ(Names({"all", "both", false, both}),
              (std::vector<std::string>{"clean-1.0", "reset-call@CALL-1.0", "clean-2.0",
                                        "reset-call@CALL-2.0", "split=1@GET_FILE-2.0"}));
    EXPECT_EQ(Names({"all", "1", false, both}),
              (std::vector<std::string>{"clean-1.0", "reset-call@CALL-1.0"}));
    EXPECT_EQ(Names({"all", "2", true, both}),
              (std::vector<std::string>{"reset-call@CALL-2.0", "split=1@GET_FILE-2.0"}));
}

TEST(FaultCases, OfQuickAreOneOfEachFaultOfTheDialect) {
    const auto faults = [](const char* protocol) {
        std::set<std::string> names;
        for (const Case& plan : Select({"all", protocol, true, "quick"})) {
            EXPECT_TRUE(names.insert(plan.fault->fault->name).second) << plan.name;
        }
        return names.size();
    };
    EXPECT_EQ(faults("both"), fault::Faults().size());
    EXPECT_LE(faults("1"), fault::Faults().size());
}

TEST(FaultCases, EndByThemselvesAndAreFollowedByAPlainExport) {
    for (const Case& plan : Select({"all", "both", true, "split=1@GET_FILE-2.0,split=1@DONE-1.0"})) {
        EXPECT_EQ(plan.switches, plan.protocol == 1 ? "-p 1" : "-p 2 -c 1");
        const Case recovery = RecoveryOf(plan);
        EXPECT_EQ(recovery.switches, plan.switches);
        EXPECT_FALSE(recovery.fault);
    }
}

TEST(FaultCases, ThatLeaveNothingToRunAreRefused) {
    EXPECT_THROW(Select({"all", "2", false, "splat"}), std::runtime_error);
    EXPECT_THROW(Select({"all", "2", false, "split=1@DONE-1.0"}), std::runtime_error);
}

TEST(FaultCases, AreListedByIdDutyAndSentence) {
    EXPECT_EQ(ListCases({"all", "1", false, "reset-call"}),
              fmt::format("{:<46} {:<9} {}\n", "reset-call@CALL-1.0", "goes on",
                          "The call: Resets the DVR's connection at once."));
}

TEST(RunCommand, ListsItsCases) {
    RunOptions options;
    options.listCases = true;
    testing::internal::CaptureStdout();
    EXPECT_EQ(RunCampaign(options), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), ListCases({}));
}

TEST(RunCommand, SaysThatItsListWasLost) {
    RunOptions options;
    options.listCases = true;
    testing::internal::CaptureStderr();
    std::streambuf* const buffer = std::cout.rdbuf(nullptr);
    const int status = RunCampaign(options);
    std::cout.rdbuf(buffer);
    EXPECT_EQ(status, 64);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "velloran-rig run: expected standard output to take the list, found that it did not\n");
}

}  // namespace
}  // namespace rig::campaign
