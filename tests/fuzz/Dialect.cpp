#include "tests/fuzz/Dialect.h"

#include <algorithm>
#include <cerrno>

#include "tests/fuzz/Demand.h"
#include "tests/fuzz/world/Ends.h"
#include "tests/fuzz/world/World.h"

namespace fuzz {
namespace {

constexpr std::int64_t kMostText = 1 << 16;
constexpr std::size_t kMostMessages = 64;

std::string ChooseFrame(Choices& choices, const std::string& text) {
    if (!choices.Hit(64)) {
        return Prefix(static_cast<std::uint32_t>(text.size())) + text;
    }
    const std::string frame = choices.Bytes(choices.Roll(6)) + text;
    const std::int64_t announced = Announced(frame);
    const bool isTooMuch = announced > kMostText && announced <= INT32_MAX;
    return isTooMuch ? Prefix(static_cast<std::uint32_t>(text.size())) + text : frame;
}

/// @return the name of a message, from the first attribute of its `msg`; empty if it has none
std::string NameOf(const std::string& text) {
    const std::string start = "<msg req=\"";
    if (text.compare(0, start.size(), start) != 0) {
        return "";
    }
    return text.substr(start.size(), text.find('"', start.size()) - start.size());
}

/// @return the form of a message that the harness may send; null if it may not
const Form* FindForm(const std::string& name, int protocol) {
    const Forms& forms = FormsOf(protocol == 1 ? Sender::Harness_1_0 : Sender::Harness_2_0);
    const auto found =
        std::find_if(forms.begin(), forms.end(), [&name](const Form& form) { return form.req == name; });
    return found == forms.end() ? nullptr : &*found;
}

/// Checks the writes of one answer: prefix and text in turn, at most two frames, each a message of the
/// dialect that announces the right length.
void CheckFrames(const std::vector<std::string>& writes, const TestOptions& options) {
    Demand(writes.size() % 2 == 0 && writes.size() <= 4, "at most two frames, each in two writes");
    for (std::size_t index = 0; index < writes.size(); index += 2) {
        const std::string& text = writes[index + 1];
        const std::size_t announced = options.sizeError ? text.size() * 3 / 2 : text.size();
        Demand(writes[index] == Prefix(static_cast<std::uint32_t>(announced)),
               "a prefix of " + std::to_string(announced));
        Demand(FindForm(NameOf(text), options.protocol) != nullptr,
               "a message of the dialect, found '" + text + "'");
        const bool isWhole = text.size() > 6 && (text.compare(text.size() - 2, 2, "/>") == 0 ||
                                                 text.compare(text.size() - 6, 6, "</msg>") == 0);
        Demand(isWhole && text.find('\0') == std::string::npos, "a whole document, found '" + text + "'");
    }
}

/// @return the name of a good DVR's answer; before any request, its greeting
std::string AnswerTo(const std::string& request, int protocol) {
    const Form* const form = FindForm(request, protocol);
    return request.empty() ? "OK" : form == nullptr ? "" : form->answer;
}

Expected ExpectedBy(const VelProtocolBase& harness, const std::string& request, int protocol) {
    Expected expected;
    expected.req = AnswerTo(request, protocol);
    if (!harness.events.empty()) {
        expected.event = harness.events.front();
    }
    if (!harness.filesToReceive.empty()) {
        expected.file = harness.filesToReceive.front();
    }
    return expected;
}

}  // namespace

TestOptions ChooseOptions(Choices& choices, int protocol) {
    TestOptions options;
    options.protocol = protocol;
    const unsigned int flags = choices.Byte();
    options.rehash = (flags & 1) != 0;
    options.invalidEvent = (flags & 2) != 0;
    options.invalidFile = (flags & 4) != 0;
    options.transportException = (flags & 8) != 0;
    options.xferInProgress = (flags & 16) != 0;
    options.upgrade = (flags & 32) != 0;
    options.sizeError = (flags & 64) != 0;
    options.configUpdate = (flags & 128) != 0;
    options.closeEarly = static_cast<int>(choices.Roll(5)) - 1;
    options.doneDuration = static_cast<int>(choices.Roll(3)) * 30;
    return options;
}

void PlayDialogue(Choices& choices, VelProtocolBase& harness, Sender sender, const TestOptions& options) {
    World world;
    if (choices.Hit(16)) {
        world.LimitWrite(choices.Roll(8), static_cast<long>(choices.Roll(4)) - 1, EPIPE);
    }
    std::string request;
    for (std::size_t count = 0; choices.AreLeft() && count < kMostMessages; ++count) {
        world.Feed(ChooseFrame(choices,
                               MakeMessage(choices, sender, ExpectedBy(harness, request, options.protocol))));
        if (!ComesBack([&] { harness.HandleMessage(); })) {
            return;
        }
        const std::vector<std::string> writes = world.TakeWrites();
        CheckFrames(writes, options);
        request = writes.empty() ? request : NameOf(writes.back());
        world.TakeLog(1);
        if (world.Unread() != 0) {
            return;  // what follows a wrong prefix is not a frame
        }
    }
}

}  // namespace fuzz
