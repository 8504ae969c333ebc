#pragma once
#include "../compare/Digests.h"
#include "../whole/Annotations.h"

#include <unordered_map>
#include <vector>

namespace vnifc::detail {

/// Finds for each instance the one that stands for it and all that are equal to it.
class Merging final : public ValueDigest {
public:
    Merging(ModelState& state, const Roster& roster, const Digests& digests, Annotations& annotations);

    std::uint32_t standIn(std::uint32_t ordinal) const noexcept { return m_standIns[ordinal]; }

    /// Lets all references go to stand-ins, but for those in sets and in lists of different elements that would then
    /// hold one element twice.
    void redirect();

private:
    std::uint64_t target(std::uint32_t ordinal) const override { return mix(1, m_standIns[ordinal]); }

    void pinAll(const Digests& digests, Annotations& annotations);
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

    std::vector<bool> m_pinned;
    std::vector<bool> m_isSettled;
    std::vector<std::uint32_t> m_standIns;
    std::unordered_multimap<std::uint64_t, std::uint32_t> m_known;
};

} // namespace vnifc::detail
