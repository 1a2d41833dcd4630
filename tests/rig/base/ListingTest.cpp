#include <gtest/gtest.h>

#include "rig/base/Listing.h"

namespace {

const rig::Listing kListing{
    {"name", "does", "logs"},
    {{"one", "a few words that need more than a line", "\"x: \""}, {"two", "less", ""}}};

TEST(Listing, WrapsTheCellsOfEachNameAtTheWidth) {
    EXPECT_EQ(rig::AsText(kListing, 24),
              "one\n"
              "    does: a few words\n"
              "        that need more\n"
              "        than a line\n"
              "    logs: \"x: \"\n"
              "two\n"
              "    does: less\n"
              "    logs:\n");
}

TEST(Listing, PutsALongWordOnItsOwnLine) {
    EXPECT_EQ(rig::AsText({{"", "does"}, {{"one", "unbreakable"}}}, 8),
              "one\n"
              "    does:\n"
              "        unbreakable\n");
}

TEST(Listing, IsATableInMarkdown) {
    EXPECT_EQ(rig::AsMarkdown(kListing),
              "| name | does | logs |\n"
              "|---|---|---|\n"
              "| `one` | a few words that need more than a line | \"x: \" |\n"
              "| `two` | less |  |\n");
}

}  // namespace
