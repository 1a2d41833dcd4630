// For sanitizer builds only: SIGINT ends the harness by exit in the midst of anything, and the check for
// leaks that the sanitizer makes there takes locks of its allocator, which the signal may have interrupted.
// scripts/check-memory looks for leaks instead.

extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}
