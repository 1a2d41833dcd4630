// The simulated DVR's frame decoder: the same bytes give the same frames, however they are split.
#include <optional>
#include <vector>

#include "rig/dvr/Failure.h"
#include "rig/dvr/wire/Frame.h"
#include "tests/fuzz/Choices.h"
#include "tests/fuzz/Demand.h"

namespace {

/// What a decoder makes of a stream.
struct Outcome {
    std::vector<std::string> texts;
    std::vector<std::string> prefixes;
    std::string breach;
    std::optional<std::string> rest;
};

bool operator==(const Outcome& one, const Outcome& other) {
    return one.texts == other.texts && one.prefixes == other.prefixes && one.breach == other.breach &&
           one.rest == other.rest;
}

/// @param piece  bytes at a time; 0: all at once
Outcome Decode(const std::string& stream, std::size_t piece) {
    rig::dvr::FrameDecoder decoder;
    Outcome outcome;
    try {
        std::size_t start = 0;
        do {
            const std::string part = stream.substr(start, piece == 0 ? std::string::npos : piece);
            decoder.Append(part.data(), part.size());
            start += part.size();
            while (const auto text = decoder.NextText()) {
                outcome.texts.push_back(*text);
                outcome.prefixes.push_back(decoder.LastFrame().prefix);
                fuzz::Demand(decoder.LastFrame().announced == text->size(), "as many bytes as announced");
            }
        } while (start < stream.size());
        decoder.Progress();
        outcome.rest = decoder.GiveUp();
        fuzz::Demand(!outcome.rest, "that no half frame is given out");
    } catch (const rig::dvr::Breach& breach) {
        outcome.breach = breach.what();
    }
    return outcome;
}

/// When it tolerates wrong lengths, the decoder may produce other frames, but no byte twice and no byte that
/// was not fed.
void DecodeTolerantly(fuzz::Choices& choices, const std::string& stream) {
    rig::dvr::FrameDecoder decoder;
    decoder.AcceptSizeErrors();
    if (choices.Hit(2)) {
        decoder.ExpectSizeError(choices.Byte(), choices.Byte());
    }
    std::size_t given = 0;
    try {
        decoder.Append(stream.data(), stream.size());
        while (const auto text = decoder.NextText()) {
            given += text->size() + decoder.LastFrame().prefix.size();
        }
        decoder.Progress();
        if (const auto text = decoder.GiveUp()) {
            given += text->size() + decoder.LastFrame().prefix.size();
        }
        decoder.InsideFrame();
    } catch (const rig::dvr::Breach&) {
    }
    fuzz::Demand(given <= stream.size(), "no more bytes than came");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Choices choices(bytes, size);
    const std::size_t piece = choices.Roll(32) + 1;
    fuzz::Choices tolerance(bytes, size);
    const std::string stream = choices.Rest();
    fuzz::Demand(Decode(stream, 0) == Decode(stream, piece),
                 "the same frames in pieces of " + std::to_string(piece) + " bytes as at once");
    DecodeTolerantly(tolerance, stream);

    const std::string frame = rig::dvr::EncodeFrame(stream);
    const Outcome own = Decode(frame, 0);
    fuzz::Demand(own.texts == std::vector<std::string>{stream}, "a frame of our own as one text");
    return 0;
}
