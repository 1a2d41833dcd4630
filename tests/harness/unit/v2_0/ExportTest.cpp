#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

/// Dialogues of several steps: how each fault plays out, and whole exports.
class Export : public Dialogue {
 protected:
    static Entry Source() { return Logged(16, "'source' attribute = 'DVR 7'"); }
    static Entry Reid(const std::string& reid) {
        return Logged(16, "'reid' attribute in EVENT msg = '" + reid + "'");
    }
    static Entry Complete(const std::string& reid, const std::string& file) {
        return Logged(64, "Got FILE_COMPLETE for: reid=" + reid + "  file=" + file);
    }
    static Entry Acknowledged(const std::string& reid) {
        return Logged(32, "Got EVENT_XFER_ACK for: reid='" + reid + "'");
    }
    static Entry OneLeft() { return Logged(32, "filesToReceive size = 1"); }

    /// An event with two files, m and f, without identifier in its description, so that nothing is saved.
    static std::string TwoFileEvent(const std::string& reid) {
        return Event(reid,
                     "<recording-event><video><metadata name=\"m\"/><streams><stream><a name=\"file.mpg\"/>"
                     "</stream></streams></video></recording-event>");
    }

    /// The DVR describes a TwoFileEvent, and the harness asks for its first file.
    void Describe(const std::string& reid) {
        EXPECT_REACTION(TwoFileEvent(reid), Reid(reid), Logged(2, "Escaped XML for event contains no REID"),
                        Sent(GetFile(reid, "m")));
    }

    /// The last file of a TwoFileEvent is delivered after a plain request, and the event completed.
    void Deliver(const std::string& reid) {
        EXPECT_REACTION(FileComplete(reid, "file.mpg"), Complete(reid, "file.mpg"), CompletedEvent(reid));
    }

    /// A TwoFileEvent in which no fault is injected, from its description to its last file.
    void ExpectPlainEvent(const std::string& reid) {
        Describe(reid);
        EXPECT_REACTION(FileComplete(reid, "m"), Complete(reid, "m"), RequestedLastFile(reid, "file.mpg"));
        Deliver(reid);
    }

    /// The DVR describes EVENT1 and delivers its first file, which brings this.
    void ReachLastFile(const Entries& next) {
        protocol.events = {"EVENT1", "EVENT2"};
        Describe("EVENT1");
        EXPECT_REACTION(FileComplete("EVENT1", "m", R"( hashCode="M")"), Complete("EVENT1", "m"), next);
    }

    /// The last file of EVENT1 is delivered with a hash, which brings this.
    void DeliverLastFile(const std::string& hash, const Entries& next) {
        EXPECT_REACTION(FileComplete("EVENT1", "file.mpg", " hashCode=\"" + hash + "\" length=\"9\""),
                        Complete("EVENT1", "file.mpg"), next);
    }

    /// The second delivery of that file, which is compared with the first.
    void DeliverAgain(const std::string& hash, const std::string& verdict) {
        EXPECT_REACTION(FileComplete("EVENT1", "file.mpg", " hashCode=\"" + hash + "\" length=\"9\""),
                        Logged(16, "rehash resulted in " + verdict + "  len=9"),
                        Complete("EVENT1", "file.mpg"), CompletedEvent("EVENT1"));
    }

    /// The DVR refuses both damaged requests for the last file, which brings this.
    void RefuseTwice(const Entries& next) {
        const Entry refusal = Logged(16, "INVALID_EVENT 'reid' attribute = 'EVENT1'");
        EXPECT_REACTION(InvalidEvent("EVENT1"), refusal, OneLeft(),
                        Logged(32, "processing 'invalidFile' option, cnt=1"),
                        Sent(GetFile("EVENT1", "e.mpg")));
        EXPECT_REACTION(InvalidEvent("EVENT1"), refusal,
                        Logged(2, "Received unexpected INVALID_EVENT message!"), next);
        EXPECT_EQ(protocol.invalidFileCount, 2U);
    }

    /// The DVR reports that the transfer has failed, which brings this.
    void ReportFailure(const Entries& next) {
        EXPECT_REACTION(TransportException("EVENT1"),
                        Logged(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'EVENT1'"),
                        Ran("rm /mnt/hd/velloranFail"), next);
    }

    /// EVENT1 is acknowledged, and EVENT2 exported without a fault.
    void ExpectNoFurtherFault() {
        EXPECT_REACTION(Acknowledgement("EVENT1"), Acknowledged("EVENT1"), Sent(NextEvent("EVENT2")));
        ExpectPlainEvent("EVENT2");
    }

    static Entries Damaged() {
        return Joined({OneLeft(), Logged(32, "processing 'invalidFile' option, cnt=0"),
                       Sent(GetFile("NT1", "file.mpg"))});
    }
    static Entries Marked() {
        return Joined({OneLeft(), Logged(32, "processing 'transportException' option"),
                       Ran("touch /mnt/hd/velloranFail"), Sent(GetFile("EVENT1", "file.mpg"))});
    }
    static Entries RequestedForRehash() {
        return Joined(
            {OneLeft(), Logged(32, "processing 'rehash' option"), Sent(GetFile("EVENT1", "file.mpg"))});
    }
    static Entries RequestedTwice() {
        return Joined({OneLeft(), Logged(32, "processing 'xferInProgress' option"),
                       Sent(GetFile("EVENT1", "file.mpg")), Sent(GetFile("EVENT1", "file.mpg"))});
    }

    void SetAllFaults() {
        protocol.invalidFile = true;
        protocol.transportException = true;
        protocol.rehash = true;
        protocol.xferInProgress = true;
    }
};

TEST_F(Export, OfTwoEventsRunsFromOkToDone) {
    EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
    EXPECT_REACTION(EventList("<event>E1</event><event>E2</event>"), Source(), Sent(NextEvent("E1")));
    ExpectPlainEvent("E1");
    EXPECT_REACTION(Acknowledgement("E1"), Acknowledged("E1"), Sent(NextEvent("E2")));
    ExpectPlainEvent("E2");
    EXPECT_REACTION(Acknowledgement("E2"), Acknowledged("E2"), Logged(16, "Sending DONE"), Sent(kDone));
    EXPECT_TRUE(protocol.events.empty());
    EXPECT_TRUE(protocol.filesToReceive.empty());
}

TEST_F(Export, SendsTheSameUnderEveryLevelMask) {
    for (const unsigned int mask : kMasks) {
        LogMask(mask);
        EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
        EXPECT_REACTION(EventList("<event>E1</event>"), Source(), Sent(NextEvent("E1")));
        ExpectPlainEvent("E1");
        EXPECT_REACTION(Acknowledgement("E1"), Acknowledged("E1"), Logged(16, "Sending DONE"), Sent(kDone));
    }
}

TEST_F(Export, GoesOnAfterADamagedEventIdentifierIsRefused) {
    protocol.invalidEvent = true;
    EXPECT_REACTION(EventList("<event>EVENT1</event>"), Source(),
                    Logged(32, "processing 'invalidEvent' option [event]"), Sent(NextEvent("NT1")));
    EXPECT_REACTION(InvalidEvent("NT1"), Logged(16, "INVALID_EVENT 'reid' attribute = 'NT1'"),
                    Sent(NextEvent("EVENT1")));
    ExpectPlainEvent("EVENT1");
    EXPECT_REACTION(EventList("<event>E2</event>"), Source(), Sent(NextEvent("EVENT1")));
}

TEST_F(Export, InjectsNoFaultIntoAnEventOfOneFile) {
    SetAllFaults();
    protocol.events = {"E1"};
    EXPECT_REACTION(Event("E1", R"(<recording-event><video><metadata name="m"/></video></recording-event>)"),
                    Reid("E1"), Logged(2, "Escaped XML for event contains no REID"),
                    Sent(GetFile("E1", "m")));
    EXPECT_REACTION(FileComplete("E1", "m"), Complete("E1", "m"), CompletedEvent("E1"));
    EXPECT_TRUE(protocol.invalidFile);
    EXPECT_TRUE(protocol.transportException);
    EXPECT_TRUE(protocol.rehash);
    EXPECT_TRUE(protocol.xferInProgress);
}

TEST_F(Export, PlaysTheBadFileFaultInTwoHalvesAndOnce) {
    protocol.invalidFile = true;
    ReachLastFile(Damaged());
    RefuseTwice(RequestedLastFile("EVENT1", "file.mpg"));
    Deliver("EVENT1");
    ExpectNoFurtherFault();
}

TEST_F(Export, DamagesTheIdentifierAgainWhenTheDamagedRequestIsServed) {
    protocol.invalidFile = true;
    ReachLastFile(Damaged());
    EXPECT_REACTION(FileComplete("NT1", "file.mpg"), Complete("NT1", "file.mpg"), Damaged());
}

TEST_F(Export, PlaysTheTransportFaultOnce) {
    protocol.transportException = true;
    ReachLastFile(Marked());
    ReportFailure(RequestedLastFile("EVENT1", "file.mpg"));
    Deliver("EVENT1");
    ExpectNoFurtherFault();
}

TEST_F(Export, InjectsTheTransportFaultAgainWhenTheFileIsDeliveredInstead) {
    protocol.transportException = true;
    ReachLastFile(Marked());
    DeliverLastFile("F", Marked());
    EXPECT_EQ(protocol.filesToReceive, (Files{{"EVENT1", "file.mpg"}, {"EVENT1", "file.mpg"}}));
    EXPECT_TRUE(protocol.transportException);
}

TEST_F(Export, PlaysTheRehashTestOnce) {
    protocol.rehash = true;
    ReachLastFile(RequestedForRehash());
    DeliverLastFile("F", RequestedLastFileWithNewHash("EVENT1", "file.mpg"));
    DeliverAgain("F", "same hash: 'F'");
    ExpectNoFurtherFault();
}

TEST_F(Export, PlaysTheDoubleRequestOnce) {
    protocol.xferInProgress = true;
    ReachLastFile(RequestedTwice());
    EXPECT_REACTION(Msg("XFER_IN_PROGRESS", R"( reid="EVENT1")"),
                    Logged(16, "XFER_IN_PROGRESS 'reid' attribute = 'EVENT1'"));
    Deliver("EVENT1");
    ExpectNoFurtherFault();
}

TEST_F(Export, AsksForNoNewHashWhenTheDoubleRequestFollowsTheRehashTest) {
    protocol.rehash = true;
    protocol.xferInProgress = true;
    ReachLastFile(RequestedForRehash());
    DeliverLastFile("F", RequestedTwice());
    EXPECT_TRUE(protocol.rehashPending);
    DeliverAgain("G", "new hash: old='F'  new='G'");
    EXPECT_FALSE(protocol.rehashPending);
    ExpectNoFurtherFault();
}

TEST_F(Export, PlaysAllFaultsInTurn) {
    SetAllFaults();
    ReachLastFile(Damaged());
    RefuseTwice(Marked());
    ReportFailure(RequestedForRehash());
    DeliverLastFile("F", RequestedTwice());
    DeliverAgain("F", "same hash: 'F'");
    ExpectNoFurtherFault();
}

TEST_F(Export, RefusesTheIntactFileWhileADamagedOneIsAwaited) {
    protocol.invalidFile = true;
    ReachLastFile(Damaged());
    EXPECT_REACTION(FileComplete("EVENT1", "file.mpg"),
                    Logged(1, "invalid file in FILE_COMPLETE: " + FileComplete("EVENT1", "file.mpg")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"NT1", "file.mpg"}, {"EVENT1", "file.mpg"}}));
}

TEST_F(Export, SendsEveryFrameWithAWrongPrefixWhenTheSizeErrorIsOn) {
    protocol.sizeError = true;
    EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending GET_EVENT_LIST"),
                    SentWithSizeError(kGetEventList));
    EXPECT_REACTION(EventList("<event>E1</event>"), Source(), SentWithSizeError(NextEvent("E1")));
    EXPECT_REACTION(TwoFileEvent("E1"), Reid("E1"), Logged(2, "Escaped XML for event contains no REID"),
                    SentWithSizeError(GetFile("E1", "m")));
}

}  // namespace
