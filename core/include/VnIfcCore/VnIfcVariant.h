#pragma once
#include <VnIfcCore/VnIfcArray.h>
#include <VnIfcCore/VnIfcLogical.h>
#include <VnIfcCore/VnIfcTypes.h>
#include <VnIfcCore/VnIfcVariantType.h>

#include <concepts>
#include <string>
#include <type_traits>

namespace VN_SDAI {

class VnIfcGUID;
struct VnIfcEnumDescription;
template <class T>
class VnIfcListAggr;
template <class T>
class VnIfcListAggrCompound;
template <class T>
class VnIfcSetAggr;

/// A list of types, for use at compile time.
template <class... T>
struct VnIfcTypeList {
    /// True when U is in the list.
    template <class U>
    static constexpr bool has = (std::is_same_v<T, U> || ...);
    /// The position of U in the list.
    template <class U>
    static constexpr std::size_t indexOf() noexcept {
        std::size_t index = 0;
        (void)((!std::is_same_v<T, U> && ++index) && ...);
        return index;
    }
};

/// All payload types that the core describes.
using VnIfcCoreTypes =
    VnIfcTypeList<int, double, unsigned long, const char*, VnAnsiString, VrString, VnDbObjectId, VnIfcBoolean,
                  VnIfcLogical, VnIfcGUID, VnIfcEnumDescription, VnIfcSelect*, VnIfcAggr*, VnIfcArray<int>,
                  VnIfcArray<double>, VnIfcArray<unsigned long>, VnIfcArray<const char*>, VnIfcArray<VnAnsiString>,
                  VnIfcArray<VrString>, VnIfcArray<VnDbObjectId>, VnIfcArray<VnIfcBoolean>, VnIfcArray<VnIfcLogical>,
                  VnIfcArray<VnIfcGUID>, VnIfcArray<VnIfcEnumDescription>, VnIfcArray<VnIfcSelect*>,
                  VnIfcArray<VnIfcAggr*>, VnIfcArray<VnIfcVariant>, VnIfcArray<VnIfcArray<int>>,
                  VnIfcArray<VnIfcArray<double>>, VnIfcArray<VnIfcArray<VnDbObjectId>>, VnIfcSetAggr<int>*,
                  VnIfcSetAggr<double>*, VnIfcSetAggr<VnAnsiString>*, VnIfcSetAggr<VnDbObjectId>*, VnIfcListAggr<int>*,
                  VnIfcListAggr<double>*, VnIfcListAggr<VnAnsiString>*, VnIfcListAggr<VnDbObjectId>*,
                  VnIfcListAggrCompound<VnIfcListAggr<int>>*, VnIfcListAggrCompound<VnIfcListAggr<double>>*,
                  VnIfcListAggrCompound<VnIfcListAggr<VnDbObjectId>>*>;

/// The descriptor of the core type at an index of VnIfcCoreTypes.
VNIFC_API VnIfcVariantTypeSlot& vnIfcCoreTypeSlot(std::size_t index) noexcept;

/// The descriptor of a core type.
template <class T>
requires VnIfcCoreTypes::has<T>
struct VnIfcVariantType::Desc<T> {
    /// The descriptor, made if there is none.
    static const VnIfcVariantType& value() { return slot().value(); }
    /// Destroys the descriptor; nothing may use it any more.
    static void release() noexcept { slot().release(); }

private:
    static VnIfcVariantTypeSlot& slot() noexcept { return vnIfcCoreTypeSlot(VnIfcCoreTypes::indexOf<T>()); }
};

/// The types that a variant can hold.
template <class T>
concept VnIfcDescribed = requires {
    VnIfcVariantType::Desc<T>::value();
};

/// A value together with the descriptor of its type; null when it holds none. Strings, arrays and selects are held by
/// value; pointers to selects and aggregates and `const char*` are not owned, unless a conversion made what they point
/// to. VnAnsiString, `const char*` and VnIfcGUID hold strings in the form of an exchange file, VrString in Unicode.
class VNIFC_API VnIfcVariant {
public:
    /// A null variant.
    VnIfcVariant() noexcept = default;
    /// Copies the value; of a pointer, the pointer.
    template <VnIfcDescribed T>
    VnIfcVariant(const T& value) : m_type(&VnIfcVariantType::Desc<T>::value()) {
        if (m_type->storage())
            m_type->storage()->emplace(*m_type, m_payload, &value);
        else if constexpr (std::is_trivially_copyable_v<T> && sizeof(T) <= sizeof m_payload)
            std::memcpy(m_payload, &value, sizeof value);
    }
    /// A BOOLEAN.
    template <std::same_as<bool> B>
    VnIfcVariant(B value) : VnIfcVariant(VnIfcBoolean(value)) {}
    /// As `unsigned long`, the type of enumerations' codes.
    VnIfcVariant(unsigned value) : VnIfcVariant(static_cast<unsigned long>(value)) {}
    /// In the form of an exchange file, as VnAnsiString.
    VnIfcVariant(const std::string& text) : VnIfcVariant(VnAnsiString(text)) {}
    /// Keeps the pointer: the text is not copied and must outlive the variant.
    VnIfcVariant(const char* text) : VnIfcVariant(VnIfcVariantType::Desc<const char*>::value(), &text) {}
    /// Copies a value of that type; null stands for its default value.
    VnIfcVariant(const VnIfcVariantType& type, const void* value);
    ///@{
    /// Copies or takes the value; what is moved from is null.
    VnIfcVariant(const VnIfcVariant& other) : m_type(other.m_type) { copyPayload(other); }
    VnIfcVariant(VnIfcVariant&& other) noexcept { swap(other); }
    ///@}
    ~VnIfcVariant() {
        if (m_type && m_type->storage())
            m_type->storage()->destroy(*m_type, m_payload);
    }
    ///@{
    /// Copies or takes the value. When a copy fails, the variant stays as it was.
    VnIfcVariant& operator=(const VnIfcVariant& other) {
        VnIfcVariant(other).swap(*this);
        return *this;
    }
    VnIfcVariant& operator=(VnIfcVariant&& other) noexcept {
        VnIfcVariant(std::move(other)).swap(*this);
        return *this;
    }
    ///@}
    /// Exchanges the values without copying.
    void swap(VnIfcVariant& other) noexcept {
        std::swap(m_type, other.m_type);
        std::swap(m_payload, other.m_payload);
    }

    /// True when there is no value, not even an unset one.
    bool isNull() const noexcept { return m_type == nullptr; }
    /// Null for a null variant.
    const VnIfcVariantType* type() const noexcept { return m_type; }
    ///@{
    /// The value, of type(); null for a null variant. Valid until the variant is changed.
    void* payload() noexcept { return const_cast<void*>(std::as_const(*this).payload()); }
    const void* payload() const noexcept {
        if (!m_type)
            return nullptr;
        return m_type->storage() && m_type->storage()->onHeap ? onHeap() : m_payload;
    }
    ///@}
    /// True when the value is of exactly type T; no conversion is tried.
    template <VnIfcDescribed T>
    bool is() const {
        return m_type == &VnIfcVariantType::Desc<T>::value();
    }
    ///@{
    /// The value if it is of exactly that type; null otherwise.
    template <VnIfcDescribed T>
    const T* get() const {
        return is<T>() ? static_cast<const T*>(payload()) : nullptr;
    }
    template <VnIfcDescribed T>
    T* get() {
        return is<T>() ? static_cast<T*>(payload()) : nullptr;
    }
    ///@}

    /// Asks the descriptor of this value, then that of the target, to convert. False, and `result` as it was, when
    /// neither can; true with a `result` of another type where a descriptor returns that.
    bool convertTo(const VnIfcVariantType& target, VnIfcVariant& result) const;
    /// The value, converted if need be; false, and `value` as it was, when that is not possible. Not for pointers: what
    /// a conversion points to is its result's.
    template <VnIfcDescribed T>
    requires(!std::is_pointer_v<T>) bool getAs(T& value) const {
        VnIfcVariant converted;
        const T* result = get<T>();
        if (!result && convertTo(VnIfcVariantType::Desc<T>::value(), converted))
            result = converted.get<T>();
        if (result)
            value = *result;
        return result != nullptr;
    }
    /// Prints the value; false for a null variant.
    bool toString(VrString& text, StringFormat format = StringFormat::kPlain) const;

    /// Makes the value a heap copy of `source`, which must be of type(), whose values must be held on the heap.
    void setHeapStorageValue(const void* source);

    /// Of the same type and equal; unset values are equal.
    VNIFC_API friend bool operator==(const VnIfcVariant& left, const VnIfcVariant& right);

private:
    const void* onHeap() const noexcept {
        const void* value;
        std::memcpy(&value, m_payload, sizeof value);
        return value;
    }
    void copyPayload(const VnIfcVariant& other);

    const VnIfcVariantType* m_type = nullptr;
    alignas(8) unsigned char m_payload[24]{};
};

static_assert(sizeof(VnIfcVariant) == 32);

/// What getAttr gave as a value that putAttr takes, of the same or another instance: an enumeration becomes its code, a
/// pointer to an aggregate an array of its elements. All else is given back as it is; a pointer to a select still
/// points into the instance. To read an enumeration, ask for its class: `value.get<IfcWallTypeEnum>()`.
VNIFC_API VnIfcVariant vnStorable(const VnIfcVariant& value);

} // namespace VN_SDAI
