// For sanitizer builds only: SIGINT ends the harness by exit at any moment, and the sanitizer's leak check at
// exit takes locks of its allocator, which the signal may have interrupted. valgrind (tests/harness/world)
// looks for leaks instead.

extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}
