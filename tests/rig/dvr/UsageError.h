#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

/// Follows what the command line's parser says.
inline const std::string kMoreHelp = " (velloran-rig --help tells more)";
inline const std::string kMoreDvrHelp = " (velloran-rig dvr --help tells more)";

/// A command line that is refused.
struct UsageCase {
    const char* name;
    std::vector<std::string> arguments;
    std::string errors;  // after "velloran-rig"
};

void PrintTo(const UsageCase& tested, std::ostream* out);
std::string NameOf(const testing::TestParamInfo<UsageCase>& tested);

/// Expects status 64, one line on standard error and nothing on standard output, for each case that a file
/// instantiates:
///
///     INSTANTIATE_TEST_SUITE_P(Pace, UsageErrorTest, testing::Values(UsageCase{...}, ...), NameOf);
class UsageErrorTest : public testing::TestWithParam<UsageCase> {};
