#include "rig/base/ValidText.h"

#include <utf8.h>

#include <iterator>

namespace rig {
namespace {

constexpr char32_t kReplacement = 0xfffd;

/// Control characters and noncharacters: neither XML nor HTML may hold them.
bool IsForbidden(char32_t character) {
    const bool isControl = character < 0x20 || (character >= 0x7f && character < 0xa0);
    const bool isNoncharacter =
        (character & 0xfffe) == 0xfffe || (character >= 0xfdd0 && character <= 0xfdef);
    return (isControl && character != '\n' && character != '\t') || isNoncharacter;
}

}  // namespace

std::string ValidText(std::string_view text) {
    std::string unicode;
    unicode.reserve(text.size());
    utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(unicode), kReplacement);
    std::string valid;
    valid.reserve(unicode.size());
    for (auto position = unicode.cbegin(); position != unicode.cend();) {
        const char32_t character = utf8::unchecked::next(position);
        utf8::unchecked::append(IsForbidden(character) ? kReplacement : character, std::back_inserter(valid));
    }
    return valid;
}

}  // namespace rig
