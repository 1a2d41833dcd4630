#include "tests/harness/unit/driver/Driver.h"

namespace {

using Number = decltype(&TestOptions::closeEarly);
using Flag = decltype(&TestOptions::rehash);

TestOptions With(Number number, int value) {
    TestOptions options;
    options.*number = value;
    return options;
}

TestOptions With(std::initializer_list<Flag> flags) {
    TestOptions options;
    for (const Flag flag : flags) {
        options.*flag = true;
    }
    return options;
}

constexpr auto kClose = &TestOptions::closeEarly;
constexpr auto kDone = &TestOptions::doneDuration;
constexpr auto kSleep = &TestOptions::sleepForGetFile;
constexpr auto kProtocol = &TestOptions::protocol;

constexpr int kLargest = 2147483647;

/// A command line of accepted switches.
struct Switches {
    std::string name;
    std::vector<std::string> arguments;
    std::vector<std::string> lines;  // logged at level 32, in this order
    TestOptions options;
};

void PrintTo(const Switches& switches, std::ostream* stream) {
    *stream << switches.name;
}

std::string NameOf(const testing::TestParamInfo<Switches>& info) {
    return info.param.name;
}

class AcceptedSwitches : public Driver, public testing::WithParamInterface<Switches> {};

TEST_P(AcceptedSwitches, AreLoggedAndHandedToTheProtocolObject) {
    std::vector<Entry> lines;
    for (const std::string& line : GetParam().lines) {
        lines.push_back(Logged(32, line));
    }
    ScriptConnection();
    ScriptMessage(0);
    EXPECT_ABORT(RunMain(GetParam().arguments), LoggerSetUp(), lines, SignalCalled(SIGINT),
                 Service(GetParam().options));
}

const Switches kNone[] = {
    {"NoArguments", {}, {}, {}},
    {"NoOptions", {"one", "two"}, {}, {}},
    {"AnythingBehindTwoDashes", {"--", "-e", "--close", "x"}, {}, {}},
    {"ADashAlone", {"-"}, {}, {}},
};

const Switches kNumbers[] = {
    {"c", {"-c", "5"}, {"closeEarly set to 5"}, With(kClose, 5)},
    {"close", {"--close", "5"}, {"closeEarly set to 5"}, With(kClose, 5)},
    {"d", {"-d", "5"}, {"doneDuration set to 5"}, With(kDone, 5)},
    {"done", {"--done", "5"}, {"doneDuration set to 5"}, With(kDone, 5)},
    {"s", {"-s", "5"}, {"sleepForGetFile set to 5"}, With(kSleep, 5)},
    {"p1", {"-p", "1"}, {"'protocol' option set to 1"}, {}},
    {"p2", {"-p", "2"}, {"'protocol' option set to 2"}, With(kProtocol, 2)},
    {"protocol", {"--protocol", "2"}, {"'protocol' option set to 2"}, With(kProtocol, 2)},
    {"Octal", {"-c", "010"}, {"closeEarly set to 8"}, With(kClose, 8)},
    {"Hexadecimal", {"-d", "0x1e"}, {"doneDuration set to 30"}, With(kDone, 30)},
    {"HexadecimalProtocol", {"-p", "0x2"}, {"'protocol' option set to 2"}, With(kProtocol, 2)},
    {"TrailingText", {"-s", "5abc"}, {"sleepForGetFile set to 5"}, With(kSleep, 5)},
    {"ProtocolWithTrailingText", {"-p", "2.0"}, {"'protocol' option set to 2"}, With(kProtocol, 2)},
    {"LeadingBlanks", {"-c", " \t7"}, {"closeEarly set to 7"}, With(kClose, 7)},
    {"LeadingPlus", {"-c", "+7"}, {"closeEarly set to 7"}, With(kClose, 7)},
    {"Largest", {"-d", "2147483647"}, {"doneDuration set to 2147483647"}, With(kDone, kLargest)},
    {"OneMoreThanTheLargest",
     {"-d", "2147483648"},
     {"doneDuration set to 2147483647"},
     With(kDone, kLargest)},
    {"MoreThan32Bits", {"-c", "99999999999"}, {"closeEarly set to 2147483647"}, With(kClose, kLargest)},
    {"MoreThan32BitsThatWouldWrapToOne",
     {"-c", "4294967297"},
     {"closeEarly set to 2147483647"},
     With(kClose, kLargest)},
    {"MoreThan64Bits",
     {"-s", "99999999999999999999999"},
     {"sleepForGetFile set to 2147483647"},
     With(kSleep, kLargest)},
};

/// Each flag's two forms, and what it sets.
std::vector<Switches> Flags() {
    const struct {
        std::string letter;
        std::string word;
        std::string value;
        Flag flag;
    } flags[] = {{"-e", "--event", "invalidEvent", &TestOptions::invalidEvent},
                 {"-f", "--file", "invalidFile", &TestOptions::invalidFile},
                 {"-r", "--rehash", "rehash", &TestOptions::rehash},
                 {"-t", "--transport", "transportException", &TestOptions::transportException},
                 {"-u", "--upgrade", "upgrade", &TestOptions::upgrade},
                 {"-x", "--xfer", "xferInProgress", &TestOptions::xferInProgress},
                 {"-z", "--size", "sizeError", &TestOptions::sizeError},
                 {"-g", "--config", "configUpdate", &TestOptions::configUpdate}};
    std::vector<Switches> rows;
    for (const auto& [letter, word, value, flag] : flags) {
        const std::string line = "'" + value + "' flag set";
        rows.push_back({letter.substr(1), {letter}, {line}, With({flag})});
        rows.push_back({word.substr(2), {word}, {line}, With({flag})});
    }
    return rows;
}

const Switches kSpelling[] = {
    {"ShortWithItsNumberAttached", {"-c5"}, {"closeEarly set to 5"}, With(kClose, 5)},
    {"LongWithItsNumberAttached", {"--done=5"}, {"doneDuration set to 5"}, With(kDone, 5)},
    {"AbbreviatedClose", {"--cl", "5"}, {"closeEarly set to 5"}, With(kClose, 5)},
    {"AbbreviatedDone", {"--d=5"}, {"doneDuration set to 5"}, With(kDone, 5)},
    {"AbbreviatedProtocol", {"--p", "2"}, {"'protocol' option set to 2"}, With(kProtocol, 2)},
    {"AbbreviatedFlags",
     {"--e", "--f", "--r", "--t", "--u", "--x", "--si", "--co"},
     {"'invalidEvent' flag set", "'invalidFile' flag set", "'rehash' flag set",
      "'transportException' flag set", "'upgrade' flag set", "'xferInProgress' flag set",
      "'sizeError' flag set", "'configUpdate' flag set"},
     {0, 0, 1, 1, true, true, true, true, true, true, true, true}},
    {"AllTogether",
     {"-gzx", "-utrfec1", "-d2", "-s3", "-p2"},
     {"'configUpdate' flag set", "'sizeError' flag set", "'xferInProgress' flag set", "'upgrade' flag set",
      "'transportException' flag set", "'rehash' flag set", "'invalidFile' flag set",
      "'invalidEvent' flag set", "closeEarly set to 1", "doneDuration set to 2", "sleepForGetFile set to 3",
      "'protocol' option set to 2"},
     {1, 2, 3, 2, true, true, true, true, true, true, true, true}},
    {"BehindAndBetweenOtherWords",
     {"one", "-e", "two", "--file"},
     {"'invalidEvent' flag set", "'invalidFile' flag set"},
     With({&TestOptions::invalidEvent, &TestOptions::invalidFile})},
};

const Switches kRepeated[] = {
    {"Flag", {"-z", "-z"}, {"'sizeError' flag set", "'sizeError' flag set"}, With({&TestOptions::sizeError})},
    {"FlagInBothForms",
     {"-r", "--rehash", "-r"},
     {"'rehash' flag set", "'rehash' flag set", "'rehash' flag set"},
     With({&TestOptions::rehash})},
    {"Number", {"-c", "7", "--close", "3"}, {"closeEarly set to 7", "closeEarly set to 3"}, With(kClose, 3)},
    {"Protocol", {"-p2", "-p1"}, {"'protocol' option set to 2", "'protocol' option set to 1"}, {}},
};

INSTANTIATE_TEST_SUITE_P(None, AcceptedSwitches, testing::ValuesIn(kNone), NameOf);
INSTANTIATE_TEST_SUITE_P(Number, AcceptedSwitches, testing::ValuesIn(kNumbers), NameOf);
INSTANTIATE_TEST_SUITE_P(Flag, AcceptedSwitches, testing::ValuesIn(Flags()), NameOf);
INSTANTIATE_TEST_SUITE_P(Spelling, AcceptedSwitches, testing::ValuesIn(kSpelling), NameOf);
INSTANTIATE_TEST_SUITE_P(Repeated, AcceptedSwitches, testing::ValuesIn(kRepeated), NameOf);

}  // namespace
