#include <gtest/gtest.h>

#include "Dialogue.h"

namespace {

using Interrupt = Dialect10;

TEST_F(Interrupt, StopsItBeforeAnyClient) {
    Harness running;
    running.Listens();
    running.StopsOnInterrupt();
    EXPECT_EQ("", running.StandardError());
}

TEST_F(Interrupt, StopsItWhileAClientIsSilent) {
    Connect();
    Opens();
    Ends();
}

TEST_F(Interrupt, StopsItInTheMiddleOfAMessage) {
    Connect();
    dvr->SendsAndSeesRead(Prefix(100) + "half of a mess");
    Ends();
}

TEST_F(Interrupt, StopsItDuringThePauseBeforeClosing) {
    Connect();
    ExportsE1();
    ReportsDone({"E1"});
    Ends();
}

TEST_F(Interrupt, StopsItWhileItWaitsForTheNextClient) {
    Connect();
    ExportsE1();
    IsDone({"E1"});
    harness->StopsOnInterrupt();
}

TEST_F(Interrupt, StopsItOnALaterConnection) {
    Connect();
    ExportsE1();
    IsDone({"E1"});
    Reconnect();
    Opens();
    Ends();
}

}  // namespace
