#include "tests/support/LogLine.h"

#include <algorithm>
#include <sstream>

namespace {

std::string Unescape(const std::string& text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] not_eq '\\' or at + 1 == text.size()) {
            plain += text[at];
            continue;
        }
        switch (text[++at]) {
            case 'n':
                plain += '\n';
                break;
            case 'r':
                plain += '\r';
                break;
            case 't':
                plain += '\t';
                break;
            case 'x':
                plain += static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16));
                at += 2;
                break;
            default:
                plain += text[at];
        }
    }
    return plain;
}

bool IsDigit(char character) {
    return character >= '0' and character <= '9';
}

/// Whether a text looks like the example: digits where it has digits, and otherwise the same.
bool LooksLike(const std::string& example, const std::string& text) {
    const auto alike = [](char expected, char actual) {
        return IsDigit(expected) ? IsDigit(actual) : expected == actual;
    };
    return std::equal(example.begin(), example.end(), text.begin(), text.end(), alike);
}

}  // namespace

bool IsNumber(const std::string& text) {
    return not text.empty() and std::all_of(text.begin(), text.end(), IsDigit);
}

bool StartsWith(const std::string& text, const std::string& start) {
    return text.rfind(start, 0) == 0;
}

bool IsFramingTrace(const LogLine& line) {
    return (line.level == 64 and StartsWith(line.text, "hdr[")) or
           (line.level == 1 and StartsWith(line.text, "expecting a message of ")) or
           (line.level == 1 and StartsWith(line.text, "read success:")) or
           (line.level == 32 and StartsWith(line.text, "GetMessage:incoming message, bytes "));
}

std::string Printed(const LogLine& line) {
    return std::to_string(line.level) + " \"" + line.text + "\"";
}

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
    return out << Printed(line);
}

LogLine ParseLogLine(const std::string& raw) {
    const std::string source = "velloran:";
    std::istringstream words(raw);
    std::string time, process, level, place;
    words >> time >> process >> level >> place;
    if (not LooksLike("2026-11-20T14:03:07.123456Z", time) or process not_eq "velloran" or
        not IsNumber(level) or place.compare(0, source.size(), source) not_eq 0 or
        not IsNumber(place.substr(source.size()))) {
        return {0, "not a line of the harness's log: " + raw};
    }
    const std::string head = time + " " + process + " " + level + " " + place + " ";
    if (raw.compare(0, head.size(), head) not_eq 0) {
        return {0, "not a line of the harness's log: " + raw};
    }
    return {static_cast<unsigned int>(std::stoul(level)), Unescape(raw.substr(head.size()))};
}

std::vector<LogLine> IncomingTrace(const std::string& text) {
    const std::string size = std::to_string(text.size());
    return {{1, "expecting a message of " + size + " bytes"},
            {1, "read success:" + size},
            {32, "GetMessage:incoming message, bytes 1 to " + size + ":" + text}};
}
