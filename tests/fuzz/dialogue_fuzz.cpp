// The simulated DVR's dialogues, fed sequences of a harness's messages, whole and damaged. A breach ends a
// dialogue that is not tolerant.
#include <memory>

#include "rig/dvr/Failure.h"
#include "rig/dvr/dialogue/Dialogue_1_0.h"
#include "rig/dvr/dialogue/Dialogue_2_0.h"
#include "tests/fuzz/Choices.h"
#include "tests/fuzz/Demand.h"
#include "tests/fuzz/Messages.h"
#include "tests/rig/dvr/FixedRecordings.h"

namespace {

/// What a harness would ask for next: what the last answer was about.
void Learn(fuzz::Expected& expected, const rig::dvr::Message& answer) {
    if (const auto reid = answer.Find("reid")) {
        expected.event = *reid;
        expected.file.first = *reid;
    }
}

void CheckAnswer(const rig::dvr::Message& answer) {
    const std::string text = answer.Text();
    fuzz::Demand(rig::dvr::Message::Parse(text).Text() == text,
                 "an answer that can be read, found '" + text + "'");
}

/// @return whether the dialogue goes on
bool Step(fuzz::Choices& choices, rig::dvr::Dialogue& dialogue, fuzz::Sender sender, fuzz::Expected& expected,
          std::size_t& transfers) {
    try {
        if (dialogue.IsTransferring() && !choices.Hit(4)) {
            const rig::dvr::Message complete = dialogue.FinishTransfer();
            CheckAnswer(complete);
            ++transfers;
            fuzz::Demand(!dialogue.IsTransferring(), "the end of a transfer");
            return true;
        }
        constexpr const char* kNames[] = {"m.xml", "a.ts", "b.ts", "c.ts"};
        constexpr const char* kEvents[] = {"EVT1", "EVT2"};
        expected.file.second = choices.Pick(kNames);
        if (choices.Hit(4)) {
            expected.event = choices.Pick(kEvents);
            expected.file.first = expected.event;
        }
        const std::string inPlace = dialogue.Expected();
        expected.req = inPlace.substr(0, inPlace.find_first_of(" ,"));
        const rig::dvr::Message message =
            rig::dvr::Message::Parse(fuzz::MakeMessage(choices, sender, expected));
        for (const rig::dvr::Message& answer : dialogue.Handle(message)) {
            CheckAnswer(answer);
            Learn(expected, answer);
        }
        dialogue.TakeRemarks();
        return !dialogue.IsDone() || choices.Hit(2);
    } catch (const rig::dvr::Breach& breach) {
        const std::string line = breach.what();
        fuzz::Demand(line.find('\n') == std::string::npos, "a breach in one line, found '" + line + "'");
        return choices.Hit(2);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Choices choices(bytes, size);
    const FixedRecordings recordings;
    const std::size_t kind = choices.Roll(6);
    const bool isFailing = kind == 5;
    std::unique_ptr<rig::dvr::Dialogue> dialogue;
    if (kind < 2) {
        dialogue = std::make_unique<rig::dvr::Dialogue_1_0>(recordings);
    } else {
        dialogue = std::make_unique<rig::dvr::Dialogue_2_0>(recordings,
                                                            isFailing ? "/" : "/nonexistent/velloranFail");
    }
    if (kind % 2 == 0) {
        dialogue->Tolerate();
    }
    CheckAnswer(dialogue->Open());
    fuzz::Expected expected = {"EVT1", {"EVT1", "m.xml"}, ""};
    const fuzz::Sender sender = kind < 2 ? fuzz::Sender::Harness_1_0 : fuzz::Sender::Harness_2_0;
    std::size_t transfers = 0;
    while (choices.AreLeft() && Step(choices, *dialogue, sender, expected, transfers)) {
        dialogue->Situation();
    }
    dialogue->Summary();
    fuzz::Demand(dialogue->Exported().files <= transfers, "no more files exported than were transferred");
    return 0;
}
