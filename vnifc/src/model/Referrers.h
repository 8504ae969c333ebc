#pragma once
#include <base/PageMemory.h>
#include <vnifc/Ranges.h>

#include <memory>
#include <vector>

namespace vnifc::detail {

struct ClassInfo;
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

    /// One instance refers to another; both by their positions among all.
    struct Edge {
        std::uint32_t target;
        std::uint32_t source;
    };
    using Edges = VN_SDAI::PageVector<Edge>;

    void build(ModelState& state);
    /// What the instances at those positions refer to, in their order; `classes` by the kinds of the population.
    Edges edgesOf(ModelState& state, const std::vector<const ClassInfo*>& classes, std::uint32_t begin,
                  std::uint32_t end) const;
    /// The position of an instance among all; their number when it is none of them.
    std::size_t ordinalOf(const VN_SDAI::VnDbObjectId& handle) const noexcept;

    std::shared_ptr<const Handles> m_targets;
    std::shared_ptr<const VN_SDAI::PageVector<VN_SDAI::VnDbObjectId>> m_sources; ///< for each target in turn
    VN_SDAI::PageVector<std::uint32_t> m_ends;     ///< where the sources of each target end
    VN_SDAI::PageVector<std::uint32_t> m_ordinals; ///< by instance number, where those are dense
};

} // namespace vnifc::detail
