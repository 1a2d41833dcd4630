#include <gtest/gtest.h>

#include <ctime>

#include "tests/support/Dialogue.h"
#include "tests/support/TimeNow.h"

namespace {

using Log = Dialect10;

TEST_F(Log, LineHoldsTimeProcessLevelAndSource) {
    const std::time_t before = TimeNow();
    Connect();
    dvr->Sends(Message("NONE"));
    harness->LogsUpTo(32, "GetMessage:incoming message, bytes 1 to 17:<msg req=\"NONE\"/>");
    const std::string line = harness->TakesRawLine();
    std::tm utc = {};
    const char* const end = strptime(line.c_str(), "%Y-%m-%dT%H:%M:%S.", &utc);
    ASSERT_EQ(line.c_str() + 20, end) << line;
    EXPECT_EQ("Z velloran 1 velloran:", line.substr(26, 22));
    const std::string text = " UNSUPPORTED MSG RECEIVED: NONE";
    EXPECT_EQ(line.size() - text.size(), line.find(text));
    const std::time_t time = timegm(&utc);
    EXPECT_LE(before, time);
    EXPECT_GE(TimeNow(), time);
    Ends();
}

TEST_F(Log, LineIsOneWhateverThePeerSends) {
    Connect();
    dvr->Sends("<msg req=\"A\nB\r\tC\\n\x01\x1f\x7f\xc3\xbc\xff\"/>");
    harness->LogsUpTo(1, "read success:27");
    const std::string escaped = R"(A\nB\r\tC\\n\x01\x1f\x7f)" + std::string("\xc3\xbc\xff");
    const std::string trace = harness->TakesRawLine();
    EXPECT_NE(std::string::npos, trace.find(":<msg req=\"" + escaped + "\"/>")) << trace;
    const std::string unsupported = harness->TakesRawLine();
    EXPECT_NE(std::string::npos, unsupported.find(" UNSUPPORTED MSG RECEIVED: ")) << unsupported;
    Ends();
}

}  // namespace
