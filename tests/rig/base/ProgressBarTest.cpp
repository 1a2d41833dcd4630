#include <gtest/gtest.h>

#include <string>

#include "rig/base/ProgressBar.h"

namespace {

using rig::ProgressBar;

TEST(ProgressBar, ShowsHowFarAFileIs) {
    EXPECT_EQ(ProgressBar("front-1.ts", 0, 2'500'000, 79),
              "front-1.ts [>                   ]   0 %  0.0 of 2.5 MB");
    EXPECT_EQ(ProgressBar("front-1.ts", 1'200'000, 2'500'000, 79),
              "front-1.ts [=========>          ]  48 %  1.2 of 2.5 MB");
    EXPECT_EQ(ProgressBar("front-1.ts", 2'500'000, 2'500'000, 79),
              "front-1.ts [====================] 100 %  2.5 of 2.5 MB");
}

TEST(ProgressBar, CountsMoreThanAllAsAll) {
    EXPECT_EQ(ProgressBar("a", 4'000'000, 3'000'000, 79), "a [====================] 100 %  3.0 of 3.0 MB");
    EXPECT_EQ(ProgressBar("a", 0, 0, 79), "a [====================] 100 %  0.0 of 0.0 MB");
}

TEST(ProgressBar, StaysOnOneLineOfAnyTerminal) {
    for (std::size_t columns = 0; columns < 100; ++columns) {
        EXPECT_LE(ProgressBar(std::string(200, 'n'), 1'000'000, 4'000'000, columns).size(), columns);
    }
    EXPECT_EQ(ProgressBar(std::string(200, 'n'), 1'000'000, 4'000'000, 48),
              "nnnn [=====>              ]  25 %  1.0 of 4.0 MB");
    EXPECT_EQ(ProgressBar("n", 1'000'000, 4'000'000, 30), " 25 %  1.0 of 4.0 MB");
}

TEST(ProgressBar, CutsANameBetweenCharacters) {
    EXPECT_EQ(ProgressBar("M\xc3\xbcnchen", 0, 0, 46), "M [====================] 100 %  0.0 of 0.0 MB");
    EXPECT_EQ(ProgressBar("M\xc3\xbcnchen", 0, 0, 47),
              "M\xc3\xbc [====================] 100 %  0.0 of 0.0 MB");
}

TEST(ProgressBar, StaysOnOneLineWhateverAFileIsCalled) {
    EXPECT_EQ(ProgressBar("a\n\033[2J", 0, 0, 79),
              "a\\n\\x1b[2J [====================] 100 %  0.0 of 0.0 MB");
}

}  // namespace
