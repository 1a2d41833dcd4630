#include "tests/harness/unit/driver/Driver.h"

namespace {

/// A command line of accepted switches.
struct Switches {
    std::string name;
    std::vector<std::string> arguments;
    std::vector<std::string> lines;  // logged at level 32, in this order
    void (*apply)(TestOptions&);     // what they set
};

void PrintTo(const Switches& switches, std::ostream* stream) {
    *stream << switches.name;
}

std::string NameOf(const testing::TestParamInfo<Switches>& info) {
    return info.param.name;
}

void Nothing(TestOptions&) {}

class AcceptedSwitches : public Driver, public testing::WithParamInterface<Switches> {};

TEST_P(AcceptedSwitches, AreLoggedAndHandedToTheProtocolObject) {
    TestOptions options;
    GetParam().apply(options);
    std::vector<Entry> lines;
    for (const std::string& line : GetParam().lines) {
        lines.push_back(Logged(32, line));
    }
    ScriptConnection();
    ScriptMessage(0);
    EXPECT_ABORT(RunMain(GetParam().arguments), LoggerSetUp(), lines, SignalCalled(SIGINT), Service(options));
}

const Switches kNone[] = {
    {"NoArguments", {}, {}, Nothing},
    {"NoOptions", {"one", "two"}, {}, Nothing},
    {"AnythingBehindTwoDashes", {"--", "-e", "--close", "x"}, {}, Nothing},
    {"ADashAlone", {"-"}, {}, Nothing},
};

const Switches kShort[] = {
    {"c", {"-c", "5"}, {"closeEarly set to 5"}, [](TestOptions& options) { options.closeEarly = 5; }},
    {"d", {"-d", "5"}, {"doneDuration set to 5"}, [](TestOptions& options) { options.doneDuration = 5; }},
    {"s",
     {"-s", "5"},
     {"sleepForGetFile set to 5"},
     [](TestOptions& options) { options.sleepForGetFile = 5; }},
    {"p1", {"-p", "1"}, {"'protocol' option set to 1"}, Nothing},
    {"p2", {"-p", "2"}, {"'protocol' option set to 2"}, [](TestOptions& options) { options.protocol = 2; }},
    {"e", {"-e"}, {"'invalidEvent' flag set"}, [](TestOptions& options) { options.invalidEvent = true; }},
    {"f", {"-f"}, {"'invalidFile' flag set"}, [](TestOptions& options) { options.invalidFile = true; }},
    {"r", {"-r"}, {"'rehash' flag set"}, [](TestOptions& options) { options.rehash = true; }},
    {"t",
     {"-t"},
     {"'transportException' flag set"},
     [](TestOptions& options) { options.transportException = true; }},
    {"u", {"-u"}, {"'upgrade' flag set"}, [](TestOptions& options) { options.upgrade = true; }},
    {"x", {"-x"}, {"'xferInProgress' flag set"}, [](TestOptions& options) { options.xferInProgress = true; }},
    {"z", {"-z"}, {"'sizeError' flag set"}, [](TestOptions& options) { options.sizeError = true; }},
    {"g", {"-g"}, {"'configUpdate' flag set"}, [](TestOptions& options) { options.configUpdate = true; }},
};

const Switches kLong[] = {
    {"close",
     {"--close", "5"},
     {"closeEarly set to 5"},
     [](TestOptions& options) { options.closeEarly = 5; }},
    {"done",
     {"--done", "5"},
     {"doneDuration set to 5"},
     [](TestOptions& options) { options.doneDuration = 5; }},
    {"protocol",
     {"--protocol", "2"},
     {"'protocol' option set to 2"},
     [](TestOptions& options) { options.protocol = 2; }},
    {"event",
     {"--event"},
     {"'invalidEvent' flag set"},
     [](TestOptions& options) { options.invalidEvent = true; }},
    {"file",
     {"--file"},
     {"'invalidFile' flag set"},
     [](TestOptions& options) { options.invalidFile = true; }},
    {"rehash", {"--rehash"}, {"'rehash' flag set"}, [](TestOptions& options) { options.rehash = true; }},
    {"transport",
     {"--transport"},
     {"'transportException' flag set"},
     [](TestOptions& options) { options.transportException = true; }},
    {"upgrade", {"--upgrade"}, {"'upgrade' flag set"}, [](TestOptions& options) { options.upgrade = true; }},
    {"xfer",
     {"--xfer"},
     {"'xferInProgress' flag set"},
     [](TestOptions& options) { options.xferInProgress = true; }},
    {"size", {"--size"}, {"'sizeError' flag set"}, [](TestOptions& options) { options.sizeError = true; }},
    {"config",
     {"--config"},
     {"'configUpdate' flag set"},
     [](TestOptions& options) { options.configUpdate = true; }},
};

const Switches kSpelling[] = {
    {"ShortWithItsNumberAttached",
     {"-c5"},
     {"closeEarly set to 5"},
     [](TestOptions& options) { options.closeEarly = 5; }},
    {"LongWithItsNumberAttached",
     {"--done=5"},
     {"doneDuration set to 5"},
     [](TestOptions& options) { options.doneDuration = 5; }},
    {"AbbreviatedClose",
     {"--cl", "5"},
     {"closeEarly set to 5"},
     [](TestOptions& options) { options.closeEarly = 5; }},
    {"AbbreviatedDone",
     {"--d=5"},
     {"doneDuration set to 5"},
     [](TestOptions& options) { options.doneDuration = 5; }},
    {"AbbreviatedProtocol",
     {"--p", "2"},
     {"'protocol' option set to 2"},
     [](TestOptions& options) { options.protocol = 2; }},
    {"AbbreviatedFlags",
     {"--e", "--f", "--r", "--t", "--u", "--x", "--si", "--co"},
     {"'invalidEvent' flag set", "'invalidFile' flag set", "'rehash' flag set",
      "'transportException' flag set", "'upgrade' flag set", "'xferInProgress' flag set",
      "'sizeError' flag set", "'configUpdate' flag set"},
     [](TestOptions& options) { options = {0, 0, 1, 1, true, true, true, true, true, true, true, true}; }},
    {"AllTogether",
     {"-gzx", "-utrfe", "-c1", "-d2", "-s3", "-p2"},
     {"'configUpdate' flag set", "'sizeError' flag set", "'xferInProgress' flag set", "'upgrade' flag set",
      "'transportException' flag set", "'rehash' flag set", "'invalidFile' flag set",
      "'invalidEvent' flag set", "closeEarly set to 1", "doneDuration set to 2", "sleepForGetFile set to 3",
      "'protocol' option set to 2"},
     [](TestOptions& options) { options = {1, 2, 3, 2, true, true, true, true, true, true, true, true}; }},
    {"BehindAndBetweenOtherWords",
     {"one", "-e", "two", "--file"},
     {"'invalidEvent' flag set", "'invalidFile' flag set"},
     [](TestOptions& options) {
         options.invalidEvent = true;
         options.invalidFile = true;
     }},
};

const Switches kNumber[] = {
    {"Octal", {"-c", "010"}, {"closeEarly set to 8"}, [](TestOptions& options) { options.closeEarly = 8; }},
    {"Hexadecimal",
     {"-d", "0x1e"},
     {"doneDuration set to 30"},
     [](TestOptions& options) { options.doneDuration = 30; }},
    {"HexadecimalProtocol",
     {"-p", "0x2"},
     {"'protocol' option set to 2"},
     [](TestOptions& options) { options.protocol = 2; }},
    {"TrailingText",
     {"-s", "5abc"},
     {"sleepForGetFile set to 5"},
     [](TestOptions& options) { options.sleepForGetFile = 5; }},
    {"ProtocolWithTrailingText",
     {"-p", "2.0"},
     {"'protocol' option set to 2"},
     [](TestOptions& options) { options.protocol = 2; }},
    {"LeadingBlanks",
     {"-c", "  7"},
     {"closeEarly set to 7"},
     [](TestOptions& options) { options.closeEarly = 7; }},
    {"LeadingPlus",
     {"-c", "+7"},
     {"closeEarly set to 7"},
     [](TestOptions& options) { options.closeEarly = 7; }},
    {"Largest",
     {"-d", "2147483647"},
     {"doneDuration set to 2147483647"},
     [](TestOptions& options) { options.doneDuration = 2147483647; }},
    {"OneMoreThanTheLargest",
     {"-d", "2147483648"},
     {"doneDuration set to 2147483647"},
     [](TestOptions& options) { options.doneDuration = 2147483647; }},
    {"MoreThan32Bits",
     {"-c", "99999999999"},
     {"closeEarly set to 2147483647"},
     [](TestOptions& options) { options.closeEarly = 2147483647; }},
    {"MoreThan32BitsThatWouldWrapToOne",
     {"-c", "4294967297"},
     {"closeEarly set to 2147483647"},
     [](TestOptions& options) { options.closeEarly = 2147483647; }},
    {"MoreThan64Bits",
     {"-s", "99999999999999999999999"},
     {"sleepForGetFile set to 2147483647"},
     [](TestOptions& options) { options.sleepForGetFile = 2147483647; }},
};

const Switches kRepeated[] = {
    {"Flag",
     {"-z", "-z"},
     {"'sizeError' flag set", "'sizeError' flag set"},
     [](TestOptions& options) { options.sizeError = true; }},
    {"FlagInBothForms",
     {"-r", "--rehash", "-r"},
     {"'rehash' flag set", "'rehash' flag set", "'rehash' flag set"},
     [](TestOptions& options) { options.rehash = true; }},
    {"Number",
     {"-c", "7", "-e", "--close", "3"},
     {"closeEarly set to 7", "'invalidEvent' flag set", "closeEarly set to 3"},
     [](TestOptions& options) {
         options.closeEarly = 3;
         options.invalidEvent = true;
     }},
    {"Protocol", {"-p2", "-p1"}, {"'protocol' option set to 2", "'protocol' option set to 1"}, Nothing},
};

INSTANTIATE_TEST_SUITE_P(None, AcceptedSwitches, testing::ValuesIn(kNone), NameOf);
INSTANTIATE_TEST_SUITE_P(Short, AcceptedSwitches, testing::ValuesIn(kShort), NameOf);
INSTANTIATE_TEST_SUITE_P(Long, AcceptedSwitches, testing::ValuesIn(kLong), NameOf);
INSTANTIATE_TEST_SUITE_P(Spelling, AcceptedSwitches, testing::ValuesIn(kSpelling), NameOf);
INSTANTIATE_TEST_SUITE_P(Number, AcceptedSwitches, testing::ValuesIn(kNumber), NameOf);
INSTANTIATE_TEST_SUITE_P(Repeated, AcceptedSwitches, testing::ValuesIn(kRepeated), NameOf);

}  // namespace
