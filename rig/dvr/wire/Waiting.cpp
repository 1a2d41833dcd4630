#include "rig/dvr/wire/Waiting.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "rig/dvr/Failure.h"

namespace rig::dvr {

void ThrowSystemError(const char* call) {
    throw std::system_error(errno, std::generic_category(), call);
}

bool WaitFor(int descriptor, short events, Clock::time_point deadline, int stop) {
    for (;;) {
        const auto left = std::chrono::ceil<Milliseconds>(deadline - Clock::now()).count();
        std::array waited = {pollfd{descriptor, events, 0}, pollfd{stop, POLLIN, 0}};
        const int ready =
            poll(waited.data(), waited.size(), static_cast<int>(std::clamp<long long>(left, 0, 1000)));
        if (ready == -1 && errno != EINTR) {
            ThrowSystemError("poll");
        }
        if (ready > 0 && waited[1].revents != 0) {
            throw Interrupted();
        }
        if (ready > 0) {
            return true;
        }
        if (left <= 0) {
            return false;
        }
    }
}

void Pause(Milliseconds time, int stop) {
    WaitFor(-1, 0, Clock::now() + time, stop);
}

}  // namespace rig::dvr
