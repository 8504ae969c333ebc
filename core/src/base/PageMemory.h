#pragma once
#include <VnRx/VnPlatform.h>

#include <cstddef>
#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace VN_SDAI {

namespace pages {
/// Zeroed memory, in pages of its own when it is large; raises std::bad_alloc.
VNIFC_API char* map(std::size_t size);
VNIFC_API void unmap(char* memory, std::size_t size) noexcept;
} // namespace pages

/// A large piece of memory straight from the system: zeroed, in huge pages where there are such, untouched parts cost
/// nothing, and parts that are done with can be given back before the rest.
class PageMemory {
public:
    PageMemory() noexcept = default;
    /// Raises std::bad_alloc.
    explicit PageMemory(std::size_t size);
    PageMemory(PageMemory&& other) noexcept
        : m_data(std::exchange(other.m_data, nullptr)), m_size(std::exchange(other.m_size, 0)) {}
    PageMemory& operator=(PageMemory&& other) noexcept {
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
        return *this;
    }
    ~PageMemory();

    char* data() const noexcept { return m_data; }
    std::size_t size() const noexcept { return m_size; }
    /// Gives back the whole pages in [from, to); their contents are lost. Answers where the rest begins.
    const char* discard(const char* from, const char* to) noexcept;
    /// Makes the memory larger; contents are kept, and may move.
    void grow(std::size_t size);

private:
    void moveTo(PageMemory larger) noexcept;

    char* m_data = nullptr;
    std::size_t m_size = 0;
};

/// Lets a container live in such memory once it is large.
template <class T>
struct PageAllocator {
    using value_type = T;

    PageAllocator() noexcept = default;
    template <class U>
    PageAllocator(const PageAllocator<U>&) noexcept {}

    T* allocate(std::size_t count) {
        if (count > std::numeric_limits<std::size_t>::max() / sizeof(T))
            throw std::bad_array_new_length();
        if (count * sizeof(T) < kLarge)
            return static_cast<T*>(::operator new(count * sizeof(T)));
        return reinterpret_cast<T*>(pages::map(count * sizeof(T)));
    }
    void deallocate(T* memory, std::size_t count) noexcept {
        if (count * sizeof(T) < kLarge)
            ::operator delete(memory);
        else
            pages::unmap(reinterpret_cast<char*>(memory), count * sizeof(T));
    }
    friend bool operator==(const PageAllocator&, const PageAllocator&) noexcept { return true; }

    static constexpr std::size_t kLarge = std::size_t{1} << 20;
};

/// A table that may become large: page faults are much of what filling one costs.
template <class T>
using PageVector = std::vector<T, PageAllocator<T>>;

} // namespace VN_SDAI
