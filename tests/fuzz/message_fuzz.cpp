// How the simulated DVR reads a message: any text is a message or a breach; a printed message reads back
// unchanged.
#include <pugixml.hpp>

#include "rig/dvr/Failure.h"
#include "rig/dvr/dialogue/MessageRules.h"
#include "rig/dvr/wire/Markup.h"
#include "rig/dvr/wire/Message.h"
#include "rig/dvr/wire/WireCheck.h"
#include "tests/fuzz/Choices.h"
#include "tests/fuzz/Demand.h"
#include "tests/fuzz/Messages.h"

namespace {

constexpr fuzz::Sender kSenders[] = {fuzz::Sender::Harness_1_0, fuzz::Sender::Harness_2_0,
                                     fuzz::Sender::Dvr_1_0, fuzz::Sender::Dvr_2_0};

void CheckMessageText(const std::string& text) {
    try {
        const rig::dvr::Message message = rig::dvr::Message::Parse(text);
        const std::string printed = message.Text();
        fuzz::Demand(message.Copy().Text() == printed, "a copy that is printed alike");
        const rig::dvr::Message again = rig::dvr::Message::Parse(printed);
        fuzz::Demand(again.Text() == printed && again.Name() == message.Name(),
                     "'" + printed + "' again, found '" + again.Text() + "'");
    } catch (const rig::dvr::Breach& breach) {
        const std::string line = breach.what();
        fuzz::Demand(line.find('\n') == std::string::npos, "a breach in one line, found '" + line + "'");
    }
}

void CheckRules(const std::string& text, int dialect) {
    try {
        rig::dvr::CheckMessage(rig::dvr::Message::Parse(text), dialect);
    } catch (const rig::dvr::Breach&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Choices choices(bytes, size);
    const std::size_t kind = choices.Roll(5);
    const std::string text = kind == 4
                                 ? choices.Rest()
                                 : fuzz::MakeMessage(choices, kSenders[kind], {"EVT1", {"EVT1", "a.ts"}, ""});
    CheckMessageText(text);
    CheckRules(text, 1);
    CheckRules(text, 2);
    rig::dvr::IsDocument(text);
    const auto end = rig::dvr::DocumentEnd(text);
    fuzz::Demand(!end || *end <= text.size(), "a document's end inside its text");
    const rig::dvr::ReceivedFrame frame = {rig::dvr::EncodePrefix(static_cast<std::uint32_t>(text.size())),
                                           text.size()};
    rig::dvr::FindWireFaults(frame, text, 1);
    rig::dvr::FindWireFaults(frame, text, 2);
    return 0;
}
