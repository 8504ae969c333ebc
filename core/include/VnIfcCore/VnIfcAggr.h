#pragma once
#include <VnIfcCore/VnIfcAggrImp.h>

namespace VN_SDAI {

class VnIfcConstIterator;
class VnIfcIterator;

/// An aggregate (SET, LIST or ARRAY of ISO 10303-11, 8.2) whatever its elements are. One pointer wide, owns its
/// contents. Nil until it is given contents or createEmpty is called. Derived classes only know the element type and
/// add nothing to the object, so that a copy through this class is a whole copy. One thread at a time.
class VNIFC_API VnIfcAggr {
public:
    /// Copies the contents and the bounds; a nil aggregate gives a nil one. The copy is taken from the arena of the
    /// calling thread, if it has one.
    VnIfcAggr(const VnIfcAggr& other) : m_imp(other.isNil() ? other.m_imp : other.m_imp->clone()) {}
    /// Takes the contents and leaves a nil aggregate. What lies in the arena of a model is copied unless the calling
    /// thread has that arena: the aggregate that takes it may outlive the model.
    VnIfcAggr(VnIfcAggr&& other) noexcept : m_imp(other.takeOut()) {}
    ~VnIfcAggr() {
        if (!isNil())
            m_imp->destroy();
    }

    /// The number of elements; 0 for a nil aggregate.
    std::uint32_t count() const noexcept { return m_imp->count(); }
    /// True as long as there is nothing of its own, not even an empty list of elements.
    bool isNil() const noexcept { return m_imp->isNil(); }
    /// The declared lower bound. Only removing from a SET observes it.
    std::uint32_t lowerBound() const noexcept { return m_imp->lowerBound(); }
    /// 65536 stands for "?".
    std::uint32_t upperBound() const noexcept { return m_imp->upperBound(); }
    /// The kind of the elements' type.
    VnTypeCodeKind elementKind() const noexcept { return m_imp->elementKind(); }
    /// True for LIST and ARRAY, false for SET.
    bool isOrdered() const noexcept { return m_imp->isOrdered(); }

    /// Makes the aggregate empty without being nil.
    void createEmpty() { replace(m_imp->createFresh()); }
    /// Drops the contents; the aggregate is nil again.
    void clear() noexcept {
        if (!isNil())
            replace(m_imp->prototype());
    }
    /// A copy, as the copy constructor makes it.
    VnIfcAggr clone() const { return *this; }
    ///@{
    /// An iterator at the first element; null for a nil aggregate. The aggregate must outlive it.
    std::unique_ptr<VnIfcIterator> createIterator();
    std::unique_ptr<VnIfcConstIterator> createConstIterator() const;
    ///@}
    /// Order by kind of the elements, then element by element: negative, 0 or positive.
    int compare(const VnIfcAggr& other) const noexcept;

    /// What holds the elements.
    const VnIfcAggrImp& imp() const noexcept { return *m_imp; }

protected:
    /// A nil aggregate, bound to the prototype of its class, which must have static storage duration.
    constexpr explicit VnIfcAggr(VnIfcAggrImp* prototype) noexcept : m_imp(prototype) {}
    // The element types must be the same; the bounds stay those of the aggregate assigned to.
    ///@{
    /// Takes the elements. The element types must be the same; the bounds stay those of the aggregate assigned to.
    VnIfcAggr& operator=(const VnIfcAggr& other);
    VnIfcAggr& operator=(VnIfcAggr&& other) noexcept;
    ///@}

    /// The block or the prototype; never null.
    VnIfcAggrImp* m_imp;

private:
    VnIfcAggrImp* takeOut() noexcept {
        if (m_imp->storage() == VnStorage::kArena && !VnIfcArenaScope::current())
            return copyOut();
        return std::exchange(m_imp, m_imp->prototype());
    }
    VnIfcAggrImp* copyOut() noexcept;

    friend class VnIfcIterator;

    void replace(VnIfcAggrImp* imp) noexcept { std::exchange(m_imp, imp)->destroy(); }
};

static_assert(sizeof(VnIfcAggr) == sizeof(void*));

} // namespace VN_SDAI
