#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

Entry Source() {
    return Logged(16, "'source' attribute = 'DVR 7'");
}

class EVENT_LIST : public Dialogue {};

TEST_F(EVENT_LIST, QueuesItsEventsAndAsksForTheFirst) {
    EXPECT_REACTION(EventList("<event>E1</event><event>E2</event><event>E3</event>"), Source(),
                    Sent(NextEvent("E1")));
    EXPECT_EQ(protocol.events, (Events{"E1", "E2", "E3"}));
    EXPECT_TRUE(protocol.eventRequestPending);
    EXPECT_TRUE(protocol.filesToReceive.empty());
}

TEST_F(EVENT_LIST, WithoutSourceIsReportedAndTakenAllTheSame) {
    EXPECT_REACTION(Msg("EVENT_LIST", "", "<events><event>E1</event></events>"),
                    Logged(2, "'source' attribute missing from EVENT_LIST message"), Sent(NextEvent("E1")));
    EXPECT_EQ(protocol.events, Events{"E1"});
}

TEST_F(EVENT_LIST, WithAnEmptySourceHasOne) {
    EXPECT_REACTION(Msg("EVENT_LIST", R"( source="")", "<events><event>E1</event></events>"),
                    Logged(16, "'source' attribute = ''"), Sent(NextEvent("E1")));
}

TEST_F(EVENT_LIST, WithoutEventsInItsContainerHasNothingToAskFor) {
    for (const std::string children : {"", "<events/>", "<events><note>N</note></events>",
                                       "<event>E1</event>", "<events><!--event--><event>E1</event></events>",
                                       "<!--events--><events><event>E1</event></events>"}) {
        EXPECT_REACTION(Msg("EVENT_LIST", R"( source="DVR 7")", children), Source(),
                        Logged(2, "could not find 'event' tag in EVENT_LIST message"),
                        Logged(4, "Got EVENT_LIST message with no events"));
    }
    EXPECT_TRUE(protocol.events.empty());
    EXPECT_FALSE(protocol.eventRequestPending);
}

TEST_F(EVENT_LIST, WithoutSourceAndEventsReportsBoth) {
    EXPECT_REACTION(Msg("EVENT_LIST"), Logged(2, "'source' attribute missing from EVENT_LIST message"),
                    Logged(2, "could not find 'event' tag in EVENT_LIST message"),
                    Logged(4, "Got EVENT_LIST message with no events"));
}

TEST_F(EVENT_LIST, WithOnlyEmptyEventsHasNothingToAskFor) {
    EXPECT_REACTION(EventList("<event /><event></event>"), Source(), Logged(2, "'event' found with no text"),
                    Logged(2, "'event' found with no text"),
                    Logged(4, "Got EVENT_LIST message with no events"));
    EXPECT_TRUE(protocol.events.empty());
}

TEST_F(EVENT_LIST, WithoutEventsAsksAgainForTheEventInProgress) {
    protocol.events = {"E1", "E2"};
    EXPECT_REACTION(EventList(""), Source(), Logged(2, "could not find 'event' tag in EVENT_LIST message"),
                    Sent(NextEvent("E1")));
    EXPECT_EQ(protocol.events, (Events{"E1", "E2"}));
}

TEST_F(EVENT_LIST, SkipsAnEventWithoutText) {
    EXPECT_REACTION(EventList("<event>E1</event><event></event><event>E2</event>"), Source(),
                    Logged(2, "'event' found with no text"), Sent(NextEvent("E1")));
    EXPECT_EQ(protocol.events, (Events{"E1", "E2"}));
}

TEST_F(EVENT_LIST, CountsBlanksAndTextAfterAChildAsNoText) {
    for (const std::string event :
         {"<event />", "<event>  </event>", "<event><b/>E1</event>", "<event><!-- c -->E1</event>"}) {
        protocol.events.clear();
        EXPECT_REACTION(EventList(event + "<event>E2</event>"), Source(),
                        Logged(2, "'event' found with no text"), Sent(NextEvent("E2")));
        EXPECT_EQ(protocol.events, Events{"E2"});
    }
}

TEST_F(EVENT_LIST, TakesTextThatTravelsAsCdata) {
    EXPECT_REACTION(EventList("<event><![CDATA[<E1>]]></event>"), Source(), Sent(NextEvent("&lt;E1&gt;")));
    EXPECT_EQ(protocol.events, Events{"<E1>"});
}

TEST_F(EVENT_LIST, TakesASiblingOfAnotherNameForAnEvent) {
    EXPECT_REACTION(EventList("<event>E1</event><note>N</note>"), Source(), Sent(NextEvent("E1")));
    EXPECT_EQ(protocol.events, (Events{"E1", "N"}));
}

TEST_F(EVENT_LIST, StartsAtItsFirstEvent) {
    EXPECT_REACTION(EventList("<note>N</note><event>E1</event>"), Source(), Sent(NextEvent("E1")));
    EXPECT_EQ(protocol.events, Events{"E1"});
}

TEST_F(EVENT_LIST, ReportsSiblingsThatAreNoElements) {
    EXPECT_REACTION(EventList("<event>E1</event><!-- comment --><event>E2</event>text<event>E3</event>"),
                    Source(), Logged(2, "'event' found with no text"),
                    Logged(2, "'event' found with no text"), Sent(NextEvent("E1")));
    EXPECT_EQ(protocol.events, (Events{"E1", "E2", "E3"}));
}

TEST_F(EVENT_LIST, TakesOnlyItsFirstContainer) {
    const std::string text = Msg("EVENT_LIST", R"( source="DVR 7")",
                                 "<events><event>E1</event></events><events><event>E2</event></events>");
    EXPECT_REACTION(text, Source(), Sent(NextEvent("E1")));
    EXPECT_EQ(protocol.events, Events{"E1"});
}

TEST_F(EVENT_LIST, AppendsToTheEventsStillQueuedAndAsksAgainForTheFront) {
    protocol.events = {"E1", "E2"};
    EXPECT_REACTION(EventList("<event>E3</event><event>E1</event>"), Source(), Sent(NextEvent("E1")));
    EXPECT_EQ(protocol.events, (Events{"E1", "E2", "E3", "E1"}));
}

TEST_F(EVENT_LIST, IsTakenInWithoutAnswerByItsHandler) {
    TiXmlDocument document;
    document.Parse(EventList("<event>E1</event>").c_str());
    protocol.Handle_EVENT_LIST(document);
    EXPECT_JOURNAL(Source());
    EXPECT_EQ(protocol.events, Events{"E1"});
    EXPECT_FALSE(protocol.eventRequestPending);
}

/// With the damaged event identifier switched on.
class EVENT_LIST_WithInvalidEvent : public Dialogue {
 protected:
    EVENT_LIST_WithInvalidEvent() { protocol.invalidEvent = true; }

    static Entry Fault() { return Logged(32, "processing 'invalidEvent' option [event]"); }
};

TEST_F(EVENT_LIST_WithInvalidEvent, AsksForACopyOfTheFirstWithoutItsFirstThreeCharacters) {
    EXPECT_REACTION(EventList("<event>ABC123</event><event>X9</event>"), Source(), Fault(),
                    Sent(NextEvent("123")));
    EXPECT_EQ(protocol.events, (Events{"123", "ABC123", "X9"}));
    EXPECT_TRUE(protocol.invalidEvent);
    EXPECT_TRUE(protocol.eventRequestPending);
}

TEST_F(EVENT_LIST_WithInvalidEvent, EmptiesAnIdentifierOfUpToThreeCharacters) {
    for (const std::string id : {"X", "X9", "X91"}) {
        protocol.events.clear();
        EXPECT_REACTION(EventList("<event>" + id + "</event>"), Source(), Fault(), Sent(NextEvent("")));
        EXPECT_EQ(protocol.events, (Events{"", id}));
    }
}

TEST_F(EVENT_LIST_WithInvalidEvent, HasNothingToDamageInAnEmptyList) {
    EXPECT_REACTION(EventList("<event />"), Source(), Logged(2, "'event' found with no text"),
                    Logged(4, "Got EVENT_LIST message with no events"));
    EXPECT_TRUE(protocol.events.empty());
    EXPECT_TRUE(protocol.invalidEvent);
}

TEST_F(EVENT_LIST_WithInvalidEvent, PutsOneMoreBrokenCopyInFrontEachTime) {
    EXPECT_REACTION(EventList("<event>ABCDEFG</event>"), Source(), Fault(), Sent(NextEvent("DEFG")));
    EXPECT_REACTION(EventList("<event>X9</event>"), Source(), Fault(), Sent(NextEvent("G")));
    EXPECT_EQ(protocol.events, (Events{"G", "DEFG", "ABCDEFG", "X9"}));
    EXPECT_REACTION(EventList(""), Source(), Logged(2, "could not find 'event' tag in EVENT_LIST message"),
                    Fault(), Sent(NextEvent("")));
    EXPECT_EQ(protocol.events, (Events{"", "G", "DEFG", "ABCDEFG", "X9"}));
}

class NEXT_EVENT : public Dialogue {};

TEST_F(NEXT_EVENT, IsSentWithoutALineOfItsOwn) {
    protocol.SendNextEvent("E1");
    EXPECT_JOURNAL(Sent(R"(<msg req="NEXT_EVENT" reid="E1" protocolVersion="2.0" />)"));
    EXPECT_TRUE(protocol.eventRequestPending);
    EXPECT_TRUE(protocol.events.empty());
}

TEST_F(NEXT_EVENT, CarriesAnEmptyIdentifier) {
    protocol.SendNextEvent("");
    EXPECT_JOURNAL(Sent(R"(<msg req="NEXT_EVENT" reid="" protocolVersion="2.0" />)"));
}

TEST_F(NEXT_EVENT, EscapesTheIdentifier) {
    protocol.SendNextEvent("<a&\"b\">");
    EXPECT_JOURNAL(
        Sent(R"(<msg req="NEXT_EVENT" reid='&lt;a&amp;&quot;b&quot;&gt;' protocolVersion="2.0" />)"));
}

}  // namespace
