#pragma once
#include <VnIfcCore/VnIfcAggrOf.h>
#include <VnIfcCore/VnIfcListAggrImp.h>

namespace VN_SDAI {

/// A LIST or ARRAY: elements in sequence, equal ones allowed.
template <class T>
class VnIfcOrderedAggr : public VnIfcAggrOf<T> {
public:
    constexpr VnIfcOrderedAggr() noexcept
        : VnIfcOrderedAggr(VnIfcAggrImpDummy<T, VnIfcListAggrImp<VnIfcListAggr<T>>>::prototype()) {}

    /// Replaces the element at that index; an index outside the list appends. No bound is checked; always eOk.
    VN::ErrorStatus putAt(std::int64_t index, const T& element) {
        return static_cast<VnIfcOrderedAggrImp<T>&>(*this->m_imp).putAt(this->m_imp, index, element);
    }
    /// Adds the element at the end.
    void append(const T& element) { putAt(this->count(), element); }

protected:
    using VnIfcAggrOf<T>::VnIfcAggrOf;
};

/// A LIST with the bounds [0:?].
template <class T>
class VnIfcListAggr : public VnIfcOrderedAggr<T> {
public:
    constexpr VnIfcListAggr() noexcept = default;

protected:
    using VnIfcOrderedAggr<T>::VnIfcOrderedAggr;
};

/// A LIST with the bounds [lower:upper]; 65536 stands for "?".
template <class T, std::uint32_t lower, std::uint32_t upper>
class VnIfcListAggrBounded : public VnIfcListAggr<T> {
public:
    constexpr VnIfcListAggrBounded() noexcept
        : VnIfcListAggr<T>(VnIfcAggrImpDummy<T, VnIfcListAggrBoundedImp<VnIfcListAggrBounded>>::prototype()) {}
};

/// A LIST whose elements are aggregates of class List.
template <class List>
class VnIfcListAggrCompound;

/// A LIST whose elements are LISTs.
template <class T>
class VnIfcListAggrCompound<VnIfcListAggr<T>> : public VnIfcOrderedAggr<VnIfcListAggr<T>> {
public:
    using VnIfcOrderedAggr<VnIfcListAggr<T>>::assign;
    using VnIfcOrderedAggr<VnIfcListAggr<T>>::exportTo;

    constexpr VnIfcListAggrCompound() noexcept = default;

    /// Replaces the contents by one list per inner array; an empty array gives an empty list.
    void assign(const VnIfcArray<VnIfcArray<T>>& lists) {
        std::vector<VnIfcListAggr<T>> contents(lists.size());
        for (std::size_t i = 0; i < lists.size(); ++i)
            contents[i].assign(lists[i]);
        this->assignMoved(contents);
    }
    /// Appends one inner array per list.
    void exportTo(VnIfcArray<VnIfcArray<T>>& lists) const {
        for (const VnIfcListAggr<T>& list : *this)
            lists.append(VnIfcArray<T>(list.items()));
    }
};

extern template class VNIFC_API VnIfcAggrImpOf<VnIfcListAggr<VnDbObjectId>>;
extern template class VNIFC_API VnIfcAggrImpOf<VnIfcListAggr<double>>;
extern template class VNIFC_API VnIfcAggrImpOf<VnIfcListAggr<int>>;
extern template class VNIFC_API VnIfcOrderedAggrImp<VnIfcListAggr<VnDbObjectId>>;
extern template class VNIFC_API VnIfcOrderedAggrImp<VnIfcListAggr<double>>;
extern template class VNIFC_API VnIfcOrderedAggrImp<VnIfcListAggr<int>>;

} // namespace VN_SDAI
