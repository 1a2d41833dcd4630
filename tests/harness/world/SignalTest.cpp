#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/Dialogue.h"

namespace {

struct Signal {
    std::string name;
    int number;
};

std::ostream& operator<<(std::ostream& out, const Signal& signal) {
    return out << signal.name;
}

const auto nameOfSignal = [](const auto& row) { return row.param.name; };

class SignalOf10 : public Dialect10, public testing::WithParamInterface<Signal> {
 protected:
    void GetsManySignals() {
        for (int count = 0; count < 100; ++count) {
            harness->GetsSignal(GetParam().number);
        }
    }
};

class IgnoredSignal : public SignalOf10 {};

TEST_P(IgnoredSignal, BreaksNoWait) {
    harness.emplace();
    harness->Listens();
    GetsManySignals();  // waits for the first DVR
    dvr.emplace();
    harness->Logs(16, "Connected to: fam=2  127.0.0.1:" + std::to_string(dvr->Port()));
    GetsManySignals();  // waits for a message
    Opens();
    const std::string message = Frame(Xml({Description("E1", {"m1"})}));
    dvr->SendsAndSeesRead(message.substr(0, 9));
    GetsManySignals();  // pauses in the text
    dvr->SendsBytes(message.substr(9));
    harness->Logs(32, "Found event E1");
    dvr->Receives(v1::GetFile("E1", "m1"));
    Completes("E1", "m1");
    ReportsDone({"E1"});
    GetsManySignals();  // pauses before it closes
    Closes();
    GetsManySignals();  // waits for the next DVR
    Reconnect();
    Opens();
    Ends();
}

INSTANTIATE_TEST_SUITE_P(Any, IgnoredSignal,
                         testing::Values(Signal{"WindowChange", SIGWINCH}, Signal{"UrgentData", SIGURG},
                                         Signal{"ChildEnd", SIGCHLD}, Signal{"Continue", SIGCONT}),
                         nameOfSignal);

class OtherSignal : public SignalOf10 {};

TEST_P(OtherSignal, EndsTheProcessByItself) {
    Connect();
    Opens();
    harness->GetsSignal(GetParam().number);
    harness->EndsBySignal(GetParam().number);
    dvr->ReceivesEnd();
    EXPECT_EQ("", harness->StandardError());
}

INSTANTIATE_TEST_SUITE_P(Any, OtherSignal,
                         testing::Values(Signal{"Terminate", SIGTERM}, Signal{"HangUp", SIGHUP},
                                         Signal{"Quit", SIGQUIT}, Signal{"User1", SIGUSR1},
                                         Signal{"User2", SIGUSR2}, Signal{"Alarm", SIGALRM},
                                         Signal{"BrokenPipe", SIGPIPE}),
                         nameOfSignal);

}  // namespace
