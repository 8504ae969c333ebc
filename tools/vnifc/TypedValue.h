#pragma once
#include "Instances.h"

#include <VnIfcCore/VnIfcVariant.h>

#include <memory>
#include <string_view>

namespace vnifc::tool {

/// What a user typed for an attribute, converted to a value of it.
///
/// The user gives the form of an exchange file (ISO 10303-21, 6 and 12.2), `$` for no value, or, where that is no
/// ambiguity, plainer forms: text in UTF-8 without apostrophes, which is then encoded; literals without dots; true,
/// false and unknown; and for a select the value alone, which is taken for one of the type that the instance holds.
class TypedValue {
public:
    /// For an attribute of the instance, which must be in a model and not derived. Throws Failure when the text does
    /// not convert, or refers to an instance that is not there or that the attribute cannot refer to.
    TypedValue(const VN_SDAI::VnIfcEntityBase& instance, const Attribute& attribute, std::string_view text);

    /// As getAttr gives it: unset where the user wants no value. Valid as long as this object.
    const VN_SDAI::VnIfcVariant& value() const noexcept { return m_value; }
    /// Makes it the value of the attribute. Throws Failure when the instance does not take it.
    void putInto(VN_SDAI::VnIfcEntityBase& instance) const;

private:
    const Attribute& m_attribute;
    std::unique_ptr<VN_SDAI::VnIfcEntityBase> m_holder; ///< a fresh instance that has the value
    VN_SDAI::VnIfcVariant m_value;
};

/// "#12 IFCWALL.Name", for messages.
std::string placeOf(const VN_SDAI::VnIfcEntityBase& instance, const Attribute& attribute);

} // namespace vnifc::tool
