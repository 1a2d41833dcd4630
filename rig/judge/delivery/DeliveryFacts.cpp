#include "rig/judge/delivery/DeliveryFacts.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace rig::judge {
namespace {

constexpr std::size_t kInWords = 5;
constexpr std::size_t kLines = 4;

}  // namespace

void Files::Add(const std::string& words) {
    ++count_;
    if (words_.size() < kInWords) {
        words_.push_back(words);
    }
}

void Files::Add(const std::string& words, const result::Evidence& line) {
    Add(words);
    if (lines_.size() < kLines) {
        lines_.push_back(line);
        lines_.back().note = words;
    }
}

std::string Files::Words() const {
    const std::string words = fmt::format("{}", fmt::join(words_, ", "));
    const std::uint64_t more = count_ - words_.size();
    return more == 0 ? words : fmt::format("{} and {} more", words, more);
}

}  // namespace rig::judge
