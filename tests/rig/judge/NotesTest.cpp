#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "rig/judge/Notes.h"

namespace rig::judge {
namespace {

std::string Escaped(const std::string& xml) {
    std::string escaped;
    for (const char letter : xml) {
        escaped += letter == '<' ? "&lt;" : std::string(1, letter);
    }
    return escaped;
}

/// What is shown of a message with these descriptions.
std::string ShownOf(const std::vector<std::string>& descriptions, DescriptionFault fault) {
    std::string text = "<msg req=\"XML\"><xmlFile>";
    for (const std::string& description : descriptions) {
        text += "<string>" + Escaped(description) + "</string>";
    }
    text += "</xmlFile></msg>";
    const std::string slice = fmt::format("GetMessage:incoming message, bytes 1 to {}:{}", text.size(), text);
    log::RunReader reader;
    reader.Add(log::StatementOf(fmt::format("expecting a message of {} bytes", text.size())));
    reader.Add(log::StatementOf(slice));
    return ShownDescription(reader.LastMessage(), fault);
}

const std::string kGood = R"(<recording-event reid="E1"><video><metadata name="m"/><streams><stream>)"
                          R"(<file name="a"/><file name="b"/></stream></streams></video></recording-event>)";

std::string GoodBut(const std::string& part, const std::string& replacement) {
    std::string description = kGood;
    return description.replace(description.find(part), part.size(), replacement);
}

TEST(ShownDescription, IsTheFirstWithTheFault) {
    using Fault = DescriptionFault;
    for (const auto& [fault, bad] : std::vector<std::pair<Fault, std::string>>{
             {Fault::NoEvent, "<event/>"},
             {Fault::NoEvent, "no XML"},
             {Fault::NoReid, GoodBut(" reid=\"E1\"", "")},
             {Fault::EmptyReid, GoodBut("E1", "")},
             {Fault::NamelessFile, GoodBut(" name=\"m\"", "")},
             {Fault::NamelessFile, GoodBut(" name=\"b\"", "")},
             {Fault::EmptyName, GoodBut("\"m\"", "\"\"")},
             {Fault::EmptyName, GoodBut("\"b\"", "\"\"")},
             {Fault::NoFiles,
              "<recording-event reid=\"E1\"><video><streams><stream/></streams></video></recording-event>"},
             {Fault::NoFiles, "<recording-event reid=\"E1\"/>"}}) {
        EXPECT_EQ(
            ShownOf({kGood,
                     "<recording-event reid=\"E2\"><video><metadata name=\"m\"/></video></recording-event>",
                     bad, "<recording-event"},
                    fault),
            bad.substr(0, 200) + (bad.size() > 200 ? "..." : ""));
        EXPECT_EQ(ShownOf({kGood}, fault), "");
    }
}

TEST(ShownDescription, SaysWhereOneIsNotXml) {
    EXPECT_EQ(ShownOf({"", kGood, "<a></b>"}, DescriptionFault::NotXml), "mismatched tag at byte 6: <a></b>");
    EXPECT_EQ(ShownOf({"", kGood}, DescriptionFault::NotXml), "");
}

TEST(Note, SaysWhichNameWasMeantIfOnlyTheCaseDiffers) {
    log::Statement unknown;
    unknown.sign = log::Sign::UnknownMessage;
    const auto noteOn = [&unknown](const std::string& name) {
        log::Message message;
        message.name = name;
        return NoteOn(unknown, message);
    };
    EXPECT_EQ(noteOn("ok"), "ok instead of OK");
    EXPECT_EQ(noteOn("Xml"), "Xml instead of XML");
    EXPECT_EQ(noteOn("event_xfer_ack"), "event_xfer_ack instead of EVENT_XFER_ACK");
    EXPECT_EQ(noteOn("weather"), "weather");
    EXPECT_EQ(noteOn("OK"), "OK");
}

}  // namespace
}  // namespace rig::judge
