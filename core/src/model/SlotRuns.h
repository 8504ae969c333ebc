#pragma once
#include <VnIfcCore/VnDbObjectId.h>

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

namespace VN_SDAI {

/// The slots of a model in ascending order of numbers, in blocks of work. Slots that are made later are in none.
class SlotRuns {
public:
    /// Each block has about `block` slots, places without one included.
    SlotRuns(std::vector<std::span<VnIfcInstanceSlot>> runs, std::size_t block) : m_runs(std::move(runs)) {
        std::size_t size = block;
        for (std::size_t i = 0; i < m_runs.size(); ++i) {
            if (size >= block) {
                m_blocks.push_back(i);
                size = 0;
            }
            size += m_runs[i].size();
        }
    }

    std::size_t blocks() const noexcept { return m_blocks.size(); }
    /// The smallest and the largest number in a block, between which no other block has any; {1, 0} when it is empty.
    std::pair<std::uint64_t, std::uint64_t> numbers(std::size_t block) const {
        const auto isMade = [](const VnIfcInstanceSlot& slot) { return slot.number != 0; };
        std::pair<std::uint64_t, std::uint64_t> numbers{1, 0};
        for (std::size_t i = m_blocks[block]; i < endOf(block); ++i) {
            const auto first = std::ranges::find_if(m_runs[i], isMade);
            if (first == m_runs[i].end())
                continue;
            if (numbers.second == 0)
                numbers.first = first->number;
            numbers.second = std::find_if(m_runs[i].rbegin(), m_runs[i].rend(), isMade)->number;
        }
        return numbers;
    }
    /// Calls `visit(slot)` for each slot in a block that has an instance, which is not erased.
    template <class Visit>
    void forEach(std::size_t block, Visit visit) const {
        for (std::size_t i = m_blocks[block]; i < endOf(block); ++i)
            for (VnIfcInstanceSlot& slot : m_runs[i])
                if (slot.object() && !slot.has(VnIfcInstanceSlot::kErased))
                    visit(slot);
    }

private:
    /// Past the last run of a block.
    std::size_t endOf(std::size_t block) const noexcept {
        return block + 1 < m_blocks.size() ? m_blocks[block + 1] : m_runs.size();
    }

    std::vector<std::span<VnIfcInstanceSlot>> m_runs;
    std::vector<std::size_t> m_blocks; // the first run of each
};

} // namespace VN_SDAI
