#include "rig/base/Complaint.h"

#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <iostream>

namespace rig {
namespace {

bool HasReaderLeft() {
    pollfd output = {STDOUT_FILENO, POLLOUT, 0};
    return poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0;
}

}  // namespace

int Complain(std::string_view command, int status, const std::string& text) {
    std::cerr << "velloran-rig " << command << ": " << text << std::endl;
    return status;
}

bool IsOutputLost() {
    return !std::cout.flush() && !HasReaderLeft();
}

std::string LossOf(std::string_view what) {
    return fmt::format("expected standard output to take the {}, found that it did not", what);
}

}  // namespace rig
