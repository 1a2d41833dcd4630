#include "tests/fuzz/world/Ends.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <typeinfo>

namespace {

/// All ways in which a peer may end the harness: see "What ends the harness" in doc/protocol.md. Any
/// other end is a finding.
constexpr const char* kEnds[] = {
    // assertions
    "expectedSize not_eq -1",                          // a prefix that continues after its fifth byte
    "readBytes == expectedSize",                       // a connection that ends inside a text
    "not incomingMessage.Error()",                     // a message that is not XML
    "not embmsg.Error()",                              // a description that is not XML
    "writelen == static_cast<ssize_t>(headerLength)",  // a connection that takes no prefix
    "writelen == static_cast<int>(msgSize)",           // a connection that takes no text
    // uncaught exceptions of the standard library
    "basic_string::_M_construct null not valid",  // a file without `name`
    "vector::_M_default_append",                  // a length of 2 GiB or more
    // std::abort
    "abort",  // a document without `msg`
    // no end at all
    "reads a closed connection for ever",
    "Found event with no REID, for ever",  // 1.0: a description without `reid`
};

bool IsKnown(const char* how) {
    return std::any_of(std::begin(kEnds), std::end(kEnds),
                       [&](const char* known) { return strcmp(known, how) == 0; });
}

[[noreturn]] void End(const char* how) {
    if (!IsKnown(how)) {
        fprintf(stderr, "an end that is not in the table: %s\n", how);
        std::abort();
    }
    throw fuzz::Ended{how};
}

}  // namespace

namespace fuzz {

void AssertionFailed(const char* expression) {
    End(expression);
}

void AbortOfHarness() {
    End("abort");
}

void WouldNotEnd(const char* how) {
    End(how);
}

bool ComesBack(void (*run)(void*), void* context) {
    try {
        run(context);
        return true;
    } catch (const Ended&) {
        return false;
    } catch (const std::logic_error& error) {  // std::length_error is one
        if (!IsKnown(error.what())) {
            fprintf(stderr, "an exception that is not in the table: %s\n", error.what());
            std::abort();
        }
        return false;
    }
}

}  // namespace fuzz
