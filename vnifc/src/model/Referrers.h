#pragma once
#include <vnifc/Ranges.h>

#include <memory>
#include <vector>

namespace vnifc::detail {

struct ModelState;

/// Who refers to whom, whatever the attribute: found in one pass over all instances when somebody asks, kept until a
/// reference changes.
class Referrers {
public:
    /// Ascending, each once.
    InstanceRange of(ModelState& state, const VN_SDAI::VnDbObjectId& target);
    void drop() noexcept { m_sources.reset(); }

private:
    using Handles = std::vector<VN_SDAI::VnDbObjectId>;

    void build(ModelState& state);
    /// The position of an instance among all; their number when it is none of them.
    std::size_t ordinalOf(const VN_SDAI::VnDbObjectId& handle) const noexcept;

    std::shared_ptr<const Handles> m_targets;
    std::shared_ptr<const Handles> m_sources; ///< for each target in turn
    std::vector<std::uint32_t> m_ends;        ///< where the sources of each target end
    std::vector<std::uint32_t> m_ordinals;    ///< by instance number, where those are dense
};

} // namespace vnifc::detail
