#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <string>

#include "rig/log/Statement.h"
#include "rig/result/Result.h"

/// The log of a harness, made up statement by statement. Messages and requests stand in it as the harness
/// logs them, with their real lengths.
class MadeUpLog {
 public:
    static constexpr std::int64_t kStart = 1'795'212'000'000'000;  // 2026-11-20T22:00:00Z

    /// @param start  microseconds since 1970
    explicit MadeUpLog(std::int64_t start = kStart) : start_(start) {}

    /// @param switches  the lines that echo them
    explicit MadeUpLog(int protocol, const std::string& switches = "", std::int64_t start = kStart)
        : start_(start) {
        Say(fmt::format("'protocol' option set to {}", protocol));
        for (std::size_t begin = 0; begin < switches.size();) {
            const std::size_t end = switches.find('\n', begin);
            Say(switches.substr(begin, end - begin));
            begin = end == std::string::npos ? switches.size() : end + 1;
        }
        Say("Connected to: fam=2  127.0.0.1:60984");
    }

    MadeUpLog& Say(const std::string& statement) {
        time_ += 1000;
        text_ += fmt::format("{}.{:06}Z velloran 1 velloran:1 {}\n",
                             rig::result::Date(start_ + time_).substr(0, 19), (start_ + time_) % 1'000'000,
                             statement);
        return *this;
    }

    /// A message of the DVR, escaped as in a log.
    MadeUpLog& Dvr(const std::string& message) {
        const std::size_t size = rig::log::Unescaped(message).size();
        Say(fmt::format("expecting a message of {} bytes", size));
        After(0.25);
        Say(fmt::format("read success:{}", size));
        return Say(fmt::format("GetMessage:incoming message, bytes 1 to {}:{}", size, message));
    }

    /// A request of the harness. @param message  as it goes over the wire
    MadeUpLog& Ask(const std::string& message) {
        std::size_t length = message.size();
        for (int index = 0; index == 0 || length > 0; ++index, length >>= 7) {
            Say(fmt::format("hdr[{}]= {:x}", index, (length & 0x7f) | (length > 0x7f ? 0x80 : 0)));
        }
        return *this;
    }

    /// Nothing is logged for so long.
    MadeUpLog& After(double seconds) {
        time_ += static_cast<std::int64_t>(seconds * 1e6);
        return *this;
    }

    /// A line of standard error, without time.
    MadeUpLog& Error(const std::string& line) {
        text_ += line + "\n";
        return *this;
    }

    const std::string& Text() const { return text_; }

 private:
    std::int64_t start_;
    std::string text_;
    std::int64_t time_ = 0;  // microseconds since the start
};
