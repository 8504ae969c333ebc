#pragma once
#include <VnIfcCore/VnDbObjectId.h>

#include "../base/PageMemory.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace VN_SDAI {

/// The slots of a model: made once, never moved, found by instance number. Slots of dense numbers lie at places that
/// follow from the number. Others lie in the order in which they were made, so that memory follows the number of
/// instances and not their numbers: those of a file with ascending numbers are searched, from where the numbers of a
/// bucket begin; what remains goes through a hash table. Both keep neighbours together, for instances refer to near
/// ones most.
class SlotTable {
public:
    explicit SlotTable(VnIfcModel* model) noexcept;

    VnIfcInstanceSlot* find(std::uint64_t number) const noexcept {
        if (VnIfcInstanceSlot* slot = pages().find(number))
            return slot;
        return m_sparseEnd == 0 ? nullptr : findSparse(number);
    }
    /// Makes the slot of a number that has none yet.
    VnIfcInstanceSlot* insert(std::uint64_t number);

    /// What is known of the numbers of the instances of a file.
    struct Numbers {
        std::size_t count = 0;
        std::uint64_t first = 0; ///< in the order of the file
        std::uint64_t largest = 0;
        std::uint64_t gap = 1; ///< that most are apart
    };
    /// Makes room in an empty table for slots, which makers on several threads may then make.
    void reserve(const Numbers& numbers);
    class Maker;
    /// A slot that an instance got although another one has its number.
    struct Contested {
        VnIfcInstanceSlot* slot; ///< its number is 0 unless it is the slot of that number
        std::uint64_t number;
        bool isTaken = false; ///< for whoever decides between those that got it
    };
    /// Takes over what makers made, when all are done, on as many threads as there are makers. Contested slots in
    /// ascending order of their places in memory.
    std::vector<Contested> finish(std::span<Maker> makers);

    /// All slots in ascending order of numbers, as runs of neighbours in memory. Slots with the number 0 among them
    /// were never made.
    std::vector<std::span<VnIfcInstanceSlot>> runs();
    /// Calls `visit` for all slots.
    template <class Visit>
    void forEachSlot(Visit visit) const;
    /// From now on the slots find another model.
    void belongTo(VnIfcModel* model) noexcept;
    std::uint64_t largest() const noexcept { return m_largest; }
    std::size_t size() const noexcept { return m_count; }

    /// Where dense numbers have their slots, until more are made.
    VnIfcSlotPages pages() const noexcept { return {m_made.data(), m_directPages.data(), m_directEnd}; }

    static VnIfcModel* modelOf(const VnIfcInstanceSlot* slot) noexcept;

private:
    static constexpr std::size_t kPageSize = VnIfcSlotPages::kPageSize;
    static constexpr std::size_t kSlotsPerPage = VnIfcSlotPages::kSlots;
    /// A slot finds its model through the page that it lies in.
    struct PageHead {
        VnIfcModel* model;
        std::uint64_t padding;
    };
    static_assert(sizeof(PageHead) == VnIfcSlotPages::kHeadSize);
    /// Holds the number too: to look into the slots would cost a cache miss for each.
    struct Cell {
        std::uint64_t number;
        VnIfcInstanceSlot* slot; // null in an empty cell
    };
    using Cells = std::vector<Cell, PageAllocator<Cell>>;
    /// What became of instances that follow one another in the file, as long as slots are not direct.
    struct Row {
        std::size_t index; // of the first slot
        std::size_t count = 0;
        std::uint64_t first = 0;
        std::uint64_t last = 0;
        bool isAscending = true;
    };
    /// Buckets that all begin with one slot.
    struct BucketRun {
        std::size_t first;
        std::size_t last;
        std::size_t index; // of the slot
    };
    class Enterer;

    static VnIfcInstanceSlot* slotsOf(char* page) noexcept { return VnIfcSlotPages::slotsOf(page); }
    VnIfcInstanceSlot* direct(std::uint64_t number) const noexcept {
        return slotsOf(m_directPages[number / kSlotsPerPage]) + number % kSlotsPerPage;
    }
    VnIfcInstanceSlot* sparse(std::size_t index) const noexcept {
        return slotsOf(m_sparsePages[index / kSlotsPerPage]) + index % kSlotsPerPage;
    }
    const std::vector<VnIfcInstanceSlot*>& sorted();
    bool isInOrder() const noexcept;
    void noteSparse(std::uint64_t first, std::uint64_t last) noexcept;
    VnIfcInstanceSlot* insertDirect(std::uint64_t number);
    VnIfcInstanceSlot* insertSparse(std::uint64_t number);
    VnIfcInstanceSlot* findSparse(std::uint64_t number) const noexcept;
    VnIfcInstanceSlot* findOrdered(std::uint64_t number) const noexcept;
    VnIfcInstanceSlot* findHashed(std::uint64_t number) const noexcept;
    std::size_t bucketOf(std::uint64_t number) const noexcept {
        return static_cast<std::size_t>((number - m_firstOrdered) >> m_bucketShift);
    }
    std::uint32_t* buckets() const noexcept { return reinterpret_cast<std::uint32_t*>(m_buckets.data()); }
    void makeBuckets(const Numbers& numbers);
    void beginBuckets(const BucketRun& run) noexcept;
    void closeBuckets(std::span<Maker> makers, std::span<const Row> rows) noexcept;
    bool enterHashed(VnIfcInstanceSlot* slot);
    std::vector<Contested> enterRows(std::span<const Row> rows, std::size_t threads);
    std::vector<Contested> enterAll();
    std::size_t cellOf(std::uint64_t number) const noexcept;
    std::size_t nextCell(std::size_t cell) const noexcept { return cell + 1 < m_cells.size() ? cell + 1 : 0; }
    void rehash(std::size_t cells);
    char* newPages(std::size_t count);
    char* newPage();

    VnIfcModel* m_model;
    std::vector<PageMemory> m_blocks;
    char* m_nextPage = nullptr;
    char* m_blockEnd = nullptr;

    std::size_t m_count = 0;
    std::uint64_t m_largest = 0;

    std::uint64_t m_directEnd = 0;     // numbers below have a bit in m_made
    std::vector<std::uint64_t> m_made; // a bit for each number: its slot is made
    std::vector<char*> m_directPages;  // null where no slot is made

    std::vector<char*> m_sparsePages;
    std::size_t m_sparseEnd = 0;     // of their slots, the first that is not in use
    bool m_isSparseInOrder = true;   // they have ascending numbers
    std::uint64_t m_firstSparse = 0; // number
    std::uint64_t m_lastSparse = 0;

    PageMemory m_buckets;             // indices: of the first slot in each or after it, then the end of the last
    std::size_t m_bucketCount = 0;    // 0 when nothing is found by them
    std::uint64_t m_firstOrdered = 0; // number, where the buckets begin
    unsigned m_bucketShift = 0;       // numbers that differ in lower bits only share a bucket

    Cells m_cells;
    std::size_t m_hashedCount = 0;
    std::size_t m_steps = 0; // taken from one cell to the next by all that were inserted
    std::uint64_t m_multiplier;
    unsigned m_cellShift = 0; // numbers that differ in lower bits only share a cell

    std::uint64_t m_largestDirect = 0;
    std::vector<VnIfcInstanceSlot*> m_ordered; // of the first slots made, when somebody asked last
};

/// Makes slots of a table on one thread; others may do the same at once.
class SlotTable::Maker {
public:
    explicit Maker(SlotTable& table) noexcept : m_table(table) {}

    /// Begins with a row of instances that follow one another in the file; `index` is that of the first one.
    void begin(std::size_t index);
    /// The slot of the next instance of the row.
    VnIfcInstanceSlot* make(std::uint64_t number) {
        m_largest = std::max(m_largest, number);
        return m_table.m_directEnd > 0 ? makeDirect(number) : makeSparse(number);
    }
    void end();

private:
    friend class SlotTable;

    VnIfcInstanceSlot* makeDirect(std::uint64_t number);
    VnIfcInstanceSlot* makeSparse(std::uint64_t number);
    VnIfcInstanceSlot* onPage(char* page, std::size_t index, std::uint64_t number);
    void enterBits();

    SlotTable& m_table;
    char* m_page = nullptr;   // the last one with a head
    std::uint64_t m_word = 0; // of the bits of the table
    std::uint64_t m_bits = 0; // made there, and entered when another word follows
    std::vector<Row> m_rows;
    std::size_t m_bucket = 0; // the first one after that of the slot made last
    std::vector<BucketRun> m_runs;
    std::size_t m_count = 0;
    std::uint64_t m_largest = 0;
    std::vector<Contested> m_contested;
};

template <class Visit>
void SlotTable::forEachSlot(Visit visit) const {
    for (const auto* pages : {&m_directPages, &m_sparsePages}) {
        for (char* const page : *pages) {
            if (!page)
                continue;
            for (VnIfcInstanceSlot& slot : std::span(slotsOf(page), kSlotsPerPage))
                if (slot.number != 0)
                    visit(&slot);
        }
    }
}

} // namespace VN_SDAI
