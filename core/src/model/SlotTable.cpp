#include "SlotTable.h"

#include <algorithm>

namespace VN_SDAI {

namespace {

// A table of pointers indexed by number pays as long as at least every fourth entry is used.
constexpr std::uint64_t denseLimit(std::size_t count) noexcept { return 4 * std::uint64_t{count} + 1024; }

std::size_t hashOf(std::uint64_t number) noexcept {
    number *= 0x9E3779B97F4A7C15ull;
    return static_cast<std::size_t>(number ^ (number >> 32));
}

bool byNumber(const VnIfcInstanceSlot* left, const VnIfcInstanceSlot* right) noexcept {
    return left->number < right->number;
}

}  // namespace

VnIfcModel* SlotTable::modelOf(const VnIfcInstanceSlot* slot) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(slot);
    return reinterpret_cast<const PageHead*>(address & ~(std::uintptr_t{kPageSize} - 1))->model;
}

// Blocks grow with the table, so that small models stay small; each loses up to a page to alignment.
void SlotTable::newBlock() {
    const std::size_t pages = std::size_t{1} << std::min<std::size_t>(m_blocks.size(), 9);
    PageMemory memory((pages + 1) * kPageSize);
    const auto address = reinterpret_cast<std::uintptr_t>(memory.data());
    char* const first = memory.data() + ((kPageSize - address % kPageSize) % kPageSize);
    m_nextPage = first;
    m_blockEnd = first + pages * kPageSize;
    m_blocks.push_back({std::move(memory), first, pages});
}

VnIfcInstanceSlot* SlotTable::newSlot() {
    if (m_next == m_pageEnd) {
        if (m_nextPage == m_blockEnd) newBlock();
        new (m_nextPage) PageHead{m_model, 0};
        m_next = reinterpret_cast<VnIfcInstanceSlot*>(m_nextPage + sizeof(PageHead));
        m_nextPage += kPageSize;
        m_pageEnd = reinterpret_cast<VnIfcInstanceSlot*>(m_nextPage);
    }
    return new (m_next++) VnIfcInstanceSlot;
}

void SlotTable::reserve(std::size_t count, std::uint64_t largest) {
    if (largest >= denseLimit(m_count + count)) return rehash(2 * (m_hashedCount + count));
    if (m_count == 0 && m_dense.size() <= largest) m_dense.resize(static_cast<std::size_t>(largest) + 1);
}

VnIfcInstanceSlot* SlotTable::insert(std::uint64_t number) {
    if (number >= m_dense.size() && number < denseLimit(m_count)) {
        const std::size_t before = m_dense.size();
        m_dense.resize(std::max<std::size_t>(static_cast<std::size_t>(number) + 1, before + before / 2));
        if (m_hashedCount > 0) {
            forEachSlot([&](VnIfcInstanceSlot* other) {
                if (other->number >= before && other->number < m_dense.size()) m_dense[other->number] = other;
            });
        }
    }
    VnIfcInstanceSlot* slot = newSlot();
    slot->number = number;
    if (number < m_dense.size()) m_dense[number] = slot;
    else insertHashed(slot);
    m_largest = std::max(m_largest, number);
    // An order that was asked for stays good as long as new instances come last.
    if (m_ordered.size() == m_count && !m_ordered.empty() && number > m_ordered.back()->number) m_ordered.push_back(slot);
    ++m_count;
    return slot;
}

VnIfcInstanceSlot* SlotTable::findHashed(std::uint64_t number) const noexcept {
    const std::size_t mask = m_hashed.size() - 1;
    for (std::size_t i = hashOf(number) & mask; m_hashed[i]; i = (i + 1) & mask)
        if (m_hashed[i]->number == number) return m_hashed[i];
    return nullptr;
}

void SlotTable::insertHashed(VnIfcInstanceSlot* slot) {
    if (2 * (m_hashedCount + 1) > m_hashed.size()) rehash(4 * (m_hashedCount + 8));
    const std::size_t mask = m_hashed.size() - 1;
    std::size_t i = hashOf(slot->number) & mask;
    while (m_hashed[i]) i = (i + 1) & mask;
    m_hashed[i] = slot;
    ++m_hashedCount;
}

void SlotTable::rehash(std::size_t capacity) {
    std::size_t size = 16;
    while (size < capacity) size *= 2;
    if (size <= m_hashed.size()) return;
    Slots before(size);
    before.swap(m_hashed);
    m_hashedCount = 0;
    for (VnIfcInstanceSlot* slot : before)
        if (slot) insertHashed(slot);
}

const std::vector<VnIfcInstanceSlot*>& SlotTable::ordered() {
    if (m_ordered.size() == m_count) return m_ordered;
    m_ordered.clear();
    m_ordered.reserve(m_count);
    if (m_hashedCount == 0) {  // the dense table is in order already
        for (VnIfcInstanceSlot* slot : m_dense)
            if (slot) m_ordered.push_back(slot);
        return m_ordered;
    }
    forEachSlot([&](VnIfcInstanceSlot* slot) { m_ordered.push_back(slot); });
    if (!std::is_sorted(m_ordered.begin(), m_ordered.end(), byNumber))
        std::sort(m_ordered.begin(), m_ordered.end(), byNumber);
    return m_ordered;
}

}  // namespace VN_SDAI
