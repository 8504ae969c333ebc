#pragma once
#include <vnifc/Model.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vnifc {

/// What of an object differs.
enum class DiffAspect : std::uint8_t {
    kClass, ///< the entity
    kAttribute,
    kProperty,
    kContainer, ///< the spatial element that it is in
    kWhole,     ///< what it is a part of
    kType,
    kMaterial,
    kClassification,
    kGroup,
};
/// "attribute", "property": a name that stays.
VNIFC_LAYER_API std::string_view nameOf(DiffAspect aspect) noexcept;

struct DiffDetail {
    DiffAspect aspect = DiffAspect::kAttribute;
    /// What it is called: "Name", "Pset_WallCommon.FireRating", "Representation.Representations[1].Items[1].Depth".
    /// Elements of lists count from 1. Empty for aspects that need no name.
    std::string path;
    std::string before; ///< the value in words; empty where there is none
    std::string after;
};

/// An object that is not the same in both models.
struct Difference {
    enum class Kind : std::uint8_t { kAdded, kRemoved, kChanged };

    Kind kind = Kind::kChanged;
    std::string globalId; ///< empty for what has none: styles, layers and whatever else is about others
    std::string entity;   ///< in the new model, but for what was removed
    std::string name;
    std::uint64_t oldId = 0; ///< 0 for what was added
    std::uint64_t newId = 0; ///< 0 for what was removed
    std::vector<DiffDetail> details;
    std::uint64_t moreDetails = 0; ///< beyond those that the options allow
};

struct DiffOptions {
    /// Two numbers are equal when they differ by no more than this times the largest of 1 and their magnitudes.
    double tolerance = 1e-9;
    std::vector<std::string> ignored;                   ///< attributes that do not count, in any case: "OwnerHistory"
    std::size_t maxDetails = 1000;                      ///< of an object so many are told
    std::function<void(const Difference&)> differences; ///< told in ascending order of old, then of new numbers
    std::function<bool(double)> progress;               ///< as in OpenOptions
};

struct DiffResult {
    std::uint64_t added = 0;
    std::uint64_t removed = 0;
    std::uint64_t changed = 0;
    std::uint64_t same = 0; ///< objects with a GlobalId that are equal

    bool isEqual() const noexcept { return added == 0 && removed == 0 && changed == 0; }
};

/// Compares two models, of whatever releases, by GlobalId; where several objects have the same one, in their order.
/// What has no GlobalId is compared through what refers to it, and what is about others (a style, a layer) by what it
/// says. Property sets and the relations that give objects their properties, container, whole, type, material,
/// classifications and groups are told of where they change an object. Instance numbers, the order of sets and the
/// encoding of texts do not count; what nothing refers to does not either. Throws Error when progress cancels.
VNIFC_LAYER_API DiffResult diff(const Model& before, const Model& after, const DiffOptions& options = {});

} // namespace vnifc
