#include <gtest/gtest.h>
#include <poll.h>

#include "tests/harness/world/EachWait.h"

namespace {

/// The harness waits for a silent peer, without a line in the log and without using the processor.
class Silence10 : public EachWait {
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
    Survives([this](Wait wait) {
        if (wait == Wait::kNextDvr) {
            dvr.reset();
        }
        if (wait not_eq Wait::kPauseBeforeClosing) {
            Lasts();
        }
    });
}

}  // namespace
