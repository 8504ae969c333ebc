#pragma once
#include <compare>
#include <concepts>
#include <cstdint>

namespace VN_SDAI {

/// EXPRESS BOOLEAN with an unset value; a 32-bit code.
class VnIfcBoolean {
public:
    /// The codes in memory, in variants and in selects.
    enum Code : std::uint32_t { False = 0, True = 1, Unset = 2 };

    /// From a code; unset by default.
    constexpr VnIfcBoolean(Code code = Unset) noexcept : m_code(code) {}
    /// From exactly bool: texts, numbers and other literals do not convert.
    template <std::same_as<bool> B>
    constexpr VnIfcBoolean(B value) noexcept : m_code(value ? True : False) {}

    /// The value as one of Code.
    constexpr Code code() const noexcept { return m_code; }
    /// True when there is no value.
    constexpr bool isUnset() const noexcept { return m_code == Unset; }
    ///@{
    /// Compares codes: false, true, unset.
    constexpr bool operator==(const VnIfcBoolean&) const noexcept = default;
    constexpr auto operator<=>(const VnIfcBoolean&) const noexcept = default;
    ///@}

private:
    Code m_code;
};

/// EXPRESS LOGICAL (false, true, unknown) with an unset value; a 32-bit code.
class VnIfcLogical {
public:
    /// The codes in memory, in variants and in selects.
    enum Code : std::uint32_t { False = 0, True = 1, Unknown = 2, Unset = 3 };

    /// From a code; unset by default.
    constexpr VnIfcLogical(Code code = Unset) noexcept : m_code(code) {}
    /// From exactly bool, as VnIfcBoolean.
    template <std::same_as<bool> B>
    constexpr VnIfcLogical(B value) noexcept : m_code(value ? True : False) {}

    /// The value as one of Code.
    constexpr Code code() const noexcept { return m_code; }
    /// True when there is no value; UNKNOWN is one.
    constexpr bool isUnset() const noexcept { return m_code == Unset; }
    ///@{
    /// Compares codes: false, true, unknown, unset. EXPRESS orders UNKNOWN between false and true (ISO 10303-11,
    /// 12.2.1); this order does not.
    constexpr bool operator==(const VnIfcLogical&) const noexcept = default;
    constexpr auto operator<=>(const VnIfcLogical&) const noexcept = default;
    ///@}

private:
    Code m_code;
};

static_assert(sizeof(VnIfcBoolean) == 4 && sizeof(VnIfcLogical) == 4);

} // namespace VN_SDAI
