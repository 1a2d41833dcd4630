#include "rig/log/LineTime.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "rig/log/Statement.h"

namespace rig::log {
namespace {

/// @return the number that the `count` digits at `at` make; nothing if they are not all digits
std::optional<int> Digits(std::string_view text, std::size_t at, std::size_t count) {
    if (at + count > text.size()) {
        return std::nullopt;
    }
    int number = 0;
    for (const char byte : text.substr(at, count)) {
        if (!IsDigit(byte)) {
            return std::nullopt;
        }
        number = number * 10 + (byte - '0');
    }
    return number;
}

/// @return the days from 1970-01-01 to a day of the Gregorian calendar
std::int64_t DaysSinceEpoch(int year, int month, int day) {
    const int shifted = month <= 2 ? year - 1 : year;  // years begin in March here: leap days come last
    const int era = shifted / 400;
    const int yearOfEra = shifted - era * 400;
    const int dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return static_cast<std::int64_t>(era) * 146097 + dayOfEra - 719468;
}

constexpr std::size_t kSecondsEnd = 19;  // in "2026-11-20T14:03:07"

/// @return the time of day "HH:MM:SS" at `at`, with the fraction after it if there is one, in microseconds
std::optional<std::int64_t> TimeOfDay(std::string_view text, std::size_t at) {
    const auto hours = Digits(text, at, 2);
    const auto minutes = Digits(text, at + 3, 2);
    const auto seconds = Digits(text, at + 6, 2);
    if (!hours || !minutes || !seconds || text[at + 2] != ':' || text[at + 5] != ':') {
        return std::nullopt;
    }
    std::int64_t time = ((std::int64_t{*hours} * 60 + *minutes) * 60 + *seconds) * kSecond;
    std::int64_t unit = kSecond / 10;
    if (at + 8 < text.size() && text[at + 8] == '.') {
        for (std::size_t digit = at + 9; digit < text.size() && IsDigit(text[digit]); ++digit, unit /= 10) {
            time += (text[digit] - '0') * unit;
        }
    }
    return time;
}

/// @return the offset of a zone such as "+0100" or "+01:00" from UTC, in microseconds; 0 for "Z" and for no
///         zone, where only differences of times are meaningful
std::int64_t ZoneOffset(std::string_view zone) {
    if (zone.empty() || (zone[0] != '+' && zone[0] != '-')) {
        return 0;
    }
    const auto hours = Digits(zone, 1, 2);
    const auto minutes = Digits(zone, zone.size() > 3 && zone[3] == ':' ? 4 : 3, 2);
    const std::int64_t offset = (std::int64_t{hours.value_or(0)} * 60 + minutes.value_or(0)) * 60 * kSecond;
    return zone[0] == '-' ? -offset : offset;
}

/// Reads "2026-11-20T14:03:07.123456Z".
std::optional<std::int64_t> IsoTime(std::string_view prefix) {
    const auto year = Digits(prefix, 0, 4);
    const auto month = Digits(prefix, 5, 2);
    const auto day = Digits(prefix, 8, 2);
    if (!year || !month || !day || *month < 1 || *month > 12) {
        return std::nullopt;
    }
    const auto time = TimeOfDay(prefix, 11);
    if (!time) {
        return std::nullopt;
    }
    const std::size_t zone = std::min(prefix.find_first_not_of(".0123456789", kSecondsEnd), prefix.size());
    return DaysSinceEpoch(*year, *month, *day) * 24 * 3600 * kSecond + *time -
           ZoneOffset(prefix.substr(zone));
}

/// Reads "Nov 20 14:03:07".
std::optional<std::int64_t> SyslogTime(std::string_view prefix) {
    static constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto* const month = std::find(kMonths.begin(), kMonths.end(), prefix.substr(0, 3));
    if (month == kMonths.end() || prefix.size() < 15) {
        return std::nullopt;
    }
    const auto day = prefix[4] == ' ' ? Digits(prefix, 5, 1) : Digits(prefix, 4, 2);
    const auto time = TimeOfDay(prefix, 7);
    if (!day || !time) {
        return std::nullopt;
    }
    const int number = static_cast<int>(month - kMonths.begin()) + 1;
    return DaysSinceEpoch(1970, number, *day) * 24 * 3600 * kSecond + *time;
}

/// Reads "2026-11-20T14:03:07.123456Z", with each digit in its fixed place. Remembers the minute, which
/// most lines share with the line before.
class OwnClock {
 public:
    std::optional<std::int64_t> Read(const char* text) {
        if (!hasMinute_ || std::memcmp(text, minuteText_.data(), kMinute) != 0) {
            const std::optional<std::int64_t> minute = IsoTime({text, kMinute + 2});
            if (!minute) {
                return std::nullopt;
            }
            std::memcpy(minuteText_.data(), text, kMinute);
            minute_ = *minute - std::int64_t{TwoDigits(text + kMinute)} * kSecond;
            hasMinute_ = true;
        }
        const std::int64_t seconds = TwoDigits(text + kMinute);
        const std::int64_t first = TwoDigits(text + 20);
        const std::int64_t second = TwoDigits(text + 22);
        const std::int64_t third = TwoDigits(text + 24);
        if ((seconds | first | second | third) < 0 || text[kMinute + 2] != '.') {
            return std::nullopt;
        }
        return minute_ + seconds * kSecond + first * 10'000 + second * 100 + third;
    }

 private:
    static constexpr std::size_t kMinute = 17;  // bytes of "2026-11-20T14:03:"

    /// @return the number that two digits make; negative if they are not digits
    static int TwoDigits(const char* digits) {
        return IsDigit(digits[0]) && IsDigit(digits[1]) ? (digits[0] - '0') * 10 + (digits[1] - '0') : -1;
    }

    std::array<char, kMinute> minuteText_{};
    std::int64_t minute_ = 0;  // microseconds
    bool hasMinute_ = false;
};

}  // namespace

std::optional<std::int64_t> OwnTime(const char* text) {
    static OwnClock clock;
    return clock.Read(text);
}

std::optional<std::int64_t> ForeignTime(std::string_view prefix) {
    const auto time = IsoTime(prefix);
    return time ? time : SyslogTime(prefix);
}

}  // namespace rig::log
