#pragma once

#include <optional>
#include <string>
#include <utility>

namespace rig::judge {

/// Words of a finding. Most are never shown, and most are literals, which are not copied.
class Text {
 public:
    Text() = default;
    /// @param literal  must last as long as the program
    Text(const char* literal) : literal_(literal) {}
    Text(std::string made) : made_(std::move(made)) {}

    std::string Whole() const { return made_ ? *made_ : literal_; }

 private:
    const char* literal_ = "";
    std::optional<std::string> made_;
};

}  // namespace rig::judge
