#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <sstream>
#include <string>
#include <vector>

#include "rig/dvr/weaknesses/Weaknesses.h"
#include "rig/dvr/wire/Frame.h"
#include "rig/protocol/Catalogue.h"
#include "tests/rig/dvr/ScriptedRecorder.h"

// Each weakness shows with a backend that is made for it. That none shows with the harness is tested in
// tests/together.
namespace {

using rig::dvr::CallEnd;
using rig::dvr::EncodeFrame;
using rig::dvr::EncodePrefix;
using rig::dvr::Milliseconds;
using rig::dvr::Reaction;
using rig::dvr::WeaknessKind;

/// What a backend sends so that a weakness shows.
struct Provocation {
    const char* weakness;
    std::string bytes;
    enum class When { InAnswerToOk, InExport } when = When::InAnswerToOk;
    enum class Then { Nothing, Close, Reset } then = Then::Nothing;
};

std::string Times(std::size_t count, const std::string& text) {
    std::string all;
    for (std::size_t index = 0; index < count; ++index) {
        all += text;
    }
    return all;
}

std::string MessageOf(const std::string& attributes) {
    return EncodeFrame("<msg " + attributes + " protocolVersion=\"2.0\"/>");
}

std::string FileOf(const std::string& event, const std::string& file) {
    return EncodeFrame(GetFile(event, file));
}

const std::string kBefore = R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0")";

std::vector<Provocation> InBytesAndShapes() {
    const auto framed = [](const std::string& text) { return EncodeFrame(text); };
    const auto length = static_cast<char>(kListRequest.size() | 0x80U);
    return {
        {"two-byte-prefix", std::string(1, length) + '\x80' + '\0' + kListRequest},
        {"endless-prefix", Times(6, "\xff")},
        {"signed-length", "\xff\xff\xff\xff\x0f"},
        {"trusts-length", "\xff\xff\xff\xff\x07"},
        {"takes-piece", EncodePrefix(60) + "<ms"},
        {"short-queue", Times(9, FileOf("none", "none"))},
        {"impatient", EncodePrefix(60) + "<msg "},
        {"no-frame-timeout", EncodePrefix(60) + "<msg "},
        {"misses-end", EncodePrefix(60) + "<msg ", Provocation::When::InAnswerToOk, Provocation::Then::Close},
        {"no-byte-order-mark", framed("\xef\xbb\xbf" + kListRequest)},
        {"no-declaration", framed("<?xml version=\"1.0\"?>" + kListRequest)},
        {"no-instructions", framed("<?backend version=\"1\"?>" + kListRequest)},
        {"no-comments", framed("<!-- begin -->" + kListRequest)},
        {"one-line", framed(kListRequest + "\n")},
        {"no-tabs", framed(kBefore + "\t/>")},
        {"no-references", framed("<msg req=\"GET&#95;EVENT&#95;LIST\" protocolVersion=\"2.0\"/>")},
        {"double-quotes", framed("<msg req='GET_EVENT_LIST' protocolVersion='2.0'/>")},
        {"fixed-order", framed("<msg protocolVersion=\"2.0\" req=\"GET_EVENT_LIST\"/>")},
        {"no-cdata",
         framed("<msg req=\"EVENT_XFER_COMPLETE\"><events><string><![CDATA[E]]></string></events></msg>")},
        {"short-form", framed(kBefore + "></msg>")},
    };
}

std::vector<Provocation> InMarkup() {
    const auto framed = [](const std::string& text) { return EncodeFrame(text); };
    return {
        {"short-buffer", framed(kBefore + " a=\"" + std::string(5000, 'x') + "\"/>")},
        {"empty-text", std::string(1, '\0')},
        {"blank-text", framed(" ")},
        {"c-string", framed(kListRequest + std::string(1, '\0'))},
        {"past-the-end", framed(kBefore)},
        {"needs-markup", framed("GET_FILE please")},
        {"one-document", framed(kListRequest + kListRequest)},
        {"trusts-nesting", framed(kBefore + "><a><b></a></b></msg>")},
        {"needs-msg", framed("<gsm req=\"GET_EVENT_LIST\" protocolVersion=\"2.0\"/>")},
        {"recursion", framed(kBefore + ">" + Times(1001, "<a>") + Times(1001, "</a>") + "</msg>")},
        {"expands-entities", framed("<!DOCTYPE msg [<!ENTITY a \"aa\">]>" + kListRequest)},
        {"external-entities",
         framed("<!DOCTYPE msg [<!ENTITY a SYSTEM \"file:///dev/zero\">]>" + kListRequest)},
        {"no-encodings", framed("<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + kListRequest)},
        {"trusts-encoding", framed(kBefore + " name=\"\xc3\x28\"/>")},
        {"control-characters", framed(kBefore + " name=\"\x1b[2J\"/>")},
    };
}

std::vector<Provocation> InValues() {
    return {
        {"missing-request", EncodeFrame("<msg protocolVersion=\"2.0\"/>")},
        {"unknown-request", MessageOf("req=\"FORMAT_DISK\"")},
        {"empty-request", MessageOf("req=\"\"")},
        {"missing-event", MessageOf("req=\"NEXT_EVENT\"")},
        {"missing-file", MessageOf("req=\"GET_FILE\" reid=\"E\" path=\"E\"")},
        {"attribute-twice", MessageOf("req=\"DONE\" req=\"DONE\"")},
        {"unknown-attribute", MessageOf("req=\"GET_EVENT_LIST\" vendor=\"none\"")},
        {"other-version", EncodeFrame("<msg req=\"DONE\" protocolVersion=\"3.0\"/>")},
        {"empty-name", FileOf("EVT-0001", "")},
        {"long-name", FileOf("EVT-0001", std::string(256, 'n'))},
        {"format-string", FileOf("EVT-0001", "%n%n")},
        {"shell", FileOf("EVT-0001", "a;reboot")},
        {"quotes", FileOf("EVT-0001", "a'b")},
        {"only-ascii", FileOf("EVT-0001", "\xe6\x97\xa5")},
        {"no-blanks", FileOf("EVT-0001", "a b")},
        {"duration-overflow", MessageOf("req=\"DONE\" duration=\"2147483648\"")},
        {"duration-text", MessageOf("req=\"DONE\" duration=\"soon\"")},
        {"rehash-value", EncodeFrame(GetFile("EVT-0001", "a", " rehash=\"maybe\""))},
    };
}

std::vector<Provocation> InOrdersAndCalls() {
    const auto inExport = Provocation::When::InExport;
    return {
        {"follows-dot-dot", FileOf("EVT-0001", "../../etc/passwd"), inExport},
        {"absolute-names", FileOf("EVT-0001", "/etc/passwd"), inExport},
        {"other-event", FileOf("EVT-0002", "EVT-0002.xml"), inExport},
        {"acknowledges-all", EncodeFrame(Request("EVENT_XFER_COMPLETE", "EVT-0001").Text()), inExport},
        {"updates-again", MessageOf("req=\"UPDATE_SOFTWARE\" path=\"p\" file=\"f\""), inExport},
        {"obeys-done", MessageOf("req=\"DONE\""), inExport},
        {"one-list", EncodeFrame(kListRequest), inExport},
        {"dies-of-reset", "", inExport, Provocation::Then::Reset},
        {"dies-of-close", "", inExport, Provocation::Then::Close},
        {"loses-slot", EncodePrefix(60) + "<msg ", inExport, Provocation::Then::Close},
        {"dies-of-brief-call", "", Provocation::When::InAnswerToOk, Provocation::Then::Close},
    };
}

std::vector<Provocation> AllProvocations() {
    std::vector<Provocation> all;
    for (const auto& some : {InBytesAndShapes(), InMarkup(), InValues(), InOrdersAndCalls()}) {
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

const WeaknessKind& KindOf(const std::string& name) {
    const auto& kinds = rig::dvr::WeaknessKinds();
    return *std::find_if(kinds.begin(), kinds.end(),
                         [&name](const WeaknessKind& kind) { return name == kind.name; });
}

void Provoke(const Provocation& provocation, BackendConnection& backend) {
    if (provocation.when == Provocation::When::InExport) {
        StartEvent(backend, "EVT-0001");
    } else {
        backend.Read();
    }
    backend.TrySend(provocation.bytes);
    if (provocation.then == Provocation::Then::Close) {
        backend.Close();
    } else if (provocation.then == Provocation::Then::Reset) {
        backend.Reset();
    }
}

/// Long enough for a good recorder to give up a message, and to call again.
void WaitLongEnough() {
    rig::dvr::Pause(Milliseconds(2000), -1);
}

/// What the recorder does then, as the backend sees it.
void ExpectReaction(const Provocation& provocation, BackendConnection& backend) {
    switch (KindOf(provocation.weakness).reaction) {
        case Reaction::Answer:
            EXPECT_FALSE(rig::protocol::IsReport(NextName(backend)));
            break;
        case Reaction::Abort:
        case Reaction::HangUp:
            backend.AwaitsClose();
            break;
        case Reaction::Ignore:
        case Reaction::Hang:
        case Reaction::GiveUp:
        case Reaction::Flaw:
            WaitLongEnough();
            break;
    }
}

std::size_t CountOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

class Weak : public testing::TestWithParam<Provocation> {};

TEST_P(Weak, RecorderShowsIt) {
    const std::string name = GetParam().weakness;
    const WeaknessKind& kind = KindOf(name);
    const bool isOfTwo = std::string(kind.dialects).find('2') != std::string::npos;
    const ProgramResult result = PlayRecorder(
        {"--protocol", isOfTwo ? "2" : "1", "--timeout", "20", "--frame-timeout", "1.5", "--weakness", name},
        {[](BackendConnection& backend) {
            Provoke(GetParam(), backend);
            ExpectReaction(GetParam(), backend);
        }});
    EXPECT_NE(result.output.find("weakness " + name + " shows: "), std::string::npos) << result.output;
    const bool aborts = kind.reaction == Reaction::Abort;
    EXPECT_EQ(result.signal, aborts ? SIGABRT : 0);
    EXPECT_EQ(result.errors, aborts ? "velloran-rig dvr: weakness " + name + ": " + kind.does + "\n" : "");
    if (kind.reaction == Reaction::Hang || kind.reaction == Reaction::Ignore) {
        EXPECT_EQ(CountOf(result.output, "hung up"), 0U) << result.output;
    }
    if (kind.reaction == Reaction::GiveUp) {
        EXPECT_EQ(CountOf(result.output, "connected;"), 1U) << result.output;
    }
}

INSTANTIATE_TEST_SUITE_P(Recorder, Weak, testing::ValuesIn(AllProvocations()), [](const auto& row) {
    std::string name = row.param.weakness;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

class WeaknessesTest : public testing::Test {
 protected:
    WeaknessesTest() { weaknesses_.Attach(transcript_, -1); }

    std::ostringstream out_;
    rig::dvr::Transcript transcript_{out_, false};
    rig::dvr::Weaknesses weaknesses_{2};
};

CallEnd BrokenExport() {
    CallEnd end;
    end.byBackend = end.byReset = end.inExport = end.insideFrame = true;
    return end;
}

TEST_F(WeaknessesTest, GiveUpWhenNobodyTakesTheCallAfterABrokenExport) {
    weaknesses_.Add("dies-of-refusal");
    CallEnd end;
    end.thenRefused = true;
    weaknesses_.HearOf(end);
    weaknesses_.HearOf(BrokenExport());
    EXPECT_FALSE(weaknesses_.HaveGivenUp());
    end = BrokenExport();
    end.thenRefused = true;
    weaknesses_.HearOf(end);
    EXPECT_TRUE(weaknesses_.HaveGivenUp());
}

TEST_F(WeaknessesTest, LoseOneSlotAfterTheOther) {
    weaknesses_.Add("loses-slot=2");
    weaknesses_.HearOf(BrokenExport());
    EXPECT_FALSE(weaknesses_.HaveGivenUp());
    weaknesses_.HearOf(BrokenExport());
    EXPECT_TRUE(weaknesses_.HaveGivenUp());
}

TEST_F(WeaknessesTest, AreEachProvokedHere) {
    std::vector<std::string> provoked = {"dies-of-refusal"};
    for (const Provocation& one : AllProvocations()) {
        provoked.emplace_back(one.weakness);
    }
    std::vector<std::string> known;
    for (const WeaknessKind& kind : rig::dvr::WeaknessKinds()) {
        known.emplace_back(kind.name);
    }
    std::sort(provoked.begin(), provoked.end());
    std::sort(known.begin(), known.end());
    EXPECT_EQ(provoked, known);
}

}  // namespace
