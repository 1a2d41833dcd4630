#include "tests/harness/unit/support/Content.h"
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

class FilesOfADescription_2_0 : public EventFiles, public testing::WithParamInterface<Content> {};

TEST_P(FilesOfADescription_2_0, AreQueued) {
    TiXmlDocument document;
    document.Parse(
        Event("E7", "<recording-event reid=\"E7\">" + GetParam().text + "</recording-event>").c_str());
    protocol.Handle_EVENT_msg(document);
    TakeJournal();  // the saved copy does not matter here
    Files files;
    for (const std::string& file : GetParam().files) {
        files.emplace_back("E7", file);
    }
    EXPECT_EQ(protocol.filesToReceive, files);
}

INSTANTIATE_TEST_SUITE_P(With, FilesOfADescription_2_0, testing::ValuesIn(ContentsOfADescription()),
                         [](const auto& content) { return content.param.name; });

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
