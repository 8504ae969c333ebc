#include "PageMemory.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#if !defined(_WIN32)
#include <sys/mman.h>
#endif

namespace VN_SDAI {

namespace {

/// Smaller pieces come from the heap, which has them at hand when one small file is read after another: to map and to
/// unmap them would stop all threads each time.
constexpr std::size_t kMapped = PageAllocator<char>::kLarge;

char* zeroed(std::size_t size) {
    void* memory = std::calloc(size, 1);
    if (!memory)
        throw std::bad_alloc();
    return static_cast<char*>(memory);
}

} // namespace

#if defined(__linux__)

char* pages::map(std::size_t size) {
    if (size < kMapped)
        return zeroed(size);
    void* memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    ::madvise(memory, size, MADV_HUGEPAGE); // a wish; without it all is the same, only slower
    return static_cast<char*>(memory);
}

void pages::unmap(char* memory, std::size_t size) noexcept {
    if (size < kMapped)
        std::free(memory);
    else
        ::munmap(memory, size);
}

const char* PageMemory::discard(const char* from, const char* to) noexcept {
    constexpr std::uintptr_t kPage = 2 * 1024 * 1024;
    const auto first = (reinterpret_cast<std::uintptr_t>(from) + kPage - 1) & ~(kPage - 1);
    const auto last = reinterpret_cast<std::uintptr_t>(to) & ~(kPage - 1);
    if (first >= last)
        return from;
    ::madvise(reinterpret_cast<void*>(first), last - first, MADV_DONTNEED);
    return reinterpret_cast<const char*>(last);
}

void PageMemory::grow(std::size_t size) {
    if (m_size < kMapped)
        return moveTo(PageMemory(size));
    void* memory = ::mremap(m_data, m_size, size, MREMAP_MAYMOVE);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    m_data = static_cast<char*>(memory);
    m_size = size;
}

#else

char* pages::map(std::size_t size) { return zeroed(size); }

void pages::unmap(char* memory, std::size_t) noexcept { std::free(memory); }

const char* PageMemory::discard(const char* from, const char*) noexcept { return from; }

void PageMemory::grow(std::size_t size) { moveTo(PageMemory(size)); }

#endif

void PageMemory::moveTo(PageMemory larger) noexcept {
    std::copy_n(m_data, m_size, larger.m_data);
    *this = std::move(larger);
}

PageMemory::PageMemory(std::size_t size) : m_data(pages::map(size)), m_size(size) {}

PageMemory::~PageMemory() { pages::unmap(m_data, m_size); }

} // namespace VN_SDAI
