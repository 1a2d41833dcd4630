// The fuzzers have all messages.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <utility>

#include "tests/fuzz/Messages.h"
#include "tests/rig/protocol/Facts.h"

namespace rig::protocol {
namespace {

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
    const std::string end = fmt::format(" <{}> {}", kind.children,
                                        isRequest && !kind.answers.empty() ? kind.answers.front() : "");
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

}  // namespace
}  // namespace rig::protocol
