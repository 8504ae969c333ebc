#pragma once
#include <VnIfcTyped/Entity.h>
#include <types/ValueOperations.h>

namespace VN_SDAI::typed {

/// True for equal names, whatever their ASCII case is; for most others at the cost of one byte.
bool sameName(const char* declared, const char* name) noexcept;
/// The own or inherited explicit attribute of that name, in any case; null when there is none.
const AttributeRow* findExplicit(const EntityClass& type, const char* name) noexcept;
/// As findExplicit, inverse attributes included.
const AttributeRow* findAttribute(const EntityClass& type, const char* name) noexcept;
/// The position of an attribute in the parameter list; fields.size() when it has none.
unsigned positionOf(const EntityClass& type, const AttributeRow& row) noexcept;

/// Throws when the model of an instance forbids reading, or writing.
void checkReadable(const Entity& instance, const char* operation);
void checkWritable(const Entity& instance, const char* operation);

/// The value as getAttr hands it out: a copy, or live access to a string's text, a select or an aggregate.
VnIfcVariant valueOf(const Entity& instance, const AttributeRow& row);
/// Converts and stores.
Assigned assign(Entity& instance, const AttributeRow& row, const VnIfcVariant& value);
bool isSet(const Entity& instance, const AttributeRow& row) noexcept;
void unset(Entity& instance, const AttributeRow& row) noexcept;

} // namespace VN_SDAI::typed
