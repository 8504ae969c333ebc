#include "SlotTable.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <chrono>

namespace VN_SDAI {

namespace {

// A table of pointers indexed by number pays as long as at least every fourth entry is used.
constexpr std::uint64_t denseLimit(std::size_t count) noexcept { return 4 * std::uint64_t{count} + 1024; }

// One kilobyte: near enough together that the processor fetches ahead.
constexpr std::size_t kGroup = 64;

bool byNumber(const VnIfcInstanceSlot* left, const VnIfcInstanceSlot* right) noexcept {
    return left->number < right->number;
}

/// Different in each run, so that nobody can prepare a file whose numbers all meet in one cell.
std::uint64_t randomMultiplier() noexcept {
    static std::atomic<std::uint64_t> next =
        reinterpret_cast<std::uintptr_t>(&next) +
        static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    std::uint64_t bits = next.fetch_add(0x9E3779B97F4A7C15ull, std::memory_order_relaxed);
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9ull;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBull;
    return bits | 1;
}

} // namespace

SlotTable::SlotTable(VnIfcModel* model) noexcept : m_model(model), m_multiplier(randomMultiplier()) {}

VnIfcModel* SlotTable::modelOf(const VnIfcInstanceSlot* slot) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(slot);
    return reinterpret_cast<const PageHead*>(address & ~(std::uintptr_t{kPageSize} - 1))->model;
}

void SlotTable::belongTo(VnIfcModel* model) noexcept {
    m_model = model;
    for (const Block& block : m_blocks)
        for (char* page = block.pages; page < block.pages + block.count * kPageSize && page != m_nextPage;
             page += kPageSize)
            reinterpret_cast<PageHead*>(page)->model = model;
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
        if (m_nextPage == m_blockEnd)
            newBlock();
        new (m_nextPage) PageHead{m_model, 0};
        m_next = reinterpret_cast<VnIfcInstanceSlot*>(m_nextPage + sizeof(PageHead));
        m_nextPage += kPageSize;
        m_pageEnd = reinterpret_cast<VnIfcInstanceSlot*>(m_nextPage);
    }
    return new (m_next++) VnIfcInstanceSlot;
}

void SlotTable::reserve(std::size_t count, std::uint64_t largest, std::uint64_t gap) {
    if (largest < denseLimit(m_count + count)) {
        if (m_count == 0 && m_dense.size() <= largest)
            m_dense.resize(static_cast<std::size_t>(largest) + 1);
        return;
    }
    if (m_hashedCount == 0)
        m_shift = std::bit_width(gap | 1) - 1;
    const std::size_t cells = 3 * (m_hashedCount + count) / 2;
    if (cells > m_cells.size())
        rehash(cells);
}

VnIfcInstanceSlot* SlotTable::insert(std::uint64_t number) {
    if (number >= m_dense.size() && number < denseLimit(m_count)) {
        const std::size_t before = m_dense.size();
        m_dense.resize(std::max<std::size_t>(static_cast<std::size_t>(number) + 1, before + before / 2));
        if (m_hashedCount > 0) {
            forEachSlot([&](VnIfcInstanceSlot* other) {
                if (other->number >= before && other->number < m_dense.size())
                    m_dense[other->number] = other;
            });
        }
    }
    VnIfcInstanceSlot* slot = newSlot();
    slot->number = number;
    if (number < m_dense.size())
        m_dense[number] = slot;
    else
        insertHashed(slot);
    m_largest = std::max(m_largest, number);
    // An order that was asked for stays good as long as new instances come last.
    if (m_ordered.size() == m_count && !m_ordered.empty() && number > m_ordered.back()->number)
        m_ordered.push_back(slot);
    ++m_count;
    return slot;
}

std::size_t SlotTable::cellOf(std::uint64_t number) const noexcept {
    const std::uint64_t near = number >> m_shift;
    const std::uint64_t hash = near / kGroup * m_multiplier;
    return static_cast<std::size_t>((hash >> 32) * (m_cells.size() / kGroup) >> 32) * kGroup + near % kGroup;
}

VnIfcInstanceSlot* SlotTable::findHashed(std::uint64_t number) const noexcept {
    for (std::size_t i = cellOf(number); m_cells[i].slot; i = i + 1 < m_cells.size() ? i + 1 : 0)
        if (m_cells[i].number == number)
            return m_cells[i].slot;
    return nullptr;
}

void SlotTable::insertHashed(VnIfcInstanceSlot* slot) {
    if (4 * (m_hashedCount + 1) > 3 * m_cells.size())
        rehash(2 * (m_hashedCount + 8));
    std::size_t i = cellOf(slot->number);
    for (; m_cells[i].slot; i = i + 1 < m_cells.size() ? i + 1 : 0)
        ++m_steps;
    m_cells[i] = {slot->number, slot};
    ++m_hashedCount;
    if (m_steps > 32 * m_hashedCount + 4096) {
        // The numbers are nearer to each other than expected, or made to meet.
        m_shift = 0;
        m_multiplier = randomMultiplier();
        rehash(m_cells.size());
    }
}

void SlotTable::rehash(std::size_t cells) {
    Cells before((cells / kGroup + 1) * kGroup);
    before.swap(m_cells);
    m_hashedCount = 0;
    m_steps = 0;
    for (const Cell& cell : before)
        if (cell.slot)
            insertHashed(cell.slot);
}

const std::vector<VnIfcInstanceSlot*>& SlotTable::ordered() {
    if (m_ordered.size() == m_count)
        return m_ordered;
    m_ordered.clear();
    m_ordered.reserve(m_count);
    if (m_hashedCount == 0) { // the dense table is in order already
        for (VnIfcInstanceSlot* slot : m_dense)
            if (slot)
                m_ordered.push_back(slot);
        return m_ordered;
    }
    forEachSlot([&](VnIfcInstanceSlot* slot) { m_ordered.push_back(slot); });
    if (!std::is_sorted(m_ordered.begin(), m_ordered.end(), byNumber))
        std::sort(m_ordered.begin(), m_ordered.end(), byNumber);
    return m_ordered;
}

} // namespace VN_SDAI
