#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

/// Turns the bytes of an input into choices. Zeros, and the end of the input, give the simplest choice, so
/// that a shorter input is a simpler run.
class Choices {
 public:
    Choices(const std::uint8_t* bytes, std::size_t size) : next_(bytes), end_(bytes + size) {}

    bool AreLeft() const { return next_ < end_; }

    /// @param sides  at most 256
    /// @return a number below `sides`
    std::size_t Roll(std::size_t sides) { return Byte() % sides; }

    /// @return true once in so many rolls
    bool Hit(std::size_t sides) { return Roll(sides) == sides - 1; }

    template <typename List>
    const auto& Pick(const List& list) {
        return list[Roll(std::size(list))];
    }

    std::uint8_t Byte() { return AreLeft() ? *next_++ : std::uint8_t{0}; }

    std::uint32_t Word() {
        std::uint32_t word = 0;
        for (int byte = 0; byte < 4; ++byte) {
            word = word << 8 | Byte();
        }
        return word;
    }

    /// @return up to `most` bytes of the input, unchanged
    std::string Bytes(std::size_t most) {
        const auto left = static_cast<std::size_t>(end_ - next_);
        const std::size_t count = most < left ? most : left;
        std::string bytes(reinterpret_cast<const char*>(next_), count);
        next_ += count;
        return bytes;
    }

    /// @return all bytes that are left
    std::string Rest() { return Bytes(static_cast<std::size_t>(end_ - next_)); }

 private:
    const std::uint8_t* next_;
    const std::uint8_t* end_;
};

}  // namespace fuzz
