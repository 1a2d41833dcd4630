#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "rig/dvr/wire/Markup.h"

namespace {

struct EndCase {
    const char* name;
    std::string document;
};

void PrintTo(const EndCase& tested, std::ostream* out) {
    *out << tested.name;
}

class WholeDocumentTest : public testing::TestWithParam<EndCase> {};

TEST_P(WholeDocumentTest, EndsWhereItsRootElementDoes) {
    const std::string& document = GetParam().document;
    EXPECT_EQ(rig::dvr::DocumentEnd(document), document.size());
    EXPECT_EQ(rig::dvr::DocumentEnd(document + "\x16<msg/>"), document.size());
    for (std::size_t size = 0; size < document.size(); ++size) {
        EXPECT_EQ(rig::dvr::DocumentEnd(document.substr(0, size)), std::nullopt) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(
    DocumentEnd, WholeDocumentTest,
    testing::Values(EndCase{"Empty", "<msg/>"}, EndCase{"EmptyWithABlank", R"(<msg req="DONE" />)"},
                    EndCase{"Open", "<msg></msg>"}, EndCase{"Nested", "<a><a><b/></a>text</a>"},
                    EndCase{"MarkupInQuotes", R"(<a b="/></a>" c='">'><d e=">"/></a>)"},
                    EndCase{"Comment", "<!--<a>--><a><!-- </a> --></a>"},
                    EndCase{"Instruction", "<?xml version=\"1.0\"?><a><?b </a>?></a>"},
                    EndCase{"CharacterData", "<a><![CDATA[</a>]]></a>"},
                    EndCase{"Doctype", "<!DOCTYPE a><a/>"}, EndCase{"TextBefore", "text<a/>"}),
    [](const testing::TestParamInfo<EndCase>& tested) { return std::string(tested.param.name); });

TEST(DocumentEnd, IsNotFoundWithoutAnElement) {
    for (const char* text : {"", "text", "<", "<!-- a -->", "</a"}) {
        EXPECT_EQ(rig::dvr::DocumentEnd(text), std::nullopt) << text;
    }
}

}  // namespace
