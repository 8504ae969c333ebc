#pragma once
#include <VnIfcCore/VnAnsiString.h>

#include <array>
#include <compare>
#include <optional>

namespace VN_SDAI {

/// The 22-character text form of a globally unique identifier (ISO 16739, IfcGloballyUniqueId). Holds whatever a file
/// gives, up to 22 characters; isValid tells whether it is a true identifier. Default and unset: the one byte 0xFF.
class VNIFC_API VnIfcGUID {
public:
    /// Characters of an identifier.
    static constexpr std::size_t kLength = 22;
    /// The 128 bits, most significant byte first.
    using Bytes = std::array<std::uint8_t, 16>;

    constexpr VnIfcGUID() noexcept : m_text{'\xFF'}, m_length(1) {}
    /// Keeps at most the first 22 characters of the text.
    VnIfcGUID(std::string_view text) noexcept { assign(text); }
    /// As from a view; null gives the empty text.
    VnIfcGUID(const char* text) noexcept : VnIfcGUID(text ? std::string_view(text) : std::string_view()) {}

    /// The identifier of 128 bits, most significant byte first.
    static VnIfcGUID fromBytes(const Bytes& bytes) noexcept;
    /// A new random identifier (version 4, RFC 4122).
    static VnIfcGUID create();

    /// Keeps at most the first 22 bytes of the text.
    void assign(std::string_view text) noexcept;
    ///@{
    /// The text, NUL-terminated in memory; valid until the object is changed or destroyed.
    std::string_view view() const noexcept { return {m_text, m_length}; }
    const char* constStr() const noexcept { return m_text; }
    ///@}
    /// In bytes, at most kLength.
    std::uint32_t length() const noexcept { return m_length; }
    /// True for the one byte 0xFF, which stands for an unset attribute.
    bool isUnset() const noexcept { return m_length == 1 && m_text[0] == '\xFF'; }
    /// True for 22 characters of the identifier alphabet of which the first is 0 to 3.
    bool isValid() const noexcept;
    /// The 128 bits; nothing when the text is no valid identifier.
    std::optional<Bytes> toBytes() const noexcept;

    ///@{
    /// Compares the bytes of the texts; the case of letters counts.
    friend bool operator==(const VnIfcGUID& left, const VnIfcGUID& right) noexcept {
        return left.view() == right.view();
    }
    friend auto operator<=>(const VnIfcGUID& left, const VnIfcGUID& right) noexcept {
        return left.view() <=> right.view();
    }
    ///@}

private:
    char m_text[kLength + 1]{};
    std::uint8_t m_length = 0;
};

static_assert(sizeof(VnIfcGUID) == 24);

} // namespace VN_SDAI
