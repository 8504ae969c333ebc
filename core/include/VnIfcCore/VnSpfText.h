#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace VN_SDAI {

/// So many NULs, which are no part of it, must follow every text that is read as exchange structure: whole vectors are
/// read, up to the end of the one that holds the last byte.
inline constexpr std::size_t kVnSpfPadding = 64;

/// A copy of a text that they follow.
class VnSpfText {
public:
    ///@{
    /// Holds a copy of the text.
    explicit VnSpfText(std::string text) : m_text(std::move(text)), m_length(m_text.size()) {
        m_text.append(kVnSpfPadding, '\0');
    }
    explicit VnSpfText(std::string_view text) : VnSpfText(std::string(text)) {}
    ///@}

    ///@{
    /// Valid as long as the object lives and is not moved; NULs follow.
    const char* begin() const noexcept { return m_text.data(); }
    const char* end() const noexcept { return m_text.data() + m_length; }
    ///@}
    /// The text without the NULs; valid as begin() is.
    std::string_view view() const noexcept { return {m_text.data(), m_length}; }

private:
    std::string m_text;
    std::size_t m_length;
};

} // namespace VN_SDAI
