#include <gtest/gtest.h>

#include <pugixml.hpp>

#include "rig/log/HarnessText.h"
#include "rig/log/WorkLists.h"

// The lists of the harness, rebuilt as it builds them.

namespace rig::log {
namespace {

using Events = std::deque<std::string>;
using Files = std::deque<WorkLists::File>;

/// A message as the reader of a log hands it on.
struct Read {
    explicit Read(const std::string& text) { LoadAsTheHarness(text, document); }
    pugi::xml_node Root() const { return document.child("msg"); }

    pugi::xml_document document;
};

Read EventOf(const std::string& streams) {
    return Read("<msg reid='E1'><xmlFile><![CDATA[<recording-event><video><metadata name='m'/><streams>" +
                streams + "</streams></video></recording-event>]]></xmlFile></msg>");
}

TEST(WorkLists, TakeEverySiblingOfTheFirstEventForAnEvent) {
    WorkLists lists;
    lists.TakeEventList(
        Read("<msg><events><x>no</x>\n<event> A\n 1 </event><x>B</x><!-- --><event/></events></msg>").Root());
    EXPECT_EQ(lists.events, (Events{"A 1", "B"}));
}

TEST(WorkLists, TakeNothingWhereTheListHasNoEvent) {
    WorkLists lists;
    const Listed listed = lists.TakeEventList(Read("<msg><events><string>A</string></events></msg>").Root());
    EXPECT_EQ(lists.events, Events());
    EXPECT_TRUE(listed.doubled.empty());
}

TEST(WorkLists, TakeEverySiblingOfTheFirstStreamForAStream) {
    WorkLists lists;
    const Read event =
        EventOf("<x><f name='no'/></x><stream><f name='a'/></stream><!-- --><x><f name='b'/></x>");
    EXPECT_EQ(lists.TakeEvent(event.Root()).files, 3U);
    EXPECT_EQ(lists.files, (Files{{"E1", "m"}, {"E1", "a"}, {"E1", "b"}}));
}

TEST(WorkLists, TakeACommentInsideAStreamForNoFile) {
    WorkLists lists;
    const Read event = EventOf("<stream><!-- front --><f name='a'/></stream>");
    EXPECT_EQ(lists.TakeEvent(event.Root()).notFiles, 1U);
}

TEST(WorkLists, TakeEverySiblingOfTheFirstStringForADescription) {
    WorkLists lists;
    const std::string a = "&lt;recording-event reid='A'/&gt;";
    lists.TakeXml(Read("<msg><xmlFile><x>" + a + "</x></xmlFile></msg>").Root());
    EXPECT_EQ(lists.files, Files());
    const Listed listed = lists.TakeXml(
        Read("<msg><xmlFile><string>" + a + "</string><x>" + a + "</x></xmlFile></msg>").Root());
    EXPECT_EQ(listed.doubled, (std::vector<std::string>{"A"}));
}

}  // namespace
}  // namespace rig::log
