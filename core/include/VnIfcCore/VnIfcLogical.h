#pragma once
#include <compare>
#include <concepts>
#include <cstdint>

namespace VN_SDAI {

/// EXPRESS BOOLEAN with an unset value; a 32-bit code.
class VnIfcBoolean {
public:
    enum Code : std::uint32_t { False = 0, True = 1, Unset = 2 };

    constexpr VnIfcBoolean(Code code = Unset) noexcept : m_code(code) {}
    /// From exactly bool: texts, numbers and other literals do not convert.
    template <std::same_as<bool> B>
    constexpr VnIfcBoolean(B value) noexcept : m_code(value ? True : False) {}

    constexpr Code code() const noexcept { return m_code; }
    constexpr bool isUnset() const noexcept { return m_code == Unset; }
    constexpr bool operator==(const VnIfcBoolean&) const noexcept = default;
    constexpr auto operator<=>(const VnIfcBoolean&) const noexcept = default;

private:
    Code m_code;
};

/// EXPRESS LOGICAL (false, true, unknown) with an unset value; a 32-bit code.
class VnIfcLogical {
public:
    enum Code : std::uint32_t { False = 0, True = 1, Unknown = 2, Unset = 3 };

    constexpr VnIfcLogical(Code code = Unset) noexcept : m_code(code) {}
    /// From exactly bool, as VnIfcBoolean.
    template <std::same_as<bool> B>
    constexpr VnIfcLogical(B value) noexcept : m_code(value ? True : False) {}

    constexpr Code code() const noexcept { return m_code; }
    constexpr bool isUnset() const noexcept { return m_code == Unset; }
    constexpr bool operator==(const VnIfcLogical&) const noexcept = default;
    constexpr auto operator<=>(const VnIfcLogical&) const noexcept = default;

private:
    Code m_code;
};

static_assert(sizeof(VnIfcBoolean) == 4 && sizeof(VnIfcLogical) == 4);

} // namespace VN_SDAI
