#pragma once
#include "Value.h"

#include <VnIfcTyped/Select.h>

namespace vnifc::rules {

/// The member of an instance that a row describes; T must be the member's type or a base at its beginning.
template <class T>
const T& member(const Entity& instance, const VN_SDAI::typed::AttributeRow& row) noexcept {
    return *reinterpret_cast<const T*>(reinterpret_cast<const char*>(&instance) + row.offset);
}

/// The instance of a handle, if it has a class.
inline const Entity* entityAt(const VN_SDAI::VnDbObjectId& handle) noexcept {
    const VN_SDAI::VnIfcEntityBase* const instance = handle.openObject();
    // All that have a record in the dictionary are of classes of schema modules, which derive from Entity.
    return instance && instance->getInstanceType() ? static_cast<const Entity*>(instance) : nullptr;
}

} // namespace vnifc::rules
