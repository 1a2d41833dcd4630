#include <gtest/gtest.h>
#include <poll.h>

#include "tests/support/Dialogue.h"

namespace {

/// The harness waits for a silent peer, without a line in the log and without using the processor.
class Silence10 : public Dialect10 {
 protected:
    /// Nothing comes for a while.
    void Lasts(Here here = Here::current()) {
        const auto before = harness->GetProcess().ProcessorTime();
        poll(nullptr, 0, 500);
        if (harness->GetProcess().ProcessorTime() - before > std::chrono::milliseconds(100)) {
            FailAt(here, "the harness works while it waits");
        }
        if (dvr and dvr->HasSomethingToRead()) {
            FailAt(here, "the harness does not wait");
        }
    }
};

TEST_F(Silence10, IsWaitedForWhereverItComes) {
    harness.emplace();
    harness->Listens();
    Lasts();
    dvr.emplace();
    harness->Logs(16, "Connected to: fam=2  127.0.0.1:" + std::to_string(dvr->Port()));
    Lasts();
    Opens();
    const std::string frame = Frame(Xml({Description("E1", {"m1"})}));
    dvr->SendsAndSeesRead(frame.substr(0, 1));
    Lasts();  // in the prefix
    dvr->SendsAndSeesRead(frame.substr(1, 9));
    Lasts();  // in the text
    dvr->SendsBytes(frame.substr(10));
    harness->Logs(32, "Found event E1");
    dvr->Receives(v1::GetFile("E1", "m1"));
    Lasts();
    Completes("E1", "m1");
    ReportsDone({"E1"});
    Closes();
    dvr.reset();
    Lasts();
    Reconnect();
    Opens();
    Ends();
}

}  // namespace
