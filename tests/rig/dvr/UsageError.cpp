#include "tests/rig/dvr/UsageError.h"

#include "tests/support/Program.h"

void PrintTo(const UsageCase& tested, std::ostream* out) {
    *out << tested.name;
}

std::string NameOf(const testing::TestParamInfo<UsageCase>& tested) {
    return tested.param.name;
}

TEST_P(UsageErrorTest, EndsWithStatus64AndOneLine) {
    const ProgramResult result = RunRig(GetParam().arguments);
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(result.errors, "velloran-rig" + GetParam().errors + "\n");
    EXPECT_EQ(result.output, "");
}
