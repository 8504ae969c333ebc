#pragma once
#include <VnIfcCore/VnIfcVariant.h>
#include <VnIfcTyped/Entity.h>
#include <VnIfcTyped/Select.h>

// Attributes by their rows: for hosts that look a name up once and then work on many instances.
namespace VN_SDAI::typed {

///@{
/// The member of an instance that a row describes; T must be the member's type or a base at its beginning.
template <class T>
T& fieldOf(VnIfcEntityBase& instance, const AttributeRow& row) noexcept {
    return *reinterpret_cast<T*>(reinterpret_cast<char*>(&instance) + row.offset);
}
template <class T>
const T& fieldOf(const VnIfcEntityBase& instance, const AttributeRow& row) noexcept {
    return *reinterpret_cast<const T*>(reinterpret_cast<const char*>(&instance) + row.offset);
}
///@}

/// Converts and stores as putAttr does; `position` is that of the attribute in the parameter list.
VNIFC_API bool putField(Entity& instance, unsigned position, const VnIfcVariant& value);
/// Puts the attribute back to its unset value.
VNIFC_API void unsetField(Entity& instance, unsigned position);
/// True when the attribute holds a value.
VNIFC_API bool testField(const Entity& instance, const AttributeRow& row);
///@{
/// The select class of a row of kind kSelect, and the enumeration of one of kind kEnumeration.
VNIFC_API const SelectClass& selectClassOf(const AttributeRow& row) noexcept;
VNIFC_API const EnumerationClass& enumerationClassOf(const AttributeRow& row) noexcept;
///@}

} // namespace VN_SDAI::typed
