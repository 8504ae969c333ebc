#pragma once
// What the generated tables are made with. A row's kind follows from the type of the member, so that no table can
// contradict its class.
#include <VnIfcTyped/AttributeProperty.h>
#include <VnIfcTyped/Entity.h>
#include <VnIfcTyped/Select.h>

#include <types/ValueOperations.h>

#include <cstddef>
#include <string_view>
#include <type_traits>

namespace VN_SDAI::typed {

template <class Member>
constexpr AttributeKind kindOf() noexcept {
    if constexpr (std::is_same_v<Member, VnAnsiString>)
        return AttributeKind::kString;
    else if constexpr (std::is_same_v<Member, VnIfcGUID>)
        return AttributeKind::kGuid;
    else if constexpr (std::is_same_v<Member, double>)
        return AttributeKind::kReal;
    else if constexpr (std::is_same_v<Member, int>)
        return AttributeKind::kInteger;
    else if constexpr (std::is_same_v<Member, VnIfcBoolean>)
        return AttributeKind::kBoolean;
    else if constexpr (std::is_same_v<Member, VnIfcLogical>)
        return AttributeKind::kLogical;
    else if constexpr (std::is_same_v<Member, VnDbObjectId>)
        return AttributeKind::kReference;
    else if constexpr (std::is_base_of_v<Select, Member>)
        return AttributeKind::kSelect;
    else if constexpr (std::is_base_of_v<VnIfcAggr, Member>)
        return AttributeKind::kAggregate;
    else
        return AttributeKind::kEnumeration;
}

template <class Member>
constexpr const void* typeOf() noexcept {
    constexpr AttributeKind kind = kindOf<Member>();
    if constexpr (kind == AttributeKind::kEnumeration)
        return &Member::s_class;
    else if constexpr (kind == AttributeKind::kSelect)
        return &selectOperations<Member>;
    else if constexpr (kind == AttributeKind::kAggregate)
        return &AggregateOperationsOf<typename Member::value_type>::value;
    else
        return nullptr;
}

template <class Member>
constexpr AttributeRow explicitRow(const char* name, const char* typeText, std::size_t offset, Mark mark,
                                   VnIfcEntityType* const* target = nullptr, std::uint8_t unique = 0,
                                   bool isBinary = false) noexcept {
    return {name,   typeText, typeOf<Member>(), static_cast<std::uint32_t>(offset), kindOf<Member>(), mark, isBinary,
            unique, target};
}

constexpr AttributeRow binaryRow(const char* name, const char* typeText, std::size_t offset, Mark mark) noexcept {
    return {name, typeText, nullptr, static_cast<std::uint32_t>(offset), AttributeKind::kBinary, mark};
}

template <class Member>
constexpr InverseRow inverseRow(const char* name, const char* entity, const char* inverted, int lower, int upper,
                                std::size_t offset) noexcept {
    return {explicitRow<Member>(name, entity, offset, kMandatory), inverted, lower, upper};
}

constexpr DerivedRow derivedRow(const char* name, const char* typeText) noexcept {
    return {name, typeText, "", {name, typeText, nullptr, 0, AttributeKind::kDerived, kMandatory}};
}

constexpr DerivedRow redeclaredRow(const char* name, const char* typeText, const char* redeclares) noexcept {
    return {name, typeText, redeclares, {redeclares, typeText, nullptr, 0, AttributeKind::kDerived, kMandatory}};
}

/// The factory of an entity class.
template <class E>
VnIfcEntityBase* createEntity() {
    return new E;
}

/// The property-collection callback of an entity class with attributes of its own, in declared order.
template <class... Properties>
void collectProperties(VnIfcPropertyCollection* collection, const VnIfcEntityType* record) {
    (Properties::addTo(*collection, record), ...);
}

/// The callback that the entities without such attributes share.
inline void collectNothing(VnIfcPropertyCollection*, const VnIfcEntityType*) {}

} // namespace VN_SDAI::typed
