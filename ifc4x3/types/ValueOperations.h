#pragma once
// What the operations on attributes need to know of the C++ types of members: one table per element type of aggregates
// and per select, so that the code that uses them exists once.
#include <IFC4X3/Select.h>

#include <VnIfcCore/VnIfcVariantTypeAggregate.h>
#include <exchange/AggregateFields.h>

namespace IFC4X3 {

/// The member of an entity, as a pointer to what gives live access to it.
template <class T>
VN_SDAI::VnIfcVariant aggregateVariant(const VN_SDAI::VnIfcAggr& aggregate) {
    auto* live = const_cast<VN_SDAI::VnIfcAggr*>(&aggregate);
    if constexpr (isList<T>)
        return static_cast<VN_SDAI::VnIfcListAggrCompound<T>*>(live);
    else if constexpr (std::is_base_of_v<Select, T>)
        return static_cast<typename T::Aggregate*>(live);
    else if (aggregate.isOrdered())
        return static_cast<VN_SDAI::VnIfcListAggr<T>*>(live);
    else
        return static_cast<VN_SDAI::VnIfcSetAggr<T>*>(live);
}

template <class T>
bool assignAggregate(VN_SDAI::VnIfcAggr& aggregate, const VN_SDAI::VnIfcVariant& value);

/// Turns elements of an array into those of an aggregate, all or none.
template <class T, class Array, class Convert>
bool assignElements(VN_SDAI::VnIfcAggrOf<T>& aggregate, const Array& array, Convert convert) {
    std::vector<T> elements(array.size());
    for (std::size_t i = 0; i < elements.size(); ++i)
        if (!convert(array[i], elements[i]))
            return false;
    aggregate.assign(std::move(elements));
    return true;
}

/// Takes over the contents of an array of the element type, of an array of variants that convert to it, or, where the
/// elements are selects, of an array of handles that belong to them. False, and the aggregate as it was, for all else.
template <class T>
bool assignAggregate(VN_SDAI::VnIfcAggr& aggregate, const VN_SDAI::VnIfcVariant& value) {
    using namespace VN_SDAI;
    auto& typed = static_cast<VnIfcAggrOf<T>&>(aggregate);
    if constexpr (isList<T>) {
        using Inner = typename T::value_type;
        if (const auto* lists = value.get<VnIfcArray<VnIfcArray<Inner>>>())
            return assignElements(typed, *lists, [](const VnIfcArray<Inner>& from, T& to) {
                to.assign(from);
                return true;
            });
    } else if (const auto* array = value.get<VnIfcArray<T>>()) {
        typed.assign(*array);
        return true;
    }
    if (const auto* variants = value.get<VnIfcArray<VnIfcVariant>>())
        return assignElements(typed, *variants, [](const VnIfcVariant& from, T& to) {
            if constexpr (isList<T>)
                return assignAggregate<typename T::value_type>(to, from);
            else
                return from.getAs(to);
        });
    if constexpr (std::is_base_of_v<Select, T>) {
        if (const auto* handles = value.get<VnIfcArray<VnDbObjectId>>())
            return assignElements(typed, *handles, [](const VnDbObjectId& from, T& to) { return to.setHandle(from); });
    }
    return false;
}

/// What became of a value that was offered.
enum class Assigned : std::uint8_t {
    kNo,
    kYes,
    kUnset, ///< an unknown literal: refused, yet the enumeration is unset now
};

/// Takes a code, of which all that are none of the type's mean unset, or a literal. An enumeration itself is none of
/// these.
Assigned assignEnumeration(std::uint32_t& code, const EnumerationClass& type, const VN_SDAI::VnIfcVariant& value);

/// Takes over the select that the variant points to, or that it converts to.
bool assignSelect(VN_SDAI::VnIfcSelect& select, const SelectClass& type, const VN_SDAI::VnIfcVariant& value);

template <class T>
using ArrayOf = typename VN_SDAI::VnIfcArrayOfAggr<T>::Type;

/// Operations on aggregates of one element type; `aggregate` is of type VnIfcAggrOf<T>.
struct AggregateOperations {
    bool (*read)(VN_SDAI::VnIfcAggr& aggregate, VN_SDAI::VnSpfFilerBase& filer);
    void (*write)(const VN_SDAI::VnIfcAggr& aggregate, VN_SDAI::VnSpfFilerBase& filer, bool isBinary);
    VN_SDAI::VnIfcVariant (*toVariant)(const VN_SDAI::VnIfcAggr& aggregate);
    bool (*fromVariant)(VN_SDAI::VnIfcAggr& aggregate, const VN_SDAI::VnIfcVariant& value);
    const VN_SDAI::VnIfcVariantType& (*arrayType)(); ///< of the arrays in which the elements are handed over
};

template <class T>
inline constexpr AggregateOperations aggregateOperations{&readElements<T>, &writeElements<T>, &aggregateVariant<T>,
                                                         &assignAggregate<T>,
                                                         &VN_SDAI::VnIfcVariantType::Desc<ArrayOf<T>>::value};

/// Operations on members of one select class.
struct SelectOperations {
    const SelectClass* selectClass;
};

template <class S>
inline constexpr SelectOperations selectOperations{&S::s_class};

} // namespace IFC4X3
