#pragma once
#include <charconv>
#include <cmath>
#include <concepts>
#include <string>
#include <string_view>

namespace vnifc::detail {

/// JSON text in the making. Bytes that are no UTF-8 go through as they are: browsers decode them to U+FFFD.
class Json {
public:
    Json& begin(char bracket) {
        separate();
        m_text += bracket;
        m_isFirst = true;
        return *this;
    }
    Json& end(char bracket) {
        m_text += bracket;
        m_isFirst = false;
        return *this;
    }
    Json& key(std::string_view name) {
        put(name);
        m_text += ':';
        m_isFirst = true;
        return *this;
    }
    Json& put(std::string_view text) {
        separate();
        m_text += '"';
        for (const char c : text)
            character(c);
        m_text += '"';
        return *this;
    }
    template <std::integral T>
    Json& put(T number) {
        separate();
        append(number);
        return *this;
    }
    /// What is no number in JSON becomes null.
    Json& put(double number) {
        separate();
        if (std::isfinite(number))
            append(number);
        else
            m_text += "null";
        return *this;
    }
    Json& null() {
        separate();
        m_text += "null";
        return *this;
    }
    /// A value that is JSON already.
    Json& raw(std::string_view json) {
        separate();
        m_text += json;
        return *this;
    }
    std::string take() { return std::move(m_text); }

private:
    void separate() {
        if (!m_isFirst)
            m_text += ',';
        m_isFirst = false;
    }
    void character(char c) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            m_text += '\\';
            m_text += c;
        } else if (byte < ' ') {
            m_text += "\\u00";
            m_text += kDigits[byte >> 4];
            m_text += kDigits[byte & 15];
        } else {
            m_text += c;
        }
    }
    template <class T>
    void append(T number) {
        char buffer[40];
        const auto end = std::to_chars(buffer, buffer + sizeof buffer, number).ptr;
        m_text.append(buffer, end);
    }

    std::string m_text;
    bool m_isFirst = true;
};

} // namespace vnifc::detail
