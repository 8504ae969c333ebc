#pragma once
#include <VnIfcCore/VnAnsiString.h>
#include <VnRx/VnPlatform.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

class VrString;

namespace VN_SDAI {

class VnIfcObject;
class VnIfcVariant;
class VnIfcVariantType;

/// How a value is put into words.
enum class StringFormat : std::uint8_t {
    kPlain,    ///< for people: strings decoded and without apostrophes, an unset value as the empty text
    kExchange, ///< as in an exchange file (ISO 10303-21, 6.4), an unset value as "$"
};

/// How variants make, copy and destroy payloads that they hold on the heap. The objects are of the descriptor's type.
class IVnIfcVariantTypeObjectAllocator {
public:
    /// A new object in its default state; the caller owns it.
    virtual void* create() const = 0;
    /// A new copy of an object; the caller owns it.
    virtual void* copy(const void* object) const = 0;
    /// Destroys an object that create or copy made.
    virtual void destroy(void* object) const noexcept = 0;

protected:
    ~IVnIfcVariantTypeObjectAllocator() = default;
};

/// What a descriptor of an enumeration type tells about its enumerators. The last one stands for "unset".
class IVnIfcVariantTypeEnumeration {
public:
    /// The number of enumerators, "unset" included.
    virtual std::int32_t literalCount() const noexcept = 0;
    /// The qualified name of an enumerator, owned by the descriptor. The index must be from 0 to below literalCount().
    virtual const VnAnsiString* literalName(std::int32_t index) const noexcept = 0;

protected:
    ~IVnIfcVariantTypeEnumeration() = default;
};

/// How a variant keeps payloads of a type whose bytes cannot simply be copied. Such payloads may be moved to another
/// place by copying their bytes, if nothing uses the old place any more.
struct VnIfcVariantStorage {
    /// Makes a payload from a value of the type; null stands for its default value.
    void (*emplace)(const VnIfcVariantType& type, void* payload, const void* value);
    /// Makes a payload from another one of the same type.
    void (*copy)(const VnIfcVariantType& type, void* payload, const void* source);
    /// Ends a payload.
    void (*destroy)(const VnIfcVariantType& type, void* payload) noexcept;
    bool onHeap = false; ///< the payload is a pointer to the value
};

/// The storage of values of T that stand in the variant itself.
template <class T>
inline constexpr VnIfcVariantStorage vnIfcInsideStorage{
    [](const VnIfcVariantType&, void* payload, const void* value) {
        value ? ::new (payload) T(*static_cast<const T*>(value)) : ::new (payload) T();
    },
    [](const VnIfcVariantType&, void* payload, const void* source) {
        ::new (payload) T(*static_cast<const T*>(source));
    },
    [](const VnIfcVariantType&, void* payload) noexcept { static_cast<T*>(payload)->~T(); }};

/// The storage of values that stand on the heap, by way of the descriptor's allocator.
VNIFC_API extern const VnIfcVariantStorage vnIfcHeapStorage;

/// Describes one type of payload that a VnIfcVariant can hold: how values of it are printed, compared, made and
/// converted. There is one descriptor for each type in the whole process, made when first asked for. Descriptors of a
/// schema module go when the module is uninitialised; no variant of such a type may outlive that.
class VNIFC_API VnIfcVariantType {
public:
    /// The descriptor of T: `static const VnIfcVariantType& value()`, thread-safe, and `static void release()`, which
    /// takes it away so that the next value() makes a new one. Release only when nothing uses the descriptor any more.
    /// Defined for the types that the core or a schema module describes.
    template <class T>
    struct Desc;

    VnIfcVariantType(const VnIfcVariantType&) = delete;
    VnIfcVariantType& operator=(const VnIfcVariantType&) = delete;

    /// True when values are selects or pointers to selects: VnIfcSelectVariantType.
    virtual bool isSelect() const noexcept { return false; }
    /// True when values are arrays or pointers to aggregates: VnIfcAggregateVariantType.
    virtual bool isAggregate() const noexcept { return false; }
    virtual ~VnIfcVariantType();
    /// Null for types whose values stand in the variant itself.
    virtual const IVnIfcVariantTypeObjectAllocator* objectMemAllocator() const noexcept { return nullptr; }
    /// Null for all but enumeration types.
    virtual const IVnIfcVariantTypeEnumeration* enumeration() const noexcept { return nullptr; }
    /// What was given to the constructor; null for all types of the core and the schema.
    virtual const VnIfcVariantType* reference() const noexcept { return m_reference; }
    /// What was given to the constructor, not owned; null for all types of the core and the schema.
    virtual VnIfcObject* rxObjectValue() const noexcept { return m_rxObject; }

    // The sub-operations do the work for values of this type; the operations below them first see whether there is
    // any. A conversion that is not possible returns false and leaves `result` as it was.

    /// Compares two values of this type.
    virtual bool subEqualTo(const void* left, const void* right) const;
    /// Converts a variant of this type to another one.
    virtual bool subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source, VnIfcVariant& result) const;
    /// Converts a variant of another type to this one.
    virtual bool subFromValueType(const VnIfcVariant& source, VnIfcVariant& result) const;
    /// Prints a value of this type; false for null.
    virtual bool subToString(VrString& text, const void* value, StringFormat format) const;
    /// As subToValueType, with `source` itself for its own type; false when it is not of this type.
    virtual bool toValueType(const VnIfcVariantType& target, const VnIfcVariant& source, VnIfcVariant& result) const;
    /// As subFromValueType, with `source` itself when it is of this type already; false for a null variant.
    virtual bool fromValueType(const VnIfcVariant& source, VnIfcVariant& result) const;
    /// Prints a variant; false when it is not of this type.
    virtual bool toString(VrString& text, const VnIfcVariant& value, StringFormat format) const;
    /// The name of the member that is chosen in the select that a variant of this type holds; empty otherwise.
    virtual VnAnsiString typePath(const VnIfcVariant& value) const;
    /// The name of the chosen member, of a variant of this type; empty for types other than selects.
    virtual VnAnsiString subTypePath(const VnIfcVariant& value) const;
    /// Makes `value` hold the unset value of this type; false when the type has none.
    virtual bool createVariant(VnIfcVariant& value) const;

    /// The qualified name of the type.
    const wchar_t* name() const noexcept { return m_name.c_str(); }
    /// Of a value, in bytes.
    std::uint32_t size() const noexcept { return m_size; }
    /// Null when copying the bytes of a value is enough.
    const VnIfcVariantStorage* storage() const noexcept { return m_storage; }

protected:
    /// Copies the name, which is qualified with the schema or namespace. `size` is that of a value in bytes; what the
    /// pointers point to must outlive the descriptor.
    explicit VnIfcVariantType(const wchar_t* name, std::uint32_t size, const VnIfcVariantType* reference = nullptr,
                              VnIfcObject* rxObject = nullptr, const VnIfcVariantStorage* storage = nullptr)
        : m_name(name), m_size(size), m_reference(reference), m_rxObject(rxObject), m_storage(storage) {}

private:
    std::wstring m_name;
    std::uint32_t m_size;
    const VnIfcVariantType* m_reference;
    VnIfcObject* m_rxObject;
    const VnIfcVariantStorage* m_storage;
};

/// The place of one descriptor in the process, null until the descriptor is asked for. Owns the descriptor. Has static
/// storage duration in the library that describes the type.
class VNIFC_API VnIfcVariantTypeSlot {
public:
    /// Makes the descriptor.
    using Create = VnIfcVariantType* (*)();

    /// `living` counts the descriptors of a library. Without a lock, threads that ask for the same missing descriptor
    /// at the same time can each make one; the later one stays in the slot, the earlier one is never released.
    constexpr VnIfcVariantTypeSlot(Create create, bool isLocked, std::atomic<std::size_t>& living) noexcept
        : m_create(create), m_living(&living), m_isLocked(isLocked) {}
    VnIfcVariantTypeSlot(const VnIfcVariantTypeSlot&) = delete;
    VnIfcVariantTypeSlot& operator=(const VnIfcVariantTypeSlot&) = delete;

    /// The descriptor, made if there is none. Others see it when it is whole.
    const VnIfcVariantType& value() {
        const VnIfcVariantType* type = m_type.load(std::memory_order_acquire);
        return type ? *type : make();
    }
    /// Destroys the descriptor, if there is one.
    void release() noexcept;

private:
    const VnIfcVariantType& make();
    const VnIfcVariantType& createAndPublish();

    std::atomic<VnIfcVariantType*> m_type{nullptr};
    Create m_create;
    std::atomic<std::size_t>* m_living;
    bool m_isLocked;
};

/// The lock of the whole process under which descriptors are made.
using VnIfcVariantTypeLocker = std::recursive_mutex;
/// The lock itself, of static storage; a thread may take it several times.
VNIFC_API VnIfcVariantTypeLocker& vnifcGetVaraintTypeLocker() noexcept;

/// Holds a lock as long as it lives.
class VnIfcAutoLocker {
public:
    /// Waits for the lock and takes it.
    explicit VnIfcAutoLocker(VnIfcVariantTypeLocker& locker) : m_guard(locker) {}

private:
    std::lock_guard<VnIfcVariantTypeLocker> m_guard;
};

} // namespace VN_SDAI
