#include <VnIfcCore/VnIfcStorage.h>

namespace VN_SDAI {

namespace {

thread_local VnIfcArena* currentArena = nullptr;

// Small models stay small, large ones ask the system rarely.
constexpr std::size_t kFirstChunk = 16 * 1024;
constexpr std::size_t kLargestChunk = 4 * 1024 * 1024;

}  // namespace

void* VnIfcArena::allocateSlow(std::size_t size) {
    const std::size_t wanted = m_capacity < kFirstChunk ? kFirstChunk : m_capacity < kLargestChunk ? m_capacity : kLargestChunk;
    // A block of its own must not end the chunk that small ones are taken from.
    if (size > wanted / 4) {
        m_chunks.emplace_back(new char[size]);
        m_capacity += size;
        return m_chunks.back().get();
    }
    m_chunks.emplace_back(new char[wanted]);
    m_capacity += wanted;
    m_next = m_chunks.back().get();
    m_end = m_next + wanted;
    return allocate(size);
}

VnIfcArenaScope::VnIfcArenaScope(VnIfcArena& arena) noexcept : m_previous(currentArena) { currentArena = &arena; }

VnIfcArenaScope::~VnIfcArenaScope() { currentArena = m_previous; }

VnIfcArena* VnIfcArenaScope::current() noexcept { return currentArena; }

}  // namespace VN_SDAI
