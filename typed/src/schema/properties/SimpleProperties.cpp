#include <VnIfcTyped/Release.h>

#include <VnIfcCore/VnIfcComplexProperty.h>
#include <VnIfcCore/VnIfcQuantityClusterProperty.h>
#include <VnIfcCore/VnIfcVariant.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>
#include <entities/AttributeAccess.h>
#include <entities/Members.h>

#include <memory>

namespace VN_SDAI::typed {

namespace {

using Builder = bool (*)(VnIfcEntityBase*, VnIfcProperty*&, int&);

using PropertyPointer = std::unique_ptr<VnIfcProperty>;

PropertyPointer initialised(PropertyPointer property, const char* name, const VnIfcVariantType& type,
                            const VnIfcEntityType* entity) {
    property->init(name, &type, entity);
    return property;
}

/// The select that an attribute holds.
const SelectClass& selectOf(const VnIfcEntityBase& instance, const char* attribute) {
    const AttributeRow* row = findExplicit(static_cast<const Entity&>(instance).entityClass(), attribute);
    return *typeOf<SelectOperations>(*row).selectClass;
}

PropertyPointer valueProperty(const VnIfcEntityBase& instance, std::vector<VnAnsiString> attributes) {
    const VnAnsiString name = attributes.front();
    const VnIfcVariantType& type = selectOf(instance, name.constStr()).descriptors.pointer->value();
    return initialised(std::make_unique<VnIfcSimpleProperty>(instance.objectId(), std::move(attributes)),
                       name.constStr(), type, instance.getInstanceType());
}

PropertyPointer complexProperty(const VnIfcEntityBase& instance, const char* members, Builder self) {
    // The name is the same for both entities, whatever their attributes are called.
    return initialised(std::make_unique<VnIfcComplexProperty>(instance.objectId(), members, self), "hasQuantities",
                       VnIfcVariantType::Desc<VnIfcSetAggr<VnDbObjectId>*>::value(), instance.getInstanceType());
}

/// The kind of the value in a select attribute, if the attribute can be read.
void tellKind(const VnIfcEntityBase& instance, int& code) {
    VnIfcVariant value;
    if (!instance.getAttr("nominalvalue", value) || !value.type() || !value.type()->isSelect())
        return;
    if (const VnIfcSelect* select = static_cast<const VnIfcSelectVariantType&>(*value.type()).selectIn(value))
        code = static_cast<int>(select->kind());
}

struct Quantity {
    const char* entity;
    const char* attribute;
};

constexpr Quantity kQuantities[] = {
    {"IfcQuantityArea", "areavalue"}, {"IfcQuantityCount", "countvalue"},   {"IfcQuantityLength", "lengthvalue"},
    {"IfcQuantityTime", "timevalue"}, {"IfcQuantityVolume", "volumevalue"}, {"IfcQuantityWeight", "weightvalue"},
};

bool buildQuantity(const VnIfcEntityBase& instance, VnIfcProperty*& property, int& code) {
    for (const Quantity& quantity : kQuantities) {
        if (!instance.isInstanceOf(quantity.entity))
            continue;
        property = initialised(std::make_unique<VnIfcQuantityClusterProperty>(instance.objectId(), quantity.attribute),
                               quantity.attribute, VnIfcVariantType::Desc<double>::value(), instance.getInstanceType())
                       .release();
        code = static_cast<int>(VnTypeCodeKind::kReal);
        return true;
    }
    return false;
}

} // namespace

namespace {

bool build(VnIfcEntityBase* instance, VnIfcProperty*& property, int& code, Builder self) {
    if (!instance || !instance->getInstanceType())
        return false;
    if (instance->isInstanceOf("IfcPropertySingleValue")) {
        PropertyPointer made = valueProperty(*instance, {"nominalvalue"});
        tellKind(*instance, code); // may be forbidden by the model's access mode
        property = made.release();
        return false;
    }
    if (instance->isInstanceOf("IfcPropertyBoundedValue")) {
        std::vector<VnAnsiString> bounds{"upperboundvalue", "lowerboundvalue"};
        // IFC2X3 has no set point.
        if (findExplicit(static_cast<const Entity&>(*instance).entityClass(), "setpointvalue"))
            bounds.emplace_back("setpointvalue");
        property = valueProperty(*instance, std::move(bounds)).release();
        return true;
    }
    const bool isComplexQuantity = instance->isInstanceOf("IfcPhysicalComplexQuantity");
    if (isComplexQuantity || instance->isInstanceOf("IfcComplexProperty")) {
        property = complexProperty(*instance, isComplexQuantity ? "hasquantities" : "hasproperties", self).release();
        code = static_cast<int>(VnTypeCodeKind::kString);
        return true;
    }
    return buildQuantity(*instance, property, code);
}

} // namespace

// Hosts call it through a C interface, which no exception may pass.
bool buildPropertyForSimple(VnIfcEntityBase* instance, VnIfcProperty*& property, int& code, Builder self) noexcept {
    try {
        return build(instance, property, code, self);
    } catch (...) {
        return false;
    }
}

} // namespace VN_SDAI::typed
