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

    /// Takes in EventWithVideo, whose saved copy does not matter here.
    /// @return the files that it queued
    Files FilesOf(const std::string& children) {
        TiXmlDocument document;
        document.Parse(EventWithVideo(children).c_str());
        protocol.Handle_EVENT_msg(document);
        TakeJournal();
        return protocol.filesToReceive;
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

TEST_F(EventFiles, WithoutMetadataHasTheFilesOfItsStreams) {
    EXPECT_EQ(FilesOf(R"(<streams><stream><a name="1"/></stream></streams>)"), (Files{{"E7", "1"}}));
}

TEST_F(EventFiles, WithoutStreamsHasItsMetadataAlone) {
    EXPECT_EQ(FilesOf(R"(<metadata name="m"/>)"), (Files{{"E7", "m"}}));
}

TEST_F(EventFiles, HasItsMetadataFirstWhereverItStands) {
    EXPECT_EQ(FilesOf(R"(<streams><stream><a name="1"/></stream></streams><metadata name="m"/>)"),
              (Files{{"E7", "m"}, {"E7", "1"}}));
}

TEST_F(EventFiles, HasOneMetadataFile) {
    EXPECT_EQ(FilesOf(R"(<metadata name="m"/><metadata name="n"/>)"), (Files{{"E7", "m"}}));
}

TEST_F(EventFiles, HasTheFilesOfEveryStreamInOrder) {
    EXPECT_EQ(
        FilesOf(
            R"(<streams><stream><a name="1"/><b name="2"/></stream><stream><c name="3"/></stream></streams>)"),
        (Files{{"E7", "1"}, {"E7", "2"}, {"E7", "3"}}));
}

TEST_F(EventFiles, HasNoFileOfAStreamWithoutChildrenWhateverItsName) {
    EXPECT_EQ(FilesOf(R"(<streams><stream name="no file"/><stream><a name="1"/></stream></streams>)"),
              (Files{{"E7", "1"}}));
}

TEST_F(EventFiles, TakesEverySiblingOfAStreamForAStream) {
    EXPECT_EQ(FilesOf(R"(<streams><stream><a name="1"/></stream><audio><b name="2"/></audio></streams>)"),
              (Files{{"E7", "1"}, {"E7", "2"}}));
}

TEST_F(EventFiles, StartsAtItsFirstStream) {
    EXPECT_EQ(FilesOf(R"(<streams><audio><b name="2"/></audio><stream><a name="1"/></stream></streams>)"),
              (Files{{"E7", "1"}}));
}

TEST_F(EventFiles, PassesOverCommentsAndTextBesideAStream) {
    EXPECT_EQ(
        FilesOf(
            R"(<streams><!-- c --><stream><a name="1"/></stream>text<!-- c --><stream><b name="2"/></stream></streams>)"),
        (Files{{"E7", "1"}, {"E7", "2"}}));
}

TEST_F(EventFiles, HasNoFileBelowTheChildrenOfAStream) {
    EXPECT_EQ(FilesOf(R"(<streams><stream><a name="1"><b name="2"/></a></stream></streams>)"),
              (Files{{"E7", "1"}}));
}

TEST_F(EventFiles, TakesTheNamesOfItsFilesAsTheyAre) {
    EXPECT_EQ(FilesOf(R"(<metadata name=""/><streams><stream><a name="x &amp; y"/></stream></streams>)"),
              (Files{{"E7", ""}, {"E7", "x & y"}}));
}

/// An EVENT whose description names a file wrongly ends the process, after the copy has been saved.
class BadEventFile : public EventFiles {
 protected:
    static Entries NoName() {
        return Uncaught("std::logic_error", "basic_string::_M_construct null not valid");
    }

    static Entry SavedVideo(const std::string& video) {
        return Saved("/mnt/hd/incoming_E7", "<recording-event reid=\"E7\">\n    <video>\n" + video +
                                                "    </video>\n</recording-event>\n");
    }

    static Entry SavedStream(const std::string& file) {
        return SavedVideo("        <streams>\n            <stream>\n" + file +
                          "            </stream>\n        </streams>\n");
    }
};

TEST_F(BadEventFile, EndsTheProcessForMetadataWithoutName) {
    const std::string text = EventWithVideo("<metadata />");
    Feed(text);
    EXPECT_ABORT(protocol.HandleMessage(), Received(text), Reid(), SavedVideo("        <metadata />\n"),
                 NoName());
}

TEST_F(BadEventFile, EndsTheProcessForAFileWithoutName) {
    const std::string text = EventWithVideo("<streams><stream><a /></stream></streams>");
    Feed(text);
    EXPECT_ABORT(protocol.HandleMessage(), Received(text), Reid(), SavedStream("                <a />\n"),
                 NoName());
}

TEST_F(BadEventFile, EndsTheProcessForACommentInAStream) {
    const std::string text = EventWithVideo("<streams><stream><!-- c --></stream></streams>");
    Feed(text);
    EXPECT_ABORT(protocol.HandleMessage(), Received(text), Reid(),
                 SavedStream("                <!-- c -->\n"), NoName());
}

TEST_F(BadEventFile, EndsTheProcessForTextInAStream) {
    const std::string text = EventWithVideo(R"(<streams><stream><a name="1"/>text</stream></streams>)");
    Feed(text);
    EXPECT_ABORT(protocol.HandleMessage(), Received(text), Reid(),
                 SavedStream("                <a name=\"1\" />text\n"), NoName());
}

}  // namespace
