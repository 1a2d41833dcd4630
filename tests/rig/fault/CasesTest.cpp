#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

#include "rig/fault/Cases.h"

namespace {

using namespace rig::fault;

/// People keep ids in lists of known failures and compare campaigns by them: an id may come, but none may go.
TEST(FaultCases, KeepTheirIds) {
    std::ostringstream expected;
    expected << std::ifstream(VELLORAN_FAULT_CASES).rdbuf();
    std::string found;
    for (const FaultCase& one : Cases()) {
        found += one.Id() + "\n";
    }
    if (expected.str() != found) {
        std::ofstream(VELLORAN_FAULT_CASES ".new") << found;
    }
    EXPECT_EQ(expected.str(), found) << "see " VELLORAN_FAULT_CASES ".new";
}

TEST(FaultCases, AreAtLeastFiveHundredEachOnce) {
    std::set<std::string> ids;
    for (const FaultCase& one : Cases()) {
        EXPECT_TRUE(ids.insert(one.Id()).second) << one.Id();
    }
    EXPECT_LE(500, ids.size());
}

TEST(FaultCases, AreChosenByGroupFaultAndId) {
    EXPECT_EQ(Cases().size(), Choose("all").size());
    EXPECT_EQ(Faults().size(), Choose("quick").size());
    EXPECT_EQ(4, Choose("bytewise,split=2@DONE-1.0").size() - Choose("bytewise").size() + 3);
    EXPECT_EQ(9, Choose("bytewise").size());
    EXPECT_EQ(9, Choose("bytewise,bytewise@DONE-1.0").size());
    for (const FaultCase& one : Choose("framing")) {
        EXPECT_STREQ("framing", one.fault->group);
    }
}

TEST(FaultCases, ThatDoNotExistAreNamed) {
    const auto complaint = [](const std::string& selection) -> std::string {
        try {
            Choose(selection);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    };
    EXPECT_EQ(
        "--faults: expected quick, all, or groups, faults and cases that --list-cases gives, found 'splat'",
        complaint("split,splat"));
    EXPECT_EQ("--faults: expected quick, all, or groups, faults and cases that --list-cases gives, found ''",
              complaint(""));
}

TEST(FaultCases, SayWhatTheBackendDoes) {
    EXPECT_EQ("GET_FILE (before): Closes the connection at that place of the message.",
              Choose("close=before@GET_FILE-2.0").at(0).Sentence());
    EXPECT_EQ("The call: Resets the DVR's connection at once.",
              Choose("reset-call@CALL-1.0").at(0).Sentence());
}

}  // namespace
