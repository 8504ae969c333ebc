#include "SlotTable.h"

#include "../exchange/WorkSharing.h"

#include <atomic>
#include <bit>
#include <chrono>

namespace VN_SDAI {

namespace {

// Places that follow from the numbers pay as long as at least every second one is used.
constexpr std::uint64_t directLimit(std::size_t count) noexcept { return 2 * std::uint64_t{count} + 1024; }

// One kilobyte: near enough together that the processor fetches ahead.
constexpr std::size_t kGroup = 64;

constexpr std::size_t kMostPages = 512; // pages

// As many slots are looked at one after another rather than by halves.
constexpr std::size_t kFewSlots = 8;

// Longer runs of buckets are left until it is known that the numbers of the file are in order: a file of many large
// jumps forth and back must not have all buckets written for each of them.
constexpr std::size_t kLongRun = 256;

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
    for (const auto* pages : {&m_directPages, &m_sparsePages})
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
        const std::size_t pages = std::min(std::size_t{1} << std::min<std::size_t>(m_blocks.size(), 9), kMostPages);
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
        number < directLimit(m_count + 1) || number < m_directEnd ? insertDirect(number) : insertSparse(number);
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

VnIfcInstanceSlot* SlotTable::insertSparse(std::uint64_t number) {
    if (m_sparseEnd == m_sparsePages.size() * kSlotsPerPage)
        m_sparsePages.push_back(newPage());
    VnIfcInstanceSlot* const slot = sparse(m_sparseEnd);
    slot->number = number;
    enterHashed(slot);
    ++m_sparseEnd;
    noteSparse(number, number);
    return slot;
}

void SlotTable::noteSparse(std::uint64_t first, std::uint64_t last) noexcept {
    if (m_lastSparse == 0)
        m_firstSparse = first;
    m_isSparseInOrder = m_isSparseInOrder && first > m_lastSparse;
    m_lastSparse = last;
}

VnIfcInstanceSlot* SlotTable::findSparse(std::uint64_t number) const noexcept {
    if (VnIfcInstanceSlot* const slot = findOrdered(number))
        return slot;
    return m_cells.empty() ? nullptr : findHashed(number);
}

// ---- the buckets

/// Room for one to two buckets for each instance.
void SlotTable::makeBuckets(const Numbers& numbers) {
    if (numbers.largest < numbers.first || numbers.count >= std::numeric_limits<std::uint32_t>::max())
        return;
    const std::uint64_t range = numbers.largest - numbers.first;
    const auto width = static_cast<unsigned>(std::bit_width(range / numbers.count));
    m_bucketShift = width > 0 ? width - 1 : 0;
    m_firstOrdered = numbers.first;
    m_bucketCount = bucketOf(numbers.largest) + 1;
    m_buckets = PageMemory((m_bucketCount + 1) * sizeof(std::uint32_t));
}

void SlotTable::beginBuckets(const BucketRun& run) noexcept {
    // Relaxed stores, for rows of numbers that are not in order may meet in one bucket.
    for (std::size_t bucket = run.first; bucket < run.last; ++bucket)
        std::atomic_ref(buckets()[bucket]).store(static_cast<std::uint32_t>(run.index), std::memory_order_relaxed);
}

/// Enters what makers left, once it is known that the numbers of all rows are in order.
void SlotTable::closeBuckets(std::span<Maker> makers, std::span<const Row> rows) noexcept {
    std::size_t next = 0;
    for (const Row& row : rows) {
        if (row.count == 0)
            continue;
        beginBuckets({next, bucketOf(row.first) + 1, row.index});
        next = bucketOf(row.last) + 1;
    }
    beginBuckets({next, m_bucketCount + 1, m_sparseEnd});
    for (const Maker& maker : makers)
        std::ranges::for_each(maker.m_runs, [&](const BucketRun& run) { beginBuckets(run); });
}

VnIfcInstanceSlot* SlotTable::findOrdered(std::uint64_t number) const noexcept {
    if (number < m_firstOrdered || bucketOf(number) >= m_bucketCount)
        return nullptr;
    const std::uint32_t* const bucket = buckets() + bucketOf(number);
    std::size_t first = bucket[0];
    std::size_t end = bucket[1];
    while (end - first > kFewSlots) {
        const std::size_t middle = first + (end - first) / 2;
        (sparse(middle)->number > number ? end : first) = middle;
    }
    for (; first < end; ++first)
        if (VnIfcInstanceSlot* const slot = sparse(first); slot->number == number)
            return slot;
    return nullptr;
}

// ---- the hash table

std::size_t SlotTable::cellOf(std::uint64_t number) const noexcept {
    const std::uint64_t near = number >> m_cellShift;
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
        m_cellShift = 0;
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

void SlotTable::reserve(const Numbers& numbers) {
    const bool isDirect = numbers.largest < directLimit(numbers.count);
    const std::size_t slots = isDirect ? static_cast<std::size_t>(numbers.largest) + 1 : numbers.count;
    const std::size_t pages = (slots + kSlotsPerPage - 1) / kSlotsPerPage;
    char* const first = newPages(pages);
    std::vector<char*>& table = isDirect ? m_directPages : m_sparsePages;
    for (std::size_t i = 0; i < pages; ++i)
        table.push_back(first + i * kPageSize);
    if (isDirect) {
        m_made.resize(slots / 64 + 1);
        m_directEnd = slots;
    } else {
        m_sparseEnd = numbers.count;
        m_cellShift = static_cast<unsigned>(std::bit_width(numbers.gap | 1)) - 1;
        makeBuckets(numbers);
    }
}

void SlotTable::Maker::begin(std::size_t index) {
    if (m_table.m_directEnd == 0)
        m_rows.push_back({index});
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

/// Only notes the number, and where its bucket begins: what else there is to do depends on whether all are in order.
VnIfcInstanceSlot* SlotTable::Maker::makeSparse(std::uint64_t number) {
    Row& row = m_rows.back();
    const std::size_t index = row.index + row.count++;
    row.isAscending = row.isAscending && number > row.last;
    row.last = number;
    if (row.count == 1)
        row.first = number;
    ++m_count;
    if (row.isAscending && number >= m_table.m_firstOrdered && m_table.m_bucketCount > 0) {
        const std::size_t end = m_table.bucketOf(number) + 1;
        if (row.count > 1 && end - m_bucket > kLongRun)
            m_runs.push_back({m_bucket, end, index});
        else if (row.count > 1)
            m_table.beginBuckets({m_bucket, end, index});
        m_bucket = end;
    }
    return onPage(m_table.m_sparsePages[index / kSlotsPerPage], index % kSlotsPerPage, number);
}

std::vector<SlotTable::Contested> SlotTable::finish(std::span<Maker> makers) {
    std::vector<Contested> contested;
    std::vector<Row> rows;
    m_count = 0;
    for (const Maker& maker : makers) {
        m_count += maker.m_count;
        m_largest = std::max(m_largest, maker.m_largest);
        contested.insert(contested.end(), maker.m_contested.begin(), maker.m_contested.end());
        rows.insert(rows.end(), maker.m_rows.begin(), maker.m_rows.end());
    }
    if (m_directEnd > 0) {
        m_largestDirect = m_largest;
    } else {
        std::ranges::sort(rows, {}, &Row::index);
        for (const Row& row : rows) {
            if (row.count == 0)
                continue;
            m_isSparseInOrder = m_isSparseInOrder && row.isAscending;
            noteSparse(row.first, row.last);
        }
        if (m_isSparseInOrder && m_count == m_sparseEnd && m_bucketCount > 0) {
            closeBuckets(makers, rows);
            return contested;
        }
        m_bucketCount = 0;
        m_buckets = PageMemory();
        contested = enterRows(rows, makers.size());
        m_count = m_hashedCount;
        for (const Contested& each : contested)
            each.slot->number = 0;
    }
    std::ranges::sort(contested, {}, &Contested::slot);
    return contested;
}

/// Enters slots into the hash table on one thread; others may do the same at once.
class SlotTable::Enterer {
public:
    explicit Enterer(SlotTable& table) noexcept : m_table(table) {}

    void enter(const Row& row) {
        for (std::size_t i = row.index; i < row.index + row.count && !isCrowded(); ++i)
            enter(m_table.sparse(i));
    }
    /// Too much for the numbers to be entered on.
    bool isCrowded() const noexcept { return VN_SDAI::isCrowded(m_steps, m_count); }
    std::size_t steps() const noexcept { return m_steps; }
    std::size_t count() const noexcept { return m_count; }
    const std::vector<Contested>& contested() const noexcept { return m_contested; }

private:
    /// Of slots with one number, that of the first instance stays in the table.
    void enter(VnIfcInstanceSlot* slot) {
        for (std::size_t i = m_table.cellOf(slot->number);; i = m_table.nextCell(i), ++m_steps) {
            Cell& cell = m_table.m_cells[i];
            const std::atomic_ref place(cell.slot);
            VnIfcInstanceSlot* there = place.load(std::memory_order_acquire);
            if (!there && place.compare_exchange_strong(there, slot, std::memory_order_acq_rel)) {
                cell.number = slot->number; // not looked at before all are done
                ++m_count;
                return;
            }
            if (there->number != slot->number)
                continue;
            // In one row of pages, so that the order in memory is that of the file.
            while (slot < there)
                if (place.compare_exchange_weak(there, slot, std::memory_order_acq_rel)) {
                    m_contested.push_back({there, slot->number});
                    return;
                }
            m_contested.push_back({slot, slot->number});
            return;
        }
    }

    SlotTable& m_table;
    std::size_t m_count = 0;
    std::size_t m_steps = 0;
    std::vector<Contested> m_contested;
};

/// Enters the slots of rows into an empty hash table. Those whose number an earlier one has are returned.
std::vector<SlotTable::Contested> SlotTable::enterRows(std::span<const Row> rows, std::size_t threads) {
    m_cells = Cells((3 * m_sparseEnd / 2 / kGroup + 1) * kGroup);
    std::vector<Enterer> enterers(threads, Enterer(*this));
    shareWork(rows.size(), static_cast<unsigned>(threads), {}, [&](unsigned worker, std::size_t i) {
        enterers[worker].enter(rows[i]);
        return true;
    });
    std::vector<Contested> contested;
    for (const Enterer& enterer : enterers) {
        if (enterer.isCrowded())
            return enterAll();
        m_hashedCount += enterer.count();
        m_steps += enterer.steps();
        contested.insert(contested.end(), enterer.contested().begin(), enterer.contested().end());
    }
    return contested;
}

/// The same on one thread, in another order of cells.
std::vector<SlotTable::Contested> SlotTable::enterAll() {
    std::vector<Contested> contested;
    std::ranges::fill(m_cells, Cell{});
    m_multiplier = randomMultiplier();
    m_cellShift = 0;
    m_hashedCount = 0;
    m_steps = 0;
    for (std::size_t i = 0; i < m_sparseEnd; ++i) {
        VnIfcInstanceSlot* const slot = sparse(i);
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
    return m_sparseEnd == 0 || (m_isSparseInOrder && m_largestDirect < m_firstSparse);
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
    add(m_sparsePages, m_sparseEnd);
    return runs;
}

} // namespace VN_SDAI
