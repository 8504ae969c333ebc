#include "JsonWriter.h"

#include <VnRx/VrString.h>

#include <charconv>
#include <cmath>
#include <string>

namespace vnifc::tool {

namespace {

template <class Number>
std::string_view shortest(Number value, char (&buffer)[32]) {
    return {buffer, static_cast<std::size_t>(std::to_chars(buffer, buffer + sizeof buffer, value).ptr - buffer)};
}

constexpr bool isPlain(char c) noexcept { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; }

} // namespace

void JsonWriter::number(std::uint64_t value) {
    char buffer[32];
    word(shortest(value, buffer));
}

void JsonWriter::number(std::int32_t value) {
    char buffer[32];
    word(shortest(value, buffer));
}

void JsonWriter::number(double value) {
    char buffer[32];
    word(std::isfinite(value) ? shortest(value, buffer) : "null");
}

void JsonWriter::string(std::string_view utf8) {
    separate();
    m_output.put('"');
    const char* next = utf8.data();
    const char* const end = next + utf8.size();
    while (next < end) {
        const char* const first = next;
        while (next < end && isPlain(*next))
            ++next;
        m_output.put({first, static_cast<std::size_t>(next - first)});
        if (next == end)
            break;
        if (static_cast<signed char>(*next) >= 0) {
            escaped(static_cast<unsigned char>(*next++));
            continue;
        }
        const char* const character = next;
        const bool isBroken = VrString::readCharacter(next, end) == VrString::kNoCharacter;
        m_output.put(isBroken ? "\xEF\xBF\xBD"
                              : std::string_view(character, static_cast<std::size_t>(next - character)));
    }
    m_output.put('"');
}

void JsonWriter::escaped(unsigned char character) {
    static constexpr char kDigits[] = "0123456789abcdef";
    switch (character) {
    case '"':
        return m_output.put("\\\"");
    case '\\':
        return m_output.put("\\\\");
    case '\n':
        return m_output.put("\\n");
    case '\r':
        return m_output.put("\\r");
    case '\t':
        return m_output.put("\\t");
    default:
        break;
    }
    m_output.put("\\u00");
    m_output.put(kDigits[character >> 4]);
    m_output.put(kDigits[character & 15]);
}

} // namespace vnifc::tool
