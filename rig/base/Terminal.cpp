#include "rig/base/Terminal.h"

#include <fmt/color.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

namespace rig {
namespace {

constexpr std::size_t kUsualColumns = 80;

fmt::text_style StyleOf(Colour colour) {
    switch (colour) {
        case Colour::Red:
            return fg(fmt::terminal_color::red);
        case Colour::Green:
            return fg(fmt::terminal_color::green);
        case Colour::Yellow:
            return fg(fmt::terminal_color::yellow);
        case Colour::Cyan:
            return fg(fmt::terminal_color::cyan);
        case Colour::Bold:
            return fmt::emphasis::bold;
        case Colour::Plain:
            break;
    }
    return {};
}

}  // namespace

bool WantsColour() {
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr && terminal != nullptr &&
           std::string(terminal) != "dumb";
}

std::string Coloured(const std::string& text, Colour colour) {
    return fmt::format(StyleOf(colour), "{}", text);
}

std::size_t TerminalColumns() {
    winsize size{};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : kUsualColumns;
}

}  // namespace rig
