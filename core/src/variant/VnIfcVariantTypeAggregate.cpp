#include <VnIfcCore/VnIfcVariantTypeAggregate.h>
#include <VnRx/VrString.h>

namespace VN_SDAI {

// ---- VnIfcAggregateVariantType

VnIfcAggregateVariantType::~VnIfcAggregateVariantType() = default;

bool VnIfcAggregateVariantType::subEqualTo(const void* left, const void* right) const {
    const std::uint32_t count = countOf(left);
    if (countOf(right) != count)
        return false;
    for (std::uint32_t i = 0; i < count; ++i)
        if (!(elementOf(left, i) == elementOf(right, i)))
            return false;
    return true;
}

bool VnIfcAggregateVariantType::subToString(VrString& text, const void* value, StringFormat format) const {
    if (!value)
        return false;
    VrString list("("), element;
    for (std::uint32_t i = 0; i < countOf(value); ++i) {
        if (i > 0)
            list.append(",");
        if (!elementOf(value, i).toString(element, format))
            return false;
        list.append(element.view());
    }
    list.append(")");
    text = std::move(list);
    return true;
}

bool VnIfcAggregateVariantType::toArray(const VnIfcVariantType& target, const void* value, VnIfcVariant& result) const {
    const auto* type = target.isAggregate() ? dynamic_cast<const VnIfcArrayVariantType*>(&target) : nullptr;
    if (!type)
        return false;
    VnIfcVariant array(target, nullptr);
    for (std::uint32_t i = 0; i < countOf(value); ++i)
        if (!type->append(array.payload(), elementOf(value, i)))
            return false;
    result = std::move(array);
    return true;
}

// ---- VnIfcArrayVariantType

VnIfcArrayVariantType::VnIfcArrayVariantType(const wchar_t* name, const VnIfcVariantStorage& storage)
    : VnIfcAggregateVariantType(name, sizeof(VnIfcArray<int>), nullptr, nullptr, &storage) {}

VnIfcArrayVariantType::~VnIfcArrayVariantType() = default;

bool VnIfcArrayVariantType::subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                                           VnIfcVariant& result) const {
    return toArray(target, source.payload(), result);
}

// ---- VnIfcAggrPtrVariantType

VnIfcAggrPtrVariantType::VnIfcAggrPtrVariantType(const wchar_t* name)
    : VnIfcAggregateVariantType(name, sizeof(VnIfcAggr*)) {}

VnIfcAggrPtrVariantType::~VnIfcAggrPtrVariantType() = default;

VnIfcAggr* VnIfcAggrPtrVariantType::aggregateAt(const void* value) noexcept {
    // Every class of aggregates begins with its VnIfcAggr, whatever the pointer's type says.
    return static_cast<VnIfcAggr*>(*static_cast<void* const*>(value));
}

std::uint32_t VnIfcAggrPtrVariantType::countOf(const void* value) const noexcept {
    const VnIfcAggr* aggregate = aggregateAt(value);
    return aggregate ? aggregate->count() : 0;
}

bool VnIfcAggrPtrVariantType::subEqualTo(const void* left, const void* right) const {
    const VnIfcAggr* first = aggregateAt(left);
    const VnIfcAggr* second = aggregateAt(right);
    if (first == second || !first || !second)
        return first == second;
    return first->elementKind() == second->elementKind() && VnIfcAggregateVariantType::subEqualTo(left, right);
}

bool VnIfcAggrPtrVariantType::subToString(VrString& text, const void* value, StringFormat format) const {
    if (!value)
        return false;
    const VnIfcAggr* aggregate = aggregateAt(value);
    if (aggregate && !aggregate->isNil())
        return VnIfcAggregateVariantType::subToString(text, value, format);
    text.assign(format == StringFormat::kExchange ? "$" : "");
    return true;
}

bool VnIfcAggrPtrVariantType::subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                                             VnIfcVariant& result) const {
    const VnIfcAggr* aggregate = aggregateAt(source.payload());
    if (&target == &VnIfcVariantType::Desc<VnIfcAggr*>::value()) {
        result = VnIfcVariant(target, source.payload());
        return true;
    }
    if (!aggregate)
        return false;
    if (&target == &VnIfcVariantType::Desc<VnIfcArray<VnIfcVariant>>::value())
        return aggregate->isNil() || toArray(target, source.payload(), result);
    if (&target != arrayType())
        return false;
    VnIfcVariant array(target, nullptr);
    exportTo(array.payload(), *aggregate);
    result = std::move(array);
    return true;
}

bool VnIfcAggrPtrVariantType::createVariant(VnIfcVariant& value) const {
    value = VnIfcVariant(*this, nullptr);
    return true;
}

} // namespace VN_SDAI
