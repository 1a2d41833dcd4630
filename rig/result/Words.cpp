#include "rig/result/Words.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace rig::result {
namespace {

constexpr std::int64_t kMicroseconds = 1'000'000;  // in a second

}  // namespace

std::string SecondsSince(const std::optional<std::int64_t>& begin, const std::optional<std::int64_t>& time) {
    return begin && time ? fmt::format("{:.3f}", static_cast<double>(*time - *begin) / kMicroseconds) : "";
}

std::string Date(std::int64_t time) {
    return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(static_cast<std::time_t>(time / kMicroseconds)));
}

}  // namespace rig::result
