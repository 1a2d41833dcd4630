#include <gtest/gtest.h>

#include "tests/support/Program.h"

namespace {

/// A command line that is refused, and what is said about it.
struct Refusal {
    const char* name;
    std::vector<std::string> arguments;
    const char* text;
};

std::ostream& operator<<(std::ostream& out, const Refusal& refusal) {
    return out << refusal.name;
}

class RunUsage : public testing::TestWithParam<Refusal> {};

TEST_P(RunUsage, IsRefusedInOneLine) {
    std::vector<std::string> arguments = {"run", "--out", "/nowhere/campaign"};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    const ProgramResult result = RunRig(arguments);
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(CountLines(result.errors), 1U) << result.errors;
    EXPECT_EQ(result.errors.find("velloran-rig run: "), 0U) << result.errors;
    EXPECT_NE(result.errors.find(GetParam().text), std::string::npos) << result.errors;
}

const Refusal kRefusals[] = {
    {"UnknownCase", {"--cases", "nope"}, "expected all or names that --list-cases gives, found \"nope\""},
    {"NoCase", {"--cases", ""}, "expected at least one case"},
    {"UnknownProtocol", {"--protocol", "3"}, "--protocol"},
    {"NoRepeat", {"--repeat", "0"}, "expected a number from 1 to 100, found '0'"},
    {"BadSeed", {"--seed", "-1"}, "--seed"},
    {"BadTimeout", {"--idle-timeout", "soon"}, "--idle-timeout"},
    {"NoKnown", {"--known", "/no/such/list"}, "/no/such/list"},
    {"NoDelivered",
     {"--delivered", "/no/such"},
     "--delivered: expected a folder that can be read, found '/no/such'"},
    {"OutInDelivered", {"--delivered", "/tmp", "--out", "/tmp/x/y"}, "expected a folder outside --delivered"},
    {"HashAlone", {"--hash", "md5"}, "--hash requires --delivered"},
    {"UnknownOption", {"--no-such-option"}, "--no-such-option"},
};

INSTANTIATE_TEST_SUITE_P(Options, RunUsage, testing::ValuesIn(kRefusals),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(RunCommand, ListsItsCases) {
    const ProgramResult result = RunRig({"run", "--list-cases"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output.find("xfer-2.0              -p 2 -x              The DVR "), std::string::npos)
        << result.output;
}

}  // namespace
