#pragma once
#include <vnifc/Model.h>

#include <functional>
#include <string>

namespace vnifc {

struct MergeOptions {
    /// Sites, buildings and storeys of the same name, in places of the same name, become one.
    bool equalStoreys = false;
    /// Is told in words of each object that could not keep its GlobalId.
    std::function<void(const std::string&)> renamed = {};
};

/// What became of the instances of the other model.
struct MergeResult {
    std::uint64_t added = 0;     ///< new instances
    std::uint64_t shared = 0;    ///< those that an instance stands for that was there
    std::uint64_t renamed = 0;   ///< objects with a new GlobalId, because another one has theirs
    std::uint64_t converted = 0; ///< values that were brought to other units
};

/// Brings all that a model says into another one of the same release: one project, one set of units. The project of the
/// target stands for the other one; equal contexts and objects that say the same under the same GlobalId become one; an
/// object whose GlobalId means another one gets a new one. Numbers of new instances follow those that are there. What
/// only the other project needs, as its units, stays behind; so does what has no GlobalId and nothing refers to, and a
/// style or layer that is about objects only that were there already.
///
/// Values never mix: where units of the same kind differ, those of the other model are converted as by convertUnits
/// (Units.h), in a copy. Kinds of unit that only the other project declares come along.
///
/// Throws BadValue, and changes nothing, when the releases differ, when a model has not exactly one project, when a
/// value cannot be converted, and when only one of the projects declares a unit for values that both have.
VNIFC_LAYER_API MergeResult merge(Model& target, const Model& other, const MergeOptions& options = {});
/// The same without a copy: the other model's values are in the target's units then.
VNIFC_LAYER_API MergeResult merge(Model& target, Model&& other, const MergeOptions& options = {});

} // namespace vnifc
