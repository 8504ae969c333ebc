#pragma once
#include <VnIfcCore/VnIfcTypes.h>
#include <VnRx/VnPlatform.h>

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace VN_SDAI {

/// What a handle points to: the place of one instance in a model, alive as long as the model. Internal to the core.
struct VnIfcInstanceSlot {
    /// The bits of objectAndFlags that are no address: the instance is erased, lies in the model's arena, and has text
    /// kept from its file (VnIfcEntityBase::keptText).
    enum Flag : std::uintptr_t { kErased = 1, kInArena = 2, kHasKept = 4, kFlags = 7 };

    /// The address of the instance, 0 when it is only referred to, together with the flags. Use load and store.
    std::uintptr_t objectAndFlags = 0;
    /// The instance number.
    std::uint64_t number = 0;

    /// The instance, also when it is erased; null when the number was only referred to. Owned by the model.
    VnIfcEntityBase* object() const noexcept {
        return reinterpret_cast<VnIfcEntityBase*>(load() & ~std::uintptr_t{kFlags});
    }
    ///@{
    /// Tests, sets or resets a flag. Setting is not atomic as a whole: one thread at a time changes a slot.
    bool has(Flag flag) const noexcept { return (load() & flag) != 0; }
    void set(Flag flag) noexcept { store(load() | flag); }
    void reset(Flag flag) noexcept { store(load() & ~std::uintptr_t{flag}); }
    ///@}

    // While a file is read, one thread gives a slot its instance and others look whether it is there already.
    ///@{
    /// The word, with the order of memory that lets another thread use the instance.
    std::uintptr_t load() const noexcept {
        return std::atomic_ref(const_cast<std::uintptr_t&>(objectAndFlags)).load(std::memory_order_acquire);
    }
    void store(std::uintptr_t value) noexcept {
        std::atomic_ref(objectAndFlags).store(value, std::memory_order_release);
    }
    ///@}
    /// The model that owns this slot.
    VNIFC_API VnIfcModel* model() const noexcept;
};

/// Where the slots of dense numbers lie: on pages that begin with a head. Internal to the core.
struct VnIfcSlotPages {
    ///@{
    /// The size of a page and of its head in bytes, and the number of slots on a page.
    static constexpr std::size_t kPageSize = 16 * 1024;
    static constexpr std::size_t kHeadSize = 16;
    static constexpr std::size_t kSlots = (kPageSize - kHeadSize) / sizeof(VnIfcInstanceSlot);
    ///@}

    const std::uint64_t* made = nullptr; ///< a bit for each number: it has a slot
    /// The pages, by number divided by kSlots. Owned by the model.
    char* const* pages = nullptr;
    std::uint64_t end = 0; ///< numbers from here on are none of the dense ones

    /// The first slot of a page.
    static VnIfcInstanceSlot* slotsOf(char* page) noexcept {
        return reinterpret_cast<VnIfcInstanceSlot*>(page + kHeadSize);
    }
    /// The slot of a number; null when it has none here.
    VnIfcInstanceSlot* find(std::uint64_t number) const noexcept {
        if (number >= end || (made[number / 64] >> number % 64 & 1) == 0)
            return nullptr;
        return slotsOf(pages[number / kSlots]) + number % kSlots;
    }
};

/// Handle of an instance inside a model (ISO 10303-22, application instance identifier). A value of one pointer; never
/// owns. Handles are ordered by instance number. A handle stays usable as long as its model lives; when its instance
/// was erased or never defined, it opens to null. A handle belongs to its model: kept in an instance of another model
/// it would be written as the number of a stranger. putAttr refuses it, typed setters do not look; writing reports it
/// and writes
/// "$", and VnIfcCheck finds it.
class VNIFC_API VnDbObjectId {
public:
    constexpr VnDbObjectId() noexcept = default;
    /// The handle of a slot; null gives the null handle. For the core.
    explicit constexpr VnDbObjectId(VnIfcInstanceSlot* slot) noexcept : m_slot(slot) {}

    /// True for a handle that refers to nothing. A handle that is not null may still open to null.
    constexpr bool isNull() const noexcept { return m_slot == nullptr; }
    /// Makes the handle refer to nothing.
    constexpr void setNull() noexcept { m_slot = nullptr; }
    /// The instance number (#123); 0 for a null handle.
    std::uint64_t number() const noexcept { return m_slot ? m_slot->number : 0; }
    /// The model that the handle belongs to; null for a null handle.
    VnIfcModel* model() const noexcept { return m_slot ? m_slot->model() : nullptr; }

    /// Opens the instance; null when there is none. An erased instance opens only with `openErased`. The pointer stays
    /// valid as long as the model.
    VnIfcEntityBase* openObject(OpenMode = kForRead, bool openErased = false) const noexcept {
        if (!m_slot || (m_slot->has(VnIfcInstanceSlot::kErased) && !openErased))
            return nullptr;
        return m_slot->object();
    }
    /// Ends an opening.
    void close() const noexcept {}

    /// True when the instance was there and has been erased.
    bool isErased() const noexcept { return m_slot && m_slot->has(VnIfcInstanceSlot::kErased); }

    /// The slot, which the model owns; null for a null handle. For the core.
    constexpr VnIfcInstanceSlot* slot() const noexcept { return m_slot; }

    /// Equal handles are of the same instance of the same model.
    friend constexpr bool operator==(const VnDbObjectId&, const VnDbObjectId&) noexcept = default;
    /// By instance number; handles of different models with the same number are ordered by model.
    friend bool operator<(const VnDbObjectId& left, const VnDbObjectId& right) noexcept {
        if (left.number() != right.number())
            return left.number() < right.number();
        return std::less<>()(left.m_slot, right.m_slot);
    }
    /// The order of operator<.
    friend std::strong_ordering operator<=>(const VnDbObjectId& left, const VnDbObjectId& right) noexcept {
        return left == right  ? std::strong_ordering::equal
               : left < right ? std::strong_ordering::less
                              : std::strong_ordering::greater;
    }

private:
    VnIfcInstanceSlot* m_slot = nullptr;
};

static_assert(sizeof(VnDbObjectId) == 8);

} // namespace VN_SDAI

/// Handles are equal when they are of the same instance.
template <>
struct std::hash<VN_SDAI::VnDbObjectId> {
    /// Of the instance's identity, not of its number.
    std::size_t operator()(const VN_SDAI::VnDbObjectId& handle) const noexcept {
        return std::hash<const void*>()(handle.slot());
    }
};
