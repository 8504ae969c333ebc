#pragma once
#include <VnIfcCore/VnIfcAggr.h>

namespace VN_SDAI {

template <class T>
class VnIfcOrderedAggr;

/// Walks over the elements of an aggregate without knowing their type. It keeps a position, not an element, so that it
/// stays usable when the aggregate changes; the aggregate must outlive it.
class VNIFC_API VnIfcConstIterator {
public:
    explicit VnIfcConstIterator(const VnIfcAggr& aggregate) noexcept
        : m_aggregate(&aggregate), m_elementSize(aggregate.imp().elementSize()) {}

    void first() noexcept { m_index = 0; }
    void next() noexcept { ++m_index; }
    bool atEnd() const noexcept { return m_index >= m_aggregate->count(); }
    std::uint32_t index() const noexcept { return m_index; }
    VnTypeCodeKind elementKind() const noexcept { return m_aggregate->elementKind(); }
    /// The current element, valid until the aggregate changes; null at the end.
    const void* current() const noexcept {
        if (atEnd())
            return nullptr;
        return static_cast<const char*>(m_aggregate->imp().data()) + std::size_t{m_index} * m_elementSize;
    }
    /// The current element when T, or a class derived from it, is the element type. Not to be asked at the end.
    template <class T>
    const T& currentAs() const noexcept {
        return *static_cast<const T*>(current());
    }

private:
    const VnIfcAggr* m_aggregate;
    std::uint32_t m_index = 0;
    std::uint32_t m_elementSize;
};

/// An iterator that may change the aggregate.
class VNIFC_API VnIfcIterator : public VnIfcConstIterator {
public:
    explicit VnIfcIterator(VnIfcAggr& aggregate) noexcept : VnIfcConstIterator(aggregate), m_target(&aggregate) {}

    /// Replaces the current element of a LIST whose element type is T; eRefused at the end, and for a SET.
    template <class T>
    VN::ErrorStatus put(const T& element) {
        if (atEnd() || !m_target->isOrdered())
            return VN::eRefused;
        return static_cast<VnIfcOrderedAggr<T>&>(*m_target).putAt(index(), element);
    }
    /// Removes the current element of a SET, and stands at the next one then; eRefused at the end, at the lower bound,
    /// and for a LIST.
    VN::ErrorStatus remove() noexcept { return m_target->m_imp->removeAt(index()); }

private:
    VnIfcAggr* m_target;
};

} // namespace VN_SDAI
