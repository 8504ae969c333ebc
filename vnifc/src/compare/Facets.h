#pragma once
#include "../whole/Roster.h"

#include <vnifc/Diff.h>

#include <span>
#include <string_view>
#include <vector>

namespace vnifc::detail {

struct ModelState;

/// What relations give an object, whatever the relation is called: container, type, material, sets of properties.
class Facets {
public:
    struct Facet {
        std::uint32_t object;
        std::uint32_t target;
        DiffAspect aspect;
    };

    Facets(ModelState& state, const Roster& roster);

    /// Those of an object, by aspect and then in the order of the relations.
    std::span<const Facet> of(std::uint32_t object) const noexcept;
    /// True for relations that are told of where they change an object.
    bool isFacetRelation(const VN_SDAI::VnIfcEntityType& type) const noexcept {
        return relationOf(type) < m_types.size();
    }
    /// True for an attribute of such a relation that says which objects it is about, and what it gives them.
    static bool isEnd(std::string_view attribute) noexcept;
    /// True for a set of properties that some object has.
    bool isUsedSet(std::uint32_t ordinal) const noexcept { return m_usedSets[ordinal]; }

private:
    struct Relation;
    static const Relation kRelations[];

    /// The index of the relation that an entity is one of; the number of relations when it is none.
    std::size_t relationOf(const VN_SDAI::VnIfcEntityType& type) const noexcept;

    std::vector<const VN_SDAI::VnIfcEntityType*> m_types; ///< for each of kRelations; null where there is none
    std::vector<Facet> m_facets;
    std::vector<bool> m_usedSets;
};

} // namespace vnifc::detail
