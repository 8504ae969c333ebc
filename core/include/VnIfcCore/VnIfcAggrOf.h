#pragma once
#include <VnIfcCore/VnIfcIterator.h>

namespace VN_SDAI {

/// An aggregate of elements of type T, ordered or not.
template <class T>
class VnIfcAggrOf : public VnIfcAggr {
public:
    /// The element type, as ranges name it.
    using value_type = T;

    /// The elements: in ascending order for a SET, in sequence for a LIST. Valid until the aggregate changes.
    std::span<const T> items() const noexcept { return imp().items(); }
    /// The range of items().
    const T* begin() const noexcept { return items().data(); }
    /// As begin().
    const T* end() const noexcept { return begin() + count(); }
    /// The element at an index below count(); no range check.
    const T& operator[](std::size_t index) const noexcept { return begin()[index]; }
    /// By operator== for a LIST, where NaN is never found; by operator< for a SET.
    bool contains(const T& element) const { return imp().contains(element); }

    /// Replaces the contents by the values in their order; a SET keeps the first of equal ones and does not check its
    /// upper bound. A VnIfcArray converts to the span. More than VnIfcAggrImp::kMaxCount values raise
    /// std::length_error.
    void assign(std::span<const T> values) { imp().assign(m_imp, values, VnIfcTransfer::kCopy); }
    /// As assign, but takes the values out of the vector.
    void assign(std::vector<T>&& values) { assignMoved(values); }
    /// As assign, but leaves moved-from values behind.
    void assignMoved(std::span<T> values) { imp().assign(m_imp, values, VnIfcTransfer::kMove); }
    /// Appends all elements to the array, in the order of items().
    void exportTo(VnIfcArray<T>& array) const { imp().exportTo(array); }

    /// Equal elements in the same order; bounds do not count, and a nil aggregate is equal to an empty one.
    friend bool operator==(const VnIfcAggrOf& left, const VnIfcAggrOf& right) {
        return std::equal(left.begin(), left.end(), right.begin(), right.end());
    }

protected:
    using VnIfcAggr::VnIfcAggr;

    /// The implementation object, with its element type.
    VnIfcAggrImpOf<T>& imp() noexcept { return static_cast<VnIfcAggrImpOf<T>&>(*m_imp); }
    /// As above, not to be changed.
    const VnIfcAggrImpOf<T>& imp() const noexcept { return static_cast<const VnIfcAggrImpOf<T>&>(*m_imp); }
};

} // namespace VN_SDAI
