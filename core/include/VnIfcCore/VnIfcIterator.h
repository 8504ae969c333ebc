#pragma once
#include <VnIfcCore/VnIfcAggr.h>

#include <stdexcept>

namespace VN_SDAI {

template <class T>
class VnIfcOrderedAggr;

/// Walks over the elements of an aggregate without knowing their type. It keeps a position, not an element, so that it
/// stays usable when the aggregate changes; the aggregate must outlive it.
class VNIFC_API VnIfcConstIterator {
public:
    /// Stands at the first element.
    explicit VnIfcConstIterator(const VnIfcAggr& aggregate) noexcept
        : m_aggregate(&aggregate), m_elementSize(aggregate.imp().elementSize()) {}

    /// Goes back to the first element.
    void first() noexcept { m_index = 0; }
    /// Goes to the next element; past the end it stays past the end.
    void next() noexcept { ++m_index; }
    /// True when there is no current element.
    bool atEnd() const noexcept { return m_index >= m_aggregate->count(); }
    /// The position, from 0.
    std::uint32_t index() const noexcept { return m_index; }
    /// The kind of the elements' type.
    VnTypeCodeKind elementKind() const noexcept { return m_aggregate->elementKind(); }
    /// The current element, valid until the aggregate changes; null at the end.
    const void* current() const noexcept {
        if (atEnd())
            return nullptr;
        return static_cast<const char*>(m_aggregate->imp().data()) + std::size_t{m_index} * m_elementSize;
    }
    /// The current element. Not to be asked at the end, nor when T is neither the element type nor a base of it:
    /// throws std::logic_error then.
    template <class T>
    const T& currentAs() const {
        if (atEnd() || vnElementKind<T>() != elementKind())
            throw std::logic_error("the aggregate has no current element of that type");
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
    /// Stands at the first element.
    explicit VnIfcIterator(VnIfcAggr& aggregate) noexcept : VnIfcConstIterator(aggregate), m_target(&aggregate) {}

    /// Replaces the current element of a LIST whose element type is T; eRefused at the end, for a SET, and for elements
    /// of another type.
    template <class T>
    [[nodiscard]] VN::ErrorStatus put(const T& element) {
        if (atEnd() || !m_target->isOrdered() || !holds<T>())
            return VN::eRefused;
        return static_cast<VnIfcOrderedAggr<T>&>(*m_target).putAt(index(), element);
    }
    /// Removes the current element of a SET, and stands at the next one then; eRefused at the end, at the lower bound,
    /// and for a LIST.
    VN::ErrorStatus remove() noexcept { return m_target->m_imp->removeAt(index()); }

private:
    /// All selects are of one kind and size, so their class has to be asked for, too.
    template <class T>
    bool holds() const noexcept {
        if (vnElementKind<T>() != elementKind())
            return false;
        return vnElementKind<T>() != VnTypeCodeKind::kSelect && vnElementKind<T>() != VnTypeCodeKind::kAggregation
                   ? true
                   : dynamic_cast<const VnIfcAggrImpOf<T>*>(&m_target->imp()) != nullptr;
    }

    VnIfcAggr* m_target;
};

} // namespace VN_SDAI
