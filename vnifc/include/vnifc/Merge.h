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
    std::uint64_t added = 0;   ///< new instances
    std::uint64_t shared = 0;  ///< those that an instance stands for that was there
    std::uint64_t renamed = 0; ///< objects with a new GlobalId, because another one has theirs
};

/// Brings all that a model says into another one of the same release: one project, one set of units. The project of the
/// target stands for the other one; equal contexts and objects that say the same under the same GlobalId become one; an
/// object whose GlobalId means another one gets a new one. Numbers of new instances follow those that are there. What
/// only the other project needs, as its units, stays behind; so does what has no GlobalId and nothing refers to, and a
/// style or layer that is about objects only that were there already.
///
/// Throws BadValue, and changes nothing, when the releases differ, when a model has not exactly one project, and when
/// both declare a unit of the same kind and it is not the same: convert the values of one first. Kinds of unit that
/// only the other model declares come along.
VNIFC_LAYER_API MergeResult merge(Model& target, const Model& other, const MergeOptions& options = {});

} // namespace vnifc
