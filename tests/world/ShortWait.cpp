// A library that is loaded ahead of the C library where the harness is to wait out its 10,000 seconds:
// `select` counts a second as so many. Nothing else is changed.

#include <dlfcn.h>
#include <sys/select.h>

namespace {

constexpr long kShare = 10000;
constexpr long kMicroseconds = 1000000;  // in a second

using Select = int (*)(int, fd_set*, fd_set*, fd_set*, timeval*);

}  // namespace

extern "C" int select(int count, fd_set* reads, fd_set* writes, fd_set* exceptions, timeval* time) {
    static const auto real = reinterpret_cast<Select>(dlsym(RTLD_NEXT, "select"));
    if (time == nullptr) {
        return real(count, reads, writes, exceptions, time);
    }
    const long left = (time->tv_sec * kMicroseconds + time->tv_usec) / kShare;
    timeval shortened = {left / kMicroseconds, left % kMicroseconds};
    const int ready = real(count, reads, writes, exceptions, &shortened);
    const long rest = (shortened.tv_sec * kMicroseconds + shortened.tv_usec) * kShare;
    *time = {rest / kMicroseconds, rest % kMicroseconds};
    return ready;
}
