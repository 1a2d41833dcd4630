#include <gtest/gtest.h>

#include "Export.h"

// The logs that are stored for tests of the judge are those of today's programs.

namespace {

class StoredLogs : public testing::TestWithParam<Recipe> {};

TEST_P(StoredLogs, AreWhatTheHarnessLogs) {
    const Export played(GetParam());
    EXPECT_EQ(StoredLog(GetParam().name), played.Log()) << "scripts/record-logs records it again";
}

std::string NameOf(const testing::TestParamInfo<Recipe>& info) {
    std::string name;
    for (const char letter : info.param.name) {
        name += letter == '-' or letter == '.' ? '_' : letter;
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Judge, StoredLogs, testing::ValuesIn(ReadRecipes()), NameOf);

}  // namespace
