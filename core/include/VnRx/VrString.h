#pragma once
#include <VnRx/VnPlatform.h>

#include <compare>
#include <string>
#include <string_view>

/// The runtime's Unicode string, for text that people read. UTF-8 inside, always followed by a NUL; may contain NULs.
/// Bytes that are no valid UTF-8 are kept as they are, so that a text of unknown encoding passes through unharmed.
class VNRX_API VrString {
public:
    /// What readCharacter returns for bytes that are no UTF-8.
    static constexpr char32_t kNoCharacter = 0xFFFFFFFF;
    /// U+FFFD, which stands for what cannot be converted.
    static constexpr char32_t kReplacement = 0xFFFD;

    VrString() noexcept = default;
    /// Copies a NUL-terminated text of UTF-8; null gives the empty string.
    VrString(const char* utf8) : VrString(orEmpty(utf8)) {}
    /// Copies the bytes, whether they are valid UTF-8 or not.
    VrString(std::string_view utf8) : m_text(utf8) {}

    /// A surrogate without its partner becomes U+FFFD.
    static VrString fromUtf16(std::u16string_view text);
    /// What is no Unicode character (a surrogate, or past U+10FFFF) becomes U+FFFD.
    static VrString fromUtf32(std::u32string_view text);
    /// Bytes that are no valid UTF-8 become U+FFFD, one for each beginning of a character that is broken off.
    std::u16string toUtf16() const;
    /// As toUtf16.
    std::u32string toUtf32() const;

    /// Takes a NUL-terminated text of UTF-8; null gives the empty string.
    VrString& assign(const char* utf8) { return assign(orEmpty(utf8)); }
    /// Takes a copy of the bytes.
    VrString& assign(std::string_view utf8) {
        m_text.assign(utf8);
        return *this;
    }
    /// Adds a copy of the bytes, which must not stand in this string.
    VrString& append(std::string_view utf8) {
        m_text.append(utf8);
        return *this;
    }

    /// The bytes, NUL-terminated; valid until the string is changed.
    const char* constUtf8() const noexcept { return m_text.c_str(); }
    ///@{
    /// The bytes; valid until the string is changed or destroyed.
    std::string_view view() const noexcept { return m_text; }
    operator std::string_view() const noexcept { return m_text; }
    ///@}
    /// In bytes.
    std::size_t length() const noexcept { return m_text.size(); }
    /// True for a text without bytes.
    bool isEmpty() const noexcept { return m_text.empty(); }
    /// Makes the string empty.
    void clear() noexcept { m_text.clear(); }

    ///@{
    /// Compares bytes, without normalisation; a null pointer is equal to the empty string.
    friend bool operator==(const VrString& left, const VrString& right) noexcept = default;
    friend bool operator==(const VrString& left, std::string_view right) noexcept { return left.view() == right; }
    friend bool operator==(const VrString& left, const char* right) noexcept { return left.view() == orEmpty(right); }
    ///@}
    /// Order of the bytes, which for valid UTF-8 is the order of the characters' numbers.
    friend std::strong_ordering operator<=>(const VrString& left, const VrString& right) noexcept = default;

    /// Reads the character that begins at `next`, which must be before `end`, and moves `next` past it. Bytes that
    /// are no UTF-8 give kNoCharacter, and `next` moves over as many as could begin a character, at least one.
    static char32_t readCharacter(const char*& next, const char* end) noexcept;
    /// Appends a character in UTF-8; `character` must be a Unicode scalar value (see isCharacter).
    static void appendCharacter(std::string& utf8, char32_t character);
    /// True for the Unicode scalar values: up to U+10FFFF and no surrogate.
    static constexpr bool isCharacter(char32_t value) noexcept {
        return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
    }

private:
    static std::string_view orEmpty(const char* text) noexcept { return text ? std::string_view(text) : ""; }

    std::string m_text;
};
