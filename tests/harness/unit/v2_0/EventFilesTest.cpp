#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

/// The files that the description of the requested event E7 names.
class EventFiles : public Dialogue {
 protected:
    EventFiles() { protocol.events = {"E7"}; }

    /// An event E7 whose description holds `children` in its `video`.
    static std::string EventWithVideo(const std::string& children) {
        return Event("E7", R"(<recording-event reid="E7"><video>)" + children + "</video></recording-event>");
    }

    static Entry Reid() { return Logged(16, "'reid' attribute in EVENT msg = 'E7'"); }
};

TEST_F(EventFiles, WithoutVideoHasNoFiles) {
    EXPECT_REACTION(Event("E7", R"(<recording-event reid="E7"><metadata name="m"/></recording-event>)"),
                    Reid(),
                    Saved("/mnt/hd/incoming_E7",
                          "<recording-event reid=\"E7\">\n"
                          "    <metadata name=\"m\" />\n"
                          "</recording-event>\n"),
                    Logged(4, "Got EVENT message with no files to receive"));
}

/// The children of `video`, and the names of the files that they stand for.
struct Video {
    std::string name;
    std::string children;
    std::vector<std::string> files;
};

void PrintTo(const Video& video, std::ostream* stream) {
    *stream << video.children;
}

class EventFilesOf : public EventFiles, public testing::WithParamInterface<Video> {};

TEST_P(EventFilesOf, AVideoAreQueued) {
    TiXmlDocument document;
    document.Parse(EventWithVideo(GetParam().children).c_str());
    protocol.Handle_EVENT_msg(document);
    TakeJournal();  // the saved copy does not matter here
    Files files;
    for (const std::string& file : GetParam().files) {
        files.emplace_back("E7", file);
    }
    EXPECT_EQ(protocol.filesToReceive, files);
}

const Video kVideos[] = {
    {"WithoutMetadata", R"(<streams><stream><a name="1"/></stream></streams>)", {"1"}},
    {"WithoutStreams", R"(<metadata name="m"/>)", {"m"}},
    {"MetadataFirstWhereverItStands",
     R"(<streams><stream><a name="1"/></stream></streams><metadata name="m"/>)",
     {"m", "1"}},
    {"OneMetadataFile", R"(<metadata name="m"/><metadata name="n"/>)", {"m"}},
    {"EveryStreamInOrder",
     R"(<streams><stream><a name="1"/><b name="2"/></stream><stream><c name="3"/></stream></streams>)",
     {"1", "2", "3"}},
    {"NoneOfAStreamWithoutChildrenWhateverItsName",
     R"(<streams><stream name="no file"/><stream><a name="1"/></stream></streams>)",
     {"1"}},
    {"EverySiblingOfAStreamAsAStream",
     R"(<streams><stream><a name="1"/></stream><audio><b name="2"/></audio></streams>)",
     {"1", "2"}},
    {"FromTheFirstStreamOn",
     R"(<streams><audio><b name="2"/></audio><stream><a name="1"/></stream></streams>)",
     {"1"}},
    {"PastCommentsAndTextBesideAStream",
     R"(<streams><!--c--><stream><a name="1"/></stream>t<!--c--><stream><b name="2"/></stream></streams>)",
     {"1", "2"}},
    {"NoneBelowTheChildrenOfAStream",
     R"(<streams><stream><a name="1"><b name="2"/></a></stream></streams>)",
     {"1"}},
    {"NamesAsTheyAre",
     R"(<metadata name=""/><streams><stream><a name="x &amp; y"/></stream></streams>)",
     {"", "x & y"}},
};

INSTANTIATE_TEST_SUITE_P(Are, EventFilesOf, testing::ValuesIn(kVideos),
                         [](const auto& video) { return video.param.name; });

/// An EVENT whose description names a file wrongly ends the process, after the copy has been saved.
class BadEventFile : public EventFiles {
 protected:
    static Entries NoName() {
        return Uncaught("std::logic_error", "basic_string::_M_construct null not valid");
    }

    /// `video` is what the saved copy holds of the children.
    void ExpectEnd(const std::string& children, const std::string& video) {
        const std::string text = EventWithVideo(children);
        Feed(text);
        EXPECT_ABORT(protocol.HandleMessage(), Received(text), Reid(),
                     Saved("/mnt/hd/incoming_E7", "<recording-event reid=\"E7\">\n    <video>\n" + video +
                                                      "    </video>\n</recording-event>\n"),
                     NoName());
    }

    void ExpectEndInStream(const std::string& children, const std::string& saved) {
        ExpectEnd("<streams><stream>" + children + "</stream></streams>",
                  "        <streams>\n            <stream>\n" + saved +
                      "            </stream>\n        </streams>\n");
    }
};

TEST_F(BadEventFile, EndsTheProcessForMetadataWithoutName) {
    ExpectEnd("<metadata />", "        <metadata />\n");
}

TEST_F(BadEventFile, EndsTheProcessForAFileWithoutName) {
    ExpectEndInStream("<a />", "                <a />\n");
}

TEST_F(BadEventFile, EndsTheProcessForACommentInAStream) {
    ExpectEndInStream("<!-- c -->", "                <!-- c -->\n");
}

TEST_F(BadEventFile, EndsTheProcessForTextInAStream) {
    ExpectEndInStream(R"(<a name="1"/>text)", "                <a name=\"1\" />text\n");
}

}  // namespace
