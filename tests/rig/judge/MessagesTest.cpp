#include <gtest/gtest.h>

#include "tests/rig/judge/Judging.h"
#include "tests/rig/judge/MadeUpLog.h"

// What the DVR's messages show though the harness says nothing of it, or something else.

namespace {

using rig::result::Verdict;

/// A log of 2.0 up to and with the request that asks for the list.
MadeUpLog Opened() {
    MadeUpLog log(2);
    log.Dvr("<msg req=\"OK\"/>").Say("got an OK, sending GET_EVENT_LIST");
    log.Ask("<msg req=\"GET_EVENT_LIST\" protocolVersion=\"2.0\" />");
    return log;
}

rig::result::RunResult RunOf(const MadeUpLog& log) {
    return Judged(log.Text()).runs.at(0);
}

/// Lists the events so, and the harness finds none.
rig::result::RunResult Listed(const std::string& list) {
    MadeUpLog log = Opened();
    log.Dvr("<msg req=\"EVENT_LIST\" source=\"s\">" + list + "</msg>").Say("'source' attribute = 's'");
    log.Say("could not find 'event' tag in EVENT_LIST message").Say("Got EVENT_LIST message with no events");
    return RunOf(log.After(9).Say("shutting down"));
}

TEST(EventList, FailsWhereTheHarnessDoesNotFindItsEvents) {
    const auto run = Listed("<events><string>E1</string></events>");
    EXPECT_EQ(With(Verdict::Fail, run), "event-list.events");
    EXPECT_EQ(
        FoundBy("event-list.events", run),
        "EVENT_LIST with its events where the harness does not look for them (events/string instead of "
        "events/event: <msg req=\"EVENT_LIST\" source=\"s\"><events><string>E1</string></events></msg>)");
    EXPECT_EQ(With(Verdict::Fail, Listed("<list><event>E1</event></list>")), "event-list.events");
    EXPECT_EQ(With(Verdict::Fail, Listed("<event>E1</event>")), "event-list.events");
}

TEST(EventList, LeavesOpenWhetherADvrWithoutEventsHasNone) {
    for (const char* const list : {"", "<events/>", "<events><!-- none --></events>", "<events> </events>"}) {
        EXPECT_EQ(With(Verdict::Inconclusive, Listed(list)), "event-list.events") << list;
        EXPECT_EQ(With(Verdict::Fail, Listed(list)), "") << list;
    }
}

/// The stored export with -r, whose answer to the request for a new hash has these attributes instead.
rig::result::RunResult Rehashed(const std::string& attributes, const std::string& statement) {
    std::string log = RealLog("rehash-2.0");
    const std::size_t same = log.find("rehash resulted in same hash: ");
    log.replace(same, log.find('\n', same) - same, statement);
    const std::size_t start = log.rfind("length=", same);
    const std::size_t end = log.find("/>", start);
    log.replace(start, end - start, attributes + std::string(end - start - attributes.size(), ' '));
    return Judged(log).runs.at(0);
}

TEST(NewHash, FailsWhereItIsEmpty) {
    const auto run =
        Rehashed("length=\"15\" hashCode=\"\"", "rehash resulted in new hash: old='x'  new=''  len=15");
    EXPECT_EQ(With(Verdict::Fail, run), "rehash.attributes");
    EXPECT_EQ(FoundBy("rehash.attributes", run).find("an answer with an empty hashCode (<msg req="), 0U);
    EXPECT_EQ(With(Verdict::NotReached, run), "rehash.same-hash");
}

TEST(NewHash, FailsWithAnEmptyLength) {
    const auto run = Rehashed("length=\"\" hashCode=\"x\"", "rehash resulted in same hash: 'x'  len=");
    EXPECT_EQ(With(Verdict::Fail, run), "rehash.attributes");
    EXPECT_EQ(FoundBy("rehash.attributes", run).find("an answer with an empty length (<msg req="), 0U);
}

TEST(Prefix, FailsWhereTheTextDoesNotComeThoughTheHarnessWaits) {
    const auto run = RunOf(Opened().Say("expecting a message of 7680 bytes").After(12).Say("shutting down"));
    EXPECT_EQ(With(Verdict::Fail, run), "messages.framed requests.answered export.done");
    EXPECT_EQ(FoundBy("messages.framed", run)
                  .find("a message that does not come to the end that its length prefix "
                        "announces (prefix 80 3c, which announces 7680 bytes"),
              0U);
    EXPECT_EQ(FoundBy("requests.answered", run)
                  .find("no EVENT_LIST to GET_EVENT_LIST: the DVR began a message and did not end it ("),
              0U);
}

TEST(Prefix, ProvesNothingYetWhereTheHarnessMayStillRead) {
    const auto run =
        RunOf(Opened().Say("expecting a message of 768000 bytes").After(12).Say("shutting down"));
    EXPECT_EQ(With(Verdict::Fail, run).find("messages.framed"), std::string::npos);
}

TEST(Prefix, FailsBeforeTheFirstMessageWithoutClaimThatNothingCame) {
    MadeUpLog log(1);
    const auto run = RunOf(log.Say("expecting a message of 7680 bytes").After(12).Say("shutting down"));
    EXPECT_EQ(With(Verdict::Fail, run), "messages.framed");
}

TEST(Prefix, FailsWhereTheEndOfTheConnectionProvesItWrong) {
    MadeUpLog log = Opened();
    log.Say("expecting a message of 7680 bytes").Say("EOF at: 127  exp=7680").Say("read success:127");
    EXPECT_EQ(With(Verdict::Fail, RunOf(log)), "connection.kept messages.framed");
}

TEST(Prefix, FailsWhereItCountsCharacters) {
    MadeUpLog log(1);
    log.Dvr("<msg req=\"OK\" name=\"\xc3\xa4\"></msg");
    log.Say("error: 1:Error reading end tag.").Say("row: 1:20");
    EXPECT_EQ(With(Verdict::Fail, RunOf(log)), "messages.framed messages.parsed");
}

TEST(MalformedMessage, DoesNotBreakOffBeforeItsNewline) {
    MadeUpLog log(1);
    log.Dvr("<msg req=\"OK\"><a></msg>\\n").Say("error: 1:Error reading end tag.").Say("row: 1:20");
    EXPECT_EQ(
        FoundBy("messages.parsed", RunOf(log)).find("a message, or a description in one, that is not XML"),
        0U);
}

TEST(Names, ThatLookAlikeAreShownInBytes) {
    MadeUpLog log = Opened();
    log.Dvr("<msg req=\"EVENT_LIST\" source=\"s\"><events><event>caf\xc3\xa9</event></events></msg>");
    log.Ask("<msg req=\"NEXT_EVENT\" reid=\"caf\xc3\xa9\" protocolVersion=\"2.0\" />");
    log.Dvr("<msg req=\"EVENT\" reid=\"cafe\xcc\x81\"/>");
    log.Say("Handle_EVENT_msg: 'reid' attribute incorrect: exp='caf\xc3\xa9'  act='cafe\xcc\x81'");
    const auto run = RunOf(log.Say("Got EVENT message with no files to receive"));
    EXPECT_EQ(FoundBy("event.reid", run),
              "EVENT about another event than the one asked for, or about none (cafe\xcc\x81 instead of "
              "caf\xc3\xa9; "
              "from byte 4 on: 65 cc 81 instead of c3 a9)");
}

}  // namespace
