#include "rig/base/Columns.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace rig {
namespace {

constexpr std::size_t kUsualColumns = 80;

}  // namespace

std::size_t TerminalColumns() {
    winsize size{};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : kUsualColumns;
}

}  // namespace rig
