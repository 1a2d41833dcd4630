#include "tests/harness/unit/support/Content.h"

namespace {

const Content kContents[] = {
    {"Nothing", "", {}},
    {"MetadataAndStreamsOutsideVideo",
     R"(<metadata name="m"/><streams><stream><a name="1"/></stream></streams>)",
     {}},
    {"ACommentThatReadsVideo", R"(<!--video--><video><metadata name="no"/></video>)", {}},
};

/// The content of `video`.
const Content kVideos[] = {
    {"EmptyVideo", "", {}},
    {"EmptyStreams", "<streams/>", {}},
    {"AStreamWithANameButNoChildren", R"(<streams><stream name="s"/></streams>)", {}},
    {"NoMetadata", R"(<streams><stream><a name="1"/></stream></streams>)", {"1"}},
    {"NoStreams", R"(<metadata name="m"/>)", {"m"}},
    {"MetadataAfterTheStreams",
     R"(<streams><stream><a name="1"/></stream></streams><metadata name="m"/>)",
     {"m", "1"}},
    {"TwoMetadata", R"(<metadata name="m"/><metadata name="no"/>)", {"m"}},
    {"ChildrenOfAnyNameInAStream",
     R"(<streams><stream><file name="1"/><x name="2"/><stream name="3"/></stream></streams>)",
     {"1", "2", "3"}},
    {"SomethingInsideAChildOfAStream",
     R"(<streams><stream><a name="1"><b name="no"/></a></stream></streams>)",
     {"1"}},
    {"SeveralStreams",
     R"(<streams><stream><a name="1"/><b name="2"/></stream><stream/><stream><c name="3"/></stream></streams>)",
     {"1", "2", "3"}},
    {"ASiblingOfAnyNameAfterAStream",
     R"(<streams><stream><a name="1"/></stream><audio><b name="2"/></audio></streams>)",
     {"1", "2"}},
    {"ASiblingOfAnotherNameBeforeTheFirstStream",
     R"(<streams><audio><b name="no"/></audio><stream><a name="1"/></stream></streams>)",
     {"1"}},
    {"CommentsAndTextBesideAStream",
     R"(<streams> x <!-- c --><stream><a name="1"/></stream> y <!-- c --><stream><b name="2"/></stream></streams>)",
     {"1", "2"}},
    {"TwoStreamsElementsAndTwoVideos",
     R"(<streams><stream><a name="1"/></stream></streams><streams><stream><a name="no"/></stream></streams></video>)"
     R"(<video><metadata name="no"/>)",
     {"1"}},
    {"ACommentThatReadsMetadata", R"(<!--metadata--><metadata name="no"/>)", {}},
    {"ACommentThatReadsStreams", R"(<!--streams--><streams><stream><a name="no"/></stream></streams>)", {}},
    {"AnEmptyNameAndOneOfAnyBytes",
     "<metadata name=\"\"/><streams><stream><a name=\"a &amp;&lt;b\xc3\xa9.mkv\"/></stream></streams>",
     {"", "a &<b\xc3\xa9.mkv"}},
};

}  // namespace

std::vector<Content> ContentsOfADescription() {
    std::vector<Content> contents(std::begin(kContents), std::end(kContents));
    for (const Content& video : kVideos) {
        contents.push_back({video.name, "<video>" + video.text + "</video>", video.files});
    }
    return contents;
}
