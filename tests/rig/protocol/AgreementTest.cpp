// The dissector and the document cannot read the catalogue: they have its messages, and no others.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "tests/rig/protocol/Facts.h"

namespace rig::protocol {
namespace {

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
        for (const std::string_view answer : kind.answers) {
            if (kind.sender == Sender::Harness) {
                pairs.insert(fmt::format("{} {}", kind.name, answer));
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

std::string RowOf(const std::string& dialect, const std::string& sender, const std::string& name,
                  std::vector<std::string> fields, const std::string& answers) {
    const auto version = std::find(fields.begin(), fields.end(), "protocolVersion");
    if (sender == "DVR" && version != fields.end()) {
        fields.erase(version);  // not read, as the text above the tables says
    } else if (sender == "harness" && dialect == "2.0" && version == fields.end()) {
        fields.emplace_back("protocolVersion");  // last, as it says too
    }
    return dialect + " " + sender + " " + name + ", fields: " + Join(fields) + ", answers: " + answers;
}

Facts RowOfKind(const MessageKind& kind) {
    std::vector<std::string> fields(kind.required.begin() + 1, kind.required.end());  // without `req`
    fields.insert(fields.end(), kind.optional.begin(), kind.optional.end());
    for (const std::string& element : ElementsOf(kind)) {
        fields.push_back(element);
    }
    return {RowOf(std::to_string(kind.dialect) + ".0", NameOf(kind.sender), kind.name, fields,
                  Join(kind.answers))};
}

TEST(Document, DescribesEachMessageWithItsFieldsInOrder) {
    const std::string page = Read("doc/protocol.md");
    Facts described;
    for (const std::string dialect : {"1.0", "2.0"}) {
        const std::string section = Between(page, "\n## Dialect " + dialect + "\n", "\n## ");
        for (const std::string& row : All(section, R"(\| (?:DVR|harness) \| [^\n]+)", 0)) {
            std::smatch cells;
            ASSERT_TRUE(std::regex_match(row, cells, std::regex(R"(\| (\w+) \| (\w+) \| (.*)\| (.*) \|)")))
                << row;
            described.insert(RowOf(dialect, cells.str(1), cells.str(2), All(cells.str(3), R"(`(\w+)[`=])"),
                                   Join(All(cells.str(4), "[A-Z][A-Z_]+", 0))));
        }
    }
    ExpectSame(OfAll(RowOfKind), described);
}

}  // namespace
}  // namespace rig::protocol
