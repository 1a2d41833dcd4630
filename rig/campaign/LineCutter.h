#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace rig::campaign {

/// Cuts what arrives in pieces into lines. Of one line at most kLongestLine bytes (LogReader.h) are kept.
class LineCutter {
 public:
    /// Takes a line without its newline; numbers count from 1.
    using Take = std::function<void(std::uint64_t number, std::string_view line)>;

    explicit LineCutter(Take take) : take_(std::move(take)) {}

    void Add(std::string_view piece);

    /// Gives a last line that has no newline.
    void End();

 private:
    void Keep(std::string_view part);
    void Give();

    Take take_;
    std::string rest_;
    std::uint64_t number_ = 0;
};

}  // namespace rig::campaign
