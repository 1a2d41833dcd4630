// GetMessage over a scripted socket: frames in any pieces, failing reads between them, any prefix, any text.
#include <cerrno>

#include "protocol/v1_0/VelProtocol_1_0.h"
#include "tests/fuzz/Choices.h"
#include "tests/fuzz/Demand.h"
#include "tests/fuzz/world/Ends.h"
#include "tests/fuzz/world/World.h"

namespace {

constexpr int kErrors[] = {EINTR, EAGAIN, EIO, ECONNRESET};
constexpr std::int64_t kMostText = 1 << 16;

/// @return a prefix for that text: mostly right, in the shortest form or not, sometimes any bytes
std::string ChoosePrefix(fuzz::Choices& choices, std::size_t size) {
    switch (choices.Roll(8)) {
        case 5:
            return fuzz::Prefix(static_cast<std::uint32_t>(size + choices.Roll(8)));
        case 6: {
            std::string longer = fuzz::Prefix(static_cast<std::uint32_t>(size));
            longer.back() = static_cast<char>(longer.back() | 0x80);
            return longer + '\0';
        }
        case 7:
            return choices.Bytes(choices.Roll(6));
        default:
            return fuzz::Prefix(static_cast<std::uint32_t>(size));
    }
}

void FeedInPieces(fuzz::Choices& choices, fuzz::World& world, std::string bytes) {
    while (!bytes.empty()) {
        if (choices.Hit(8)) {
            world.FeedError(choices.Pick(kErrors));
        }
        const std::size_t count =
            choices.Hit(3) ? choices.Roll(bytes.size() < 256 ? bytes.size() : 256) + 1 : bytes.size();
        world.Feed(bytes.substr(0, count));
        bytes.erase(0, count);
    }
}

std::size_t EscapedSize(const std::string& text) {
    std::size_t size = 0;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isShort = byte == '\\' || byte == '\n' || byte == '\r' || byte == '\t';
        size += isShort ? 2 : byte < 0x20 || byte == 0x7f ? 4 : 1;
    }
    return size;
}

/// The log must hold the whole message, in slices of 800 bytes.
void CheckSlices(fuzz::World& world, const std::string& text) {
    std::size_t logged = 0;
    std::size_t slices = 0;
    for (const std::string& line : world.TakeLog(32)) {
        ++slices;
        logged += line.size() - line.find(':', line.find(':') + 1) - 1;
    }
    const std::size_t due = text.empty() ? 1 : (text.size() + 799) / 800;
    fuzz::Demand(slices == due && logged == EscapedSize(text),
                 std::to_string(due) + " slices with " + std::to_string(EscapedSize(text)) +
                     " bytes, found " + std::to_string(slices) + " with " + std::to_string(logged));
}

/// Reads one frame. @return whether another may follow
bool ReadFrame(fuzz::Choices& choices, fuzz::World& world, VelProtocolBase& protocol) {
    std::string text = choices.Bytes(choices.Hit(3) ? choices.Word() % 4096 : choices.Roll(64));
    if (choices.Hit(6)) {
        text += std::string(choices.Word() % 3000, 'x');
    }
    const std::string frame = ChoosePrefix(choices, text.size()) + text;
    const std::int64_t announced = fuzz::Announced(frame);
    if (announced > kMostText && announced <= INT32_MAX) {
        return false;  // so much memory is not this target's concern
    }
    FeedInPieces(choices, world, frame);
    std::vector<char> message;
    if (!fuzz::ComesBack([&] { protocol.GetMessage(message); })) {
        return false;
    }
    std::size_t prefix = 0;
    while ((frame[prefix++] & 0x80) != 0) {
    }
    const std::string due = frame.substr(prefix, static_cast<std::size_t>(announced));
    fuzz::Demand(std::string(message.data(), message.size()) == due + '\0',
                 "the message and a NUL, and nothing else");
    CheckSlices(world, due);
    return world.Unread() == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::World world;
    VelProtocol_1_0 protocol(TestOptions(), fuzz::World::kSocket);
    fuzz::Choices choices(bytes, size);
    while (choices.AreLeft() && ReadFrame(choices, world, protocol)) {
    }
    return 0;
}
