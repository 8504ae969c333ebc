#pragma once
#include <vnifc/Facet.h>

#include <optional>
#include <string>
#include <vector>

namespace vnifc {

/// What instances have in common by a facet, with the sum of another one.
struct FacetGroup {
    std::string name;       ///< what the facet says in words; empty for instances of which it says nothing
    std::size_t count = 0;  ///< instances
    std::size_t summed = 0; ///< those of them that have a number
    double sum = 0;         ///< in the unit of FacetGroups
};

struct FacetGroups {
    std::vector<FacetGroup> groups; ///< by name
    std::string unit;               ///< the sign of the unit of the first number; empty where it has none
};

/// Counts instances by what a facet says of them, and sums up the numbers of another. Without `by` there is one group,
/// without a name. Numbers are brought to the unit of the first one; throws BadValue where that cannot be, so that no
/// sum mixes units. Of several numbers of one instance none counts.
VNIFC_LAYER_API FacetGroups groupBy(const InstanceRange& instances, const Facet* by, const Facet* sum);

} // namespace vnifc
