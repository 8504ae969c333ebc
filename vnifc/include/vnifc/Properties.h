#pragma once
#include <vnifc/Units.h>

#include <string>
#include <vector>

namespace vnifc {

/// One of the values of a property: most have one, a bounded value up to three, a table two lists.
struct VNIFC_LAYER_API PropertyValue {
    std::string attribute; ///< "NominalValue"
    Value value;
    std::string type;        ///< upper case: "IFCLENGTHMEASURE"; empty for what has none
    Instance unit;           ///< none when there is none
    bool hasOwnUnit = false; ///< the unit is the property's, not the project's

    /// A number with its unit; nothing where there is no number or no unit. Throws BadValue for a unit that has no way
    /// to SI.
    std::optional<Quantity> quantity() const;
};

enum class PropertyKind : std::uint8_t {
    kSingle,
    kEnumerated,
    kBounded,
    kList,
    kTable,
    kReference,
    kComplex, ///< gathers others, its parts; also of quantities
    kQuantity,
    kAttribute, ///< an attribute of a set that has no properties, as those of doors and windows
    kOther      ///< what the release has beyond these
};

struct VNIFC_LAYER_API Property {
    Instance instance; ///< none for an attribute of a set
    std::string name;
    PropertyKind kind = PropertyKind::kOther;
    std::vector<PropertyValue> values;
    std::vector<Property> parts;
    bool isOverridden = false; ///< of a type, where the object itself has a property of that name in a set of that name

    /// What people call the value of the property: the nominal value or quantity, the list of an enumerated or list
    /// value, the set point of a bounded one or else its bounds. Null when there is none.
    Value value() const;
};

/// A set of properties or quantities.
struct VNIFC_LAYER_API PropertySet {
    Instance instance;
    std::string name;
    Instance owner; ///< the object or its type
    std::vector<Property> properties;
};

/// The sets of an object and then those of its type; of a type, a material or a profile its own; of a set this very
/// one.
VNIFC_LAYER_API std::vector<PropertySet> propertySets(const Instance& object);

/// The property that prevails for an object by the names of set and property, "Pset_WallCommon.FireRating": its own
/// before its type's, and a part of a complex one by a further name. Nothing when there is none.
VNIFC_LAYER_API std::optional<Property> property(const Instance& object, std::string_view path);
/// Its value (Property::value); null when there is none.
VNIFC_LAYER_API Value propertyValue(const Instance& object, std::string_view path);

} // namespace vnifc
