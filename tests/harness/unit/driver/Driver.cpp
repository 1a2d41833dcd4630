#include "tests/harness/unit/driver/Driver.h"

#include <getopt.h>

extern "C" {
int __real_main(int argc, char** argv);  // the harness's

int __wrap_main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
}

Driver::Driver() {
    ResetProtocol();
    TakeJournal();  // of the logger's settings that the fixture has made
}

void Driver::RunMain(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"velloran"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    optind = 0;  // getopt starts anew
    __real_main(static_cast<int>(words.size()), argv.data());
}

void Driver::ScriptListening(int server) {
    NextSocketReturns(server);
    NextBindReturns(0);
    NextListenReturns(0);
}

void Driver::ScriptConnection() {
    ResetListener();
    ResetProtocol();
    ScriptListening();
    NextSelect({1, {kServer}});
    NextAcceptReturns(kSocket, "10.0.0.5", 50000);
}

void Driver::ScriptMessage(int result) {
    NextSelect({1, {kSocket}});
    NextHandleMessageReturns(result);
}

Entries LoggerSetUp() {
    return std::vector<Entry>{NamedTheProcess("velloran"), SetTheLevelMask(127)};
}

Entries Connection() {
    return std::vector<Entry>{SocketCalled(AF_INET, SOCK_STREAM, IPPROTO_TCP),
                              BindCalled(kServer, "0.0.0.0", 5001),
                              ListenCalled(kServer, 5),
                              SelectCalled(kServer + 1, {kServer}, {kServer}, 10000, 0),
                              AcceptCalled(kServer, 110),
                              Logged(16, "Connected to: fam=2  10.0.0.5:50000")};
}

Entry FirstLoopWait(long seconds) {
    return SelectCalled(kServer + kSocket + 1, {kServer, kSocket}, {kSocket}, seconds, 0);
}

Entry LoopWait(long seconds) {
    return SelectCalled(kServer + kSocket + 1, {kServer, kSocket}, {kServer, kSocket}, seconds, 0);
}

Entry Unscripted(const std::string& function) {
    return Printed(function + ": nothing is scripted");
}

Entries Service(const TestOptions& options) {
    const Entries connection = Connection();
    std::vector<Entry> entries(connection.begin(), connection.end());
    entries.insert(entries.end(),
                   {FirstLoopWait(), Handled(options, kSocket), LoopWait(), Unscripted("select")});
    return entries;
}

Entries Usage() {
    return std::vector<Entry>{
        Printed(""),
        Printed("Usage: velloran"),
        Printed("       [-c OR --close num]    Close early after handling num events (to test DONE "
                "duration)(num>0)"),
        Printed("       [-d OR --duration num] Set DONE message duration to num minutes (num>0)"),
        Printed("       [-p OR --protocol 1|2] Set messaging protocol (default=1) "),
        Printed("       [-r OR --rehash]       Set rehash=true in all GET_FILE messages (default=false) "),
        Printed("       [-e OR --event]        Verify INVALID_EVENT message in response to bad event "
                "(default=false) "),
        Printed("       [-f OR --file]         Verify INVALID_EVENT message in response to bad file "
                "(default=false) "),
        Printed("       [-t OR --transport]    Verify TRANSPORT_EXCEPTION message from DVR (default=false) "),
        Printed("       [-u OR --upgrade]      Upgrade to /mnt/hd/connectionmgr/upgrade.zip"),
        Printed("       [-x OR --xfer]         Verify XFER_IN_PROGRESS message from DVR (default=false) "),
        Printed(
            "       [-s OR --sleep]        Sleep (in seconds) incurred on each GET_FILE exchange (to slow "
            "down export) "),
        Printed(
            "       [-z OR --size]         Force header size error of size-10 (help test message parser on "
            "DVR) "),
        Printed("       [-g OR --config]       Send config update only (bogus config, but it tests the "
                "protocol) "),
        Printed("")};
}
