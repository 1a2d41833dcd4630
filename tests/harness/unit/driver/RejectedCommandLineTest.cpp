#include "tests/harness/unit/driver/Driver.h"

namespace {

/// A command line that the harness rejects.
struct Rejected {
    std::string name;
    std::vector<std::string> arguments;
    std::string complaint;           // from the system's parser; empty if it has none
    std::vector<std::string> lines;  // logged at level 32 before
};

void PrintTo(const Rejected& rejected, std::ostream* stream) {
    *stream << rejected.name;
}

std::string RejectedNameOf(const testing::TestParamInfo<Rejected>& info) {
    return info.param.name;
}

class RejectedCommandLine : public Driver, public testing::WithParamInterface<Rejected> {};

/// In particular no socket is opened.
TEST_P(RejectedCommandLine, GivesTheUsageTextAndStatus0AndNothingElse) {
    std::vector<Entry> before;
    for (const std::string& line : GetParam().lines) {
        before.push_back(Logged(32, line));
    }
    if (not GetParam().complaint.empty()) {
        before.push_back(Printed("velloran: " + GetParam().complaint));
    }
    EXPECT_EXIT_STATUS(0, RunMain(GetParam().arguments), LoggerSetUp(), before, Usage());
}

const Rejected kHelp[] = {
    {"h", {"-h"}, "", {}},
    {"QuestionMark", {"-?"}, "", {}},
    {"help", {"--help"}, "", {}},
    {"AbbreviatedHelp", {"--h"}, "", {}},
    {"BehindAcceptedSwitches", {"-e", "--help", "-f"}, "", {"'invalidEvent' flag set"}},
};

const Rejected kNoNumber[] = {
    {"CloseZero", {"-c", "0"}, "", {}},
    {"CloseNegative", {"-c", "-1"}, "", {}},
    {"CloseNoDigits", {"-c", "abc"}, "", {}},
    {"CloseEmpty", {"-c", ""}, "", {}},
    {"CloseLong", {"--close", "0"}, "", {}},
    {"CloseHexadecimalZero", {"-c", "0x0"}, "", {}},
    {"CloseNoOctalDigit", {"-c", "08"}, "", {}},
    {"CloseBelow32Bits", {"-c", "-99999999999"}, "", {}},
    {"CloseBelow32BitsThatWouldWrapToOne", {"-c", "-4294967295"}, "", {}},
    {"DoneZero", {"-d", "0"}, "", {}},
    {"DoneNegative", {"--done=-5"}, "", {}},
    {"DoneNoDigits", {"-d", "abc"}, "", {}},
    {"SleepZero", {"-s", "0"}, "", {}},
    {"SleepNegative", {"-s-5"}, "", {}},
    {"SleepNoDigits", {"-s", "abc"}, "", {}},
    {"ProtocolZero", {"-p", "0"}, "", {}},
    {"ProtocolThree", {"-p", "3"}, "", {}},
    {"ProtocolNegative", {"-p", "-1"}, "", {}},
    {"ProtocolNoDigits", {"--protocol", "two"}, "", {}},
    {"ProtocolEmpty", {"--protocol="}, "", {}},
    {"ProtocolBeyond32BitsThatWouldWrapToOne", {"-p", "4294967297"}, "", {}},
    {"ProtocolBeyond32BitsThatWouldWrapToTwo", {"-p", "4294967298"}, "", {}},
};

const Rejected kLongSleep[] = {
    {"Bare", {"--sleep"}, "", {}},
    {"WithANumberBehindIt", {"--sleep", "5"}, "", {}},
    {"WithANumberAttached", {"--sleep=5"}, "option '--sleep' doesn't allow an argument", {}},
    {"AbbreviatedAndBare", {"--sl"}, "", {}},
};

const Rejected kSyntax[] = {
    {"UnknownShort", {"-q"}, "invalid option -- 'q'", {}},
    {"UnknownLong", {"--query"}, "unrecognized option '--query'", {}},
    {"DurationWithNumberBehindIt", {"--duration", "5"}, "unrecognized option '--duration'", {}},
    {"DurationWithNumberAttached", {"--duration=5"}, "unrecognized option '--duration=5'", {}},
    {"CloseWithoutNumber", {"-c"}, "option requires an argument -- 'c'", {}},
    {"DoneWithoutNumber", {"-d"}, "option requires an argument -- 'd'", {}},
    {"SleepWithoutNumber", {"-s"}, "option requires an argument -- 's'", {}},
    {"ProtocolWithoutNumber", {"-p"}, "option requires an argument -- 'p'", {}},
    {"LongCloseWithoutNumber", {"--close"}, "option '--close' requires an argument", {}},
    {"LongDoneWithoutNumber", {"--done"}, "option '--done' requires an argument", {}},
    {"LongProtocolWithoutNumber", {"--protocol"}, "option '--protocol' requires an argument", {}},
    {"FlagWithArgument", {"--event=1"}, "option '--event' doesn't allow an argument", {}},
    {"AmbiguousAbbreviation", {"--c"}, "option '--c' is ambiguous; possibilities: '--close' '--config'", {}},
    {"UnknownAmongFlags", {"-eqf"}, "invalid option -- 'q'", {"'invalidEvent' flag set"}},
};

const Rejected kMixed[] = {
    {"AcceptedOnesAreLoggedBefore",
     {"-z", "-c", "2", "-p", "9", "-e"},
     "",
     {"'sizeError' flag set", "closeEarly set to 2"}},
    {"NothingIsReadBehind", {"-q", "-e"}, "invalid option -- 'q'", {}},
    {"ALaterNumberIsNoExcuse", {"-c", "0", "-c", "5"}, "", {}},
};

INSTANTIATE_TEST_SUITE_P(Help, RejectedCommandLine, testing::ValuesIn(kHelp), RejectedNameOf);
INSTANTIATE_TEST_SUITE_P(Number, RejectedCommandLine, testing::ValuesIn(kNoNumber), RejectedNameOf);
INSTANTIATE_TEST_SUITE_P(LongSleep, RejectedCommandLine, testing::ValuesIn(kLongSleep), RejectedNameOf);
INSTANTIATE_TEST_SUITE_P(Syntax, RejectedCommandLine, testing::ValuesIn(kSyntax), RejectedNameOf);
INSTANTIATE_TEST_SUITE_P(Mixed, RejectedCommandLine, testing::ValuesIn(kMixed), RejectedNameOf);

}  // namespace
