#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/Dialogue.h"

namespace {

const char* const kUsage =
    "\n"
    "Usage: velloran\n"
    "       [-c OR --close num]    Close early after handling num events (to test DONE duration)(num>0)\n"
    "       [-d OR --duration num] Set DONE message duration to num minutes (num>0)\n"
    "       [-p OR --protocol 1|2] Set messaging protocol (default=1) \n"
    "       [-r OR --rehash]       Set rehash=true in all GET_FILE messages (default=false) \n"
    "       [-e OR --event]        Verify INVALID_EVENT message in response to bad event (default=false) \n"
    "       [-f OR --file]         Verify INVALID_EVENT message in response to bad file (default=false) \n"
    "       [-t OR --transport]    Verify TRANSPORT_EXCEPTION message from DVR (default=false) \n"
    "       [-u OR --upgrade]      Upgrade to /mnt/hd/connectionmgr/upgrade.zip\n"
    "       [-x OR --xfer]         Verify XFER_IN_PROGRESS message from DVR (default=false) \n"
    "       [-s OR --sleep]        Sleep (in seconds) incurred on each GET_FILE exchange (to slow down "
    "export) \n"
    "       [-z OR --size]         Force header size error of size-10 (help test message parser on DVR) \n"
    "       [-g OR --config]       Send config update only (bogus config, but it tests the protocol) \n"
    "\n";

struct Accepted {
    std::string name;
    std::vector<std::string> switches;
    std::vector<std::string> echoes;
};

struct Rejected {
    std::string name;
    std::vector<std::string> switches;
    std::string diagnostic;  // of the library's option parser, before the usage text
};

template <typename Row>
std::ostream& Print(std::ostream& out, const Row& row) {
    out << "velloran";
    for (const std::string& word : row.switches) {
        out << " '" << word << "'";
    }
    return out;
}

std::ostream& operator<<(std::ostream& out, const Accepted& row) {
    return Print(out, row);
}
std::ostream& operator<<(std::ostream& out, const Rejected& row) {
    return Print(out, row);
}

template <typename Row>
std::string Name(const testing::TestParamInfo<Row>& row) {
    return row.param.name;
}

class AcceptedCommandLine : public SystemTest, public testing::WithParamInterface<Accepted> {};

TEST_P(AcceptedCommandLine, IsEchoed) {
    Harness harness(GetParam().switches);
    harness.Listens();
    for (const std::string& echo : GetParam().echoes) {
        harness.Logs(32, echo);
    }
    harness.StopsOnInterrupt();
    EXPECT_EQ("", harness.StandardError());
}

INSTANTIATE_TEST_SUITE_P(
    Switch, AcceptedCommandLine,
    testing::Values(Accepted{"None", {}, {}},  //
                    Accepted{"Close", {"-c", "5"}, {"closeEarly set to 5"}},
                    Accepted{"CloseLong", {"--close", "5"}, {"closeEarly set to 5"}},
                    Accepted{"CloseLongWithEqualsSign", {"--close=5"}, {"closeEarly set to 5"}},
                    Accepted{"Done", {"-d", "30"}, {"doneDuration set to 30"}},
                    Accepted{"DoneLong", {"--done", "5"}, {"doneDuration set to 5"}},
                    Accepted{"DoneLongWithEqualsSign", {"--done=5"}, {"doneDuration set to 5"}},
                    Accepted{"Sleep", {"-s", "2"}, {"sleepForGetFile set to 2"}},
                    Accepted{"Protocol1", {"-p", "1"}, {"'protocol' option set to 1"}},
                    Accepted{"Protocol2", {"-p", "2"}, {"'protocol' option set to 2"}},
                    Accepted{"ProtocolLong", {"--protocol", "2"}, {"'protocol' option set to 2"}},
                    Accepted{"Event", {"-e"}, {"'invalidEvent' flag set"}},
                    Accepted{"EventLong", {"--event"}, {"'invalidEvent' flag set"}},
                    Accepted{"File", {"-f"}, {"'invalidFile' flag set"}},
                    Accepted{"FileLong", {"--file"}, {"'invalidFile' flag set"}},
                    Accepted{"Rehash", {"-r"}, {"'rehash' flag set"}},
                    Accepted{"RehashLong", {"--rehash"}, {"'rehash' flag set"}},
                    Accepted{"Transport", {"-t"}, {"'transportException' flag set"}},
                    Accepted{"TransportLong", {"--transport"}, {"'transportException' flag set"}},
                    Accepted{"Upgrade", {"-u"}, {"'upgrade' flag set"}},
                    Accepted{"UpgradeLong", {"--upgrade"}, {"'upgrade' flag set"}},
                    Accepted{"Xfer", {"-x"}, {"'xferInProgress' flag set"}},
                    Accepted{"XferLong", {"--xfer"}, {"'xferInProgress' flag set"}},
                    Accepted{"Size", {"-z"}, {"'sizeError' flag set"}},
                    Accepted{"SizeLong", {"--size"}, {"'sizeError' flag set"}},
                    Accepted{"Config", {"-g"}, {"'configUpdate' flag set"}},
                    Accepted{"ConfigLong", {"--config"}, {"'configUpdate' flag set"}}),
    Name<Accepted>);

INSTANTIATE_TEST_SUITE_P(
    Number, AcceptedCommandLine,
    testing::Values(
        Accepted{"OctalClose", {"-c", "010"}, {"closeEarly set to 8"}},
        Accepted{"HexadecimalDuration", {"-d", "0x1e"}, {"doneDuration set to 30"}},
        Accepted{"HexadecimalProtocol", {"-p", "0x2"}, {"'protocol' option set to 2"}},
        Accepted{"TrailingCharacters", {"-s", "5abc"}, {"sleepForGetFile set to 5"}},
        Accepted{"TrailingCharactersAfterProtocol", {"-p", "2nd"}, {"'protocol' option set to 2"}},
        Accepted{"LeadingBlanks", {"-c", " \t7"}, {"closeEarly set to 7"}},
        Accepted{"PlusSign", {"-d", "+9"}, {"doneDuration set to 9"}},
        Accepted{"Largest", {"-c", "2147483647"}, {"closeEarly set to 2147483647"}},
        Accepted{"OneTooLarge", {"-c", "2147483648"}, {"closeEarly set to 2147483647"}},
        Accepted{"TooLargeFor32Bits", {"-c", "99999999999"}, {"closeEarly set to 2147483647"}},
        Accepted{"LowBitsZero", {"-d", "4294967296"}, {"doneDuration set to 2147483647"}},
        Accepted{"TooLargeFor64Bits", {"-s", "99999999999999999999"}, {"sleepForGetFile set to 2147483647"}}),
    Name<Accepted>);

INSTANTIATE_TEST_SUITE_P(
    Parsing, AcceptedCommandLine,
    testing::Values(
        Accepted{"FlagTwice", {"-z", "-z"}, {"'sizeError' flag set", "'sizeError' flag set"}},
        Accepted{"NumberTwice", {"-c", "3", "-c", "4"}, {"closeEarly set to 3", "closeEarly set to 4"}},
        Accepted{"InOrderGiven",
                 {"-x", "-p", "2", "-e", "-s", "3"},
                 {"'xferInProgress' flag set", "'protocol' option set to 2", "'invalidEvent' flag set",
                  "sleepForGetFile set to 3"}},
        Accepted{"ClusteredFlags",
                 {"-eftrx"},
                 {"'invalidEvent' flag set", "'invalidFile' flag set", "'transportException' flag set",
                  "'rehash' flag set", "'xferInProgress' flag set"}},
        Accepted{"ClusterEndingInNumber", {"-up2"}, {"'upgrade' flag set", "'protocol' option set to 2"}},
        Accepted{"AttachedNumber", {"-c5"}, {"closeEarly set to 5"}},
        Accepted{"AbbreviatedLongNames",
                 {"--cl", "1", "--con", "--do", "2", "--si"},
                 {"closeEarly set to 1", "'configUpdate' flag set", "doneDuration set to 2",
                  "'sizeError' flag set"}},
        Accepted{"OtherArgumentsIgnored",
                 {"export", "-e", "now", "-f"},
                 {"'invalidEvent' flag set", "'invalidFile' flag set"}},
        Accepted{"SwitchesAfterDoubleDashIgnored", {"-e", "--", "-f"}, {"'invalidEvent' flag set"}}),
    Name<Accepted>);

class RejectedCommandLine : public SystemTest, public testing::WithParamInterface<Rejected> {};

TEST_P(RejectedCommandLine, GetsTheUsageTextAndStatus0) {
    Harness harness(GetParam().switches);
    harness.EndsWithStatus(0);
    EXPECT_EQ(GetParam().diagnostic + kUsage, harness.StandardError());
}

INSTANTIATE_TEST_SUITE_P(Help, RejectedCommandLine,
                         testing::Values(Rejected{"Letter", {"-h"}, ""},  //
                                         Rejected{"QuestionMark", {"-?"}, ""},
                                         Rejected{"Long", {"--help"}, ""},
                                         Rejected{"Abbreviated", {"--he"}, ""},
                                         Rejected{"AheadOfSwitches", {"-h", "-e", "-c", "5"}, ""}),
                         Name<Rejected>);

INSTANTIATE_TEST_SUITE_P(
    Number, RejectedCommandLine,
    testing::Values(Rejected{"CloseZero", {"-c", "0"}, ""}, Rejected{"CloseNegative", {"-c", "-1"}, ""},
                    Rejected{"CloseText", {"-c", "abc"}, ""}, Rejected{"CloseEmpty", {"-c", ""}, ""},
                    Rejected{"CloseVeryNegative", {"-c", "-99999999999"}, ""},
                    Rejected{"CloseNotOctal", {"-c", "09"}, ""}, Rejected{"DoneZero", {"-d", "0"}, ""},
                    Rejected{"DoneNegative", {"--done", "-30"}, ""}, Rejected{"DoneText", {"-d", "soon"}, ""},
                    Rejected{"SleepZero", {"-s", "0"}, ""}, Rejected{"SleepText", {"-s", "abc"}, ""},
                    Rejected{"SleepNegative", {"-s", "-5"}, ""}, Rejected{"Protocol0", {"-p", "0"}, ""},
                    Rejected{"Protocol3", {"-p", "3"}, ""}, Rejected{"ProtocolNegative", {"-p", "-1"}, ""},
                    Rejected{"ProtocolText", {"--protocol", "two"}, ""},
                    Rejected{"ProtocolTooLargeFor32Bits", {"-p", "4294967297"}, ""}),
    Name<Rejected>);

INSTANTIATE_TEST_SUITE_P(
    Option, RejectedCommandLine,
    testing::Values(
        Rejected{"UnknownLetter", {"-q"}, "velloran: invalid option -- 'q'\n"},
        Rejected{"UnknownLong", {"--quiet"}, "velloran: unrecognized option '--quiet'\n"},
        Rejected{
            "DurationOfTheUsageText", {"--duration", "5"}, "velloran: unrecognized option '--duration'\n"},
        Rejected{"LetterWithoutItsNumber", {"-c"}, "velloran: option requires an argument -- 'c'\n"},
        Rejected{"LongWithoutItsNumber", {"--close"}, "velloran: option '--close' requires an argument\n"},
        Rejected{"SleepLetterWithoutItsNumber", {"-s"}, "velloran: option requires an argument -- 's'\n"},
        Rejected{"BareSleep", {"--sleep"}, ""},  //
        Rejected{"BareSleepAheadOfANumber", {"--sleep", "5"}, ""},
        Rejected{
            "SleepWithEqualsSign", {"--sleep=5"}, "velloran: option '--sleep' doesn't allow an argument\n"},
        Rejected{
            "FlagWithEqualsSign", {"--event=1"}, "velloran: option '--event' doesn't allow an argument\n"},
        Rejected{"Ambiguous",
                 {"--s"},
                 "velloran: option '--s' is ambiguous; possibilities: '--sleep' '--size'\n"}),
    Name<Rejected>);

using CommandLine = SystemTest;

TEST_F(CommandLine, EchoesWhatItAcceptedAheadOfTheUsageText) {
    Harness harness({"-e", "-c", "5", "-p", "9", "-f"});
    harness.Logs(32, "'invalidEvent' flag set");
    harness.Logs(32, "closeEarly set to 5");
    harness.EndsWithStatus(0);
    EXPECT_EQ(kUsage, harness.StandardError());
}

TEST_F(CommandLine, EchoesWhatItAcceptedAheadOfAnUnknownOption) {
    Harness harness({"-z", "--duration", "5"});
    harness.Logs(32, "'sizeError' flag set");
    harness.EndsWithStatus(0);
    EXPECT_EQ(std::string("velloran: unrecognized option '--duration'\n") + kUsage, harness.StandardError());
}

TEST_F(CommandLine, HandlesInterruptAlsoWhereTheShellIgnoresIt) {
    Launch inBackground;
    inBackground.interruptIgnored = true;
    Harness harness({}, inBackground);
    harness.Listens();
    harness.StopsOnInterrupt();
}

TEST_F(CommandLine, LeavesOtherSignalsTheirDefaultAction) {
    for (const int signal : {SIGTERM, SIGHUP, SIGUSR1, SIGPIPE}) {
        Harness harness;
        harness.Listens();
        harness.GetsSignal(signal);
        harness.EndsBySignal(signal);
    }
}

}  // namespace
