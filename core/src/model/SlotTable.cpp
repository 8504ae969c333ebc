#include "SlotTable.h"

#include <atomic>
#include <bit>
#include <chrono>

namespace VN_SDAI {

namespace {

// Places that follow from the numbers pay as long as at least every second one is used.
constexpr std::uint64_t directLimit(std::size_t count) noexcept { return 2 * std::uint64_t{count} + 1024; }

// One kilobyte: near enough together that the processor fetches ahead.
constexpr std::size_t kGroup = 64;

constexpr std::size_t kLargestBlock = 512; // pages

/// True when numbers that were looked for went on from cell to cell more often than chance explains.
constexpr bool isCrowded(std::size_t steps, std::size_t count) noexcept { return steps > 32 * count + 4096; }

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
    for (const auto* pages : {&m_directPages, &m_hashedPages})
        for (char* const page : *pages)
            if (page && reinterpret_cast<PageHead*>(page)->model)
                reinterpret_cast<PageHead*>(page)->model = model;
}

// ---- memory

/// Neighbouring pages, zeroed and without heads; up to a page is lost to alignment.
char* SlotTable::newPages(std::size_t count) {
    PageMemory memory((count + 1) * kPageSize);
    const auto address = reinterpret_cast<std::uintptr_t>(memory.data());
    char* const first = memory.data() + ((kPageSize - address % kPageSize) % kPageSize);
    m_blocks.push_back(std::move(memory));
    return first;
}

/// A page with a head. Blocks grow with the table, so that small models stay small.
char* SlotTable::newPage() {
    if (m_nextPage == m_blockEnd) {
        const std::size_t pages = std::min(std::size_t{1} << std::min<std::size_t>(m_blocks.size(), 9), kLargestBlock);
        m_nextPage = newPages(pages);
        m_blockEnd = m_nextPage + pages * kPageSize;
    }
    char* const page = std::exchange(m_nextPage, m_nextPage + kPageSize);
    new (page) PageHead{m_model, 0};
    return page;
}

// ---- one slot after another

VnIfcInstanceSlot* SlotTable::insert(std::uint64_t number) {
    VnIfcInstanceSlot* const slot =
        number < directLimit(m_count + 1) || number < m_directEnd ? insertDirect(number) : insertHashed(number);
    m_largest = std::max(m_largest, number);
    // An order that was asked for stays good as long as new instances come last.
    if (m_ordered.size() == m_count && !m_ordered.empty() && number > m_ordered.back()->number)
        m_ordered.push_back(slot);
    ++m_count;
    return slot;
}

VnIfcInstanceSlot* SlotTable::insertDirect(std::uint64_t number) {
    if (number >= m_directEnd) {
        m_made.resize(static_cast<std::size_t>(number / 64) + 1);
        m_directEnd = m_made.size() * 64;
        m_directPages.resize(static_cast<std::size_t>(m_directEnd / kSlotsPerPage) + 1);
    }
    char*& page = m_directPages[number / kSlotsPerPage];
    if (!page)
        page = newPage();
    reinterpret_cast<PageHead*>(page)->model = m_model; // pages that were reserved have none yet
    VnIfcInstanceSlot* const slot = direct(number);
    slot->number = number;
    m_made[number / 64] |= std::uint64_t{1} << number % 64;
    m_largestDirect = std::max(m_largestDirect, number);
    return slot;
}

VnIfcInstanceSlot* SlotTable::insertHashed(std::uint64_t number) {
    if (m_hashedEnd == m_hashedPages.size() * kSlotsPerPage)
        m_hashedPages.push_back(newPage());
    VnIfcInstanceSlot* const slot = hashed(m_hashedEnd);
    slot->number = number;
    enterHashed(slot);
    ++m_hashedEnd;
    noteHashed(number, number);
    return slot;
}

void SlotTable::noteHashed(std::uint64_t first, std::uint64_t last) noexcept {
    if (m_lastHashed == 0)
        m_firstHashed = first;
    m_hashedInOrder = m_hashedInOrder && first > m_lastHashed;
    m_lastHashed = last;
}

// ---- the hash table

std::size_t SlotTable::cellOf(std::uint64_t number) const noexcept {
    const std::uint64_t near = number >> m_shift;
    const std::uint64_t hash = near / kGroup * m_multiplier;
    return static_cast<std::size_t>((hash >> 32) * (m_cells.size() / kGroup) >> 32) * kGroup + near % kGroup;
}

VnIfcInstanceSlot* SlotTable::findHashed(std::uint64_t number) const noexcept {
    for (std::size_t i = cellOf(number); m_cells[i].slot; i = nextCell(i))
        if (m_cells[i].number == number)
            return m_cells[i].slot;
    return nullptr;
}

/// False when another slot with that number is there already.
bool SlotTable::enterHashed(VnIfcInstanceSlot* slot) {
    if (4 * (m_hashedCount + 1) > 3 * m_cells.size())
        rehash(2 * (m_hashedCount + 8));
    std::size_t i = cellOf(slot->number);
    for (; m_cells[i].slot; i = nextCell(i)) {
        if (m_cells[i].number == slot->number)
            return false;
        ++m_steps;
    }
    m_cells[i] = {slot->number, slot};
    ++m_hashedCount;
    if (isCrowded(m_steps, m_hashedCount)) {
        // The numbers are nearer to each other than expected, or made to meet.
        m_shift = 0;
        m_multiplier = randomMultiplier();
        rehash(m_cells.size());
    }
    return true;
}

void SlotTable::rehash(std::size_t cells) {
    Cells before((cells / kGroup + 1) * kGroup);
    before.swap(m_cells);
    m_hashedCount = 0;
    m_steps = 0;
    for (const Cell& cell : before)
        if (cell.slot)
            enterHashed(cell.slot);
}

// ---- many slots at once

void SlotTable::reserve(std::size_t count, std::uint64_t largest, std::uint64_t gap) {
    const bool isDirect = largest < directLimit(count);
    const std::size_t slots = isDirect ? static_cast<std::size_t>(largest) + 1 : count;
    const std::size_t pages = (slots + kSlotsPerPage - 1) / kSlotsPerPage;
    char* const first = newPages(pages);
    std::vector<char*>& table = isDirect ? m_directPages : m_hashedPages;
    for (std::size_t i = 0; i < pages; ++i)
        table.push_back(first + i * kPageSize);
    if (isDirect) {
        m_made.resize(slots / 64 + 1);
        m_directEnd = slots;
    } else {
        m_hashedEnd = count;
        m_shift = std::bit_width(gap | 1) - 1;
        m_cells = Cells((3 * count / 2 / kGroup + 1) * kGroup);
    }
}

void SlotTable::Maker::begin(std::size_t index) {
    m_index = index;
    if (m_table.m_directEnd == 0)
        m_rows.push_back({index, 0, 0, true});
}

void SlotTable::Maker::end() {
    if (m_bits != 0)
        enterBits();
}

/// The slot, with its number. The head of its page is written by whoever comes there first, all write the same.
VnIfcInstanceSlot* SlotTable::Maker::onPage(char* page, std::size_t index, std::uint64_t number) {
    if (page != m_page) {
        m_page = page;
        std::atomic_ref(reinterpret_cast<PageHead*>(page)->model).store(m_table.m_model, std::memory_order_relaxed);
    }
    VnIfcInstanceSlot* const slot = slotsOf(page) + index;
    std::atomic_ref(slot->number).store(number, std::memory_order_relaxed);
    return slot;
}

VnIfcInstanceSlot* SlotTable::Maker::makeDirect(std::uint64_t number) {
    VnIfcInstanceSlot* const slot =
        onPage(m_table.m_directPages[number / kSlotsPerPage], number % kSlotsPerPage, number);
    if (number / 64 != m_word) {
        enterBits();
        m_word = number / 64;
    }
    const std::uint64_t bit = std::uint64_t{1} << number % 64;
    if ((m_bits & bit) != 0)
        m_contested.push_back({slot, number});
    m_bits |= bit;
    return slot;
}

/// Neighbours have neighbouring numbers, so that most need no access of their own to what all threads share.
void SlotTable::Maker::enterBits() {
    const std::uint64_t bits = std::exchange(m_bits, 0);
    const std::uint64_t before = std::atomic_ref(m_table.m_made[m_word]).fetch_or(bits, std::memory_order_relaxed);
    m_count += static_cast<std::size_t>(std::popcount(bits & ~before));
    for (std::uint64_t both = bits & before; both != 0; both &= both - 1) {
        const std::uint64_t number = m_word * 64 + static_cast<std::uint64_t>(std::countr_zero(both));
        m_contested.push_back({m_table.direct(number), number});
    }
}

/// Of slots with one number, that of the first instance stays in the table.
VnIfcInstanceSlot* SlotTable::Maker::makeHashed(std::uint64_t number) {
    Row& row = m_rows.back();
    row.isAscending = row.isAscending && number > row.last;
    row.first = row.first == 0 ? number : row.first;
    row.last = number;
    const std::size_t index = m_index++;
    VnIfcInstanceSlot* const slot = onPage(m_table.m_hashedPages[index / kSlotsPerPage], index % kSlotsPerPage, number);
    m_isCrowded = m_isCrowded || isCrowded(m_steps, m_count);
    if (m_isCrowded)
        return slot; // all slots will be entered anew
    for (std::size_t i = m_table.cellOf(number);; i = m_table.nextCell(i), ++m_steps) {
        Cell& cell = m_table.m_cells[i];
        const std::atomic_ref place(cell.slot);
        VnIfcInstanceSlot* there = place.load(std::memory_order_acquire);
        if (!there && place.compare_exchange_strong(there, slot, std::memory_order_acq_rel)) {
            cell.number = number; // not looked at before all are done
            ++m_count;
            return slot;
        }
        if (std::atomic_ref(there->number).load(std::memory_order_relaxed) != number)
            continue;
        // In one row of pages, so that the order in memory is that of the file.
        while (slot < there)
            if (place.compare_exchange_weak(there, slot, std::memory_order_acq_rel)) {
                m_contested.push_back({there, number});
                return slot;
            }
        m_contested.push_back({slot, number});
        return slot;
    }
}

std::vector<SlotTable::Contested> SlotTable::finish(std::span<Maker> makers) {
    std::vector<Contested> contested;
    bool isAnyCrowded = false;
    std::size_t made = 0;
    for (const Maker& maker : makers) {
        made += maker.m_count;
        m_steps += maker.m_steps;
        m_largest = std::max(m_largest, maker.m_largest);
        isAnyCrowded = isAnyCrowded || maker.m_isCrowded;
        contested.insert(contested.end(), maker.m_contested.begin(), maker.m_contested.end());
    }
    m_count = made;
    if (m_directEnd > 0) {
        m_largestDirect = m_largest;
    } else {
        m_hashedCount = made;
        takeRows(makers);
        if (isAnyCrowded) {
            contested = enterAll();
            m_count = m_hashedCount;
        }
        for (const Contested& each : contested)
            each.slot->number = 0;
    }
    std::ranges::sort(contested, {}, &Contested::slot);
    return contested;
}

/// Notes whether all rows together have ascending numbers.
void SlotTable::takeRows(std::span<Maker> makers) {
    std::vector<Maker::Row> rows;
    for (const Maker& maker : makers)
        rows.insert(rows.end(), maker.m_rows.begin(), maker.m_rows.end());
    std::ranges::sort(rows, {}, &Maker::Row::index);
    for (const Maker::Row& row : rows) {
        if (row.first == 0)
            continue;
        m_hashedInOrder = m_hashedInOrder && row.isAscending;
        noteHashed(row.first, row.last);
    }
}

/// Enters the slots of all hashed pages into an empty table. Those whose number an earlier one has are returned.
std::vector<SlotTable::Contested> SlotTable::enterAll() {
    std::vector<Contested> contested;
    std::ranges::fill(m_cells, Cell{});
    m_multiplier = randomMultiplier();
    m_shift = 0;
    m_hashedCount = 0;
    m_steps = 0;
    for (std::size_t i = 0; i < m_hashedEnd; ++i) {
        VnIfcInstanceSlot* const slot = hashed(i);
        if (slot->number != 0 && !enterHashed(slot))
            contested.push_back({slot, slot->number});
    }
    return contested;
}

// ---- order

const std::vector<VnIfcInstanceSlot*>& SlotTable::sorted() {
    if (m_ordered.size() == m_count)
        return m_ordered;
    m_ordered.clear();
    m_ordered.reserve(m_count);
    forEachSlot([&](VnIfcInstanceSlot* slot) { m_ordered.push_back(slot); });
    std::sort(m_ordered.begin(), m_ordered.end(), byNumber);
    return m_ordered;
}

bool SlotTable::isInOrder() const noexcept {
    return m_hashedEnd == 0 || (m_hashedInOrder && m_largestDirect < m_firstHashed);
}

std::vector<std::span<VnIfcInstanceSlot>> SlotTable::runs() {
    std::vector<std::span<VnIfcInstanceSlot>> runs;
    if (!isInOrder()) {
        for (VnIfcInstanceSlot* const slot : sorted()) {
            const bool continues =
                !runs.empty() && runs.back().data() + runs.back().size() == slot && runs.back().size() < kSlotsPerPage;
            if (continues)
                runs.back() = {runs.back().data(), runs.back().size() + 1};
            else
                runs.emplace_back(slot, 1);
        }
        return runs;
    }
    // Up to the last slot that is made: what comes later must not come into a run that somebody holds.
    const auto add = [&](const std::vector<char*>& pages, std::uint64_t end) {
        for (std::size_t i = 0; i < pages.size() && i * kSlotsPerPage < end; ++i)
            if (pages[i] && reinterpret_cast<const PageHead*>(pages[i])->model)
                runs.emplace_back(slotsOf(pages[i]), std::min<std::uint64_t>(kSlotsPerPage, end - i * kSlotsPerPage));
    };
    add(m_directPages, m_directPages.empty() ? 0 : m_largestDirect + 1);
    add(m_hashedPages, m_hashedEnd);
    return runs;
}

} // namespace VN_SDAI
