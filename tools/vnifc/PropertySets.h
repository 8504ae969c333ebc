#pragma once
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcVariant.h>

#include <string>
#include <vector>

namespace vnifc::tool {

/// One of the values of a property: most have one, a bounded value three.
struct PropertyValue {
    const VN_SDAI::VnAnsiString* attribute;
    VN_SDAI::VnIfcVariant value;
    std::string type;                               ///< upper case: "IFCLENGTHMEASURE"
    const VN_SDAI::VnIfcEntityBase* unit = nullptr; ///< null when there is none
    bool hasOwnUnit = false;                        ///< the unit is the property's, not the project's
};

struct Property {
    const VN_SDAI::VnIfcEntityBase* instance; ///< null for an attribute of a set
    std::string name;
    std::vector<PropertyValue> values;
    std::vector<Property> parts;
    bool isOverridden = false; ///< a type's property that the object itself has too
};

/// A set of properties or quantities.
struct PropertySet {
    const VN_SDAI::VnIfcEntityBase* instance;
    const VN_SDAI::VnIfcEntityBase* owner; ///< the object or its type
    std::vector<Property> properties;
};

/// The sets of an object and then those of its type; of a type, a material or a profile its own; of a set this very
/// one. Valid as long as the model.
std::vector<PropertySet> propertySetsOf(const VN_SDAI::VnIfcModel& model, const VN_SDAI::VnIfcEntityBase& object);

} // namespace vnifc::tool
