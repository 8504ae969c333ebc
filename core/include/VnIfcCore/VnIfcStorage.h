#pragma once
#include <VnRx/VnPlatform.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

namespace VN_SDAI {

/// Where a block of memory came from, kept beside the block so that its owner knows whether to free it.
enum class VnStorage : std::uint32_t { kHeap = 0, kStatic = 1, kArena = 2 };

/// Memory that is handed out in order and given back as a whole: what a model loads from one file lives here.
/// Not thread-safe; each loading thread has its own.
class VNIFC_API VnIfcArena {
public:
    VnIfcArena() = default;
    ~VnIfcArena();
    VnIfcArena(const VnIfcArena&) = delete;
    VnIfcArena& operator=(const VnIfcArena&) = delete;

    /// Returns `bytes` bytes aligned for pointers and doubles; raises std::bad_alloc.
    void* allocate(std::size_t bytes) {
        const std::size_t size = (bytes + 7) & ~std::size_t{7};
        if (size > static_cast<std::size_t>(m_end - m_next))
            return allocateSlow(size);
        char* result = m_next;
        m_next += size;
        return result;
    }
    /// Bytes taken from the system.
    std::size_t capacity() const noexcept { return m_capacity; }

    /// A place for a text that was made from this arena lately; its content is null, or a text of the same hash that
    /// may well be the same. Nobody changes a text in place, so that many strings can stand on one copy.
    const char*& recentText(std::uint32_t hash);
    /// Forgets them; none is needed when a file has been read.
    void forgetTexts() noexcept { m_texts.reset(); }

private:
    static constexpr std::size_t kTexts = 2048;
    struct Text {
        std::uint32_t hash = 0;
        const char* text = nullptr;
    };

    void* allocateSlow(std::size_t size);
    char* newChunk(std::size_t size);

    char* m_next = nullptr;
    char* m_end = nullptr;
    std::size_t m_capacity = 0;
    struct Chunk {
        char* memory;
        std::size_t size;
    };
    std::vector<Chunk> m_chunks;
    std::unique_ptr<Text[]> m_texts;
};

/// While it lives, instances, strings and aggregates made by this thread are taken from the arena.
class VNIFC_API VnIfcArenaScope {
public:
    /// Makes the arena, which must outlive the scope, that of the calling thread. Scopes of one thread nest.
    explicit VnIfcArenaScope(VnIfcArena& arena) noexcept;
    ~VnIfcArenaScope();
    VnIfcArenaScope(const VnIfcArenaScope&) = delete;
    VnIfcArenaScope& operator=(const VnIfcArenaScope&) = delete;
    /// The arena of the calling thread; null outside of any scope.
    static VnIfcArena* current() noexcept;

private:
    VnIfcArena* m_previous;
};

/// Memory for a value of this thread: from its arena if it has one, else from the heap; `storage` says which.
inline void* vnAllocate(std::size_t bytes, VnStorage& storage) {
    if (VnIfcArena* arena = VnIfcArenaScope::current()) {
        storage = VnStorage::kArena;
        return arena->allocate(bytes);
    }
    storage = VnStorage::kHeap;
    return ::operator new(bytes);
}

/// Gives back what vnAllocate gave; arena memory goes with its arena.
inline void vnFree(void* memory, VnStorage storage) noexcept {
    if (storage == VnStorage::kHeap)
        ::operator delete(memory);
}

} // namespace VN_SDAI
