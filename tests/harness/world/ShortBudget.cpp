// A library loaded before the C library so that the harness's waits end soon: the first finds 3 left of the
// 10000 seconds that they share. Nothing else is changed.

#include <dlfcn.h>
#include <sys/select.h>

extern "C" int select(int count, fd_set* read, fd_set* write, fd_set* exception, timeval* time) {
    using Select = int (*)(int, fd_set*, fd_set*, fd_set*, timeval*);
    static const auto wait = reinterpret_cast<Select>(dlsym(RTLD_NEXT, "select"));
    static const bool shortened = [time] {
        time->tv_sec -= 9997;
        return true;
    }();
    return shortened ? wait(count, read, write, exception, time) : -1;
}
