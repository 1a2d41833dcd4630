#pragma once

#include <string>
#include <vector>

/// Writes a log as a harness would.
class HarnessLog {
 public:
    /// @param prefix  of every line, with its blank
    explicit HarnessLog(const std::string& prefix = "2026-11-20T14:03:07.123456Z velloran 1 ");

    /// A line with this text, as in the log.
    HarnessLog& Line(const std::string& text);

    /// The lines about a message that was read.
    HarnessLog& Received(const std::string& text);

    /// The lines about a prefix that was sent.
    HarnessLog& Sent(std::size_t announced);

    /// "Connected to", after these switches' lines.
    HarnessLog& Connected(const std::vector<std::string>& switches = {});

    /// The next lines have this prefix.
    HarnessLog& From(const std::string& prefix);

    const std::string& Text() const { return text_; }

 private:
    std::string prefix_;
    std::string text_;
};
