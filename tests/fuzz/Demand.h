#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

/// What must hold whatever the input is. Where it does not, the input is a finding: the process ends, with a
/// line that says what was found.
inline void Demand(bool holds, const std::string& what) {
    if (!holds) {
        fprintf(stderr, "demanded: %s\n", what.c_str());
        std::abort();
    }
}

}  // namespace fuzz
