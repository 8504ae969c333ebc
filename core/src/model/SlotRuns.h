#pragma once
#include <VnIfcCore/VnDbObjectId.h>

#include <span>
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
    /// Calls `visit(slot)` for each slot in a block that has an instance, which is not erased.
    template <class Visit>
    void forEach(std::size_t block, Visit visit) const {
        const std::size_t last = block + 1 < m_blocks.size() ? m_blocks[block + 1] : m_runs.size();
        for (std::size_t i = m_blocks[block]; i < last; ++i)
            for (VnIfcInstanceSlot& slot : m_runs[i])
                if (slot.object() && !slot.has(VnIfcInstanceSlot::kErased))
                    visit(slot);
    }

private:
    std::vector<std::span<VnIfcInstanceSlot>> m_runs;
    std::vector<std::size_t> m_blocks; // the first run of each
};

} // namespace VN_SDAI
