#pragma once
#include <algorithm>
#include <string>
#include <string_view>

// Case of ASCII letters, the only letters in the names of schemas and the keywords of exchange files (ISO 10303-11, 7;
// ISO 10303-21, 5.2). The locale has no say; all other bytes stay as they are.
namespace VN_SDAI {

/// The letter in upper case.
constexpr char vnUpper(char c) noexcept { return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c; }
/// The letter in lower case.
constexpr char vnLower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

/// A copy of the text with its letters in upper case.
inline std::string vnUpper(std::string_view text) {
    std::string upper(text);
    std::ranges::transform(upper, upper.begin(), [](char c) { return vnUpper(c); });
    return upper;
}

/// True for texts that differ in the case of their letters only.
constexpr bool vnEqualNoCase(std::string_view left, std::string_view right) noexcept {
    return std::ranges::equal(
        left, right, {}, [](char c) { return vnLower(c); }, [](char c) { return vnLower(c); });
}

} // namespace VN_SDAI
