#pragma once
#include <vnifc/Model.h>

#include <string>
#include <string_view>
#include <vector>

// Who refers to an instance, and where. Both functions throw NotFound for what is no instance.
namespace vnifc {

/// An inverse attribute, with the instances that it gives.
struct InverseAttribute {
    std::string_view name; ///< as declared; good as long as the model
    std::vector<Instance> instances;
};
/// The inverse attributes of an instance that hold something, inherited ones first.
VNIFC_LAYER_API std::vector<InverseAttribute> inverseAttributes(const Instance& instance);

/// One of the places where an instance is referred to.
struct Reference {
    Instance from;
    /// Of `from`, explicit; empty in an instance without a class and after the last attribute of the entity. Good as
    /// long as the model.
    std::string_view attribute;
    /// From 0, in the list and then in the lists within it, as its value has them; empty where the attribute itself
    /// refers.
    std::vector<std::size_t> position;
    bool isInText = false; ///< in what is kept as text, without a position
};
/// All places where an instance is referred to, whatever the attribute and also in what is kept as text: ascending by
/// the instance that refers, then in the order of its attributes. As Instance::referrers, the first call looks at the
/// whole model.
VNIFC_LAYER_API std::vector<Reference> referencesTo(const Instance& instance);

} // namespace vnifc
