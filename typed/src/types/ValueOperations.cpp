#include <types/ValueOperations.h>

#include <VnIfcCore/VnIfcVariantTypeSelect.h>

#include <algorithm>

namespace VN_SDAI::typed {

constinit const AggregateOperations integerAggregates = aggregateOperations<int>;
constinit const AggregateOperations realAggregates = aggregateOperations<double>;
constinit const AggregateOperations stringAggregates = aggregateOperations<VnAnsiString>;
constinit const AggregateOperations referenceAggregates = aggregateOperations<VnDbObjectId>;
constinit const AggregateOperations integerListAggregates = aggregateOperations<VnIfcListAggr<int>>;
constinit const AggregateOperations realListAggregates = aggregateOperations<VnIfcListAggr<double>>;
constinit const AggregateOperations referenceListAggregates = aggregateOperations<VnIfcListAggr<VnDbObjectId>>;

Assigned assignEnumeration(std::uint32_t& code, const EnumerationClass& type, const VnIfcVariant& value) {
    const auto unset = static_cast<std::uint32_t>(type.literals.size());
    std::string_view literal;
    if (const auto* number = value.get<unsigned long>()) {
        code = static_cast<std::uint32_t>(std::min<unsigned long>(*number, unset));
        return Assigned::kYes;
    }
    if (const auto* number = value.get<int>()) {
        code = *number < 0 ? unset : std::min(static_cast<std::uint32_t>(*number), unset);
        return Assigned::kYes;
    }
    if (const auto* text = value.get<const char*>())
        literal = *text ? *text : "";
    else if (const auto* string = value.get<VnAnsiString>())
        literal = string->constStr();
    else
        return Assigned::kNo;
    code = type.fromLiteral(literal);
    return code == unset ? Assigned::kUnset : Assigned::kYes;
}

bool isAtHome(const VnDbObjectId& handle, const VnIfcModel* home) noexcept {
    return !home || handle.isNull() || handle.model() == home;
}

bool isAtHome(const VnIfcSelect& select, const VnIfcModel* home) noexcept {
    const VnIfcAggr* list = select.getAggr();
    if (!list || list->elementKind() != VnTypeCodeKind::kEntity)
        return isAtHome(select.getHandle(), home);
    return std::ranges::all_of(static_cast<const VnIfcAggrOf<VnDbObjectId>&>(*list),
                               [&](const VnDbObjectId& each) { return isAtHome(each, home); });
}

bool assignSelect(VnIfcSelect& select, const SelectClass& type, const VnIfcVariant& value, const VnIfcModel* home) {
    const auto& pointers = static_cast<const VnIfcSelectVariantType&>(type.descriptors.pointer->value());
    VnIfcVariant converted;
    const bool isPointer = value.type() == &pointers;
    if (!isPointer && !value.convertTo(pointers, converted))
        return false;
    const VnIfcSelect* source = pointers.selectIn(isPointer ? value : converted);
    if (!source || !isAtHome(*source, home))
        return false;
    static_cast<Select&>(select) = static_cast<const Select&>(*source);
    return true;
}

} // namespace VN_SDAI::typed
