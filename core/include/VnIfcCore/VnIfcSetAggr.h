#pragma once
#include <VnIfcCore/VnIfcAggrOf.h>
#include <VnIfcCore/VnIfcSetAggrImp.h>

namespace VN_SDAI {

/// A SET: every element once, in ascending order.
template <class T>
class VnIfcUnOrderedAggr : public VnIfcAggrOf<T> {
public:
    constexpr VnIfcUnOrderedAggr() noexcept
        : VnIfcUnOrderedAggr(VnIfcAggrImpDummy<T, VnIfcSetAggrImp<VnIfcSetAggr<T>>>::prototype()) {}

    /// eOk also when the element is there already; eRefused, and nothing changed, when the upper bound is reached.
    VN::ErrorStatus add(const T& element) { return set().add(this->m_imp, element); }
    /// eRefused, and nothing changed, when the element is absent or the count is not above the lower bound.
    VN::ErrorStatus remove(const T& element) { return set().remove(element); }

protected:
    using VnIfcAggrOf<T>::VnIfcAggrOf;

private:
    VnIfcUnOrderedAggrImp<T>& set() noexcept { return static_cast<VnIfcUnOrderedAggrImp<T>&>(*this->m_imp); }
};

/// A SET with the bounds [0:?].
template <class T>
class VnIfcSetAggr : public VnIfcUnOrderedAggr<T> {
public:
    constexpr VnIfcSetAggr() noexcept = default;

protected:
    using VnIfcUnOrderedAggr<T>::VnIfcUnOrderedAggr;
};

/// A SET with the bounds [lower:upper]; 65536 stands for "?".
template <class T, std::uint32_t lower, std::uint32_t upper>
class VnIfcSetAggrBounded : public VnIfcSetAggr<T> {
public:
    constexpr VnIfcSetAggrBounded() noexcept
        : VnIfcSetAggr<T>(VnIfcAggrImpDummy<T, VnIfcSetAggrBoundedImp<VnIfcSetAggrBounded>>::prototype()) {}
};

} // namespace VN_SDAI
