#include "rig/judge/Run.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "rig/base/Printable.h"

namespace rig::judge {
namespace {

constexpr double kBucketsPerDoubling = 24;  // 2^(1/24) is 1.029

struct Flag {
    log::Sign sign;
    const char* text;
};

constexpr std::array kFlags = {Flag{log::Sign::EventSwitch, " -e"},     Flag{log::Sign::FileSwitch, " -f"},
                               Flag{log::Sign::TransportSwitch, " -t"}, Flag{log::Sign::RehashSwitch, " -r"},
                               Flag{log::Sign::XferSwitch, " -x"},      Flag{log::Sign::UpgradeSwitch, " -u"},
                               Flag{log::Sign::SizeSwitch, " -z"},      Flag{log::Sign::ConfigSwitch, " -g"}};

}  // namespace

void Tally::Add(const Place& place, std::string_view note) {
    if (Counts(note)) {
        proof_.Add(place);
    }
}

void Tally::Add(const result::Evidence& evidence, std::string_view note) {
    if (Counts(note)) {
        proof_.Add(evidence);
    }
}

/// @return whether to keep the line
bool Tally::Counts(std::string_view note) {
    if (count_++ == 0 && !note.empty()) {
        note_ = std::make_unique<const std::string>(note);
    }
    return !proof_.IsFull();
}

std::string Request::Words() const {
    return name + (reid.empty() ? "" : " " + Printable(reid)) + (file.empty() ? "" : "/" + Printable(file));
}

void ReactionTimes::Add(std::int64_t microseconds, const Place& place) {
    const std::int64_t time = std::max<std::int64_t>(microseconds, 0);
    if (count_++ == 0 || time > longest_) {
        longest_ = time;
        place.kept->Keep(place, longestAt_);
    }
    const auto number =
        static_cast<int>(std::ceil(std::log2(static_cast<double>(time) + 1) * kBucketsPerDoubling));
    auto bucket = std::lower_bound(buckets_.begin(), buckets_.end(), std::pair(number, std::uint64_t{0}));
    if (bucket == buckets_.end() || bucket->first != number) {
        bucket = buckets_.insert(bucket, {number, 0});
    }
    ++bucket->second;
}

double ReactionTimes::Percentile(double fraction) const {
    const auto rank = static_cast<std::uint64_t>(std::ceil(fraction * static_cast<double>(count_)));
    std::uint64_t seen = 0;
    for (const auto& [bucket, count] : buckets_) {
        seen += count;
        if (seen >= rank) {
            return std::min((std::exp2(bucket / kBucketsPerDoubling) - 1) / 1000, Longest());
        }
    }
    return Longest();
}

std::uint64_t Run::Received(std::string_view message) const {
    const auto found = received.find(message);
    return found == received.end() ? 0 : found->second.Count();
}

bool Run::EndedByMessage() const {
    const std::vector<result::Evidence> proof = exceptions.Lines();
    return std::any_of(proof.begin(), proof.end(), [](const auto& line) {
        return line.text.find("std::logic_error") != std::string::npos ||
               line.text.find("std::length_error") != std::string::npos;
    });
}

bool Run::HarnessEnded() const {
    return assertions.Any() || exceptions.Any() || noMessage.Any() || badLength.Any() ||
           namelessFiles.Any() || notFiles.Any() || Saw(log::Sign::BadPrefix) || Saw(log::Sign::NotXml) ||
           Saw(log::Sign::EndInsideText) || Saw(log::Sign::SendFailed);
}

std::string Run::AfterWhat() const {
    return lastGood.empty()
               ? "; no good message came before"
               : fmt::format("; the last good message was {} in line {}", lastGood, lastGoodLine);
}

std::string Run::Switches() const {
    std::string text = fmt::format("-p {}", switches.protocol);
    for (const Flag& flag : kFlags) {
        if (Saw(flag.sign)) {
            text += flag.text;
        }
    }
    if (Saw(log::Sign::CloseSwitch)) {
        text += fmt::format(" -c {}", switches.closeEarly);
    }
    if (Saw(log::Sign::DurationSwitch)) {
        text += fmt::format(" -d {}", switches.doneDuration);
    }
    if (switches.hasSleep) {
        text += fmt::format(" -s {}", switches.sleepSeconds);
    }
    return text;
}

}  // namespace rig::judge
