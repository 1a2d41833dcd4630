#include "LogMsg.h"

#include <time.h>

#include <charconv>
#include <csignal>
#include <new>

namespace {

struct Date {
    unsigned int year, month, day;
};

/// The Gregorian date of a day counted from 1970-01-01. Counts from 1 March, so that the leap day ends a year
/// (Howard Hinnant, "chrono-Compatible Low-Level Date Algorithms"). The C library's own conversion takes a
/// lock, which code interrupted by a signal handler that logs may hold.
Date CivilDate(unsigned int daysSince1970) {
    const unsigned int days = daysSince1970 + 719468;
    const unsigned int era = days / 146097;
    const unsigned int dayOfEra = days % 146097;
    const unsigned int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned int monthFromMarch = (5 * dayOfYear + 2) / 153;
    const unsigned int day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
    const unsigned int month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

void PutNumber(char* digits, unsigned int number, int width) {
    for (int place = width; place-- > 0; number /= 10) {
        digits[place] = static_cast<char>('0' + number % 10);
    }
}

void AppendTimestamp(LogLine& line) {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    const auto daySeconds = static_cast<unsigned int>(now.tv_sec % 86400);
    const Date date = CivilDate(static_cast<unsigned int>(now.tv_sec / 86400));

    char timestamp[] = "YYYY-MM-DDThh:mm:ss.ffffffZ ";
    PutNumber(timestamp, date.year, 4);
    PutNumber(timestamp + 5, date.month, 2);
    PutNumber(timestamp + 8, date.day, 2);
    PutNumber(timestamp + 11, daySeconds / 3600, 2);
    PutNumber(timestamp + 14, daySeconds / 60 % 60, 2);
    PutNumber(timestamp + 17, daySeconds % 60, 2);
    PutNumber(timestamp + 20, static_cast<unsigned int>(now.tv_nsec / 1000), 6);
    line.Append(timestamp, sizeof timestamp - 1);
}

volatile std::sig_atomic_t sharedIsTaken = 0;

/// Never destroyed, so that a signal handler can log at any moment, and not on the heap, which it may have
/// interrupted.
std::ostream& SharedStream() {
    alignas(std::ostream) static char place[sizeof(std::ostream)];
    static std::ostream* const shared = new (place) std::ostream(nullptr);
    return *shared;
}

bool PassesAsItIs(unsigned char byte) {
    return byte >= 0x20 and byte not_eq 0x7f and byte not_eq '\\';
}

}  // namespace

void LogLine::Append(const char* bytes, std::size_t count) {
    if (grown_.empty() and size_ + count <= kInPlace) {
        std::char_traits<char>::copy(inPlace_ + size_, bytes, count);
    } else {
        if (grown_.empty()) {
            grown_.assign(inPlace_, inPlace_ + size_);
        }
        grown_.insert(grown_.end(), bytes, bytes + count);
    }
    size_ += count;
}

const char* LogLine::Data() const {
    return grown_.empty() ? inPlace_ : grown_.data();
}

std::size_t LogLine::Size() const {
    return size_;
}

LogLine::int_type LogLine::overflow(int_type byte) {
    if (not traits_type::eq_int_type(byte, traits_type::eof())) {
        const char character = traits_type::to_char_type(byte);
        xsputn(&character, 1);
    }
    return traits_type::not_eof(byte);
}

std::streamsize LogLine::xsputn(const char* bytes, std::streamsize count) {
    const char* const end = bytes + count;
    while (bytes < end) {
        const char* plain = bytes;
        while (plain < end and PassesAsItIs(static_cast<unsigned char>(*plain))) {
            ++plain;
        }
        Append(bytes, static_cast<std::size_t>(plain - bytes));
        if (plain < end) {
            AppendEscaped(static_cast<unsigned char>(*plain++));
        }
        bytes = plain;
    }
    return count;
}

void LogLine::AppendEscaped(unsigned char byte) {
    switch (byte) {
        case '\\':
            return Append("\\\\", 2);
        case '\n':
            return Append("\\n", 2);
        case '\r':
            return Append("\\r", 2);
        case '\t':
            return Append("\\t", 2);
        default:
            const char* const digits = "0123456789abcdef";
            const char escape[] = {'\\', 'x', digits[byte >> 4], digits[byte & 0xf]};
            return Append(escape, sizeof escape);
    }
}

LogMsg::LogMsg() = default;

LogMsg::~LogMsg() {
    if (hasShared_) {
        sharedIsTaken = 0;
    }
}

std::ostream& LogMsg::TakeStream() {
    if (sharedIsTaken) {
        return own_.emplace(&line_);
    }
    sharedIsTaken = 1;
    hasShared_ = true;
    std::ostream& shared = SharedStream();
    shared.rdbuf(&line_);  // clears its state
    shared.flags(std::ios::dec | std::ios::skipws);
    shared.fill(' ');
    shared.precision(6);
    shared.width(0);
    return shared;
}

std::ostream& LogMsg::Log(unsigned int level, const std::string& processName) {
    level_ = level;
    processName_ = &processName;
    AppendTimestamp(line_);
    line_.Append(processName.data(), processName.size());
    line_.Append(" ", 1);
    char digits[10];
    const char* const end = std::to_chars(digits, digits + sizeof digits, level).ptr;
    line_.Append(digits, static_cast<std::size_t>(end - digits));
    line_.Append(" ", 1);
    text_ = line_.Size();
    return TakeStream();
}
