#pragma once
#include <VnIfcCore/VnIfcAggrImp.h>

namespace VN_SDAI {

template <class T>
class VnIfcSetAggr;
template <class T, std::uint32_t lower, std::uint32_t upper>
class VnIfcSetAggrBounded;

/// Implementation object of a SET: every element once, in ascending order by operator<.
template <class T>
class VnIfcUnOrderedAggrImp : public VnIfcAggrImpOf<T> {
    using Base = VnIfcAggrImpOf<T>;

public:
    using Base::Base;
    using Base::count;

    bool isOrdered() const noexcept final { return false; }
    bool contains(const T& element) const final { return holds(positionOf(element), element); }

    /// eOk also when the element is there already; eRefused when the upper bound is reached.
    virtual VN::ErrorStatus add(VnIfcAggrImp*& place, const T& element) {
        const std::uint32_t position = positionOf(element);
        if (holds(position, element))
            return VN::eOk;
        if (count() >= this->upperBound() && this->upperBound() != kVnUnbounded)
            return VN::eRefused;
        this->insertAt(place, position, element);
        return VN::eOk;
    }
    /// eRefused when the element is absent or the lower bound is reached.
    virtual VN::ErrorStatus remove(const T& element) {
        const std::uint32_t position = positionOf(element);
        return holds(position, element) ? removeAt(position) : VN::eRefused;
    }
    VN::ErrorStatus removeAt(std::uint32_t index) noexcept final {
        if (index >= count() || count() <= this->lowerBound())
            return VN::eRefused;
        this->eraseAt(index);
        return VN::eOk;
    }
    void assign(VnIfcAggrImp*& place, std::span<const T> values, VnIfcTransfer how) final {
        const auto outOfOrder = [](const T& left, const T& right) { return !vnElementLess(left, right); };
        if (std::adjacent_find(values.begin(), values.end(), outOfOrder) == values.end())
            return this->replace(place, this->blockOf(values, how));
        std::vector<const void*> order;
        order.reserve(values.size());
        for (const T& value : values)
            order.push_back(&value);
        this->sortUnique(order, [](const void* left, const void* right) {
            return vnElementLess(*static_cast<const T*>(left), *static_cast<const T*>(right));
        });
        this->replace(place, this->blockOf(order, how));
    }

private:
    /// Where the element stands or would stand.
    std::uint32_t positionOf(const T& element) const {
        const std::span<const T> items = this->items();
        // Handles mostly come in ascending order.
        if (items.empty() || vnElementLess(items.back(), element))
            return count();
        return static_cast<std::uint32_t>(std::lower_bound(items.begin(), items.end(), element, vnElementLess<T>) -
                                          items.begin());
    }
    bool holds(std::uint32_t position, const T& element) const {
        return position < count() && !vnElementLess(element, this->items()[position]);
    }
};

extern template class VNIFC_API VnIfcUnOrderedAggrImp<VnDbObjectId>;
extern template class VNIFC_API VnIfcUnOrderedAggrImp<double>;
extern template class VNIFC_API VnIfcUnOrderedAggrImp<int>;
extern template class VNIFC_API VnIfcUnOrderedAggrImp<VnAnsiString>;

/// The implementation class of a set with the bounds [0:?].
template <class Aggr>
class VnIfcSetAggrImp;

/// The implementation class of a set of elements of type T with the bounds [0:?].
template <class T>
class VnIfcSetAggrImp<VnIfcSetAggr<T>> final
    : public VnIfcAggrImpBounds<VnIfcSetAggrImp<VnIfcSetAggr<T>>, VnIfcUnOrderedAggrImp<T>, 0, kVnUnbounded> {
    using VnIfcSetAggrImp::VnIfcAggrImpBounds::VnIfcAggrImpBounds;
};

/// The implementation class of a set with bounds.
template <class Aggr>
class VnIfcSetAggrBoundedImp;

/// The implementation class of a set of elements of type T with bounds, which adding and removing observe.
template <class T, std::uint32_t lower, std::uint32_t upper>
class VnIfcSetAggrBoundedImp<VnIfcSetAggrBounded<T, lower, upper>> final
    : public VnIfcAggrImpBounds<VnIfcSetAggrBoundedImp<VnIfcSetAggrBounded<T, lower, upper>>, VnIfcUnOrderedAggrImp<T>,
                                lower, upper> {
    using VnIfcSetAggrBoundedImp::VnIfcAggrImpBounds::VnIfcAggrImpBounds;
};

} // namespace VN_SDAI
