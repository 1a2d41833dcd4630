#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

/// Checks what must hold for every input. If it does not, the input is a finding: the process ends with a
/// line that says what was found.
inline void Demand(bool holds, const std::string& what) {
    if (!holds) {
        fprintf(stderr, "demanded: %s\n", what.c_str());
        std::abort();
    }
}

}  // namespace fuzz
