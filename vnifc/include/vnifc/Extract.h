#pragma once
#include <vnifc/Model.h>

#include <span>

namespace vnifc {

/// What became of the instances of a model.
struct ExtractResult {
    std::uint64_t kept = 0;
    std::uint64_t removed = 0;
};

/// Leaves of a model the picked instances and everything that they need to stand alone, and takes the rest out. To stay
/// come
/// - the project with its units and contexts; the spatial structure from each object up to it,
/// - what an object refers to: placements, shapes, histories,
/// - what relations give it: types, sets of properties, materials, classifications, documents,
/// - its parts, openings and projections with what fills them, its ports; the whole that it is a part of; what a picked
///   group gathers. A picked spatial element does not bring what is in it: `location=` of a selector picks that,
/// - styles, layers and whatever else is about what stays,
/// - relations between what stays; of those that are about more, the rest is taken out.
/// GlobalIds and numbers stay. Instances of other models among the picked ones throw BadValue.
VNIFC_LAYER_API ExtractResult extract(Model& model, std::span<const Instance> picked);

} // namespace vnifc
