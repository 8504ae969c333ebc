#pragma once
#include <VnIfcCore/VnDbObjectId.h>

#include "../base/PageMemory.h"

#include <cstdint>
#include <span>
#include <vector>

namespace VN_SDAI {

/// The slots of a model: made once, never moved, found by instance number. Dense numbers index a vector, others go
/// through a hash table, so that memory follows the number of instances and not their numbers. The hash table keeps
/// neighbours together, for instances refer to near ones most.
class SlotTable {
public:
    explicit SlotTable(VnIfcModel* model) noexcept;

    /// Makes room for `count` slots with numbers up to `largest`, most of which are `gap` apart.
    void reserve(std::size_t count, std::uint64_t largest, std::uint64_t gap);
    VnIfcInstanceSlot* find(std::uint64_t number) const noexcept {
        if (number < m_dense.size() && m_dense[number])
            return m_dense[number];
        return m_cells.empty() ? nullptr : findHashed(number);
    }
    /// Makes the slot of a number that has none yet.
    VnIfcInstanceSlot* insert(std::uint64_t number);
    /// All slots in ascending order of numbers.
    const std::vector<VnIfcInstanceSlot*>& ordered();
    /// Calls `visit` for all slots in the order in which they were made.
    template <class Visit>
    void forEachSlot(Visit visit) const;
    /// From now on the slots find another model.
    void belongTo(VnIfcModel* model) noexcept;
    std::uint64_t largest() const noexcept { return m_largest; }
    std::size_t size() const noexcept { return m_count; }
    /// The vector that dense numbers index, for readers that look up many.
    std::span<VnIfcInstanceSlot* const> dense() const noexcept { return m_dense; }

    static VnIfcModel* modelOf(const VnIfcInstanceSlot* slot) noexcept;

private:
    static constexpr std::size_t kPageSize = 16 * 1024;
    /// A slot finds its model through the page that it lies in.
    struct PageHead {
        VnIfcModel* model;
        std::uint64_t padding;
    };
    /// Several pages at once; the first aligned one begins at `pages`.
    struct Block {
        PageMemory memory;
        char* pages;
        std::size_t count;
    };
    using Slots = std::vector<VnIfcInstanceSlot*, PageAllocator<VnIfcInstanceSlot*>>;
    /// Holds the number too: to look into the slots would cost a cache miss for each.
    struct Cell {
        std::uint64_t number;
        VnIfcInstanceSlot* slot; // null in an empty cell
    };
    using Cells = std::vector<Cell, PageAllocator<Cell>>;

    VnIfcInstanceSlot* newSlot();
    VnIfcInstanceSlot* findHashed(std::uint64_t number) const noexcept;
    void insertHashed(VnIfcInstanceSlot* slot);
    std::size_t cellOf(std::uint64_t number) const noexcept;
    void rehash(std::size_t cells);

    void newBlock();

    VnIfcModel* m_model;
    std::vector<Block> m_blocks;
    VnIfcInstanceSlot* m_next = nullptr;
    VnIfcInstanceSlot* m_pageEnd = nullptr;
    char* m_nextPage = nullptr;
    char* m_blockEnd = nullptr;

    std::size_t m_count = 0;
    std::uint64_t m_largest = 0;
    Slots m_dense;
    Cells m_cells;
    std::size_t m_hashedCount = 0;
    std::size_t m_steps = 0; // taken from one cell to the next by all that were inserted
    std::uint64_t m_multiplier;
    unsigned m_shift = 0;                      // numbers that differ in lower bits only share a cell
    std::vector<VnIfcInstanceSlot*> m_ordered; // of the first slots made, when somebody asked last
};

template <class Visit>
void SlotTable::forEachSlot(Visit visit) const {
    for (const Block& block : m_blocks) {
        for (std::size_t i = 0; i < block.count; ++i) {
            char* const page = block.pages + i * kPageSize;
            auto* slot = reinterpret_cast<VnIfcInstanceSlot*>(page + sizeof(PageHead));
            auto* const end = reinterpret_cast<VnIfcInstanceSlot*>(page + kPageSize);
            for (; slot < end; ++slot) {
                if (slot == m_next)
                    return;
                visit(slot);
            }
        }
    }
}

} // namespace VN_SDAI
