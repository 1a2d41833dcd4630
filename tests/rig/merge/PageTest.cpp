#include <pugixml.hpp>

#include "tests/rig/merge/MadeUp.h"

namespace {

using MergePageTest = MergeTest;

TEST_F(MergePageTest, SaysFirstWhatThePartsDoNotHaveInCommon) {
    Campaign("a", Around({"xfer-2.0"}), [](Json& json) { json["note"] = "4.1"; });
    Shard("b", Around({"xfer-2.0", Outcome::Fail}), 1, 2,
          {"clean-2.0", "xfer-2.0", "size-2.0", "recovery-2.0"});
    Merge({"a", "b", "--out", "out"});
    pugi::xml_document page;
    ASSERT_TRUE(page.load_string(TextOf("out/index.html").c_str()));
    const auto sentence = [&page](int number) {
        return std::string(
            page.select_node(("(//p[@class='notice'])[" + std::to_string(number) + "]").c_str())
                .node()
                .text()
                .get());
    };
    EXPECT_EQ(sentence(1), "The parts differ: note: '4.1' in a; none in b");
    EXPECT_EQ(sentence(2), "The parts differ: number of shards: none in a; '2' in b");
    EXPECT_EQ(sentence(3), "No part ran 1 case: size-2.0");
    EXPECT_EQ(sentence(4), "Several parts ran 1 case: xfer-2.0");
    EXPECT_STREQ(page.select_node("//h2[@id='parts']/following::a[.='2']/@href").attribute().value(),
                 "parts/2.json");
    EXPECT_TRUE(page.select_node("//a[@href='cases/xfer-2.0/part-1/']"));
    EXPECT_TRUE(page.select_node("//tr[@id='size-2.0']//span[.='NOT RUN']"));
}

}  // namespace
