#include "rig/dvr/wire/DocumentEnd.h"

namespace rig::dvr {
namespace {

bool StartsAt(const std::string& text, std::size_t at, const char* start) {
    return text.compare(at, std::char_traits<char>::length(start), start) == 0;
}

/// @return the position after the next `end`; npos if there is none
std::size_t Behind(const std::string& text, std::size_t at, const char* end) {
    const std::size_t found = text.find(end, at);
    return found == std::string::npos ? found : found + std::char_traits<char>::length(end);
}

/// @return the position after the markup that starts at `at`; npos if it does not end
std::size_t BehindMarkup(const std::string& text, std::size_t at) {
    if (StartsAt(text, at, "<!--")) {
        return Behind(text, at + 4, "-->");
    }
    if (StartsAt(text, at, "<![CDATA[")) {
        return Behind(text, at, "]]>");
    }
    return StartsAt(text, at, "<?") ? Behind(text, at, "?>") : BehindTag(text, at);
}

}  // namespace

std::size_t BehindTag(const std::string& text, std::size_t at) {
    char quote = '\0';
    for (; at < text.size(); ++at) {
        if (quote != '\0') {
            quote = text[at] == quote ? '\0' : quote;
        } else if (text[at] == '"' || text[at] == '\'') {
            quote = text[at];
        } else if (text[at] == '>') {
            return at + 1;
        }
    }
    return std::string::npos;
}

std::optional<std::size_t> DocumentEnd(const std::string& text) {
    std::size_t depth = 0;  // of open elements
    for (std::size_t at = text.find('<'); at != std::string::npos;) {
        const std::size_t behind = BehindMarkup(text, at);
        if (behind == std::string::npos) {
            return std::nullopt;
        }
        const bool isElement = !StartsAt(text, at, "<!") && !StartsAt(text, at, "<?");
        const bool closes = StartsAt(text, at, "</");
        const bool isEmpty = text[behind - 2] == '/';
        if (isElement && !closes && !isEmpty) {
            ++depth;
        } else if (closes && depth > 0) {
            --depth;
        }
        if (isElement && depth == 0) {
            return behind;
        }
        at = text.find('<', behind);
    }
    return std::nullopt;
}

}  // namespace rig::dvr
