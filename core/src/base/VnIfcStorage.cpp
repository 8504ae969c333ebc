#include <VnIfcCore/VnIfcStorage.h>

#include "PageMemory.h"

namespace VN_SDAI {

namespace {

#if defined(__GNUC__)
// Asked for with every string and list that is read; this model of access costs one load.
__attribute__((tls_model("initial-exec")))
#endif
thread_local VnIfcArena* currentArena = nullptr;

// Small models stay small, large ones ask the system rarely.
constexpr std::size_t kFirstChunk = 16 * 1024;
constexpr std::size_t kLargestChunk = 4 * 1024 * 1024;

} // namespace

VnIfcArena::~VnIfcArena() {
    for (const Chunk& chunk : m_chunks)
        PageAllocator<char>().deallocate(chunk.memory, chunk.size);
}

char* VnIfcArena::newChunk(std::size_t size) {
    m_chunks.reserve(m_chunks.size() + 1);
    m_chunks.push_back({PageAllocator<char>().allocate(size), size});
    m_capacity += size;
    return m_chunks.back().memory;
}

void* VnIfcArena::allocateSlow(std::size_t size) {
    const std::size_t wanted = m_capacity < kFirstChunk     ? kFirstChunk
                               : m_capacity < kLargestChunk ? m_capacity
                                                            : kLargestChunk;
    // A block of its own must not end the chunk that small ones are taken from.
    if (size > wanted / 4)
        return newChunk(size);
    m_next = newChunk(wanted);
    m_end = m_next + wanted;
    return allocate(size);
}

const char*& VnIfcArena::recentText(std::uint32_t hash) {
    if (!m_texts)
        m_texts = std::make_unique<Text[]>(kTexts);
    Text& place = m_texts[hash % kTexts];
    if (place.hash != hash)
        place = {hash, nullptr};
    return place.text;
}

VnIfcArenaScope::VnIfcArenaScope(VnIfcArena& arena) noexcept : m_previous(currentArena) { currentArena = &arena; }

VnIfcArenaScope::~VnIfcArenaScope() { currentArena = m_previous; }

VnIfcArena* VnIfcArenaScope::current() noexcept { return currentArena; }

} // namespace VN_SDAI
