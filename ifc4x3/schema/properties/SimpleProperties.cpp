#include <IFC4X3/IfcComplexProperty.h>
#include <IFC4X3/IfcPhysicalComplexQuantity.h>
#include <IFC4X3/IfcPropertyBoundedValue.h>
#include <IFC4X3/IfcPropertySingleValue.h>
#include <IFC4X3/IfcQuantityArea.h>
#include <IFC4X3/IfcQuantityCount.h>
#include <IFC4X3/IfcQuantityLength.h>
#include <IFC4X3/IfcQuantityTime.h>
#include <IFC4X3/IfcQuantityVolume.h>
#include <IFC4X3/IfcQuantityWeight.h>
#include <IFC4X3/IfcValue.h>
#include <IFC4X3/Module.h>
#include <VnIfcCore/VnIfcComplexProperty.h>
#include <VnIfcCore/VnIfcQuantityClusterProperty.h>
#include <VnIfcCore/VnIfcVariant.h>

#include <memory>

namespace IFC4X3 {

using namespace VN_SDAI;

namespace {

template <class T>
VnIfcProperty* initialised(std::unique_ptr<VnIfcProperty> property, const char* name, const VnIfcEntityType* entity) {
    property->init(name, &VnIfcVariantType::Desc<T>::value(), entity);
    return property.release();
}

VnIfcProperty* valueProperty(const VnIfcEntityBase& instance, std::vector<VnAnsiString> attributes) {
    const VnAnsiString name = attributes.front();
    return initialised<IfcValue*>(std::make_unique<VnIfcSimpleProperty>(instance.objectId(), std::move(attributes)),
                                  name.constStr(), instance.getInstanceType());
}

VnIfcProperty* complexProperty(const VnIfcEntityBase& instance, const char* members) {
    // The name is the same for both entities, whatever their attributes are called.
    return initialised<VnIfcSetAggr<VnDbObjectId>*>(
        std::make_unique<VnIfcComplexProperty>(instance.objectId(), members, &vnIfcBuildPropertyForSimple),
        "hasQuantities", instance.getInstanceType());
}

/// The kind of the value in a select attribute, if the attribute can be read.
void tellKind(const VnIfcEntityBase& instance, int& code) {
    VnIfcVariant value;
    if (!instance.getAttr("nominalvalue", value))
        return;
    if (const auto* select = value.get<IfcValue*>(); select && *select)
        code = static_cast<int>((*select)->kind());
}

struct Quantity {
    VnIfcEntityType** entity;
    const char* attribute;
};

constexpr Quantity kQuantities[] = {
    {&IfcQuantityArea::g_pEntityType, "areavalue"},     {&IfcQuantityCount::g_pEntityType, "countvalue"},
    {&IfcQuantityLength::g_pEntityType, "lengthvalue"}, {&IfcQuantityTime::g_pEntityType, "timevalue"},
    {&IfcQuantityVolume::g_pEntityType, "volumevalue"}, {&IfcQuantityWeight::g_pEntityType, "weightvalue"},
};

bool buildQuantity(const VnIfcEntityBase& instance, VnIfcProperty*& property, int& code) {
    for (const Quantity& quantity : kQuantities) {
        if (*quantity.entity != instance.getInstanceType())
            continue;
        property =
            initialised<double>(std::make_unique<VnIfcQuantityClusterProperty>(instance.objectId(), quantity.attribute),
                                quantity.attribute, instance.getInstanceType());
        code = static_cast<int>(VnTypeCodeKind::kReal);
        return true;
    }
    return false;
}

bool build(const VnIfcEntityBase& instance, VnIfcProperty*& property, int& code) {
    const VnIfcEntityType* entity = instance.getInstanceType();
    if (entity == IfcPropertySingleValue::g_pEntityType) {
        property = valueProperty(instance, {"nominalvalue"});
        tellKind(instance, code);
        return false;
    }
    if (entity == IfcPropertyBoundedValue::g_pEntityType) {
        property = valueProperty(instance, {"upperboundvalue", "lowerboundvalue", "setpointvalue"});
        return true;
    }
    const bool isComplexQuantity = entity == IfcPhysicalComplexQuantity::g_pEntityType;
    if (isComplexQuantity || entity == IfcComplexProperty::g_pEntityType) {
        property = complexProperty(instance, isComplexQuantity ? "hasquantities" : "hasproperties");
        code = static_cast<int>(VnTypeCodeKind::kString);
        return true;
    }
    return buildQuantity(instance, property, code);
}

} // namespace

} // namespace IFC4X3

bool vnIfcBuildPropertyForSimple(VN_SDAI::VnIfcEntityBase* instance, VN_SDAI::VnIfcProperty*& property, int& code) {
    return instance && instance->getInstanceType() && IFC4X3::build(*instance, property, code);
}
