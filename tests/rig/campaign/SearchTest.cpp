#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>

#include "rig/campaign/Search.h"

namespace rig::campaign {
namespace {

std::vector<std::string> Ids(std::uint32_t seed, int dialect, std::size_t count) {
    Sequences sequences(seed, dialect);
    std::vector<std::string> ids;
    while (ids.size() < count) {
        ids.push_back(IdOf(sequences.Next()));
    }
    return ids;
}

/// Whether a sequence has a fault of that name, with a number from `least`.
bool Has(const Sequence& sequence, const std::string& name, int least) {
    return std::any_of(sequence.begin(), sequence.end(), [&](const fault::FaultCase& one) {
        return one.fault->name == name && (least == 0 || std::stoi(one.value) >= least);
    });
}

TEST(Search, FollowsFromTheSeed) {
    EXPECT_EQ(Ids(7, 0, 50), Ids(7, 0, 50));
    EXPECT_NE(Ids(7, 0, 50), Ids(8, 0, 50));
}

TEST(Search, TriesEveryFaultOfTheDialectInSequencesOfOneToFour) {
    Sequences sequences(1, 2);
    std::set<std::string> faults;
    std::set<std::size_t> sizes;
    for (int tries = 0; tries < 3000; ++tries) {
        const Sequence sequence = sequences.Next();
        sizes.insert(sequence.size());
        for (const fault::FaultCase& one : sequence) {
            EXPECT_EQ(2, one.dialect);
            EXPECT_TRUE(fault::Takes(*one.fault, one.value)) << one.Id();
            faults.insert(one.fault->name);
        }
    }
    const auto ofDialect = std::count_if(fault::Faults().begin(), fault::Faults().end(),
                                         [](const fault::Fault& one) { return fault::IsOf(one, 2); });
    EXPECT_EQ(static_cast<std::size_t>(ofDialect), faults.size());
    EXPECT_EQ((std::set<std::size_t>{1, 2, 3, 4}), sizes);
}

TEST(Search, TriesEveryValueBeforeAnyComesAgain) {
    Sequences sequences(5, 2);
    std::map<std::string, int> drawn;  // words only: numbers may be others
    for (int tries = 0; tries < 120; ++tries) {
        for (const fault::FaultCase& one : sequences.Next()) {
            ++drawn[one.fault->name + "=" + one.value];
        }
    }
    for (const char* const named : {"event-name=absolute", "duration=soon", "version=missing", "close=after",
                                    "shape-comments=", "unknown-request=OK"}) {
        EXPECT_LE(1, drawn[named]) << named;
        EXPECT_GE(2, drawn[named]) << named;
    }
}

TEST(Search, TriesNumbersThatNoCaseHas) {
    const std::vector<std::string> ids = Ids(1, 2, 3000);
    const auto known = fault::Cases();
    EXPECT_TRUE(std::any_of(ids.begin(), ids.end(), [&](const std::string& id) {
        return id.find('+') == std::string::npos &&
               std::none_of(known.begin(), known.end(),
                            [&id](const fault::FaultCase& one) { return one.Id() == id; });
    }));
}

TEST(Search, ShrinksToTheOneFaultAndTheSmallestNumber) {
    const Sequence sequence =
        SequenceOf("latency=900@GET_FILE-2.0+split=16@NEXT_EVENT-2.0+cut-off@GET_FILE-2.0");
    int plays = 0;
    const Sequence smallest = Shrink(sequence, [&plays](const Sequence& tried) {
        ++plays;
        return Has(tried, "split", 4);
    });
    EXPECT_EQ("split=4@NEXT_EVENT-2.0", IdOf(smallest));
    EXPECT_GE(8, plays);
}

TEST(Search, KeepsTwoFaultsThatFailOnlyTogether) {
    const Sequence sequence = SequenceOf("jitter=500@DONE-2.0+bytewise@GET_FILE-2.0+cut-off@GET_FILE-2.0");
    const Sequence smallest = Shrink(sequence, [](const Sequence& tried) {
        return Has(tried, "bytewise", 0) && Has(tried, "cut-off", 0);
    });
    EXPECT_EQ("bytewise@GET_FILE-2.0+cut-off@GET_FILE-2.0", IdOf(smallest));
}

TEST(Search, RepeatsASequenceByItsId) {
    for (const std::string& id : Ids(3, 0, 200)) {
        EXPECT_EQ(id, IdOf(SequenceOf(id)));
        const Case plan = CaseOf(SequenceOf(id));
        EXPECT_EQ(id, plan.name);
        EXPECT_EQ(1U, Select({"all", "both", true, id}).size());
    }
    EXPECT_THROW(SequenceOf("split=2@DONE-1.0+splat"), std::runtime_error);
    EXPECT_THROW(SequenceOf("split+cut-off"), std::runtime_error);
}

TEST(Search, AsksLeastWhereOneFaultDoes) {
    EXPECT_EQ(fault::Duty::Survives, DutyOf(CaseOf(SequenceOf("split=2@DONE-1.0+cut-off@DONE-1.0"))));
    EXPECT_EQ(fault::Duty::GoesOn, DutyOf(CaseOf(SequenceOf("split=2@DONE-1.0+bytewise@DONE-1.0"))));
}

TEST(Search, GoesOnForSoManyTriesOrSoLong) {
    EXPECT_EQ(300U, ParseSearchLimit("300")->tries);
    EXPECT_EQ(90, ParseSearchLimit("90s")->seconds);
    EXPECT_EQ(1200, ParseSearchLimit("20m")->seconds);
    EXPECT_EQ(7200, ParseSearchLimit("2h")->seconds);
    for (const char* const text : {"", "0", "0m", "m", "5d", "-3", "3.5", "1000001", "5 m"}) {
        EXPECT_FALSE(ParseSearchLimit(text)) << text;
    }
}

TEST(Search, TellsWhatItFoundAndHowToRepeatIt) {
    const SearchFinding finding{SequenceOf("split=4@NEXT_EVENT-2.0"), "recovery: no call", 17, 3, 3};
    EXPECT_EQ(
        "200 tries, 1 finding\n"
        "split=4@NEXT_EVENT-2.0\n"
        "    recovery: no call\n"
        "    first at try 17, in 3 tries; again in 3 of 3 repetitions\n"
        "    repeat: velloran-rig run --faults 'split=4@NEXT_EVENT-2.0' --protocol 2 --bare --seed 9\n",
        FindingsText({finding}, 200, 9));
    EXPECT_EQ("1 try, 0 findings\n", FindingsText({}, 1, 9));
    EXPECT_TRUE(IsOneOf(finding, SequenceOf("cut-off@DONE-2.0+split=8@DONE-2.0")));
    EXPECT_FALSE(IsOneOf(finding, SequenceOf("cut-off@DONE-2.0")));
}

}  // namespace
}  // namespace rig::campaign
