#pragma once

#include <cstddef>

/// What the process has allocated from the heap while `counting` was on. Linking Allocations.cpp replaces new
/// and delete.
struct Allocations {
    bool counting = false;
    std::size_t all = 0;
    std::size_t ofFiveBytes = 0;
    std::size_t ofASlice = 0;  // 800 bytes or more
};
extern Allocations g_allocations;
