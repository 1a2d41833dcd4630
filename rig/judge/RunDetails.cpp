#include <fmt/format.h>

#include "rig/judge/Framing.h"
#include "rig/judge/Notes.h"
#include "rig/judge/RunModel.h"
#include "rig/log/RequestText.h"

// What a line of the harness only hints at, or does not say: the messages and the lengths tell it.

namespace rig::judge {

/// @return what the statement itself does not say
std::string RunModel::NoteOn(const log::Statement& statement) {
    switch (statement.sign) {
        case log::Sign::EndInsideText:
            return ExplainMissing(reader_.Arriving().Announced(), statement.Number()).words +
                   run_.AfterWhat();
        case log::Sign::BadPrefix:
        case log::Sign::PrefixReadError:
        case log::Sign::TextReadError:
        case log::Sign::SendFailed:
            return run_.AfterWhat().substr(2);
        case log::Sign::NotXml:
            if (!malformed_.empty()) {
                return malformed_;
            }
            [[fallthrough]];
        default:
            return hasText_ ? judge::NoteOn(statement, reader_.LastMessage()) : std::string();
    }
}

/// What the harness's line only hints at.
void RunModel::TakeDetails(const log::Statement& statement, const Place& place) {
    switch (statement.sign) {
        case log::Sign::HeaderByte:
            CheckLength(place);
            break;
        case log::Sign::Expecting:
            if (const std::int64_t length = reader_.Arriving().Announced(); length < 0) {
                run_.badLength.Add(place, "prefix " + PrefixFor(static_cast<std::uint32_t>(length)));
            }
            break;
        case log::Sign::EndInsideText: {
            const FramingFault fault = ExplainMissing(reader_.Arriving().Announced(), statement.Number());
            if (fault.isProved) {
                run_.wrongPrefix.Add(place, fault.words);
            }
            break;
        }
        case log::Sign::NoEventTag:
            if (const std::string where = hasText_ ? ListedElsewhere(reader_.LastMessage()) : "";
                !where.empty()) {
                run_.listedElsewhere.Add(place, where);
            }
            break;
        case log::Sign::SameHash:
        case log::Sign::NewHash:
            NoteEmpty("hashCode", run_.emptyHash, place);
            NoteEmpty("length", run_.emptyLength, place);
            break;
        default:
            break;
    }
}

void RunModel::NoteEmpty(const char* attribute, Tally& tally, const Place& place) {
    const log::Message& message = reader_.LastMessage();
    const pugi::xml_attribute given = message.root.attribute(attribute);
    if (hasText_ && given && *given.value() == '\0') {
        tally.Add(place, Shown(message));
    }
}

/// Holds what the judge believes of a request against the length with which it went out.
void RunModel::CheckLength(const Place& place) {
    const log::Request& request = reader_.LastRequest();
    constexpr std::uint32_t kLeastAnnounced =
        0x10;  // below which only a line that is cut off announces anything
    if (!request.isAnnounced || request.announced < kLeastAnnounced || request.name.empty() ||
        !run_.hasStart || run_.damaged.Any()) {
        return;  // its state is not known anyway
    }
    const std::size_t size = log::SizeOf(request, run_.switches);
    const std::uint32_t announced = log::AnnouncedFor(size, run_.Saw(log::Sign::SizeSwitch));
    if (announced != request.announced) {
        run_.misread.Add(place, fmt::format("{}: {} bytes as the judge believes, {} as it went out",
                                            Request(request).Words(), announced, request.announced));
    }
}

}  // namespace rig::judge
