#include "rig/log/Statement.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "rig/log/LineTime.h"
#include "rig/log/OwnLine.h"

namespace rig::log {
namespace {

constexpr std::string_view kSource = "velloran:";
constexpr std::string_view kProcess = "velloran[";
constexpr std::string_view kName = "velloran ";

/// @return where "velloran:N " begins and where its text does, if the line has it
std::optional<std::pair<std::size_t, std::size_t>> FindSource(std::string_view line) {
    for (std::size_t at = line.find(kSource); at != std::string_view::npos; at = line.find(kSource, at + 1)) {
        const std::size_t number = at + kSource.size();
        const std::size_t end = std::min(line.find_first_not_of("0123456789", number), line.size());
        const bool isWord = at == 0 || line[at - 1] == ' ' || line[at - 1] == '\t' || line[at - 1] == ':';
        if (isWord && end > number && end < line.size() && line[end] == ' ') {
            return std::make_pair(at, end + 1);
        }
    }
    return std::nullopt;
}

/// @return the number after the last `word` of the prefix
std::optional<int> NumberAfter(std::string_view prefix, std::string_view word) {
    const std::size_t at = prefix.rfind(word);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view digits = prefix.substr(at + word.size());
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end == digits.data()) {
        return std::nullopt;
    }
    return number;
}

/// Reads a line of a syslog file or of journalctl's output.
bool ReadForeignLine(std::string_view line, Statement& statement) {
    const auto source = FindSource(line);
    if (!source) {
        return false;
    }
    const std::string_view prefix = line.substr(0, source->first);
    statement.text = line.substr(source->second);
    statement.time = ForeignTime(prefix);
    statement.process = NumberAfter(prefix, kProcess);
    statement.level = NumberAfter(prefix, kName);
    return true;
}

void TellSign(Statement& statement) {
    const Beginning beginning = BeginningOf(statement.text);
    statement.sign = beginning.sign;
    statement.detail = statement.text.substr(beginning.text.size());
}

int HexDigit(char byte) {
    const std::size_t digit = std::string_view("0123456789abcdef").find(byte);
    return digit == std::string_view::npos ? -1 : static_cast<int>(digit);
}

/// Appends what the escape at the text's start stands for. @return how many bytes it has
std::size_t AppendEscaped(std::string& plain, std::string_view text) {
    const char kind = text.size() > 1 ? text[1] : ' ';
    switch (kind) {
        case '\\':
            plain += '\\';
            return 2;
        case 'n':
            plain += '\n';
            return 2;
        case 'r':
            plain += '\r';
            return 2;
        case 't':
            plain += '\t';
            return 2;
        default:
            break;
    }
    if (kind == 'x' && text.size() > 3 && HexDigit(text[2]) >= 0 && HexDigit(text[3]) >= 0) {
        plain += static_cast<char>(HexDigit(text[2]) * 16 + HexDigit(text[3]));
        return 4;
    }
    plain += text[0];
    return 1;
}

}  // namespace

std::int64_t Statement::Number() const {
    std::int64_t number = 0;
    std::from_chars(detail.data(), detail.data() + detail.size(), number);
    return number;
}

std::optional<Statement> ReadStatement(std::string_view line) {
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    std::optional<Statement> statement(std::in_place);
    if (ReadOwnLine(line, *statement) || ReadForeignLine(line, *statement)) {
        TellSign(*statement);
    } else {
        statement.reset();
    }
    return statement;
}

Statement StatementOf(std::string_view text) {
    Statement statement;
    statement.text = text;
    TellSign(statement);
    return statement;
}

std::string Unescaped(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    AppendUnescaped(plain, text);
    return plain;
}

void AppendUnescaped(std::string& plain, std::string_view text) {
    while (!text.empty()) {
        const std::size_t backslash = std::min(text.find('\\'), text.size());
        plain.append(text.substr(0, backslash));
        text.remove_prefix(backslash);
        if (!text.empty()) {
            text.remove_prefix(AppendEscaped(plain, text));
        }
    }
}

}  // namespace rig::log
