#pragma once
#include "Digests.h"
#include "Facets.h"

#include <optional>

namespace vnifc::detail {

/// One of the two models that are compared, with what is derived from it.
struct Side {
    Side(ModelState& modelState, const Digests::Rules& rules);

    Instance wrap(std::uint32_t ordinal) const noexcept { return {roster.handle(ordinal), &state}; }
    /// All that counts of an object: what it says, and what relations give it.
    std::uint64_t digestOf(std::uint32_t ordinal) const;
    /// What it counts that an object has that facet.
    std::uint64_t digestOf(const Facets::Facet& facet) const;
    /// True for what is compared as an object with a GlobalId.
    bool isObject(std::uint32_t ordinal) const noexcept { return digests.identity(ordinal) != 0; }
    /// True for what is told of only through objects that it changes, so that it is neither added nor removed.
    bool isCarrier(std::uint32_t ordinal) const noexcept;

    ModelState& state;
    Roster roster;
    Digests digests;
    Facets facets;
    std::vector<std::uint64_t> contents; ///< what sets of properties say; 0 for all else
    std::vector<std::uint32_t> unrooted; ///< what is about others, and what has no class

    /// Which instances an object needs, or are about one of those.
    std::vector<bool> alive() const;

private:
    void findUnrooted();
};

} // namespace vnifc::detail
