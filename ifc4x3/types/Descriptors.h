#pragma once
// The places of the module's descriptors, and the class rows that lead to them. Included where the tables are, so that
// a descriptor's code is the module's alone, whichever library asks for it first.
#include <IFC4X3/Enumeration.h>
#include <IFC4X3/Select.h>
#include <VnIfcCore/VnIfcVariantTypeAggregate.h>
#include <VnIfcCore/VnIfcVariantTypeEnum.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>

namespace IFC4X3 {

extern std::atomic<std::size_t> descriptorCount;

/// "prefix", the qualified name of a select and "suffix" as the name of an aggregate's descriptor.
std::wstring aggregateName(const char* prefix, const char* select, const char* suffix);

template <class Descriptor>
struct DescriptorMaker {
    static VN_SDAI::VnIfcVariantType* make(VN_SDAI::VnIfcVariantTypeSlot& slot) { return new Descriptor(slot); }
};

template <class S>
struct DescriptorMaker<VN_SDAI::VnIfcVariantTypeForObject<VN_SDAI::VnIfcArray<S>>> {
    static VN_SDAI::VnIfcVariantType* make(VN_SDAI::VnIfcVariantTypeSlot& slot) {
        const std::wstring name = aggregateName("SDAI_NAMESPACE_PFX VnIfcArray<", S::s_class.name, ">");
        return new VN_SDAI::VnIfcVariantTypeForObject<VN_SDAI::VnIfcArray<S>>(slot, name.c_str());
    }
};

template <class S>
struct DescriptorMaker<VN_SDAI::VnIfcSetAggrPtrVariantTypePOD<VN_SDAI::VnIfcSetAggr<S>*>> {
    static VN_SDAI::VnIfcVariantType* make(VN_SDAI::VnIfcVariantTypeSlot& slot) {
        const std::wstring name = aggregateName("::VN_SDAI:: VnIfcSetAggr<", S::s_class.name, ">*");
        return new VN_SDAI::VnIfcSetAggrPtrVariantTypePOD<VN_SDAI::VnIfcSetAggr<S>*>(slot, name.c_str());
    }
};

template <class S>
struct DescriptorMaker<VN_SDAI::VnIfcListAggrPtrVariantTypePOD<VN_SDAI::VnIfcListAggr<S>*>> {
    static VN_SDAI::VnIfcVariantType* make(VN_SDAI::VnIfcVariantTypeSlot& slot) {
        const std::wstring name = aggregateName("::VN_SDAI:: VnIfcListAggr<", S::s_class.name, ">*");
        return new VN_SDAI::VnIfcListAggrPtrVariantTypePOD<VN_SDAI::VnIfcListAggr<S>*>(slot, name.c_str());
    }
};

/// Only the descriptors of selects and of pointers to them are made without the lock.
template <class Descriptor>
constinit inline VN_SDAI::VnIfcVariantTypeSlot descriptorSlot{
    &DescriptorMaker<Descriptor>::make, !std::is_base_of_v<VN_SDAI::VnIfcSelectVariantType, Descriptor>,
    descriptorCount};

template <class Aggregate>
struct AggregateDescriptor;
template <class S>
struct AggregateDescriptor<VN_SDAI::VnIfcSetAggr<S>> {
    using Type = VN_SDAI::VnIfcSetAggrPtrVariantTypePOD<VN_SDAI::VnIfcSetAggr<S>*>;
};
template <class S>
struct AggregateDescriptor<VN_SDAI::VnIfcListAggr<S>> {
    using Type = VN_SDAI::VnIfcListAggrPtrVariantTypePOD<VN_SDAI::VnIfcListAggr<S>*>;
};

template <class S>
constexpr SelectDescriptors selectDescriptors() noexcept {
    SelectDescriptors slots{&descriptorSlot<VN_SDAI::VnIfcSelectValueTypePOD<S>>,
                            &descriptorSlot<VN_SDAI::VnIfcSelectPtrValueTypePOD<S*>>, nullptr, nullptr};
    if constexpr (requires { typename S::Aggregate; }) {
        slots.array = &descriptorSlot<VN_SDAI::VnIfcVariantTypeForObject<VN_SDAI::VnIfcArray<S>>>;
        slots.aggregate = &descriptorSlot<typename AggregateDescriptor<typename S::Aggregate>::Type>;
    }
    return slots;
}

/// The class row of the enumeration E.
template <class E>
constexpr EnumerationClass enumerationClass(const char* name, std::span<const char* const> literals) noexcept {
    static_assert(sizeof(E) == 4);
    return {name, literals, &descriptorSlot<VN_SDAI::VnIfcVariantTypeEnum<E>>};
}

/// The class row of the select S.
template <class S>
constexpr SelectClass selectClass(const char* name, std::span<const SelectMember> members) noexcept {
    static_assert(sizeof(S) == 32);
    return {name, members, &S::sType, selectDescriptors<S>()};
}

/// The three sweeps of uninitialisation.
void releaseEnumerationDescriptors() noexcept;
void releaseSelectDescriptors() noexcept;
void releaseAggregateDescriptors() noexcept;

} // namespace IFC4X3
