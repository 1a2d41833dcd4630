#pragma once

#include <ostream>
#include <string>
#include <vector>

/// One line of the harness's log:
///
///     2026-11-20T14:03:07.123456Z velloran 16 velloran:212 Sending DONE
struct LogLine {
    unsigned int level = 0;
    std::string text;  // what follows "velloran:LINE ", with its escapes resolved

    bool operator==(const LogLine& other) const { return level == other.level and text == other.text; }
};

std::ostream& operator<<(std::ostream& out, const LogLine& line);

std::string Printed(const LogLine& line);

/// Parses a line. What is not a log line gets level 0 and a text that says so.
LogLine ParseLogLine(const std::string& raw);

/// Whether the line belongs to the framing trace: the bytes of a prefix sent, the size and slices of a
/// message received.
bool IsFramingTrace(const LogLine& line);

/// The trace of a message received in one piece and short enough for one slice.
std::vector<LogLine> IncomingTrace(const std::string& text);

bool IsNumber(const std::string& text);
bool StartsWith(const std::string& text, const std::string& start);
