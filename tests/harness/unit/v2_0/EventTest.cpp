#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

/// The event E7 is asked for, E8 waits.
class EVENT : public Dialogue {
 protected:
    EVENT() {
        protocol.events = {"E7", "E8"};
        protocol.eventRequestPending = true;
    }

    static Entry Reid(const std::string& reid) {
        return Logged(16, "'reid' attribute in EVENT msg = '" + reid + "'");
    }
    static Entry Mismatch(const std::string& expected, const std::string& actual) {
        return Logged(
            2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp='" + expected + "'  act='" + actual + "'");
    }
    /// The saved copy of a description with a metadata file m.
    static Entry SavedM(const std::string& reid) {
        return Saved("/mnt/hd/incoming_" + reid, "<recording-event reid=\"" + reid +
                                                     "\">\n"
                                                     "    <video>\n"
                                                     "        <metadata name=\"m\" />\n"
                                                     "    </video>\n"
                                                     "</recording-event>\n");
    }
    static Entry NoFiles() { return Logged(4, "Got EVENT message with no files to receive"); }
};

TEST_F(EVENT, IsSavedItsFilesQueuedAndTheFirstRequested) {
    EXPECT_REACTION(Event("E7", Description("E7", "E7.xml", {"E7_1", "E7_2"})), Reid("E7"),
                    Saved("/mnt/hd/incoming_E7",
                          "<recording-event reid=\"E7\">\n"
                          "    <video>\n"
                          "        <metadata name=\"E7.xml\" />\n"
                          "        <streams>\n"
                          "            <stream>\n"
                          "                <file name=\"E7_1\" />\n"
                          "                <file name=\"E7_2\" />\n"
                          "            </stream>\n"
                          "        </streams>\n"
                          "    </video>\n"
                          "</recording-event>\n"),
                    Sent(GetFile("E7", "E7.xml")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"E7", "E7.xml"}, {"E7", "E7_1"}, {"E7", "E7_2"}}));
    EXPECT_EQ(protocol.events, (Events{"E7", "E8"}));
    EXPECT_FALSE(protocol.eventRequestPending);
    EXPECT_TRUE(protocol.fileRequestPending);
}

TEST_F(EVENT, IsTakenInWithoutAnswerByItsHandler) {
    TiXmlDocument document;
    document.Parse(Event("E7", R"(<recording-event reid="E7" />)").c_str());
    protocol.Handle_EVENT_msg(document);
    EXPECT_JOURNAL(Reid("E7"), Saved("/mnt/hd/incoming_E7", "<recording-event reid=\"E7\" />\n"));
    EXPECT_FALSE(protocol.eventRequestPending);
    EXPECT_FALSE(protocol.fileRequestPending);
}

TEST_F(EVENT, IsTakenInAgainWhenItComesAgain) {
    const std::string text = Event("E7", R"(<recording-event reid="E7"><video><metadata name="m"/></video>)"
                                         "</recording-event>");
    EXPECT_REACTION(text, Reid("E7"), SavedM("E7"), Sent(GetFile("E7", "m")));
    EXPECT_REACTION(text, Reid("E7"), SavedM("E7"), Sent(GetFile("E7", "m")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"E7", "m"}, {"E7", "m"}}));
}

TEST_F(EVENT, OfAnotherIdentifierQueuesNothing) {
    EXPECT_REACTION(Event("E8", Description("E8", "E8.xml", {"E8_1"})), Reid("E8"), Mismatch("E7", "E8"),
                    NoFiles());
    EXPECT_TRUE(protocol.filesToReceive.empty());
    EXPECT_EQ(protocol.events, (Events{"E7", "E8"}));
    EXPECT_FALSE(protocol.eventRequestPending);
    EXPECT_FALSE(protocol.fileRequestPending);
}

TEST_F(EVENT, IsComparedByEveryByteOfItsIdentifier) {
    for (const std::string reid : {"e7", "E77", "E", "", " E7"}) {
        EXPECT_REACTION(Event(reid, Description(reid, "m", {})), Reid(reid), Mismatch("E7", reid), NoFiles());
    }
}

TEST_F(EVENT, WithoutIdentifierIsAMismatch) {
    EXPECT_REACTION(Msg("EVENT", "", "<xmlFile>&lt;recording-event/&gt;</xmlFile>"), Mismatch("E7", ""),
                    NoFiles());
}

TEST_F(EVENT, WithoutIdentifierIsTheOneThatWasAskedForWithAnEmptyOne) {
    protocol.events = {""};
    EXPECT_REACTION(
        Msg("EVENT", "",
            R"(<xmlFile>&lt;recording-event&gt;&lt;video&gt;&lt;metadata name="m"/&gt;&lt;/video&gt;)"
            "&lt;/recording-event&gt;</xmlFile>"),
        Logged(2, "Escaped XML for event contains no REID"), Sent(GetFile("", "m")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"", "m"}}));
}

TEST_F(EVENT, ThatNobodyAskedForIsAMismatch) {
    protocol.events.clear();
    for (const std::string reid : {"E7", ""}) {
        EXPECT_REACTION(Event(reid, Description(reid, "m", {})), Reid(reid), Mismatch("", reid), NoFiles());
    }
    EXPECT_REACTION(Msg("EVENT", "", "<xmlFile>&lt;recording-event/&gt;</xmlFile>"), Mismatch("", ""),
                    NoFiles());
    EXPECT_TRUE(protocol.events.empty());
}

TEST_F(EVENT, OfAnotherIdentifierRequestsTheFileInProgressAgain) {
    protocol.filesToReceive = {{"E7", "a"}, {"E7", "b"}};
    EXPECT_REACTION(Event("E8", Description("E8", "m", {})), Reid("E8"), Mismatch("E7", "E8"),
                    Sent(GetFile("E7", "a")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"E7", "a"}, {"E7", "b"}}));
    EXPECT_TRUE(protocol.fileRequestPending);
}

TEST_F(EVENT, WithoutDescriptionRequestsTheFileInProgressAgain) {
    protocol.filesToReceive = {{"E7", "a"}};
    EXPECT_REACTION(Msg("EVENT", R"( reid="E7")"), Reid("E7"),
                    Logged(2, "EVENT message does not contain 'xmlFile' tag"), Sent(GetFile("E7", "a")));
}

TEST_F(EVENT, IsRequestedAgainWithoutANewHashAlsoInTheRehashTest) {
    protocol.filesToReceive = {{"E7", "a"}};
    protocol.rehashPending = true;
    EXPECT_REACTION(Msg("EVENT", R"( reid="E8")"), Reid("E8"), Mismatch("E7", "E8"),
                    Sent(GetFile("E7", "a")));
    EXPECT_TRUE(protocol.rehashPending);
}

TEST_F(EVENT, QueuesItsFilesBehindThoseStillQueued) {
    protocol.filesToReceive = {{"E6", "old"}};
    EXPECT_REACTION(Event("E7", R"(<recording-event><video><metadata name="m"/></video></recording-event>)"),
                    Reid("E7"), Logged(2, "Escaped XML for event contains no REID"),
                    Sent(GetFile("E6", "old")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"E6", "old"}, {"E7", "m"}}));
}

TEST_F(EVENT, WithoutXmlFileIsReported) {
    for (const std::string children :
         {"<other>text</other>", "<!--xmlFile--><xmlFile>&lt;recording-event/&gt;</xmlFile>"}) {
        EXPECT_REACTION(Msg("EVENT", R"( reid="E7")", children), Reid("E7"),
                        Logged(2, "EVENT message does not contain 'xmlFile' tag"), NoFiles());
    }
}

TEST_F(EVENT, WithAnEmptyXmlFileOrADescriptionThatIsNotEscapedIsReported) {
    for (const std::string xmlFile : {"<xmlFile/>", "<xmlFile></xmlFile>", "<xmlFile> \n </xmlFile>",
                                      R"(<xmlFile><recording-event reid="E7"/></xmlFile>)"}) {
        EXPECT_REACTION(Msg("EVENT", R"( reid="E7")", xmlFile), Reid("E7"),
                        Logged(2, "EVENT message 'xmlFile' tag does not contain data"), NoFiles());
    }
}

TEST_F(EVENT, TakesADescriptionThatTravelsAsCdata) {
    const std::string text =
        Msg("EVENT", R"( reid="E7")", R"(<xmlFile><![CDATA[<recording-event reid="E7"/>]]></xmlFile>)");
    EXPECT_REACTION(text, Reid("E7"), Saved("/mnt/hd/incoming_E7", "<recording-event reid=\"E7\" />\n"),
                    NoFiles());
}

TEST_F(EVENT, WithADescriptionThatIsNoXmlEndsTheProcessAfterSayingWhere) {
    const std::string text = Event("E7", R"(<recording-event reid="E7"><video></recording-event>)");
    for (const unsigned int mask : kMasks) {
        LogMask(mask);
        Feed(text);
        EXPECT_ABORT(
            protocol.HandleMessage(), Received(text), Reid("E7"),
            Logged(1, "error: 1:Error reading end tag."), Logged(1, "row: 1:35"),
            AssertionFailed("void VelProtocol_2_0::Handle_EVENT_msg(TiXmlDocument&)", "not embmsg.Error()"));
    }
}

TEST_F(EVENT, WithADescriptionThatIsPlainTextEndsTheProcess) {
    const std::string text = Event("E7", "hello");
    Feed(text);
    EXPECT_ABORT(
        protocol.HandleMessage(), Received(text), Reid("E7"), Logged(1, "error: 1:Error document empty."),
        Logged(1, "row: 0:0"),
        AssertionFailed("void VelProtocol_2_0::Handle_EVENT_msg(TiXmlDocument&)", "not embmsg.Error()"));
}

TEST_F(EVENT, WithoutRecordingEventAtTheTopIsSilentlyWithoutFiles) {
    for (const std::string description :
         {R"(<recording reid="E7"><video><metadata name="m"/></video></recording>)",
          R"(<a><recording-event reid="E7"/></a>)",
          R"(<!--recording-event--><recording-event reid="E7"/>)"}) {
        EXPECT_REACTION(Event("E7", description), Reid("E7"), NoFiles());
    }
    EXPECT_TRUE(protocol.filesToReceive.empty());
}

TEST_F(EVENT, WhoseDescriptionHasNoIdentifierIsNotSavedButItsFilesAreQueued) {
    EXPECT_REACTION(Event("E7", R"(<recording-event><video><metadata name="m"/></video></recording-event>)"),
                    Reid("E7"), Logged(2, "Escaped XML for event contains no REID"),
                    Sent(GetFile("E7", "m")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"E7", "m"}}));
}

TEST_F(EVENT, WhoseDescriptionHasAnotherIdentifierIsSavedUnderItAndItsFilesQueuedUnderItsOwn) {
    EXPECT_REACTION(
        Event("E7", R"(<recording-event reid="E9"><video><metadata name="m"/></video></recording-event>)"),
        Reid("E7"), SavedM("E9"),
        Logged(2, "Handle_EVENT_msg: 'reid' in escaped XML incorrect: exp='E7'  act='E9'"),
        Sent(GetFile("E7", "m")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"E7", "m"}}));
}

TEST_F(EVENT, WhoseDescriptionHasAnEmptyIdentifierIsSavedWithoutOne) {
    EXPECT_REACTION(Event("E7", R"(<recording-event reid=""/>)"), Reid("E7"),
                    Saved("/mnt/hd/incoming_", "<recording-event reid=\"\" />\n"),
                    Logged(2, "Handle_EVENT_msg: 'reid' in escaped XML incorrect: exp='E7'  act=''"),
                    NoFiles());
}

TEST_F(EVENT, IsSavedUnderItsIdentifierAsItIs) {
    protocol.events = {"a/b &c"};
    EXPECT_REACTION(Event("a/b &amp;c", R"(<recording-event reid="a/b &amp;c"/>)"), Reid("a/b &c"),
                    Saved("/mnt/hd/incoming_a/b &c", "<recording-event reid=\"a/b &amp;c\" />\n"), NoFiles());
}

TEST_F(EVENT, ThatCannotBeSavedIsTakenAllTheSame) {
    NextSaveFails();
    EXPECT_REACTION(
        Event("E7", R"(<recording-event reid="E7"><video><metadata name="m"/></video></recording-event>)"),
        Reid("E7"), SavedM("E7"), Sent(GetFile("E7", "m")));
}

TEST_F(EVENT, IsSavedWithAllThatItsDescriptionHolds) {
    EXPECT_REACTION(
        Event(
            "E7",
            R"(<?xml version="1.0" ?><!-- c --><recording-event reid="E7" x="&lt;">text</recording-event>)"),
        Reid("E7"),
        Saved("/mnt/hd/incoming_E7",
              "<?xml version=\"1.0\" ?>\n"
              "<!-- c -->\n"
              "<recording-event reid=\"E7\" x=\"&lt;\">text</recording-event>\n"),
        NoFiles());
}

}  // namespace
