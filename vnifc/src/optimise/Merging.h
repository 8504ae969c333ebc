#pragma once
#include "../compare/Digests.h"
#include "../whole/Annotations.h"

#include <utility>
#include <vector>

namespace vnifc::detail {

/// Instances by a key that several may share: an open hash table.
class KnownInstances {
public:
    /// Calls `isWanted(ordinal)` for those of a key until it is true, and returns that one; adds `ordinal` when it is
    /// true of none, and returns it.
    template <class IsWanted>
    std::uint32_t findOrAdd(std::uint64_t key, std::uint32_t ordinal, IsWanted isWanted) {
        if (2 * (m_count + 1) > m_cells.size())
            grow();
        std::size_t at = key & (m_cells.size() - 1);
        for (; m_cells[at].second != Roster::kNone; at = (at + 1) & (m_cells.size() - 1))
            if (m_cells[at].first == key && isWanted(m_cells[at].second))
                return m_cells[at].second;
        m_cells[at] = {key, ordinal};
        ++m_count;
        return ordinal;
    }
    void clear() { std::vector<Cell>().swap(m_cells); }

private:
    using Cell = std::pair<std::uint64_t, std::uint32_t>;

    void grow() {
        constexpr std::size_t kFirst = 1024;
        std::vector<Cell> old(m_cells.empty() ? kFirst : 2 * m_cells.size(), Cell(0, Roster::kNone));
        old.swap(m_cells);
        for (const Cell& cell : old) {
            std::size_t at = cell.first & (m_cells.size() - 1);
            while (m_cells[at].second != Roster::kNone)
                at = (at + 1) & (m_cells.size() - 1);
            if (cell.second != Roster::kNone)
                m_cells[at] = cell;
        }
    }

    std::vector<Cell> m_cells;
    std::size_t m_count = 0;
};

/// Finds for each instance the one that stands for it and all that are equal to it.
class Merging {
public:
    Merging(ModelState& state, const Roster& roster, const Digests& digests, Annotations& annotations);

    std::uint32_t standIn(std::uint32_t ordinal) const noexcept { return m_standIns[ordinal]; }

    /// Lets all references go to stand-ins, but for those in sets and in lists of different elements that would then
    /// hold one element twice.
    void redirect();

private:
    void pinAll(Annotations& annotations);
    void pinTargets(const VN_SDAI::VnIfcEntityBase& instance, const VN_SDAI::typed::AttributeRow& row);
    void pinExclusive(const VN_SDAI::VnIfcEntityBase& instance, const VN_SDAI::typed::EntityClass& type);
    void settle(std::uint32_t ordinal);
    bool isSame(std::uint32_t left, std::uint32_t right) const;
    bool isSame(const VN_SDAI::VnIfcAggr& left, const VN_SDAI::VnIfcAggr& right) const;
    bool isSame(const VN_SDAI::typed::Select& left, const VN_SDAI::typed::Select& right) const;
    bool isSame(const VN_SDAI::VnDbObjectId& left, const VN_SDAI::VnDbObjectId& right) const;
    VN_SDAI::VnDbObjectId redirected(const VN_SDAI::VnDbObjectId& handle) const;
    void redirect(const VN_SDAI::VnIfcAggr& elements, unsigned unique);
    void redirect(VN_SDAI::typed::Select& select);

    ModelState& m_state;
    const Roster& m_roster;
    const Digests& m_digests;
    std::vector<bool> m_pinned;
    std::vector<bool> m_isSettled;
    std::vector<std::uint32_t> m_standIns;
    KnownInstances m_known;
    std::vector<VN_SDAI::VnDbObjectId> m_others;
    std::vector<VN_SDAI::VnDbObjectId> m_sorted;
};

} // namespace vnifc::detail
