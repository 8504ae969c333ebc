#pragma once
#include <vnifc/Error.h>

#include <string>
#include <string_view>

namespace vnifc::detail {

/// Position in the text of a selector.
class Scanner {
public:
    explicit Scanner(std::string_view text, std::size_t position = 0) noexcept : m_text(text), m_position(position) {}

    std::size_t position() const noexcept { return m_position; }
    std::size_t column() const noexcept { return m_position + 1; }
    bool atEnd() const noexcept { return m_position >= m_text.size(); }
    /// NUL at the end.
    char peek() const noexcept { return atEnd() ? '\0' : m_text[m_position]; }
    std::string_view rest() const noexcept { return m_text.substr(m_position); }
    void skip(std::size_t count) noexcept { m_position += count; }
    void skipBlanks() noexcept {
        while (!atEnd() && (peek() == ' ' || peek() == '\t' || peek() == '\n' || peek() == '\r'))
            ++m_position;
    }
    bool take(std::string_view text) noexcept {
        if (!rest().starts_with(text))
            return false;
        m_position += text.size();
        return true;
    }
    /// What stands between two of these characters, of which the first is next; a backslash before that character, or
    /// before itself where `escapesItself`, goes away.
    std::string enclosed(char limit, bool escapesItself) {
        const std::size_t start = m_position++;
        std::string text;
        for (; !atEnd(); ++m_position) {
            if (peek() == limit) {
                ++m_position;
                return text;
            }
            const bool isEscape =
                peek() == '\\' && m_position + 1 < m_text.size() &&
                (m_text[m_position + 1] == limit || (escapesItself && m_text[m_position + 1] == '\\'));
            if (isEscape)
                ++m_position;
            text += peek();
            // A pattern keeps what it escapes, also a backslash before its end.
            if (!isEscape && peek() == '\\' && !escapesItself && m_position + 1 < m_text.size())
                text += m_text[++m_position];
        }
        throw SelectorError(start + 1, std::string(m_text.substr(start)), std::string("a closing ") + limit);
    }
    [[noreturn]] void refuse(std::string expected) const { refuseAt(m_position, std::move(expected)); }
    [[noreturn]] void refuseAt(std::size_t position, std::string expected) const {
        const std::string_view rest = m_text.substr(position);
        throw SelectorError(position + 1, rest.empty() ? "the end" : std::string(rest.substr(0, kShown)),
                            std::move(expected));
    }

private:
    static constexpr std::size_t kShown = 40;

    std::string_view m_text;
    std::size_t m_position;
};

} // namespace vnifc::detail
