#include <gtest/gtest.h>

#include <stdexcept>

#include "rig/fault/Plan.h"
#include "tests/rig/fault/Requests.h"

namespace {

using namespace rig::fault;

Order Ordered(const std::string& fault, const std::string& on = "", const std::string& at = "") {
    Order order = OrderOf(fault);
    if (!on.empty()) {
        PlaceOn(order, on);
    }
    if (!at.empty()) {
        PlaceAt(order, at);
    }
    return order;
}

/// What a plan says to a whole export of 2.0: the numbers of the messages on which it acts, from 0.
std::vector<std::size_t> ActsOn(const Order& order, const std::vector<std::string>& messages) {
    Plan plan({order}, 1);
    std::vector<std::size_t> acted;
    for (std::size_t at = 0; at < messages.size(); ++at) {
        if (plan.For(messages[at])) {
            acted.push_back(at);
        }
    }
    return acted;
}

std::string GetFile(const std::string& event, const std::string& file) {
    return R"(<msg req="GET_FILE" reid=")" + event + R"(" path=")" + event + R"(" file=")" + file +
           R"(" protocolVersion="2.0" />)";
}

const std::vector<std::string>& Export() {
    static const std::vector<std::string> messages = {
        R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0" />)",
        R"(<msg req="NEXT_EVENT" reid="E1" protocolVersion="2.0" />)",
        GetFile("E1", "a"),
        GetFile("E1", "b"),
        R"(<msg req="NEXT_EVENT" reid="E2" protocolVersion="2.0" />)",
        GetFile("E2", "a"),
    };
    return messages;
}

std::string ComplaintAbout(const std::string& fault, const std::string& on) {
    try {
        Ordered(fault, on);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

using Numbers = std::vector<std::size_t>;

TEST(FaultPlan, ActsOnceOnTheFirstMessageThatTheFaultCanActOn) {
    EXPECT_EQ(Numbers({0}), ActsOn(Ordered("split=2"), Export()));
    EXPECT_EQ(Numbers({2}), ActsOn(Ordered("file-name"), Export()));
}

TEST(FaultPlan, ActsOnEachMessageIfTheFaultAlwaysDoes) {
    EXPECT_EQ(Numbers({0, 1, 2, 3, 4, 5}), ActsOn(Ordered("latency"), Export()));
    EXPECT_EQ(Numbers({2, 3, 5}), ActsOn(Ordered("latency", "GET_FILE"), Export()));
    EXPECT_EQ(Numbers({3}), ActsOn(Ordered("latency", "GET_FILE:2"), Export()));
}

TEST(FaultPlan, ActsOnTheMessageThatIsOrdered) {
    EXPECT_EQ(Numbers({2}), ActsOn(Ordered("split=2", "GET_FILE"), Export()));
    EXPECT_EQ(Numbers({5}), ActsOn(Ordered("split=2", "GET_FILE:3"), Export()));
    EXPECT_EQ(Numbers({}), ActsOn(Ordered("split=2", "GET_FILE:4"), Export()));
    EXPECT_EQ(Numbers({}), ActsOn(Ordered("split=2", "GET_XML"), Export()));
}

TEST(FaultPlan, ActsOnTheEventAndTheFileThatAreOrdered) {
    EXPECT_EQ(Numbers({4}), ActsOn(Ordered("split=2", "", "E2"), Export()));
    EXPECT_EQ(Numbers({3}), ActsOn(Ordered("split=2", "", "E1:b"), Export()));
    EXPECT_EQ(Numbers({5}), ActsOn(Ordered("split=2", "GET_FILE", "E2"), Export()));
}

TEST(FaultPlan, WaitsForAMessageInWhichThereIsSomethingToChange) {
    EXPECT_EQ(Numbers({0}), ActsOn(Ordered("split=49"), Export()));
    EXPECT_EQ(Numbers({1}), ActsOn(Ordered("split=55"), Export()));
}

TEST(FaultPlan, KnowsAnotherEventFromTheDvrsList) {
    Plan plan({Ordered("file-of-other-event")}, 1);
    EXPECT_FALSE(plan.For(GetFile("E1", "a")));
    plan.Note(
        R"(<msg req="EVENT_LIST" source="x"><events><event>E1</event><event>E2</event></events></msg>)");
    const auto played = plan.For(GetFile("E1", "a"));
    ASSERT_TRUE(played);
    EXPECT_NE(std::string::npos, played->script.at(0).bytes.find(R"(reid="E2")"));
}

TEST(FaultPlan, ActsOnTheCallThatIsOrdered) {
    Plan plan({Ordered("reset-call", "CALL:2")}, 1);
    EXPECT_FALSE(plan.ForCall());
    EXPECT_TRUE(plan.ForCall());
    EXPECT_FALSE(plan.ForCall());
    EXPECT_FALSE(Plan({Ordered("reset", "GET_FILE")}, 1).ForCall());
}

TEST(FaultPlan, RepeatsItsRandomChoicesWithTheSameSeed) {
    const auto sent = [](std::uint32_t seed) {
        Plan plan({Ordered("split-at-random")}, seed);
        std::vector<std::string> pieces;
        const auto played = plan.For(Export()[0]);
        for (const Act& act : played->script) {
            pieces.push_back(act.bytes);
        }
        return pieces;
    };
    EXPECT_EQ(sent(7), sent(7));
    EXPECT_NE(sent(7), sent(8));
}

TEST(FaultPlan, SaysWhatIsWrongWithAnOrder) {
    EXPECT_EQ("--fault: expected a fault that --list-faults gives, found 'splat'",
              ComplaintAbout("splat=1", ""));
    EXPECT_EQ("--fault two-roots: expected no value, found '1'", ComplaintAbout("two-roots=1", ""));
    EXPECT_EQ("--fault close: expected in-text, before, in-prefix, after, found 'soon'",
              ComplaintAbout("close=soon", ""));
    EXPECT_EQ("--on: expected REQUEST or REQUEST:N with N above 0 and one of GET_FILE, found 'GET_FILE:0'",
              ComplaintAbout("repeat-file", "GET_FILE:0"));
    EXPECT_EQ("--on: expected REQUEST or REQUEST:N with N above 0 and one of GET_FILE, found 'DONE'",
              ComplaintAbout("repeat-file", "DONE"));
}

}  // namespace
