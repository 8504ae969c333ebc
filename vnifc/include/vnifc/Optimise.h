#pragma once
#include <vnifc/Model.h>

namespace vnifc {

struct OptimiseOptions {
    /// Takes out objects and sets of properties with a GlobalId that nothing refers to, relations included.
    bool unusedObjects = false;
};

/// What became of the instances of a model.
struct OptimiseResult {
    std::uint64_t kept = 0;
    std::uint64_t merged = 0;  ///< gone, because an equal one stands for them
    std::uint64_t removed = 0; ///< gone, because nothing refers to them
};

/// Makes a model smaller without changing what it says. Of equal instances without a GlobalId one stays, and all refer
/// to that; what nothing with a GlobalId needs goes, but for what is about something that stays, as styles and layers
/// are. Instances stay apart where the schema lets only one instance refer to each, where a style or layer is about one
/// of them, where a set or a list of different elements would lose an element, and where text is kept for them.
///
/// In the end everything that stays and has a GlobalId is compared with what it said before. Throws Error when that
/// differs; the model is of no use then.
VNIFC_LAYER_API OptimiseResult optimise(Model& model, const OptimiseOptions& options = {});

} // namespace vnifc
