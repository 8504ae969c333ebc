#include "Allocations.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace {

std::vector<std::size_t> sizes;
bool recording = false;

} // namespace

void recordAllocations(bool on) {
    if (on)
        sizes.clear();
    recording = on;
}

const std::vector<std::size_t>& recordedAllocations() { return sizes; }

void* operator new(std::size_t size) {
    if (std::exchange(recording, false)) {
        sizes.push_back(size);
        recording = true;
    }
    if (void* memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
