#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace rig::log {

/// Takes one line of a log, without its newline. Line numbers count from 1; the view is valid only during the
/// call.
using TakeLine = std::function<void(std::uint64_t number, std::string_view line)>;

/// How much of one line is kept; the rest is skipped. This may cut the harness's longest line, a peer's
/// document in one line: memory must not grow with what is in a log.
constexpr std::size_t kLongestLine = std::size_t{4} << 20;

/// Cuts what arrives in pieces into lines.
class LineCutter {
 public:
    explicit LineCutter(TakeLine take) : take_(std::move(take)) {}

    void Add(std::string_view piece);

    /// Passes on a last line that has no newline.
    void End();

 private:
    void Keep(std::string_view part);
    void PassOn(std::string_view end);

    TakeLine take_;
    std::string rest_;
    std::uint64_t number_ = 0;
};

}  // namespace rig::log
