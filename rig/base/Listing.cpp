#include "rig/base/Listing.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <iostream>
#include <sstream>

#include "rig/base/Terminal.h"

namespace rig {
namespace {

constexpr const char* kIndent = "    ";
constexpr const char* kFurther = "        ";  // of further lines
constexpr std::size_t kMostColumns = 100;     // longer lines are hard to read

/// @return the text in indented lines of at most that many columns. A longer word gets its own line.
std::string Wrapped(const std::string& text, std::size_t columns) {
    std::istringstream words(text);
    std::string wrapped;
    std::string line;
    for (std::string word; words >> word;) {
        if (!line.empty() && line.size() + 1 + word.size() > columns) {
            wrapped += line + "\n";
            line.clear();
        }
        const char* const start = wrapped.empty() ? kIndent : kFurther;
        line += (line.empty() ? start : " ") + word;
    }
    return wrapped + line + "\n";
}

std::string RowOf(const std::vector<std::string>& cells) {
    return fmt::format("| {} |\n", fmt::join(cells, " | "));
}

}  // namespace

std::string AsText(const Listing& listing, std::size_t columns) {
    std::string text;
    for (const std::vector<std::string>& row : listing.rows) {
        text += row.front() + "\n";
        for (std::size_t cell = 1; cell < row.size(); ++cell) {
            text += Wrapped(listing.heads[cell] + ": " + row[cell], columns);
        }
    }
    return text;
}

std::string AsMarkdown(const Listing& listing) {
    std::string table = RowOf(listing.heads) + "|";
    for (std::size_t head = 0; head < listing.heads.size(); ++head) {
        table += "---|";
    }
    table += "\n";
    for (std::vector<std::string> row : listing.rows) {
        row.front() = "`" + row.front() + "`";
        table += RowOf(row);
    }
    return table;
}

void Print(const Listing& listing, const std::string& format) {
    std::cout << (format == "markdown" ? AsMarkdown(listing)
                                       : AsText(listing, std::min(TerminalColumns(), kMostColumns)));
}

}  // namespace rig
