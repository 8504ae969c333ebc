#include <VnRx/VrString.h>

namespace {

using Byte = unsigned char;

constexpr bool isHighSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xD800; }
constexpr bool isLowSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xDC00; }

/// What the first byte of a character says: how many bytes follow it, and which values the next of them may have, so
/// that neither overlong forms nor surrogates nor numbers past U+10FFFF pass (RFC 3629, 4).
struct Lead {
    int following;
    Byte least, most;
};

constexpr Lead leadOf(Byte first) noexcept {
    if (first < 0xC2 || first > 0xF4)
        return {0, 0, 0};
    if (first < 0xE0)
        return {1, 0x80, 0xBF};
    if (first < 0xF0)
        return {2, Byte(first == 0xE0 ? 0xA0 : 0x80), Byte(first == 0xED ? 0x9F : 0xBF)};
    return {3, Byte(first == 0xF0 ? 0x90 : 0x80), Byte(first == 0xF4 ? 0x8F : 0xBF)};
}

} // namespace

char32_t VrString::readCharacter(const char*& next, const char* end) noexcept {
    const Byte first = static_cast<Byte>(*next++);
    if (first < 0x80)
        return first;
    Lead lead = leadOf(first);
    if (lead.following == 0)
        return kNoCharacter;
    char32_t character = first & (0x3F >> lead.following);
    for (; lead.following > 0; --lead.following) {
        const Byte byte = next < end ? static_cast<Byte>(*next) : Byte{0};
        if (byte < lead.least || byte > lead.most)
            return kNoCharacter;
        character = character << 6 | (byte & 0x3F);
        lead.least = 0x80;
        lead.most = 0xBF;
        ++next;
    }
    return character;
}

void VrString::appendCharacter(std::string& utf8, char32_t character) {
    if (character < 0x80) {
        utf8 += static_cast<char>(character);
        return;
    }
    const int following = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    utf8 += static_cast<char>((0xFF00 >> (following + 1) & 0xFF) | character >> 6 * following);
    for (int i = following - 1; i >= 0; --i)
        utf8 += static_cast<char>(0x80 | (character >> 6 * i & 0x3F));
}

VrString VrString::fromUtf16(std::u16string_view text) {
    VrString result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t character = text[i];
        if (isHighSurrogate(text[i]) && i + 1 < text.size() && isLowSurrogate(text[i + 1]))
            character = 0x10000 + ((character & 0x3FF) << 10 | (text[++i] & 0x3FF));
        appendCharacter(result.m_text, isCharacter(character) ? character : kReplacement);
    }
    return result;
}

VrString VrString::fromUtf32(std::u32string_view text) {
    VrString result;
    for (const char32_t character : text)
        appendCharacter(result.m_text, isCharacter(character) ? character : kReplacement);
    return result;
}

std::u16string VrString::toUtf16() const {
    std::u16string result;
    for (const char32_t character : toUtf32()) {
        if (character >= 0x10000) {
            result += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
            result += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
        } else {
            result += static_cast<char16_t>(character);
        }
    }
    return result;
}

std::u32string VrString::toUtf32() const {
    std::u32string result;
    const char* const end = m_text.data() + m_text.size();
    for (const char* next = m_text.data(); next < end;) {
        const char32_t character = readCharacter(next, end);
        result += character == kNoCharacter ? kReplacement : character;
    }
    return result;
}
