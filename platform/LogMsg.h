#pragma once

#include <cstddef>
#include <optional>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

/// The bytes of one log line as they come out of a stream. What is streamed is escaped, so that one statement
/// is one line and nothing that a peer sent can forge another: backslash `\\`, newline `\n`, carriage return
/// `\r`, tab `\t`, every other byte below 0x20 and 0x7f `\xHH`; bytes from 0x80 on pass as they are.
///
/// Short lines stay in place; only one longer than kInPlace bytes takes memory from the heap.
class LogLine : public std::streambuf {
 public:
    /// Appends bytes as they are.
    void Append(const char* bytes, std::size_t count);

    const char* Data() const;
    std::size_t Size() const;

 protected:
    int_type overflow(int_type byte) override;
    std::streamsize xsputn(const char* bytes, std::streamsize count) override;

 private:
    static constexpr std::size_t kInPlace = 4096;

    void AppendEscaped(unsigned char byte);

    char inPlace_[kInPlace];
    std::vector<char> grown_;  // holds the whole line once it does not fit in place
    std::size_t size_ = 0;
};

/// One log message: a line head and the stream that takes its text.
///
///     2026-11-20T14:03:07.123456Z velloran 16 velloran:212 Sending DONE
///     TIMESTAMP(UTC, microseconds) PROCESS LEVEL TEXT
///
/// Making a stream costs as much as the rest of a line, so one is kept for all statements, one after the
/// other. A statement of a signal handler that interrupts another one makes its own.
class LogMsg {
 public:
    LogMsg();
    virtual ~LogMsg();
    LogMsg(const LogMsg&) = delete;
    LogMsg& operator=(const LogMsg&) = delete;

    /// Starts the line and returns the stream for its text, which lives as long as this object.
    /// @param level        the statement's single level bit
    /// @param processName  must outlive this object
    std::ostream& Log(unsigned int level, const std::string& processName);

 protected:
    LogLine line_;
    std::size_t text_ = 0;  // where the text starts in line_
    unsigned int level_ = 0;
    const std::string* processName_ = nullptr;

 private:
    std::ostream& TakeStream();

    bool hasShared_ = false;
    std::optional<std::ostream> own_;
};
