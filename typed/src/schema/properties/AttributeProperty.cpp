#include <VnIfcTyped/AttributeProperty.h>

#include <VnIfcCore/VnIfcPropertyCollection.h>
#include <entities/AttributeAccess.h>
#include <entities/Members.h>
#include <types/ValueOperations.h>

namespace VN_SDAI::typed {

namespace {

template <class T>
const VnIfcVariantType* describe() {
    return &VnIfcVariantType::Desc<T>::value();
}

/// The descriptor of an explicit attribute's values.
const VnIfcVariantType* valueType(const AttributeRow& row) {
    switch (row.kind) {
    case AttributeKind::kString:
    case AttributeKind::kBinary:
        return describe<VnAnsiString>();
    case AttributeKind::kGuid:
        return describe<VnIfcGUID>();
    case AttributeKind::kReal:
        return describe<double>();
    case AttributeKind::kInteger:
        return describe<int>();
    case AttributeKind::kBoolean:
        return describe<VnIfcBoolean>();
    case AttributeKind::kLogical:
        return describe<VnIfcLogical>();
    case AttributeKind::kReference:
        return describe<VnDbObjectId>();
    case AttributeKind::kEnumeration:
        return &typeOf<EnumerationClass>(row).descriptor->value();
    case AttributeKind::kSelect:
        return &typeOf<SelectOperations>(row).selectClass->descriptors.value->value();
    case AttributeKind::kAggregate:
        return &typeOf<AggregateOperations>(row).arrayType();
    case AttributeKind::kDerived:
        break;
    }
    return nullptr;
}

/// The descriptor of what getAttr gives for an inverse or a redeclared attribute, whose kinds are few.
const VnIfcVariantType* liveType(const AttributeRow& row) {
    if (row.kind == AttributeKind::kAggregate)
        return describe<VnIfcSetAggr<VnDbObjectId>*>();
    if (row.kind == AttributeKind::kSelect)
        return &typeOf<SelectOperations>(row).selectClass->descriptors.pointer->value();
    return valueType(row);
}

/// A copy of an explicit attribute's value.
VnIfcVariant copyOf(const Entity& instance, const AttributeRow& row) {
    switch (row.kind) {
    case AttributeKind::kString:
    case AttributeKind::kBinary:
        return member<VnAnsiString>(instance, row);
    case AttributeKind::kSelect:
        return {*valueType(row), &member<VnIfcSelect>(instance, row)};
    case AttributeKind::kAggregate: {
        VnIfcVariant array;
        valueOf(instance, row).convertTo(*valueType(row), array);
        return array;
    }
    default:
        return valueOf(instance, row);
    }
}

/// Stores a value of the attribute's own type; false for one that refers to instances of another model.
bool store(Entity& instance, const AttributeRow& row, const VnIfcVariant& value) {
    if (row.kind != AttributeKind::kEnumeration)
        return assign(instance, row, value) == Assigned::kYes;
    member<std::uint32_t>(instance, row) = *static_cast<const std::uint32_t*>(value.payload());
    return true;
}

/// The instance as one of the entity; null when it is none.
Entity* instanceOf(const VnIfcEntityType* entity, const VnIfcEntityBase* instance) {
    if (!instance || !instance->isKindOf(entity))
        return nullptr;
    return static_cast<Entity*>(const_cast<VnIfcEntityBase*>(instance));
}

} // namespace

void AttributeProperty::add(VnIfcPropertyCollection& collection, AttributeProperty* property,
                            const VnIfcEntityType* record) {
    std::unique_ptr<AttributeProperty> owned(property);
    const auto [type, row, part] = property->attribute();
    const VnIfcVariantType* descriptor = part == AttributePart::kExplicit  ? valueType(row)
                                         : part == AttributePart::kInverse ? liveType(row)
                                                                           : liveType(*findExplicit(type, row.name));
    property->init(row.name, descriptor, record);
    collection.add(owned.release());
}

VN::ErrorStatus AttributeProperty::getAttribute(const VnIfcEntityBase* instance, VnIfcVariant& value) const {
    const Entity* own = instanceOf(entity(), instance);
    if (!own)
        return VN::eRefused;
    const auto [type, row, part] = attribute();
    value = part == AttributePart::kExplicit ? copyOf(*own, row)
                                             : valueOf(*own, *findAttribute(own->entityClass(), row.name));
    return VN::eOk;
}

VN::ErrorStatus AttributeProperty::putAttribute(VnIfcEntityBase* instance, const VnIfcVariant& value) const {
    Entity* own = instanceOf(entity(), instance);
    const auto [type, declared, part] = attribute();
    if (!own || value.isNull() || part == AttributePart::kInverse)
        return VN::eRefused;
    const bool isExplicit = part == AttributePart::kExplicit;
    const AttributeRow& row = isExplicit ? declared : *findExplicit(own->entityClass(), declared.name);
    if (value.type() != valueType(row) && (isExplicit || value.type() != liveType(row)))
        return VN::eRefused;
    own->referenceChanges();
    if (!store(*own, row, value))
        return VN::eRefused;
    own->touched(positionOf(own->entityClass(), row));
    return VN::eOk;
}

} // namespace VN_SDAI::typed
