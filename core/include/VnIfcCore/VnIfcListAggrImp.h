#pragma once
#include <VnIfcCore/VnIfcAggrImp.h>

namespace VN_SDAI {

template <class T>
class VnIfcListAggr;
template <class T, std::uint32_t lower, std::uint32_t upper>
class VnIfcListAggrBounded;

/// Implementation object of a LIST or ARRAY: the elements in sequence. No bound is checked.
template <class T>
class VnIfcOrderedAggrImp : public VnIfcAggrImpOf<T> {
    using Base = VnIfcAggrImpOf<T>;

public:
    using Base::Base;
    using Base::count;

    bool isOrdered() const noexcept final { return true; }
    bool contains(const T& element) const final {
        const std::span<const T> items = this->items();
        return std::find(items.begin(), items.end(), element) != items.end();
    }
    /// Replaces the element at that index; any other index, also a negative one, appends.
    virtual VN::ErrorStatus putAt(VnIfcAggrImp*& place, std::int64_t index, const T& element) {
        if (index < 0 || index >= count())
            this->insertAt(place, count(), element);
        else
            this->elements()[index] = T(element);
        return VN::eOk;
    }
    VN::ErrorStatus removeAt(std::uint32_t) noexcept final { return VN::eRefused; }
    void assign(VnIfcAggrImp*& place, std::span<const T> values, VnIfcTransfer how) final {
        this->replace(place, this->blockOf(values, how));
    }
};

extern template class VNIFC_API VnIfcOrderedAggrImp<VnDbObjectId>;
extern template class VNIFC_API VnIfcOrderedAggrImp<double>;
extern template class VNIFC_API VnIfcOrderedAggrImp<int>;
extern template class VNIFC_API VnIfcOrderedAggrImp<VnAnsiString>;

/// The implementation class of a list with the bounds [0:?].
template <class Aggr>
class VnIfcListAggrImp;

/// The implementation class of a list of elements of type T with the bounds [0:?].
template <class T>
class VnIfcListAggrImp<VnIfcListAggr<T>> final
    : public VnIfcAggrImpBounds<VnIfcListAggrImp<VnIfcListAggr<T>>, VnIfcOrderedAggrImp<T>, 0, kVnUnbounded> {
    using VnIfcListAggrImp::VnIfcAggrImpBounds::VnIfcAggrImpBounds;
};

/// The implementation class of a list with bounds.
template <class Aggr>
class VnIfcListAggrBoundedImp;

/// The implementation class of a list of elements of type T with bounds, which it reports and does not check.
template <class T, std::uint32_t lower, std::uint32_t upper>
class VnIfcListAggrBoundedImp<VnIfcListAggrBounded<T, lower, upper>> final
    : public VnIfcAggrImpBounds<VnIfcListAggrBoundedImp<VnIfcListAggrBounded<T, lower, upper>>, VnIfcOrderedAggrImp<T>,
                                lower, upper> {
    using VnIfcListAggrBoundedImp::VnIfcAggrImpBounds::VnIfcAggrImpBounds;
};

} // namespace VN_SDAI
