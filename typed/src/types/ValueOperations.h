#pragma once
// What the operations on attributes need to know of the C++ types of members: one table per element type of aggregates
// and per select, so that the code that uses them exists once.
#include <VnIfcTyped/Select.h>

#include <VnIfcCore/VnIfcVariantTypeAggregate.h>
#include <exchange/AggregateFields.h>

#include <algorithm>

namespace VN_SDAI::typed {

/// The member of an entity, as a pointer to what gives live access to it.
template <class T>
VnIfcVariant aggregateVariant(const VnIfcAggr& aggregate) {
    auto* live = const_cast<VnIfcAggr*>(&aggregate);
    if constexpr (isList<T>)
        return static_cast<VnIfcListAggrCompound<T>*>(live);
    else if constexpr (std::is_base_of_v<Select, T>)
        return static_cast<typename T::Aggregate*>(live);
    else if (aggregate.isOrdered())
        return static_cast<VnIfcListAggr<T>*>(live);
    else
        return static_cast<VnIfcSetAggr<T>*>(live);
}

/// True unless the value refers to an instance of another model than `home`; null is the home of every instance.
VNIFC_API bool isAtHome(const VnDbObjectId& handle, const VnIfcModel* home) noexcept;
VNIFC_API bool isAtHome(const VnIfcSelect& select, const VnIfcModel* home) noexcept;
template <class T>
bool isAtHome(const T& value, const VnIfcModel* home) noexcept {
    if constexpr (isList<T>)
        return std::ranges::all_of(value, [&](const auto& each) { return isAtHome(each, home); });
    else if constexpr (std::is_base_of_v<VnIfcSelect, T>)
        return isAtHome(static_cast<const VnIfcSelect&>(value), home);
    else
        return true;
}

template <class T>
bool assignAggregate(VnIfcAggr& aggregate, const VnIfcVariant& value, const VnIfcModel* home);

/// Turns elements of an array into those of an aggregate, all or none.
template <class T, class Array, class Convert>
bool assignElements(VnIfcAggrOf<T>& aggregate, const Array& array, const VnIfcModel* home, Convert convert) {
    std::vector<T> elements(array.size());
    for (std::size_t i = 0; i < elements.size(); ++i)
        if (!convert(array[i], elements[i]) || !isAtHome(elements[i], home))
            return false;
    aggregate.assign(std::move(elements));
    return true;
}

/// Takes over the contents of an array of the element type, of an array of variants that convert to it, or, where the
/// elements are selects, of an array of handles that belong to them. False, and the aggregate as it was, for all else,
/// and for what refers to instances of another model than `home`.
template <class T>
bool assignAggregate(VnIfcAggr& aggregate, const VnIfcVariant& value, const VnIfcModel* home) {
    auto& typed = static_cast<VnIfcAggrOf<T>&>(aggregate);
    if constexpr (isList<T>) {
        using Inner = typename T::value_type;
        if (const auto* lists = value.get<VnIfcArray<VnIfcArray<Inner>>>())
            return assignElements(typed, *lists, home, [](const VnIfcArray<Inner>& from, T& to) {
                to.assign(from);
                return true;
            });
    } else if (const auto* array = value.get<VnIfcArray<T>>()) {
        if (!std::ranges::all_of(*array, [&](const T& each) { return isAtHome(each, home); }))
            return false;
        typed.assign(*array);
        return true;
    }
    if (const auto* variants = value.get<VnIfcArray<VnIfcVariant>>())
        return assignElements(typed, *variants, home, [&](const VnIfcVariant& from, T& to) {
            if constexpr (isList<T>)
                return assignAggregate<typename T::value_type>(to, from, home);
            else
                return from.getAs(to);
        });
    if constexpr (std::is_base_of_v<Select, T>) {
        if (const auto* handles = value.get<VnIfcArray<VnDbObjectId>>())
            return assignElements(typed, *handles, home,
                                  [](const VnDbObjectId& from, T& to) { return to.setHandle(from); });
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
Assigned assignEnumeration(std::uint32_t& code, const EnumerationClass& type, const VnIfcVariant& value);

/// Takes over the select that the variant points to, or that it converts to.
bool assignSelect(VnIfcSelect& select, const SelectClass& type, const VnIfcVariant& value, const VnIfcModel* home);

template <class T>
using ArrayOf = typename VnIfcArrayOfAggr<T>::Type;

/// Operations on aggregates of one element type; `aggregate` is of type VnIfcAggrOf<T>.
struct AggregateOperations {
    bool (*read)(VnIfcAggr& aggregate, VnSpfFilerBase& filer);
    void (*write)(const VnIfcAggr& aggregate, VnSpfFilerBase& filer, bool isBinary);
    VnIfcVariant (*toVariant)(const VnIfcAggr& aggregate);
    bool (*fromVariant)(VnIfcAggr& aggregate, const VnIfcVariant& value, const VnIfcModel* home);
    const VnIfcVariantType& (*arrayType)(); ///< of the arrays in which the elements are handed over
};

template <class T>
inline constexpr AggregateOperations aggregateOperations{&readElements<T>, &writeElements<T>, &aggregateVariant<T>,
                                                         &assignAggregate<T>,
                                                         &VnIfcVariantType::Desc<ArrayOf<T>>::value};

/// The operations on aggregates of T.
template <class T>
struct AggregateOperationsOf {
    static constexpr const AggregateOperations& value = aggregateOperations<T>;
};

// Those on the core's own types are compiled once, into the core.
VNIFC_API extern const AggregateOperations integerAggregates;
VNIFC_API extern const AggregateOperations realAggregates;
VNIFC_API extern const AggregateOperations stringAggregates;
VNIFC_API extern const AggregateOperations referenceAggregates;
VNIFC_API extern const AggregateOperations integerListAggregates;
VNIFC_API extern const AggregateOperations realListAggregates;
VNIFC_API extern const AggregateOperations referenceListAggregates;

template <>
struct AggregateOperationsOf<int> {
    static constexpr const AggregateOperations& value = integerAggregates;
};
template <>
struct AggregateOperationsOf<double> {
    static constexpr const AggregateOperations& value = realAggregates;
};
template <>
struct AggregateOperationsOf<VnAnsiString> {
    static constexpr const AggregateOperations& value = stringAggregates;
};
template <>
struct AggregateOperationsOf<VnDbObjectId> {
    static constexpr const AggregateOperations& value = referenceAggregates;
};
template <>
struct AggregateOperationsOf<VnIfcListAggr<int>> {
    static constexpr const AggregateOperations& value = integerListAggregates;
};
template <>
struct AggregateOperationsOf<VnIfcListAggr<double>> {
    static constexpr const AggregateOperations& value = realListAggregates;
};
template <>
struct AggregateOperationsOf<VnIfcListAggr<VnDbObjectId>> {
    static constexpr const AggregateOperations& value = referenceListAggregates;
};

/// Operations on members of one select class.
struct SelectOperations {
    const SelectClass* selectClass;
};

template <class S>
inline constexpr SelectOperations selectOperations{&S::s_class};

} // namespace VN_SDAI::typed
