#pragma once
#include <vnifc/Relations.h>

#include <span>

// Changes of meaning. Relations and inverse attributes are right afterwards, new instances that are rooted take the
// owner history of the object that they are made for, and no other object changes: what several share is split first.
// All functions throw NotFound for what is no instance and BadValue for what cannot be; nothing is changed then, except
// where it is said otherwise.
namespace vnifc {

/// Gives objects or types a property by the names of set and property: "Pset_WallCommon.FireRating". Changes the one
/// that they have themselves, and adds one, and a set, where there is none: a property of a type is not changed for an
/// object but overridden. A plain value is of the type that the property has, or IfcLabel, IfcBoolean, IfcInteger or
/// IfcReal; null takes the value away. A set whose name begins with "Qto_" is one of quantities: a new one wants a
/// typed value, such as typed("IfcLengthMeasure", 2.5). Returns how many objects say something else than before. When a
/// value does not fit, objects before the one at fault may have been changed.
VNIFC_LAYER_API std::size_t setProperty(std::span<const Instance> objects, std::string_view path, const Value& value);
VNIFC_LAYER_API std::size_t setProperty(const Instance& object, std::string_view path, const Value& value);
VNIFC_LAYER_API std::size_t setProperty(const InstanceRange& objects, std::string_view path, const Value& value);

/// Gives instances a value by a name and a text that a person writes: an attribute, "Name", or a property of objects
/// and types, "Pset_WallCommon.FireRating". The text is taken as Instance::parse takes it; for a property that is new,
/// true, false and numbers are that, TYPE(...) is of that type, and everything else is text. "$" takes the value away.
/// Returns how many instances say something else than before. Throws as setProperty and Instance::parse.
VNIFC_LAYER_API std::size_t setFromText(std::span<const Instance> instances, std::string_view name,
                                        std::string_view text);

/// Puts elements into a spatial element, out of any other; into none with no instance.
VNIFC_LAYER_API void assignContainer(std::span<const Instance> elements, const Instance& spatialElement);
/// Gives objects a type in place of any other; none with no instance.
VNIFC_LAYER_API void assignType(std::span<const Instance> objects, const Instance& type);
/// Gives objects or types a material, list, set or usage in place of any other; none with no instance. A usage that no
/// object has any more goes.
VNIFC_LAYER_API void assignMaterial(std::span<const Instance> objects, const Instance& material);

/// Takes objects out, with their parts, openings and other features, and with all that only they used: placements,
/// shapes, styles, property sets, materials. Relations lose them, and go when they relate nothing any more. Types,
/// groups and what fills an opening stay. Returns how many instances went.
VNIFC_LAYER_API std::size_t remove(std::span<const Instance> objects);
inline std::size_t remove(const Instance& object) { return remove(std::span(&object, 1)); }

} // namespace vnifc
