#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

/// The rehash test has asked for a new hash of the event's last file, whose hash was OLD before.
class RehashTest : public Dialogue {
 protected:
    RehashTest() {
        protocol.events = {"E1"};
        protocol.filesToReceive = {{"E1", "x"}, {"E1", "c"}, {"E1", "c"}};
        Say(FileComplete("E1", "x", R"( hashCode="OLD")"));
        protocol.filesToReceive = {{"E1", "c"}};
        protocol.rehashPending = true;
        TakeJournal();
    }

    static Entry Same(const std::string& hash, const std::string& length) {
        return Logged(16, "rehash resulted in same hash: '" + hash + "'  len=" + length);
    }
    static Entry New(const std::string& before, const std::string& now, const std::string& length) {
        return Logged(16,
                      "rehash resulted in new hash: old='" + before + "'  new='" + now + "'  len=" + length);
    }
    static Entry NoLength() { return Logged(2, "'length' attribute not present when requested"); }
    static Entry NoHash() { return Logged(2, "'hashCode' attribute not present when requested"); }

    /// Shows which hash is kept, through the answer to another rehash test.
    void ExpectKeptHash(const std::string& hash) {
        protocol.filesToReceive = {{"E1", "c"}};
        protocol.rehashPending = true;
        EXPECT_REACTION(FileComplete("E1", "c", R"( hashCode="probe" length="0")"), New(hash, "probe", "0"),
                        GotFileComplete("E1", "c"), CompletedEvent("E1"));
    }
};

/// The answer to the request for a new hash.
struct Answer {
    std::string name;
    std::string attributes;
    std::vector<Entry> lines;
    std::string keptHash;
};

void PrintTo(const Answer& answer, std::ostream* stream) {
    *stream << answer.attributes;
}

class RehashAnswer : public RehashTest, public testing::WithParamInterface<Answer> {
 public:
    static const std::vector<Answer>& All();
};

TEST_P(RehashAnswer, IsReportedAndEndsTheTest) {
    EXPECT_REACTION(FileComplete("E1", "c", GetParam().attributes), GetParam().lines,
                    GotFileComplete("E1", "c"), CompletedEvent("E1"));
    EXPECT_FALSE(protocol.rehashPending);
    ExpectKeptHash(GetParam().keptHash);
}

const std::vector<Answer>& RehashAnswer::All() {
    static const std::vector<Answer> answers = {
        {"WithTheSameHash", R"( hashCode="OLD" length="1024")", {Same("OLD", "1024")}, "OLD"},
        {"WithANewHash", R"( hashCode="NEW" length="1024")", {New("OLD", "NEW", "1024")}, "NEW"},
        {"WithALengthAsItIs", R"( hashCode="OLD" length="a &amp; b")", {Same("OLD", "a & b")}, "OLD"},
        {"WithTheSameHashAndNoLength", R"( hashCode="OLD")", {NoLength(), Same("OLD", "")}, "OLD"},
        {"WithANewHashAndNoLength", R"( hashCode="NEW")", {NoLength(), New("OLD", "NEW", "")}, "NEW"},
        {"WithoutHash", R"( length="1024")", {NoHash()}, "OLD"},
        {"WithoutLengthAndHash", "", {NoLength(), NoHash()}, "OLD"}};
    return answers;
}

INSTANTIATE_TEST_SUITE_P(Every, RehashAnswer, testing::ValuesIn(RehashAnswer::All()),
                         [](const auto& answer) { return answer.param.name; });

TEST_F(RehashTest, ComparesEveryByteOfTheHash) {
    for (const std::string hash : {"old", "OLD ", "OL", ""}) {
        Say(FileComplete("E1", "other", R"( hashCode="OLD")"));
        TakeJournal();
        protocol.filesToReceive = {{"E1", "c"}};
        protocol.rehashPending = true;
        EXPECT_REACTION(FileComplete("E1", "c", R"( hashCode=")" + hash + R"(" length="1")"),
                        New("OLD", hash, "1"), GotFileComplete("E1", "c"), CompletedEvent("E1"));
    }
}

TEST_F(RehashTest, IsOverAlsoWhenAnotherFileIsReported) {
    const std::string text = FileComplete("E1", "wrong", R"( hashCode="NEW" length="5")");
    EXPECT_REACTION(text, New("OLD", "NEW", "5"), InvalidFileComplete(text));
    EXPECT_FALSE(protocol.rehashPending);
    EXPECT_EQ(protocol.filesToReceive, (Files{{"E1", "c"}}));
    ExpectKeptHash("NEW");
}

TEST_F(RehashTest, WaitsWhileTheCopyOfTheFileIsStillQueued) {
    protocol.filesToReceive = {{"E1", "c"}, {"E1", "c"}};
    EXPECT_REACTION(FileComplete("E1", "c", R"( hashCode="H" length="5")"), GotFileComplete("E1", "c"),
                    RequestedLastFileWithNewHash("E1", "c"));
    EXPECT_TRUE(protocol.rehashPending);
    EXPECT_REACTION(FileComplete("E1", "c", R"( hashCode="H" length="5")"), Same("H", "5"),
                    GotFileComplete("E1", "c"), CompletedEvent("E1"));
    EXPECT_FALSE(protocol.rehashPending);
}

TEST_F(RehashTest, WaitsWhileNoFileIsQueued) {
    protocol.filesToReceive.clear();
    const std::string text = FileComplete("E1", "c", R"( hashCode="H" length="5")");
    EXPECT_REACTION(text, InvalidFileComplete(text));
    EXPECT_TRUE(protocol.rehashPending);
}

TEST_F(RehashTest, IsNotTouchedByACompletionWithoutFileOrReid) {
    for (const std::string name : {R"( reid="E1")", R"( file="c")"}) {
        EXPECT_REACTION(Msg("FILE_COMPLETE", name + R"( hashCode="NEW" length="5")"),
                        IncompleteFileComplete());
        EXPECT_TRUE(protocol.rehashPending);
    }
    ExpectKeptHash("OLD");
}

/// Which hash a rehash test will compare with.
class KeptHash : public RehashTest {
 protected:
    KeptHash() { protocol.rehashPending = false; }
};

TEST_F(KeptHash, IsNotComparedOutsideTheRehashTest) {
    EXPECT_REACTION(FileComplete("E1", "c", R"( hashCode="NEW" length="5")"), GotFileComplete("E1", "c"),
                    CompletedEvent("E1"));
    ExpectKeptHash("NEW");
}

TEST_F(KeptHash, StaysWhenACompletionHasNone) {
    EXPECT_REACTION(FileComplete("E1", "c"), GotFileComplete("E1", "c"), CompletedEvent("E1"));
    ExpectKeptHash("OLD");
}

TEST_F(KeptHash, IsReplacedByThatOfAnotherFile) {
    const std::string text = FileComplete("E9", "wrong", R"( hashCode="NEW")");
    EXPECT_REACTION(text, InvalidFileComplete(text));
    ExpectKeptHash("NEW");
}

TEST_F(KeptHash, IsReplacedByThatOfAFileThatNobodyAwaits) {
    protocol.filesToReceive.clear();
    const std::string text = FileComplete("E1", "c", R"( hashCode="NEW")");
    EXPECT_REACTION(text, InvalidFileComplete(text));
    ExpectKeptHash("NEW");
}

TEST_F(KeptHash, IsReplacedByAnEmptyOne) {
    EXPECT_REACTION(FileComplete("E1", "c", R"( hashCode="")"), GotFileComplete("E1", "c"),
                    CompletedEvent("E1"));
    ExpectKeptHash("");
}

TEST_F(KeptHash, IsSharedByAllProtocolObjects) {
    VelProtocol_2_0 other(TestOptions(), kSocket);
    other.filesToReceive = {{"E5", "f"}};
    other.events = {"E5"};
    const std::string text = FileComplete("E5", "f", R"( hashCode="OTHER")");
    Feed(text);
    EXPECT_EQ(other.HandleMessage(), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received(text), GotFileComplete("E5", "f"), CompletedEvent("E5"));
    ExpectKeptHash("OTHER");
}

}  // namespace
