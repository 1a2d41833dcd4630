#include "tests/harness/unit/support/Markup.h"

std::string Escaped(const std::string& markup) {
    std::string escaped;
    for (const char character : markup) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += character;
        }
    }
    return escaped;
}
