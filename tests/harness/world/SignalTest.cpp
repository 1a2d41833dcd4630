#include <gtest/gtest.h>

#include <csignal>

#include "tests/harness/world/EachWait.h"

namespace {

struct Signal {
    std::string name;
    int number;
};

std::ostream& operator<<(std::ostream& out, const Signal& signal) {
    return out << signal.name;
}

const auto nameOfSignal = [](const auto& row) { return row.param.name; };

class IgnoredSignal : public EachWait, public testing::WithParamInterface<Signal> {};

TEST_P(IgnoredSignal, BreaksNoWait) {
    Survives([this](Wait) {
        for (int count = 0; count < 100; ++count) {
            harness->GetsSignal(GetParam().number);
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Any, IgnoredSignal,
                         testing::Values(Signal{"WindowChange", SIGWINCH}, Signal{"UrgentData", SIGURG},
                                         Signal{"ChildEnd", SIGCHLD}, Signal{"Continue", SIGCONT}),
                         nameOfSignal);

class OtherSignal : public Dialect10, public testing::WithParamInterface<Signal> {};

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
