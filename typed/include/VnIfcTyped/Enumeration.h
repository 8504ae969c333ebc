#pragma once
#include <VnIfcCore/VnIfcVariantType.h>
#include <VnIfcTyped/Rows.h>

#include <concepts>
#include <cstdint>
#include <string_view>

namespace VN_SDAI::typed {

/// What the library knows of one enumeration type: its name and its literals in enumerator order, bare and upper-case.
struct EnumerationClass {
    /// As in the schema: "IfcWallTypeEnum".
    const char* name;
    /// In the order of the codes.
    Rows<const char*> literals;
    /// The place of the type's descriptor; of static storage.
    VnIfcVariantTypeSlot* descriptor;

    /// The literal of a code; null when the code is not below the number of literals.
    const char* toLiteral(int code) const noexcept {
        const auto index = static_cast<unsigned>(code); // negative ones are past the end, too
        return index < literals.size() ? literals[index] : nullptr;
    }
    /// The code of a literal without dots, in any case; the number of literals when there is none.
    VNIFC_API std::uint32_t fromLiteral(std::string_view literal) const noexcept;
};

/// Value of an EXPRESS ENUMERATION (ISO 10303-11, 8.4.1): a 32-bit code in the schema's order of literals, of which the
/// one past the last means that no value is set. E is the enumeration itself, Code its C++ enumeration.
template <class E, class Code, Code unset>
class Enumeration {
public:
    /// The C++ enumeration of the codes.
    using CodeType = Code;
    /// How many literals there are, which is also the code of no value.
    static constexpr std::uint32_t kLiteralCount = unset;

    /// From a code; unset by default.
    constexpr Enumeration(Code code = unset) noexcept : m_code(code) {}
    /// From a number; whatever is no literal's code becomes unset.
    static constexpr E fromCode(std::uint32_t code) noexcept {
        return E(code < unset ? static_cast<Code>(code) : unset);
    }

    /// The code, for comparisons and switch.
    constexpr operator Code() const noexcept { return static_cast<Code>(m_code); }
    /// The code as a number.
    constexpr std::uint32_t code() const noexcept { return m_code; }
    /// True when no value is set.
    constexpr bool isUnset() const noexcept { return m_code >= unset; }
    /// The literal without dots; null when unset.
    const char* literal() const noexcept { return E::s_class.toLiteral(static_cast<int>(m_code)); }

private:
    std::uint32_t m_code;
};

/// The enumeration classes of all releases.
template <class E>
concept EnumerationType = requires {
    { (E::s_class) } -> std::same_as<const EnumerationClass&>;
};

} // namespace VN_SDAI::typed

namespace VN_SDAI {

/// The descriptor of an enumeration class.
template <typed::EnumerationType E>
struct VnIfcVariantType::Desc<E> {
    /// The descriptor, made if there is none.
    static const VnIfcVariantType& value() { return E::s_class.descriptor->value(); }
    /// Destroys the descriptor; nothing may use it any more.
    static void release() noexcept { E::s_class.descriptor->release(); }
};

} // namespace VN_SDAI
