#include <gtest/gtest.h>

#include "rig/log/Signs.h"

namespace rig::log {
namespace {

TEST(Sign, IsToldByTheBeginningOfTheText) {
    EXPECT_EQ(SignOf("Sending DONE"), Sign::SendingDone);
    EXPECT_EQ(SignOf("read success:12"), Sign::None);
    EXPECT_EQ(SignOf("hdr[3]= ac"), Sign::HeaderByte);
    EXPECT_EQ(Behind(Sign::FilesLeft, "filesToReceive size = 4"), "4");
}

}  // namespace
}  // namespace rig::log
