#include "rig/history/Order.h"

#include <algorithm>
#include <cstddef>

namespace rig::history {
namespace {

bool IsDigit(char letter) {
    return letter >= '0' && letter <= '9';
}

/// Takes the number off the beginning of a text. @return it without leading zeros; of any length
std::string_view TakeNumber(std::string_view& text) {
    const auto end =
        static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin());
    std::string_view number = text.substr(0, end);
    text.remove_prefix(end);
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}

int Compared(std::size_t one, std::size_t other) {
    return static_cast<int>(one > other) - static_cast<int>(one < other);
}

/// Takes a number off both. @return less than 0 if the first is less
int CompareNumbers(std::string_view& one, std::string_view& other) {
    const std::string_view number = TakeNumber(one);
    const std::string_view another = TakeNumber(other);
    const int byLength = Compared(number.size(), another.size());
    return byLength != 0 ? byLength : number.compare(another);
}

int CompareNaturally(std::string_view one, std::string_view other) {
    while (!one.empty() && !other.empty()) {
        if (IsDigit(one.front()) && IsDigit(other.front())) {
            if (const int order = CompareNumbers(one, other)) {
                return order;
            }
        } else if (one.front() != other.front()) {
            return one.compare(other);
        } else {
            one.remove_prefix(1);
            other.remove_prefix(1);
        }
    }
    return Compared(one.size(), other.size());
}

}  // namespace

bool IsNaturallyBefore(std::string_view one, std::string_view other) {
    const int order = CompareNaturally(one, other);
    return order != 0 ? order < 0 : one < other;
}

}  // namespace rig::history
