// The simulated DVR gives the answers of the catalogue.
#include <gtest/gtest.h>

#include "rig/dvr/dialogue/Dialogue_1_0.h"
#include "rig/dvr/dialogue/Dialogue_2_0.h"
#include "rig/dvr/wire/WireCheck.h"
#include "tests/fuzz/Messages.h"
#include "tests/rig/dvr/FixedRecordings.h"
#include "tests/rig/protocol/Facts.h"

namespace rig::protocol {
namespace {

/// @return a request about an event or a file that there is
std::string RequestOf(const MessageKind& kind) {
    fuzz::Choices simplest(nullptr, 0);
    const auto sender = kind.dialect == 1 ? fuzz::Sender::Harness_1_0 : fuzz::Sender::Harness_2_0;
    return fuzz::MakeMessage(simplest, sender, {"EVT1", {"EVT1", "a.ts"}, kind.name});
}

/// @return the name of the answer; empty if there is none
std::string Answer(dvr::Dialogue& dialogue, const std::string& request) {
    const std::vector<dvr::Message> answers = dialogue.Handle(dvr::Message::Parse(request));
    if (dialogue.IsTransferring()) {
        return dialogue.FinishTransfer().Name();
    }
    return answers.empty() ? "" : answers.front().Name();
}

TEST(SimulatedDvr, AnswersEachRequest) {
    const FixedRecordings recordings;
    dvr::Dialogue_1_0 one(recordings);
    dvr::Dialogue_2_0 two(recordings, "");
    one.Tolerate();
    two.Tolerate();
    for (const MessageKind& kind : Catalogue()) {
        if (kind.sender == Sender::Harness) {
            dvr::Dialogue& dialogue = kind.dialect == 1 ? static_cast<dvr::Dialogue&>(one) : two;
            EXPECT_EQ(Answer(dialogue, RequestOf(kind)), kind.answers.empty() ? "" : kind.answers.front())
                << RequestOf(kind);
        }
    }
}

TEST(SimulatedDvr, FindsNothingWrongWithAnyRequest) {
    for (const MessageKind& kind : Catalogue()) {
        if (kind.sender == Sender::Harness) {
            const std::string text = RequestOf(kind);
            const auto size = static_cast<std::uint32_t>(text.size());
            EXPECT_EQ(dvr::FindWireFaults({dvr::EncodePrefix(size), size}, text, kind.dialect),
                      std::vector<std::string>())
                << text;
        }
    }
}

}  // namespace
}  // namespace rig::protocol
