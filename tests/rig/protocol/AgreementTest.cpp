// Who lists messages and cannot read the catalogue has those of the catalogue, and no others.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "rig/protocol/Catalogue.h"
#include "tests/fuzz/Messages.h"
#include "tests/rig/dvr/HonestMessages.h"

namespace rig::protocol {
namespace {

/// Facts about messages, each in words.
using Facts = std::set<std::string>;

std::string Read(const std::string& path) {
    std::ifstream file(VELLORAN_SOURCES "/" + path);
    std::string text(std::istreambuf_iterator<char>(file), {});
    EXPECT_FALSE(text.empty()) << path;
    return text;
}

/// @return what stands between the two texts, the first time that they do
std::string Between(const std::string& text, const std::string& start, const std::string& end) {
    const std::size_t first = text.find(start);
    EXPECT_NE(first, std::string::npos) << start;
    const std::size_t from = std::min(first, text.size() - start.size()) + start.size();
    return text.substr(from, text.find(end, from) - from);
}

/// @return the group of each match
std::vector<std::string> All(const std::string& text, const std::string& pattern, std::size_t group = 1) {
    const std::regex regex(pattern);
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
        found.push_back(match->str(group));
    }
    return found;
}

Facts SetOf(const std::vector<std::string>& list) {
    return {list.begin(), list.end()};
}

template <typename List>
std::string Join(const List& list) {
    std::string joined;
    for (const auto& word : list) {
        joined += (joined.empty() ? "" : " ") + std::string(word);
    }
    return joined;
}

Facts Without(const Facts& facts, const Facts& others) {
    Facts left;
    std::set_difference(facts.begin(), facts.end(), others.begin(), others.end(),
                        std::inserter(left, left.end()));
    return left;
}

void ExpectSame(const Facts& catalogue, const Facts& others) {
    EXPECT_EQ(Without(catalogue, others), Facts()) << "is in the catalogue alone";
    EXPECT_EQ(Without(others, catalogue), Facts()) << "is not in the catalogue";
}

Facts NamesOf(Sender sender) {
    Facts names;
    for (const MessageKind& kind : Catalogue()) {
        if (kind.sender == sender) {
            names.insert(kind.name);
        }
    }
    return names;
}

Facts ElementsOf(const MessageKind& kind) {
    return SetOf(All(kind.children, "[^/]+", 0));
}

Facts AttributesOf(const MessageKind& kind) {
    Facts names(kind.required.begin(), kind.required.end());
    names.insert(kind.optional.begin(), kind.optional.end());
    return names;
}

/// @return all that the messages have, by a function of each
template <typename Of>
Facts OfAll(Of of) {
    Facts all;
    for (const MessageKind& kind : Catalogue()) {
        const Facts some = of(kind);
        all.insert(some.begin(), some.end());
    }
    return all;
}

std::string LuaTable(const std::string& name) {
    return Between(Read("rig/wireshark/velloran.lua"), "\nlocal " + name + " = {\n", "\n}");
}

TEST(Dissector, HasAFieldForEachAttributeAndElement) {
    Facts attributes = SetOf(All(LuaTable("attributes"), R"((\w+) = ProtoField)"));
    attributes.insert("req");
    ExpectSame(OfAll(AttributesOf), attributes);
    ExpectSame(OfAll(ElementsOf), SetOf(All(LuaTable("elements"), R"((\w+) = ProtoField)")));
}

TEST(Dissector, KnowsTheDialectsOfEachMessage) {
    const Facts dialects = OfAll([](const MessageKind& kind) {
        const auto dialect = OnlyDialectOf(kind.name);
        return Facts{std::string(kind.name) + " = \"" + (dialect ? std::to_string(*dialect) + ".0" : "") +
                     "\""};
    });
    ExpectSame(dialects, SetOf(All(LuaTable("dialects"), R"(\w+ = "[^"]*")", 0)));
}

TEST(Dissector, KnowsWhatEachResponseAnswers) {
    const Facts answers = OfAll([](const MessageKind& kind) {
        Facts pairs;
        for (const char* answer : kind.answers) {
            if (kind.sender == Sender::Harness) {
                pairs.insert(std::string(kind.name) + " " + answer);
            }
        }
        return pairs;
    });
    Facts found;
    for (const std::string& line : All(LuaTable("answers"), "[^\n]+", 0)) {
        for (const std::string& request : All(line, R"((\w+) = true)")) {
            found.insert(request + " " + All(line, R"(^ *(\w+))").at(0));
        }
    }
    ExpectSame(answers, found);
}

TEST(CompareScript, KnowsEveryRequestAndWhatFollowsEachMessageOfTheDvr) {
    const std::string script = Read("rig/wireshark/compare");
    const std::string follows = Between(script, "\nFOLLOWS = {", "}");
    std::vector<std::string> requests = All(Between(script, "\nANNOUNCED = [", "\n]"), R"re(, "(\w+)"\))re");
    for (const std::string& request : All(follows, R"re(: "(\w+)")re")) {
        requests.push_back(request);
    }
    ExpectSame(NamesOf(Sender::Harness), SetOf(requests));
    const Facts first = OfAll([](const MessageKind& kind) {
        const bool isFollowed = kind.sender == Sender::Dvr && !kind.answers.empty();
        return isFollowed && kind.name != std::string("OK")  // always announced
                   ? Facts{"\"" + std::string(kind.name) + "\": \"" + kind.answers.front() + "\""}
                   : Facts();
    });
    ExpectSame(first, SetOf(All(follows, R"re("\w+": "\w+")re", 0)));
}

TEST(Document, DescribesEachMessage) {
    const Facts rows = OfAll([](const MessageKind& kind) {
        Facts fields = AttributesOf(kind);
        fields.merge(ElementsOf(kind));
        fields.erase("req");
        fields.erase("protocolVersion");  // the text above the tables has it
        return Facts{std::to_string(kind.dialect) + ".0 " + NameOf(kind.sender) + " " + kind.name +
                     ", fields: " + Join(fields) + ", answers: " + Join(kind.answers)};
    });
    const std::string page = Read("doc/protocol.md");
    Facts described;
    for (const std::string dialect : {"1.0", "2.0"}) {
        const std::string section = Between(page, "\n## Dialect " + dialect + "\n", "\n## ");
        for (const std::string& row : All(section, R"(\| (?:DVR|harness) \| [^\n]+)", 0)) {
            std::smatch cells;
            ASSERT_TRUE(std::regex_match(row, cells, std::regex(R"(\| (\w+) \| (\w+) \| (.*)\| (.*) \|)")))
                << row;
            Facts fields = SetOf(All(cells.str(3), R"(`(\w+)[`=])"));
            fields.erase("protocolVersion");
            described.insert(dialect + " " + cells.str(1) + " " + cells.str(2) + ", fields: " + Join(fields) +
                             ", answers: " + Join(All(cells.str(4), "[A-Z][A-Z_]+", 0)));
        }
    }
    ExpectSame(rows, described);
}

TEST(JudgeFuzzer, KnowsWhatADvrSends) {
    const std::string dictionary = Read("tests/fuzz/judge.dict");
    ExpectSame(NamesOf(Sender::Dvr), SetOf(All(dictionary, R"re("<msg req=\\"(\w+))re")));
    Facts attributes = OfAll(
        [](const MessageKind& kind) { return kind.sender == Sender::Dvr ? AttributesOf(kind) : Facts(); });
    attributes.erase("req");
    ExpectSame(attributes, SetOf(All(dictionary, R"re(\n" (\w+)=)re")));
}

std::string PathOf(fuzz::Body body) {
    switch (body) {
        case fuzz::Body::EventList:
            return "events/event";
        case fuzz::Body::Identifiers:
            return "events/string";
        case fuzz::Body::Description:
            return "xmlFile";
        case fuzz::Body::Descriptions:
            return "xmlFile/string";
        case fuzz::Body::None:
            break;
    }
    return "";
}

/// @return the message without its optional attributes, and one of the harness with them as well
Facts FormsOf(const MessageKind& kind) {
    const bool isRequest = kind.sender == Sender::Harness;
    const std::string start = std::to_string(kind.dialect) + ".0 " + kind.name + ": " + Join(kind.required);
    const std::string end = std::string(" <") + kind.children + "> " +
                            (isRequest && !kind.answers.empty() ? kind.answers.front() : "");
    Facts forms{start + end};
    if (isRequest && !kind.optional.empty()) {
        forms.insert(start + " " + Join(kind.optional) + end);
    }
    return forms;
}

TEST(MessageFuzzers, HaveEachMessage) {
    Facts forms;
    for (const auto& [sender, dialect] : {std::pair(fuzz::Sender::Dvr_1_0, "1.0"),
                                          {fuzz::Sender::Dvr_2_0, "2.0"},
                                          {fuzz::Sender::Harness_1_0, "1.0"},
                                          {fuzz::Sender::Harness_2_0, "2.0"}}) {
        for (const fuzz::Form& form : fuzz::FormsOf(sender)) {
            std::string words = std::string(dialect) + " " + form.req + ": req";
            for (const fuzz::Attribute& attribute : form.attributes) {
                words += std::string(" ") + attribute.name;
            }
            forms.insert(words + " <" + PathOf(form.body) + "> " + form.answer);
        }
    }
    ExpectSame(OfAll(FormsOf), forms);
}

TEST(SimulatedDvr, IsTestedWithEachOfItsMessages) {
    const Facts names = OfAll([](const MessageKind& kind) {
        return kind.sender == Sender::Dvr ? Facts{std::to_string(kind.dialect) + " " + kind.name} : Facts();
    });
    Facts tested;
    for (const HonestMessage& honest : HonestMessages()) {
        tested.insert(std::to_string(honest.dialect) + " " + honest.name);
    }
    ExpectSame(names, tested);
}

}  // namespace
}  // namespace rig::protocol
