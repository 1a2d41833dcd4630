#include <gtest/gtest.h>

#include <cctype>
#include <functional>
#include <string>
#include <vector>

#include "rig/dvr/wire/Frame.h"
#include "tests/rig/dvr/ScriptedRecorder.h"

// `dvr --recorder` against backends that are broken or hostile: the built program.
namespace {

using rig::dvr::EncodeFrame;
using rig::dvr::EncodePrefix;

const std::vector<std::string> kTwo = {"--protocol",      "2",   "--timeout",       "2",
                                       "--frame-timeout", "0.5", "--transfer-time", "20"};

/// What a backend sends in answer to OK, and why a good recorder then hangs up.
struct Unreadable {
    std::string name;
    std::function<std::string()> bytes;  // makes them: there are many in some rows, which are copied
    std::string reason;                  // what the transcript says after "found "
};

std::string Repeated(const std::string& text, std::size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t index = 0; index < count; ++index) {
        all += text;
    }
    return all;
}

std::string Deep(std::size_t levels) {
    return R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0">)" + Repeated("<a>", levels) +
           Repeated("</a>", levels) + "</msg>";
}

constexpr const char* kLaughs = R"(<!DOCTYPE msg [<!ENTITY a "ha"><!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;">]>)"
                                R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0">&b;</msg>)";

std::vector<Unreadable> AllUnreadable() {
    const auto raw = [](const std::string& bytes) { return [bytes] { return bytes; }; };
    const auto framed = [&raw](const std::string& text) { return raw(EncodeFrame(text)); };
    return {
        {"PrefixWithoutEnd", raw(Repeated("\xff", 100)), "a length prefix of more than five bytes"},
        {"PrefixThatStops", raw("\x80"), "a message that remained unfinished for 500 ms"},
        {"HugeLength", raw("\xff\xff\xff\xff\x07"),
         "a length prefix that announces 2147483647 bytes (at most 2097152"},
        {"BitsBeyond32", raw("\x80\x80\x80\x80\x70"), "a length prefix that announces"},
        {"LengthTooLong", raw(EncodePrefix(60) + kListRequest),
         "a message that remained unfinished for 500 ms"},
        {"LengthTooShort", raw(EncodePrefix(20) + kListRequest), "text that is not one XML document"},
        {"NoText", raw(std::string(1, '\0')), "text that is not one XML document"},
        {"Nul", framed(kListRequest + std::string(1, '\0')),
         "text that is not one XML document (a NUL byte)"},
        {"BytesAfterTheDocument", framed(kListRequest + "more"), "text that is not one XML document"},
        {"TenMegabytes", [] { return EncodeFrame("<msg req=\"" + std::string(10'000'000, 'x') + "\"/>"); },
         "a length prefix that announces"},
        {"LongName", [] { return EncodeFrame("<msg req=\"" + std::string(1'000'000, 'x') + "\"/>"); },
         "an unknown message"},
        {"ManyAttributes",
         [] {
             return EncodeFrame("<msg req='DONE' protocolVersion='2.0' " + Repeated("a='' ", 400'000) + "/>");
         },
         "DONE with the attribute 'a' twice"},
        {"Deep", [] { return EncodeFrame(Deep(100'000)); }, "GET_EVENT_LIST with content in 'msg'"},
        {"DeepAndCutOff", [] { return EncodeFrame(Repeated("<a>", 600'000)); },
         "text that is not one XML document"},
        {"Laughs", framed(kLaughs), "text that is not one XML document (a document type)"},
        {"ExternalEntity",
         framed(R"(<!DOCTYPE msg [<!ENTITY x SYSTEM "file:///etc/passwd">]><msg req="DONE">&x;</msg>)"),
         "text that is not one XML document (a document type)"},
        {"Utf16", framed(std::string("\xff\xfe<\0m\0s\0g\0/\0>\0", 14)), "text that is not one XML document"},
        {"WrongNesting", framed("<msg><a></msg></a>"), "text that is not one XML document"},
        {"TwoRoots", framed(kListRequest + kListRequest), "text that is not one XML document"},
        {"NoMsg", framed("<message req='GET_EVENT_LIST'/>"), "a document without a top-level 'msg'"},
        {"NoReq", framed("<msg protocolVersion='2.0'/>"), "a message without 'req'"},
        {"EmptyReq", framed("<msg req='' protocolVersion='2.0'/>"), "an unknown message, ''"},
        {"UnknownMessage", framed("<msg req='FORMAT_DISK' protocolVersion='2.0'/>"), "an unknown message"},
        {"NoVersion", framed("<msg req='GET_EVENT_LIST'/>"), "GET_EVENT_LIST without"},
        {"OtherVersion", framed("<msg req='GET_EVENT_LIST' protocolVersion='3.0'/>"),
         "GET_EVENT_LIST with protocolVersion '3.0'"},
        {"MissingAttribute", framed("<msg req='NEXT_EVENT' protocolVersion='2.0'/>"),
         "NEXT_EVENT without its attribute 'reid'"},
        {"AttributeTwice", framed("<msg req='GET_EVENT_LIST' protocolVersion='2.0' protocolVersion='2.0'/>"),
         "GET_EVENT_LIST with the attribute 'protocolVersion' twice"},
        {"DoneUnasked", framed("<msg req='DONE' protocolVersion='2.0'/>"), "DONE in answer to OK"},
        {"TransferCompleteTooEarly", framed(Request("EVENT_XFER_COMPLETE", "EVT-0001").Text()),
         "EVENT_XFER_COMPLETE in answer to OK"},
        {"Silence", raw(""), "nothing within 2000 ms"},
    };
}

class HangsUp : public testing::TestWithParam<Unreadable> {};

TEST_P(HangsUp, AndCallsAgain) {
    const ProgramResult result = PlayRecorder(kTwo, {[](BackendConnection& backend) {
                                                         EXPECT_EQ(NextName(backend), "OK");
                                                         backend.TrySend(GetParam().bytes());
                                                         backend.AwaitsClose();
                                                     },
                                                     ExportOneEvent});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_NE(result.output.find(" hung up: expected "), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("found " + GetParam().reason), std::string::npos) << result.output;
    EXPECT_LT(result.output.size(), 20'000U);
}

INSTANTIATE_TEST_SUITE_P(Recorder, HangsUp, testing::ValuesIn(AllUnreadable()),
                         [](const auto& row) { return row.param.name; });

/// A request for the list in another shape.
struct Shape {
    std::string name;
    std::string text;
};

std::vector<Shape> AllShapes() {
    return {
        {"Declaration", R"(<?xml version="1.0" encoding="UTF-8"?>)" + kListRequest},
        {"ByteOrderMark", "\xef\xbb\xbf" + kListRequest},
        {"Blanks", "\n\t<msg\n req = \"GET_EVENT_LIST\"\r\n\tprotocolVersion=\"2.0\"  />\n\n"},
        {"Comments", "<!-- a --><msg req='GET_EVENT_LIST' protocolVersion='2.0'><!-- b --> </msg><!-- c -->"},
        {"OtherOrder", R"(<msg protocolVersion="2.0" req="GET_EVENT_LIST"/>)"},
        {"OtherQuotes", "<msg req='GET_EVENT_LIST' protocolVersion='2.0'/>"},
        {"CharacterReferences", "<msg req='&#71;ET&#x5f;EVENT_LIST' protocolVersion='2&#46;0'/>"},
        {"LongForm", R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0"></msg>)"},
        {"ProcessingInstruction", "<?target data?>" + kListRequest},
        {"UnknownAttribute", R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0" vendor="none"/>)"},
    };
}

class Understands : public testing::TestWithParam<Shape> {};

TEST_P(Understands, OtherShapes) {
    const ProgramResult result = PlayRecorder(kTwo, {[](BackendConnection& backend) {
                                                  backend.Read();
                                                  backend.Send(GetParam().text);
                                                  EXPECT_EQ(NextName(backend), "EVENT_LIST");
                                              }});
    EXPECT_EQ(result.status, 0) << result.errors;
}

INSTANTIATE_TEST_SUITE_P(Recorder, Understands, testing::ValuesIn(AllShapes()),
                         [](const auto& row) { return row.param.name; });

/// A recorder that is told nothing unusual.
ProgramResult PlayGood(Backend::Script script) {
    ProgramResult result = PlayRecorder(kTwo, {std::move(script)});
    EXPECT_EQ(result.status, 0) << result.errors;
    return result;
}

TEST(Recorder, TakesMessagesInAnyPieces) {
    PlayGood([](BackendConnection& backend) {
        backend.Read();
        for (const char byte : EncodeFrame(kListRequest)) {
            backend.SendBytes(std::string(1, byte));
        }
        EXPECT_EQ(NextName(backend), "EVENT_LIST");
        const std::string next = Request("NEXT_EVENT", "none").Text();
        backend.SendBytes(EncodeFrame(next) + EncodeFrame(next));
        EXPECT_EQ(NextName(backend), "INVALID_EVENT");
        EXPECT_EQ(NextName(backend), "INVALID_EVENT");
    });
}

TEST(Recorder, ReadsPrefixesThatAreLongerThanNeedBe) {
    PlayGood([](BackendConnection& backend) {
        backend.Read();
        const auto length = static_cast<char>(kListRequest.size() | 0x80U);
        backend.SendBytes(length + std::string("\x80\x80\x80", 3) + '\0' + kListRequest);
        EXPECT_EQ(NextName(backend), "EVENT_LIST");
    });
}

TEST(Recorder, AnswersAThousandRequestsInARow) {
    PlayGood([](BackendConnection& backend) {
        StartEvent(backend, "EVT-0003");
        backend.SendBytes(Repeated(EncodeFrame(GetFile("EVT-0003", "none")), 1000));
        for (int answer = 0; answer < 1000; ++answer) {
            ASSERT_EQ(NextName(backend), "INVALID_EVENT");
        }
    });
}

TEST(Recorder, CallsAgainHoweverTheBackendEnds) {
    const ProgramResult result = PlayRecorder(kTwo, {
                                                        [](BackendConnection& backend) { backend.Close(); },
                                                        [](BackendConnection& backend) { backend.Reset(); },
                                                        [](BackendConnection& backend) {
                                                            backend.Read();
                                                            backend.HalfClose();
                                                            EXPECT_TRUE(backend.IsClosedByPeer());
                                                        },
                                                        ExportOneEvent,
                                                        ExportOneEvent,
                                                    });
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.output.find("ended by SIGTERM"), std::string::npos) << result.output;
}

TEST(Recorder, TriesUntilSomeoneListens) {
    ProgramSurroundings surroundings;
    surroundings.started = [](pid_t recorder) {
        rig::dvr::Pause(rig::dvr::Milliseconds(5000), -1);
        kill(recorder, SIGINT);
    };
    const ProgramResult result =
        RunRig({"dvr", "--recorder", "--port", std::to_string(UnusedPort())}, surroundings);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.output.find("nobody takes the call"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("ended by SIGINT"), std::string::npos) << result.output;
}

TEST(Recorder, StaysAwayForAsLongAsDoneSays) {
    const ProgramResult result =
        PlayRecorder(kTwo, {[](BackendConnection& backend) {
                         StartEvent(backend, "EVT-0003");
                         RequestOf(backend, GetFile("EVT-0003", "EVT-0003.xml"));
                         RequestOf(backend, Request("EVENT_XFER_COMPLETE", "EVT-0003"));
                         backend.Send(R"(<msg req="DONE" protocolVersion="2.0" duration="3"/>)");
                         EXPECT_TRUE(backend.IsClosedByPeer());
                         rig::dvr::Pause(rig::dvr::Milliseconds(700), -1);
                     }});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.output.find("calling again in 3 min"), std::string::npos) << result.output;
    EXPECT_EQ(result.output.find("connected", result.output.find("calling again")), std::string::npos);
}

TEST(Recorder, EndsAFrameThatTricklesInForEver) {
    const ProgramResult result = PlayRecorder(kTwo, {[](BackendConnection& backend) {
                                                         backend.Read();
                                                         backend.SendBytes(EncodePrefix(1000) + "<msg>");
                                                         for (int byte = 0; byte < 8; ++byte) {
                                                             rig::dvr::Pause(rig::dvr::Milliseconds(300), -1);
                                                             backend.TrySend(" ");
                                                         }
                                                         backend.AwaitsClose();
                                                     },
                                                     ExportOneEvent});
    EXPECT_NE(result.output.find("found a message that took longer than 2000 ms"), std::string::npos)
        << result.output;
}

TEST(Recorder, RefusesConfigurationsAndGoesOn) {
    const std::string order = "<msg req='UPDATE_CONFIGURATION' protocolVersion='2.0' message='" +
                              std::string(1'000'000, 'x') + "'/>";
    PlayGood([&](BackendConnection& backend) {
        backend.Read();
        backend.Send(order);
        EXPECT_EQ(NextName(backend), "CONFIGURATION_UPDATE_ERROR");
        backend.Send(kListRequest);
        EXPECT_EQ(NextName(backend), "EVENT_LIST");
    });
}

TEST(Recorder, ObeysOneUpdateADialogue) {
    const std::string order =
        "<msg req='UPDATE_SOFTWARE' path='/mnt/hd/connectionmgr' file='upgrade.zip' protocolVersion='2.0'/>";
    const ProgramResult result =
        PlayRecorder(kTwo, {[&](BackendConnection& backend) {
                                backend.Read();
                                backend.Send(order);
                                EXPECT_EQ(NextName(backend), "SOFTWARE_UPDATE_CONFIRM");
                                backend.Send(order);
                                EXPECT_TRUE(backend.IsClosedByPeer());
                            },
                            ExportOneEvent});
    EXPECT_NE(result.output.find("found UPDATE_SOFTWARE after UPDATE_SOFTWARE"), std::string::npos)
        << result.output;
}

}  // namespace
