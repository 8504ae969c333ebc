#pragma once
#include "../model/ModelState.h"

#include <span>
#include <string>
#include <vector>

namespace vnifc::detail {

/// Checks that instances are there and all of one model, which is returned; null for no instances.
ModelState* modelOf(std::span<const Instance> instances);

/// A new instance, with the owner history of another one where both have that.
Instance createFor(ModelState& state, std::string_view entity, const Instance& other,
                   std::initializer_list<std::pair<std::string_view, Value>> attributes);

/// A kind of relation between one instance and a set of others.
struct RelationKind {
    Entity entity;
    const char* relating; ///< attribute of the relation: the one
    const char* related;  ///< the others
    Name fromRelated;     ///< inverse attribute of the others
    Name fromRelating[2]; ///< of the one, in some release
};

/// Takes instances out of all their relations of a kind; a relation without any other goes.
void unrelate(ModelState& state, const RelationKind& kind, std::span<const Instance> others);
/// Puts instances into a relation with one, into that which it has or a new one.
void relate(ModelState& state, const RelationKind& kind, std::span<const Instance> others, const Instance& one);
/// Takes instances out of a relation; it goes when none is left.
void takeOut(ModelState& state, Instance relation, const char* related, std::span<const Instance> others);

} // namespace vnifc::detail
