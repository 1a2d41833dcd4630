#pragma once

#include <cstddef>

/// @return how often this process has taken memory from the heap with new
std::size_t AllocationCount();
