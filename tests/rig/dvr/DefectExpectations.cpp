#include "tests/rig/dvr/DefectExpectations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

#include "rig/dvr/wire/Frame.h"

namespace {

using rig::dvr::EncodeFrame;
using rig::dvr::EncodePrefix;

Sent Text(const std::string& text, const std::string& then = "acted ") {
    return {EncodeFrame(text), {}, {}, then};
}

/// The text with its first `from` replaced; it must contain one.
std::string With(const std::string& text, const std::string& from, const std::string& to) {
    const std::size_t start = text.find(from);
    EXPECT_NE(start, std::string::npos) << from << " in " << text;
    return start == std::string::npos ? text : std::string(text).replace(start, from.size(), to);
}

Expectation Edit(const std::string& from, const std::string& to) {
    return [=](const HonestMessage& honest) { return Text(With(honest.text, from, to)); };
}

Expectation Then(const std::string& then) {
    return [=](const HonestMessage& honest) { return Text(honest.text, "acted " + then); };
}

/// Another message goes out first, about the same event.
Expectation First(const std::string& name) {
    return [=](const HonestMessage& honest) {
        const std::string version = honest.dialect == 2 ? R"( protocolVersion="2.0")" : "";
        const bool hasEvent = honest.text.find(R"( reid="EVT1")") < honest.text.find('>');
        Sent sent = Text(honest.text);
        sent.before = {"<msg req=\"" + name + "\"" + version + (hasEvent ? R"( reid="EVT1")" : "") + "/>"};
        return sent;
    };
}

Expectation Bytes(const std::function<std::string(const std::string& text)>& frame,
                  const std::string& then = "") {
    return [=](const HonestMessage& honest) { return Sent{frame(honest.text), {}, {}, "acted " + then}; };
}

std::string InLowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

std::string WithoutEnd(const std::string& text) {
    const std::string end = text.find("</msg>") == std::string::npos ? "/>" : "</msg>";
    return text.substr(0, text.size() - end.size());
}

/// The message with its element's name changed, in both tags.
std::string WithElement(const HonestMessage& honest, const std::string& name) {
    const std::string text = With(honest.text, "<msg ", "<" + name + " ");
    return text.find("</msg>") == std::string::npos ? text : With(text, "</msg>", "</" + name + ">");
}

/// The first description in the message, escaped.
std::string DescriptionIn(const std::string& text) {
    const std::string end = "&lt;/recording-event&gt;";
    const std::size_t start = text.find("&lt;recording-event");
    return text.substr(start, text.find(end) + end.size() - start);
}

/// A changed first description.
Expectation Describe(const std::string& description) {
    return [=](const HonestMessage& honest) {
        return Text(With(honest.text, DescriptionIn(honest.text), description));
    };
}

Expectation EditDescription(const std::string& from, const std::string& to) {
    return [=](const HonestMessage& honest) {
        const std::string description = DescriptionIn(honest.text);
        return Text(With(honest.text, description, With(description, from, to)));
    };
}

bool IsAboutAFile(const HonestMessage& honest) {
    return honest.text.find(" file=") != std::string::npos;
}

/// A changed file name, if the message has one.
Expectation EditFile(const std::string& to) {
    return [=](const HonestMessage& honest) {
        return IsAboutAFile(honest) ? Text(With(honest.text, R"( file="a.ts")", to)) : PassedOver(honest);
    };
}

Sent AcceptedEvent(const HonestMessage& honest) {
    return IsAboutAFile(honest)
               ? PassedOver(honest)
               : Text(
                     R"(<msg req="EVENT" protocolVersion="2.0" reid="EVT1"><xmlFile>)"
                     R"(&lt;recording-event reid="EVT1"&gt;&lt;video&gt;&lt;metadata name="EVT1.xml"/&gt;)"
                     R"(&lt;streams&gt;&lt;stream&gt;&lt;file name="EVT1_1"/&gt;&lt;/stream&gt;&lt;/streams&gt;)"
                     R"(&lt;/video&gt;&lt;/recording-event&gt;</xmlFile></msg>)");
}

Sent AcceptedFile(const HonestMessage& honest) {
    return IsAboutAFile(honest)
               ? Text(R"(<msg req="FILE_COMPLETE" protocolVersion="2.0" reid="EVT1" file="a.ts" length="0" )"
                      R"(hashCode="e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"/>)")
               : PassedOver(honest);
}

Sent CompletedFile(const HonestMessage&) {
    return Text(R"(<msg req="FILE_COMPLETE" protocolVersion="2.0" reid="EVT1" file="a.ts" length="4" )"
                R"(hashCode="0d18d4eb377a214157ad45e7ee0f189a2d7370788a483e729c7f269d94cafe41"/>)");
}

Sent EmptiedDescription(const HonestMessage& honest) {
    const std::string tag = honest.dialect == 1 ? "string" : "xmlFile";
    return Text(
        With(honest.text, "<" + tag + ">" + DescriptionIn(honest.text) + "</" + tag + ">", "<" + tag + "/>"));
}

Sent WithoutDescription(const HonestMessage& honest) {
    return Text(honest.text.substr(0, honest.text.find("><xmlFile>")) + "/>");
}

Sent DoubledList(const HonestMessage& honest) {
    const std::string tag = honest.dialect == 1 ? "xmlFile" : "events";
    const std::size_t start = honest.text.find("<" + tag + ">") + tag.size() + 2;
    const std::size_t end = honest.text.find("</" + tag + ">");
    return Text(std::string(honest.text).insert(end, honest.text.substr(start, end - start)));
}

Sent Doubled(const HonestMessage& honest) {
    Sent sent = Text(honest.text);
    sent.after = {honest.text};
    return sent;
}

Sent Dropped(const HonestMessage&) {
    return {"", {}, {}, "acted dropped "};
}

std::string Announcing(std::size_t length, const std::string& text) {
    return EncodePrefix(static_cast<std::uint32_t>(length)) + text;
}

}  // namespace

std::string Show(const Sent& sent) {
    std::string shown;
    for (const std::string& text : sent.before) {
        shown += "first " + text + "\n";
    }
    shown += sent.frame + "\n";
    for (const std::string& text : sent.after) {
        shown += "then " + text + "\n";
    }
    return shown + sent.then;
}

Sent PassedOver(const HonestMessage& honest) {
    return Text(honest.text, "");
}

const std::map<std::string, Expectation>& Expectations() {
    static const std::string event = R"( reid="EVT1")";
    static const std::map<std::string, Expectation> expectations = {
        {"wrong-reid", Edit(event, R"( reid="no-such-event")")},
        {"wrong-reid=E & 1", Edit(event, R"( reid="E &amp; 1")")},
        {"missing-reid", Edit(event, "")},
        {"case-reid", Edit(event, R"( reid="evt1")")},
        {"wrong-file", EditFile(R"( file="no-such-file")")},
        {"wrong-file=f", EditFile(R"( file="f")")},
        {"missing-file", EditFile("")},
        {"case-file", EditFile(R"( file="A.TS")")},
        {"other-file", EditFile(R"( file="b.ts")")},
        {"missing-source", Edit(R"( source="velloran-rig")", "")},
        {"missing-hash",
         Edit(R"( hashCode="0d18d4eb377a214157ad45e7ee0f189a2d7370788a483e729c7f269d94cafe41")", "")},
        {"missing-length", Edit(R"( length="4")", "")},
        {"new-hash", nullptr},
        {"accept-event", AcceptedEvent},
        {"accept-file", AcceptedFile},
        {"no-exception", CompletedFile},
        {"no-answer", Dropped},
        {"no-xfer-in-progress", Dropped},
        {"double-xfer-in-progress", Doubled},
        {"double", Doubled},
        {"silence", Then("silent ")},
        {"unasked-invalid-event", First("INVALID_EVENT")},
        {"unasked-transport-exception", First("TRANSPORT_EXCEPTION")},
        {"unasked-software-update-confirm", First("SOFTWARE_UPDATE_CONFIRM")},
        {"unasked-configuration-update-error", First("CONFIGURATION_UPDATE_ERROR")},
        {"unknown-message", First("HELLO")},
        {"unknown-message=GET_FILE", First("GET_FILE")},
        {"case-req",
         [](const HonestMessage& honest) {
             return Text(With(honest.text, honest.name, InLowerCase(honest.name)));
         }},
        {"no-req",
         [](const HonestMessage& honest) {
             return Text(With(honest.text, " req=\"" + honest.name + "\"", ""));
         }},
        {"no-msg", [](const HonestMessage& honest) { return Text(WithElement(honest, "message")); }},
        {"malformed-xml", [](const HonestMessage& honest) { return Text(WithoutEnd(honest.text)); }},
        {"malformed-description", EditDescription("&lt;/recording-event&gt;", "")},
        {"description-without-reid", EditDescription(event, "")},
        {"description-other-reid", EditDescription(event, R"( reid="no-such-event")")},
        {"description-other-reid=E2", EditDescription(event, R"( reid="E2")")},
        {"description-without-video", Describe(R"(&lt;recording-event reid="EVT1"/&gt;)")},
        {"description-without-name",
         EditDescription(R"(&lt;metadata name="m.xml"/&gt;)", "&lt;metadata/&gt;")},
        {"description-without-event",
         [](const HonestMessage& honest) {
             return Text(With(With(honest.text, "recording-event", "something-else"), "/recording-event",
                              "/something-else"));
         }},
        {"empty-description", EmptiedDescription},
        {"no-description", WithoutDescription},
        {"empty-list", Edit("<events><event>EVT1</event><event>EVT2</event></events>", "<events/>")},
        {"double-list", DoubledList},
        {"event-without-text", Edit("</events>", "<event/></events>")},
        {"no-copy", Then("spoils the copy ")},
        {"empty-copy", Then("spoils the copy ")},
        {"cut-copy", Then("spoils the copy ")},
        {"wrong-copy", Then("spoils the copy ")},
        {"foreign-copy", Then("spoils the copy ")},
        {"late-copy", Then("spoils the copy ")},
        {"half-copy", Then("spoils the copy ")},
        {"extra-copy", Then("spoils the copy ")},
        {"bad-prefix", Bytes([](const std::string& text) { return std::string(5, '\x80') + text; })},
        {"negative-prefix", Bytes([](const std::string& text) { return "\xfe\xff\xff\xff\x0f" + text; })},
        {"empty-frame", Bytes([](const std::string&) { return std::string(1, '\0'); })},
        {"long-prefix", Bytes([](const std::string& text) { return Announcing(text.size() + 10, text); })},
        {"long-prefix=300",
         Bytes([](const std::string& text) { return Announcing(text.size() + 300, text); })},
        {"short-prefix", Bytes([](const std::string& text) { return Announcing(text.size() - 10, text); })},
        {"short-prefix=1000000", Bytes([](const std::string& text) { return Announcing(0, text); })},
        {"garble", nullptr},
        {"close", Then("closes ")},
        {"close=all", Then("closes ")},
        {"close=0", Bytes([](const std::string&) { return ""; }, "closes ")},
        {"close=5", Bytes([](const std::string& text) { return EncodeFrame(text).substr(0, 5); }, "closes ")},
        {"close=999999999", Then("closes ")},
        {"reset", Then("resets ")},
        {"reset=1", Bytes([](const std::string& text) { return EncodeFrame(text).substr(0, 1); }, "resets ")},
        {"second-connection", Then("knocks ")},
        {"reconnect", Then("reconnects ")},
    };
    return expectations;
}
