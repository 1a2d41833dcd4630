#pragma once

#include <cstddef>
#include <utility>
#include <vector>

/// Random choices, made in advance so that a failing run of them can be shortened: zeros, and the end of the
/// dice, give the simplest choice.
class Dice {
 public:
    explicit Dice(std::vector<unsigned int> rolls) : rolls_(std::move(rolls)) {}

    bool AreLeft() const { return next_ < rolls_.size(); }
    /// @return a number below `sides`
    std::size_t Roll(std::size_t sides) { return AreLeft() ? rolls_[next_++] % sides : 0; }
    /// @return true once in so many rolls
    bool Hit(std::size_t sides) { return Roll(sides) == sides - 1; }
    template <typename Value>
    const Value& Pick(const std::vector<Value>& values) {
        return values[Roll(values.size())];
    }

 private:
    std::vector<unsigned int> rolls_;
    std::size_t next_ = 0;
};
