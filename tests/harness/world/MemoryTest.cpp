#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "tests/support/Dialogue.h"

namespace {

using Memory = Dialect10;

/// From now on the process may take this much more memory.
void Limit(const Harness& harness, __rlimit_resource resource, rlim_t more) {
    rlim_t pages = 0;
    std::ifstream("/proc/" + std::to_string(harness.GetProcess().Id()) + "/statm") >> pages;
    const rlim_t most = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + more;
    const rlimit limit = {most, most};
    ASSERT_EQ(0, prlimit(harness.GetProcess().Id(), resource, &limit, nullptr));
}

void EndsForLackOfMemory(Harness& harness) {
    harness.EndsBySignal(SIGABRT);
    EXPECT_EQ("terminate called after throwing an instance of 'std::bad_alloc'\n  what():  std::bad_alloc\n",
              harness.StandardError());
}

constexpr rlim_t kMegabyte = 1 << 20;

TEST_F(Memory, ThatDoesNotHoldAnAnnouncedTextEndsTheProcess) {
    Connect();
    Limit(*harness, RLIMIT_AS, 64 * kMegabyte);
    dvr->SendsBytes(Prefix(1 << 30));
    harness->LogsInFull({{1, "expecting a message of 1073741824 bytes"}});
    EndsForLackOfMemory(*harness);
    dvr->ReceivesEnd();
}

TEST_F(Memory, ThatHoldsTheTextButNotTheDocumentEndsTheProcess) {
    Connect();
    Limit(*harness, RLIMIT_DATA, 8 * kMegabyte);
    std::string document = "<msg>";
    while (document.size() < kMegabyte / 2) {
        document += "<a/>";
    }
    document += "</msg>";
    dvr->Sends(document);
    harness->LogsUpTo(1, "read success:" + std::to_string(document.size()));
    constexpr std::size_t kShownAtOnce = 800;
    for (std::size_t start = 0; start < document.size(); start += kShownAtOnce) {
        harness->TakesRawLine();
    }
    EndsForLackOfMemory(*harness);
}

TEST_F(Memory, ThatIsScarceIsEnoughForAnExport) {
    Connect();
    Limit(*harness, RLIMIT_AS, kMegabyte);
    ExportsE1();
    IsDone({"E1"});
    Reconnect();
    Opens();
    Ends();
}

}  // namespace
