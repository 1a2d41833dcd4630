#include "rig/dvr/recordings/SyntheticRecordings.h"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace rig::dvr {
namespace {

constexpr std::size_t kSmallestBytes = 100'000;
constexpr std::size_t kStepBytes = 50'021;
constexpr std::size_t kSizes = 32;  // so that few files have the same size

/// @return bytes that look like compressed video: a xorshift sequence from a seed other than 0
Recordings::Source Noise(std::uint32_t seed, std::size_t count) {
    return [state = seed, left = count](char* buffer, std::size_t capacity) mutable {
        const std::size_t some = std::min(capacity, left);
        left -= some;
        std::generate_n(buffer, some, [&state] {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            return static_cast<char>(state & 0xff);
        });
        return some;
    };
}

}  // namespace

SyntheticRecordings::SyntheticRecordings()
    : SyntheticRecordings(
          {{"EVT-0001", "EVT-0001.xml", {{"front-1.ts", "front-2.ts"}, {"rear-1.ts", "rear-2.ts"}}},
           {"EVT-0002", "EVT-0002.xml", {{"front-1.ts", "front-2.ts"}}},
           {"EVT-0003", "EVT-0003.xml", {}}},
          "synthetic recordings") {}

SyntheticRecordings::SyntheticRecordings(const std::vector<Event>& events, const std::string& origin)
    : origin_(origin) {
    for (const Event& event : events) {
        Add(event);
    }
}

void SyntheticRecordings::Add(const Event& event) {
    events_.push_back(event.id);
    descriptions_[event.id] = event;
    for (const auto& stream : event.streams) {
        for (const std::string& file : stream) {
            const auto number = static_cast<std::uint32_t>(numbers_.size() + 1);
            numbers_[{event.id, file}] = number;
        }
    }
    numbers_[{event.id, event.metadata}] = 0;
}

Event SyntheticRecordings::Find(const std::string& event) const {
    return descriptions_.at(event);
}

Recordings::Source SyntheticRecordings::Open(const std::string& event, const std::string& file) const {
    const std::uint32_t number = numbers_.at({event, file});
    if (number > 0) {
        return Noise(number, kSmallestBytes + number % kSizes * kStepBytes);
    }
    const auto description = std::make_shared<std::string>(Find(event).Describe());
    return [description, source = SourceOf(*description)](char* buffer, std::size_t capacity) {
        return source(buffer, capacity);
    };
}

}  // namespace rig::dvr
