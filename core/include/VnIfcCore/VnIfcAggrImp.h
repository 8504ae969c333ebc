#pragma once
#include <VnIfcCore/VnAnsiString.h>
#include <VnIfcCore/VnDbObjectId.h>
#include <VnIfcCore/VnIfcArray.h>
#include <VnIfcCore/VnIfcStorage.h>
#include <VnIfcCore/VnIfcTypes.h>

#include <vector>

namespace VN_SDAI {

/// The number that stands for the open upper bound "?", which refuses nothing.
inline constexpr std::uint32_t kVnUnbounded = 65536;

/// Whether a bulk assignment leaves its source as it is or takes the values out of it.
enum class VnIfcTransfer : bool { kCopy, kMove };

/// Count, room and origin of an aggregate's block. Static storage marks the shared prototype, which holds nothing.
struct VnIfcAggrHead {
    /// The number of elements.
    std::uint32_t count = 0;
    /// How many elements there is room for.
    std::uint32_t capacity : 30 = 0;
    /// The block's VnStorage.
    std::uint32_t storage : 2 = static_cast<std::uint32_t>(VnStorage::kStatic);
};

/// What an aggregate front end points to: one block of memory made of this head and the elements after it, or the
/// shared prototype of its class, to which every aggregate is bound as long as it is nil. Operations that need a
/// larger block put the new one in `place`, the front end's pointer, and destroy the old one. A refused or failing
/// operation changes nothing.
class VNIFC_API VnIfcAggrImp {
public:
    /// The most elements that an aggregate can hold.
    static constexpr std::uint32_t kMaxCount = (1u << 30) - 1;

    /// Without a head: the prototype of its class.
    constexpr explicit VnIfcAggrImp(VnIfcAggrHead head = {}) noexcept : m_head(head) {}
    VnIfcAggrImp(const VnIfcAggrImp&) = delete;
    VnIfcAggrImp& operator=(const VnIfcAggrImp&) = delete;

    ///@{
    /// How many elements there are, and how many there is room for.
    std::uint32_t count() const noexcept { return m_head.count; }
    std::uint32_t capacity() const noexcept { return m_head.capacity; }
    ///@}
    /// Where the block came from; static for the prototype.
    VnStorage storage() const noexcept { return static_cast<VnStorage>(m_head.storage); }
    /// True for the prototype, which no aggregate owns.
    bool isNil() const noexcept { return storage() == VnStorage::kStatic; }

    /// Destroys the elements and frees the block unless an arena owns it. The prototype stays.
    virtual void destroy() noexcept = 0;
    ///@{
    /// The declared bound; kVnUnbounded for "?".
    virtual std::uint32_t lowerBound() const noexcept = 0;
    virtual std::uint32_t upperBound() const noexcept = 0;
    ///@}
    /// The kind of the elements' type.
    virtual VnTypeCodeKind elementKind() const noexcept = 0;
    /// Of one element in memory, in bytes.
    virtual std::uint32_t elementSize() const noexcept = 0;
    /// True for LIST and ARRAY, false for SET.
    virtual bool isOrdered() const noexcept = 0;
    /// The shared prototype of this class, in this library.
    virtual VnIfcAggrImp* prototype() const noexcept = 0;
    /// A new block without elements; the caller owns it.
    virtual VnIfcAggrImp* createFresh() const = 0;
    /// A new block of this class with the elements of `source`, whose elements must be of the same type.
    virtual VnIfcAggrImp* copyOf(const VnIfcAggrImp& source) const = 0;
    /// A new block of this class with copies of the elements; the caller owns it.
    VnIfcAggrImp* clone() const { return copyOf(*this); }
    /// Element by element like a word in a dictionary: negative, 0 or positive. The elements must be of the same type.
    virtual int compare(const VnIfcAggrImp& other) const noexcept = 0;
    /// Removes one element by position: eRefused at the lower bound, and for a LIST.
    virtual VN::ErrorStatus removeAt(std::uint32_t index) noexcept = 0;
    /// Makes `block`, of any class with this element type and order, one of this class. Its elements stay.
    VnIfcAggrImp* adopt(VnIfcAggrImp* block) const noexcept { return stamp(block, block->m_head); }

    /// Where the elements start.
    const void* data() const noexcept {
        // By way of a number: compilers take what lies after the 16 bytes of this object for another object's.
        return reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(this) + sizeof(VnIfcAggrImp));
    }

protected:
    ~VnIfcAggrImp() = default;

    /// Writes the head of a block of this class.
    virtual VnIfcAggrImp* stamp(void* memory, VnIfcAggrHead head) const noexcept = 0;
    /// A new block with room for this many elements of elementSize(); raises std::length_error beyond kMaxCount.
    VnIfcAggrImp* allocate(std::size_t capacity) const;
    /// The room to make when this block is full; raises std::length_error at kMaxCount.
    std::size_t grownCapacity() const;
    /// Says how many elements have been constructed, which must not be more than there is room for.
    void setCount(std::size_t count) noexcept { m_head.count = static_cast<std::uint32_t>(count); }

    /// Puts `elements` into ascending order and drops all but the first of equal ones.
    static void sortUnique(std::vector<const void*>& elements, bool (*less)(const void*, const void*));

private:
    VnIfcAggrHead m_head;
};

static_assert(sizeof(VnIfcAggrImp) == 16);

/// The shared prototype of one implementation class: read-only and there before any code runs, so that making an
/// aggregate costs one store.
template <class T, class Imp>
class VnIfcAggrImpDummy {
public:
    /// The prototype, which nothing may be written to.
    static VnIfcAggrImp* prototype() noexcept { return const_cast<Imp*>(&s_imp); }

private:
    static constinit inline const Imp s_imp{};
};

/// The kind of an aggregate's elements; what is neither a core value nor an aggregate is a select.
template <class T>
constexpr VnTypeCodeKind vnElementKind() noexcept {
    if constexpr (std::is_same_v<T, VnDbObjectId>)
        return VnTypeCodeKind::kEntity;
    else if constexpr (std::is_same_v<T, double>)
        return VnTypeCodeKind::kReal;
    else if constexpr (std::is_same_v<T, int>)
        return VnTypeCodeKind::kInteger;
    else if constexpr (std::is_same_v<T, VnAnsiString>)
        return VnTypeCodeKind::kString;
    else if constexpr (std::is_base_of_v<VnIfcAggr, T>)
        return VnTypeCodeKind::kAggregation;
    else
        return VnTypeCodeKind::kSelect;
}

/// Total order of elements. NaN comes last and is equal to itself: with the plain comparison there would be no order.
template <class T>
bool vnElementLess(const T& left, const T& right) noexcept {
    if constexpr (std::is_floating_point_v<T>)
        return left < right || (right != right && left == left);
    else if constexpr (std::is_base_of_v<VnIfcAggr, T>)
        return left.compare(right) < 0;
    else
        return left < right;
}

/// Implementation object for elements of type T: what SET and LIST have in common.
template <class T>
class VnIfcAggrImpOf : public VnIfcAggrImp {
    static_assert(alignof(T) <= alignof(void*));
    static_assert(std::is_nothrow_move_constructible_v<T> && std::is_nothrow_move_assignable_v<T>,
                  "elements are moved where a failure half way could not be undone");

public:
    /// The element type.
    using Element = T;
    using VnIfcAggrImp::VnIfcAggrImp;

    /// The elements in order, valid until the block is changed or destroyed.
    std::span<const T> items() const noexcept { return {static_cast<const T*>(data()), count()}; }

    void destroy() noexcept final {
        std::destroy_n(elements(), count());
        vnFree(this, storage());
    }
    VnTypeCodeKind elementKind() const noexcept final { return vnElementKind<T>(); }
    std::uint32_t elementSize() const noexcept final { return sizeof(T); }
    VnIfcAggrImp* createFresh() const final { return allocate(1); }
    VnIfcAggrImp* copyOf(const VnIfcAggrImp& source) const final {
        return blockOf(static_cast<const VnIfcAggrImpOf&>(source).items(), VnIfcTransfer::kCopy).release();
    }

    int compare(const VnIfcAggrImp& other) const noexcept final {
        const std::span<const T> left = items(), right = static_cast<const VnIfcAggrImpOf&>(other).items();
        const std::size_t common = std::min(left.size(), right.size());
        for (std::size_t i = 0; i < common; ++i) {
            if (vnElementLess(left[i], right[i]))
                return -1;
            if (vnElementLess(right[i], left[i]))
                return 1;
        }
        return left.size() < right.size() ? -1 : left.size() > right.size();
    }
    /// True when an element is equal: by operator== in a LIST, by vnElementLess in a SET.
    virtual bool contains(const T& element) const = 0;
    /// Replaces the contents by the values in their order. With kMove, the values must not be const objects.
    virtual void assign(VnIfcAggrImp*& place, std::span<const T> values, VnIfcTransfer how) = 0;
    /// Appends the elements to the array.
    void exportTo(VnIfcArray<T>& array) const { array.appendAll(items()); }

protected:
    /// Destroys a block that nothing has taken over.
    struct Destroyer {
        /// Destroys the elements and frees the block.
        void operator()(VnIfcAggrImpOf* block) const noexcept { block->destroy(); }
    };
    /// A new block until an aggregate takes it over.
    using Block = std::unique_ptr<VnIfcAggrImpOf, Destroyer>;

    /// Where the elements start, to be changed.
    T* elements() noexcept { return static_cast<T*>(const_cast<void*>(data())); }
    /// A new block without elements, with room for this many; std::length_error beyond kMaxCount.
    Block newBlock(std::size_t capacity) const { return Block(static_cast<VnIfcAggrImpOf*>(allocate(capacity))); }
    /// A new block with exactly these values.
    Block blockOf(std::span<const T> values, VnIfcTransfer how) const {
        Block block = newBlock(values.size());
        block->take(values, how);
        return block;
    }
    /// A new block with the values that these pointers designate.
    Block blockOf(const std::vector<const void*>& values, VnIfcTransfer how) const {
        Block block = newBlock(values.size());
        for (const void* value : values)
            block->take({static_cast<const T*>(value), 1}, how);
        return block;
    }
    /// Adds values behind the last element; there must be room for them.
    void take(std::span<const T> values, VnIfcTransfer how) {
        T* const end = elements() + count();
        if (how == VnIfcTransfer::kMove)
            std::uninitialized_move_n(const_cast<T*>(values.data()), values.size(), end);
        else
            std::uninitialized_copy_n(values.data(), values.size(), end);
        setCount(count() + values.size());
    }
    /// Puts another block in the place of this one, and destroys this one.
    void replace(VnIfcAggrImp*& place, Block block) noexcept {
        place = block.release();
        destroy();
    }
    /// Inserts a copy of an element, which may be one of the block's own, before the index; an index equal to count()
    /// appends. std::length_error when kMaxCount is reached.
    void insertAt(VnIfcAggrImp*& place, std::uint32_t index, const T& element) {
        if (count() == capacity())
            return insertIntoLarger(place, index, element);
        T copy(element);
        T* const end = elements() + count();
        if (index == count()) {
            ::new (static_cast<void*>(end)) T(std::move(copy));
        } else {
            ::new (static_cast<void*>(end)) T(std::move(end[-1]));
            std::move_backward(elements() + index, end - 1, end);
            elements()[index] = std::move(copy);
        }
        setCount(count() + 1);
    }
    /// Removes the element at an index below count(), and closes the gap.
    void eraseAt(std::uint32_t index) noexcept {
        T* const end = elements() + count();
        std::move(elements() + index + 1, end, elements() + index);
        std::destroy_at(end - 1);
        setCount(count() - 1);
    }

private:
    void insertIntoLarger(VnIfcAggrImp*& place, std::uint32_t index, const T& element) {
        Block larger = newBlock(grownCapacity());
        T* const gap = larger->elements() + index;
        // Before the others move: only this can fail, and the element may be one of them.
        ::new (static_cast<void*>(gap)) T(element);
        std::uninitialized_move_n(elements(), index, larger->elements());
        std::uninitialized_move_n(elements() + index, count() - index, gap + 1);
        larger->setCount(count() + 1);
        replace(place, std::move(larger));
    }
};

/// The part of an implementation class that depends on its bounds; everything else is shared by all aggregates of one
/// element type, so that another pair of bounds costs little code.
template <class Self, class Base, std::uint32_t lower, std::uint32_t upper>
class VnIfcAggrImpBounds : public Base {
public:
    using Base::Base;

    /// The declared bound; kVnUnbounded for "?".
    std::uint32_t lowerBound() const noexcept final { return lower; }
    /// As lowerBound.
    std::uint32_t upperBound() const noexcept final { return upper; }
    /// The shared prototype of this class, in this library.
    VnIfcAggrImp* prototype() const noexcept final {
        return VnIfcAggrImpDummy<typename Base::Element, Self>::prototype();
    }

protected:
    /// Writes the head of a block of this class.
    VnIfcAggrImp* stamp(void* memory, VnIfcAggrHead head) const noexcept final { return ::new (memory) Self(head); }
};

extern template class VNIFC_API VnIfcAggrImpOf<VnDbObjectId>;
extern template class VNIFC_API VnIfcAggrImpOf<double>;
extern template class VNIFC_API VnIfcAggrImpOf<int>;
extern template class VNIFC_API VnIfcAggrImpOf<VnAnsiString>;

} // namespace VN_SDAI
