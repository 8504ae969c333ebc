#pragma once
// The places of the module's descriptors, and the class rows that lead to them. Included where the tables are, so that
// a descriptor's code is the module's alone, whichever library asks for it first.
#include <VnIfcCore/VnIfcVariantTypeAggregate.h>
#include <VnIfcCore/VnIfcVariantTypeEnum.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>
#include <VnIfcTyped/Enumeration.h>
#include <VnIfcTyped/Select.h>

namespace VN_SDAI::typed {

/// "prefix", the qualified name of a select and "suffix" as the name of an aggregate's descriptor.
VNIFC_API std::wstring aggregateName(std::string_view prefix, std::string_view schema, std::string_view select,
                                     std::string_view suffix);

template <class Descriptor>
struct DescriptorMaker {
    static VnIfcVariantType* make() { return new Descriptor(); }
};

template <class S>
struct DescriptorMaker<VnIfcVariantTypeForObject<VnIfcArray<S>>> {
    static VnIfcVariantType* make() {
        const std::wstring name = aggregateName("SDAI_NAMESPACE_PFX VnIfcArray<", S::kSchemaName, S::s_class.name, ">");
        return new VnIfcVariantTypeForObject<VnIfcArray<S>>(name.c_str());
    }
};

template <class S>
struct DescriptorMaker<VnIfcSetAggrPtrVariantTypePOD<VnIfcSetAggr<S>*>> {
    static VnIfcVariantType* make() {
        const std::wstring name = aggregateName("::VN_SDAI:: VnIfcSetAggr<", S::kSchemaName, S::s_class.name, ">*");
        return new VnIfcSetAggrPtrVariantTypePOD<VnIfcSetAggr<S>*>(name.c_str());
    }
};

template <class S>
struct DescriptorMaker<VnIfcListAggrPtrVariantTypePOD<VnIfcListAggr<S>*>> {
    static VnIfcVariantType* make() {
        const std::wstring name = aggregateName("::VN_SDAI:: VnIfcListAggr<", S::kSchemaName, S::s_class.name, ">*");
        return new VnIfcListAggrPtrVariantTypePOD<VnIfcListAggr<S>*>(name.c_str());
    }
};

/// Only the descriptors of selects and of pointers to them are made without the lock. `living` counts the descriptors
/// of the module.
template <class Descriptor, std::atomic<std::size_t>& living>
constinit inline VnIfcVariantTypeSlot descriptorSlot{&DescriptorMaker<Descriptor>::make,
                                                     !std::is_base_of_v<VnIfcSelectVariantType, Descriptor>, living};

template <class Aggregate>
struct AggregateDescriptor;
template <class S>
struct AggregateDescriptor<VnIfcSetAggr<S>> {
    using Type = VnIfcSetAggrPtrVariantTypePOD<VnIfcSetAggr<S>*>;
};
template <class S>
struct AggregateDescriptor<VnIfcListAggr<S>> {
    using Type = VnIfcListAggrPtrVariantTypePOD<VnIfcListAggr<S>*>;
};

template <class S, std::atomic<std::size_t>& living>
constexpr SelectDescriptors selectDescriptors() noexcept {
    SelectDescriptors slots{&descriptorSlot<VnIfcSelectValueTypePOD<S>, living>,
                            &descriptorSlot<VnIfcSelectPtrValueTypePOD<S*>, living>, nullptr, nullptr};
    if constexpr (requires { typename S::Aggregate; }) {
        slots.array = &descriptorSlot<VnIfcVariantTypeForObject<VnIfcArray<S>>, living>;
        slots.aggregate = &descriptorSlot<typename AggregateDescriptor<typename S::Aggregate>::Type, living>;
    }
    return slots;
}

/// The class row of the enumeration E.
template <class E, std::atomic<std::size_t>& living>
constexpr EnumerationClass enumerationClass(const char* name, Rows<const char*> literals) noexcept {
    static_assert(sizeof(E) == 4);
    return {name, literals, &descriptorSlot<VnIfcVariantTypeEnum<E>, living>};
}

/// The class row of the select S.
template <class S, std::atomic<std::size_t>& living>
constexpr SelectClass selectClass(const char* name, std::span<const SelectMember> members,
                                  std::span<const std::uint16_t> index) noexcept {
    static_assert(sizeof(S) == sizeof(Select));
    return {name, members, index, &S::sType, selectDescriptors<S, living>()};
}

} // namespace VN_SDAI::typed
