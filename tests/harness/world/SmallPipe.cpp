#include "tests/harness/world/SmallPipe.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "tests/harness/world/Still.h"

namespace {

constexpr std::size_t kSlice = 800;
constexpr int kLongestLine = 1000;

}  // namespace

SmallPipe::~SmallPipe() {
    close(writeEnd_);
}

void SmallPipe::ConnectWithASmallPipe() {
    Connect();
    writeEnd_ = harness->GetProcess().Copy(STDOUT_FILENO);
    EXPECT_LT(0, fcntl(writeEnd_, F_SETPIPE_SZ, 1));
}

/// Its lines are short, each one write that a pipe takes whole or not at all, but there are many.
std::string SmallPipe::LongMessage() {
    return "<msg req=\"NONE\"><!--" + std::string(100 * kSlice, '-') + "--></msg>";
}

void SmallPipe::IsFilled(Here here) {
    dvr->Sends(LongMessage(), here);
    // Then it waits only for the pipe: it has read the whole message before it logs it.
    const bool full = Until([this] {
        int held = 0;
        ioctl(writeEnd_, FIONREAD, &held);
        return held > fcntl(writeEnd_, F_GETPIPE_SZ) - kLongestLine and StateOf(*harness) == 'S';
    });
    // Otherwise the reader would not learn of the harness's end.
    close(writeEnd_);
    writeEnd_ = -1;
    if (not full) {
        FailAt(here, "the pipe does not fill");
    }
}

void SmallPipe::LogsWhatFilledIt(Here here) {
    const std::string text = LongMessage();
    const std::string size = std::to_string(text.size());
    std::vector<LogLine> lines = {{1, "expecting a message of " + size + " bytes"},
                                  {1, "read success:" + size}};
    for (std::size_t start = 0; start < text.size(); start += kSlice) {
        lines.push_back({32, "GetMessage:incoming message, bytes " + std::to_string(start + 1) + " to " +
                                 std::to_string(start + kSlice) + ":" + text.substr(start, kSlice)});
    }
    harness->LogsInFull(lines, here);
    harness->Logs(1, "UNSUPPORTED MSG RECEIVED: NONE", here);
}
