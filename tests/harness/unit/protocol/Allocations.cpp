#include "tests/harness/unit/protocol/Allocations.h"

#include <cstdlib>
#include <new>

Allocations g_allocations;

void* operator new(std::size_t size) {
    if (g_allocations.counting) {
        ++g_allocations.all;
        g_allocations.ofFiveBytes += size == 5 ? 1 : 0;
        g_allocations.ofASlice += size >= 800 ? 1 : 0;
    }
    void* const memory = malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    free(memory);
}
