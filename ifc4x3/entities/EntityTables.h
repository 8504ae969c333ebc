#pragma once
// What the generated tables are made with. A row's kind follows from the type of the member, so that no table can
// contradict its class.
#include <IFC4X3/AttributeProperties.h>
#include <IFC4X3/Entity.h>
#include <IFC4X3/Select.h>

#include <types/ValueOperations.h>

#include <cstddef>
#include <string_view>
#include <type_traits>

#if defined(__GNUC__)
// The classes have single, non-virtual bases only, for which every compiler gives the true offset.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
#endif

namespace IFC4X3 {

template <class Member>
constexpr AttributeKind kindOf() noexcept {
    using namespace VN_SDAI;
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
        return &aggregateOperations<typename Member::value_type>;
    else
        return nullptr;
}

template <class Member>
constexpr AttributeRow explicitRow(const char* name, const char* typeText, std::size_t offset, Mark mark,
                                   VN_SDAI::VnIfcEntityType* const* target = nullptr,
                                   std::uint8_t unique = 0) noexcept {
    const bool isBinary =
        std::is_base_of_v<VN_SDAI::VnIfcAggr, Member> && std::string_view(typeText).ends_with("IFCBINARY");
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
VN_SDAI::VnIfcEntityBase* createEntity() {
    return new E;
}

/// The property-collection callback of an entity class with attributes of its own, in declared order.
template <class... Properties>
void collectProperties(VN_SDAI::VnIfcPropertyCollection* collection, const VN_SDAI::VnIfcEntityType* record) {
    (Properties::addTo(*collection, record), ...);
}

/// The callback that the entities without such attributes share.
inline void collectNothing(VN_SDAI::VnIfcPropertyCollection*, const VN_SDAI::VnIfcEntityType*) {}

} // namespace IFC4X3
