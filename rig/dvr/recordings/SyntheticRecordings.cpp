#include "rig/dvr/recordings/SyntheticRecordings.h"

#include <cstdint>

namespace rig::dvr {
namespace {

constexpr std::size_t kSmallestBytes = 100'000;
constexpr std::size_t kStepBytes = 50'021;  // so that no two files have the same size

/// @return bytes that look like compressed video: a xorshift sequence from a seed other than 0
std::string Noise(std::uint32_t seed, std::size_t count) {
    std::string noise;
    noise.reserve(count);
    std::uint32_t state = seed;
    while (noise.size() < count) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        noise += static_cast<char>(state & 0xff);
    }
    return noise;
}

}  // namespace

SyntheticRecordings::SyntheticRecordings() {
    Add({"EVT-0001", "EVT-0001.xml", {{"front-1.ts", "front-2.ts"}, {"rear-1.ts", "rear-2.ts"}}});
    Add({"EVT-0002", "EVT-0002.xml", {{"front-1.ts", "front-2.ts"}}});
    Add({"EVT-0003", "EVT-0003.xml", {}});
}

void SyntheticRecordings::Add(const Event& event) {
    events_.push_back(event.id);
    descriptions_[event.id] = event;
    for (const auto& stream : event.streams) {
        for (const std::string& file : stream) {
            const std::size_t number = contents_.size() + 1;
            contents_[{event.id, file}] =
                Noise(static_cast<std::uint32_t>(number), kSmallestBytes + number * kStepBytes);
        }
    }
    contents_[{event.id, event.metadata}] = event.Describe();
}

Event SyntheticRecordings::Find(const std::string& event) const {
    return descriptions_.at(event);
}

Recordings::Source SyntheticRecordings::Open(const std::string& event, const std::string& file) const {
    return SourceOf(contents_.at({event, file}));
}

}  // namespace rig::dvr
