#pragma once
// The characters of the exchange structure (ISO 10303-21, 5 to 7), for every part that looks at them. kVnSpfPadding
// NULs follow what they look at.
#include <VnIfcCore/VnSpfText.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define VN_SPF_SSE2 1
#endif

namespace VN_SDAI::spf {

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
constexpr bool isLetter(char c) noexcept { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }
constexpr bool isNameCharacter(char c) noexcept { return isLetter(c) || isDigit(c); }
constexpr bool isBlank(char c) noexcept { return static_cast<unsigned char>(c) <= ' '; }

/// Length of the directive or escaped backslash that begins at the backslash `at` (ISO 10303-21, 6.4.3): `\\`, `\S\`
/// with the character that follows, `\P?\`, `\X0\`, `\X2\`, `\X4\`. Taken whole, so that neither an apostrophe that
/// belongs to a directive nor two backslashes of adjacent ones are mistaken. 1 for all else.
inline std::size_t backslashLength(const char* at, const char* end) noexcept {
    if (end - at >= 2 && at[1] == '\\')
        return 2;
    if (end - at < 4)
        return 1;
    if (at[1] == 'S' && at[2] == '\\')
        return 4;
    if (at[3] != '\\')
        return 1;
    const bool isPage = at[1] == 'P' && at[2] >= 'A' && at[2] <= 'Z';
    const bool isWide = at[1] == 'X' && (at[2] == '0' || at[2] == '2' || at[2] == '4');
    return isPage || isWide ? 4 : 1;
}

/// The first apostrophe or backslash, or `end`.
inline const char* findInString(const char* p, const char* end) noexcept {
#if VN_SPF_SSE2
    const __m128i apostrophe = _mm_set1_epi8('\'');
    const __m128i backslash = _mm_set1_epi8('\\');
    while (p < end) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i hits = _mm_or_si128(_mm_cmpeq_epi8(bytes, apostrophe), _mm_cmpeq_epi8(bytes, backslash));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(hits));
        if (mask != 0) {
            p += std::countr_zero(mask);
            return p < end ? p : end;
        }
        p += 16;
    }
    return end;
#else
    while (p < end && *p != '\'' && *p != '\\')
        ++p;
    return p;
#endif
}

/// The first CR or LF, or `end`.
inline const char* findLineEnd(const char* p, const char* end) noexcept {
#if VN_SPF_SSE2
    const __m128i lf = _mm_set1_epi8('\n');
    const __m128i cr = _mm_set1_epi8('\r');
    for (; p < end; p += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const auto mask = static_cast<unsigned>(
            _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(bytes, lf), _mm_cmpeq_epi8(bytes, cr))));
        if (mask == 0)
            continue;
        p += std::countr_zero(mask);
        return p < end ? p : end;
    }
    return end;
#else
    while (p < end && *p != '\n' && *p != '\r')
        ++p;
    return p;
#endif
}

/// The place past the closing apostrophe of the string whose opening one is at `open`; null when it is not closed
/// before `end`.
inline const char* stringEnd(const char* open, const char* end) noexcept {
    const char* p = open + 1;
    while ((p = findInString(p, end)) < end)
        if (*p == '\\')
            p += backslashLength(p, end);
        else if (p + 1 < end && p[1] == '\'')
            p += 2;
        else
            return p + 1;
    return nullptr;
}

/// The place past the comment that begins at `p`; null when it is not closed before `end`.
inline const char* commentEnd(const char* p, const char* end) noexcept {
    for (p += 2; p + 1 < end; ++p) {
        p = static_cast<const char*>(std::memchr(p, '*', static_cast<std::size_t>(end - p - 1)));
        if (!p)
            return nullptr;
        if (p[1] == '/')
            return p + 2;
    }
    return nullptr;
}

/// The next character that is neither blank nor in a comment; `end` when there is none.
inline const char* skipBlanks(const char* p, const char* end) noexcept {
    while (p < end) {
        if (isBlank(*p)) {
            ++p;
        } else if (*p == '/' && p + 1 < end && p[1] == '*') {
            p = commentEnd(p, end);
            if (!p)
                return end;
        } else {
            return p;
        }
    }
    return end;
}

/// The comma or closing parenthesis that ends the parameter beginning at `p`, or `end`.
inline const char* parameterEnd(const char* p, const char* end) noexcept {
    for (std::uint64_t depth = 0; (p = skipBlanks(p, end)) < end; ++p) {
        if (*p == '\'') {
            const char* behind = stringEnd(p, end);
            if (!behind)
                return end;
            p = behind - 1;
        } else if (*p == '(') {
            ++depth;
        } else if (*p == ')') {
            if (depth-- == 0)
                return p;
        } else if (*p == ',' && depth == 0) {
            return p;
        }
    }
    return end;
}

/// The closing parenthesis of the list whose first parameter begins at `p`, or `end`.
inline const char* listEnd(const char* p, const char* end) noexcept {
    p = parameterEnd(p, end);
    while (p < end && *p == ',')
        p = parameterEnd(p + 1, end);
    return p;
}

/// A text with what it takes to close the string, the comment and the lists that are open at its end, so that it can
/// stand among others. Behind `text` there must be padding.
inline std::string closed(std::string_view text) {
    const char* p = text.data();
    const char* const end = p + text.size();
    std::string closing;
    std::size_t depth = 0;
    while (p < end) {
        const char* behind = p + 1;
        if (*p == '\'') {
            behind = stringEnd(p, end);
            if (!behind)
                closing = "'";
        } else if (*p == '/' && p + 1 < end && p[1] == '*') {
            behind = commentEnd(p, end);
            if (!behind)
                closing = "*/";
        } else if (*p == '(') {
            ++depth;
        } else if (*p == ')' && depth > 0) {
            --depth;
        }
        if (!behind)
            break;
        p = behind;
    }
    std::string result = std::string(text) + closing;
    if (closing == "'") {
        // A directive at the end takes the apostrophe as its own.
        const VnSpfText again(result.substr(static_cast<std::size_t>(p - text.data())));
        if (!stringEnd(again.begin(), again.end()))
            result += '\'';
    }
    return result.append(depth, ')');
}

/// Reads an instance number; moves `p` past its digits. False when it has no digit or exceeds 64 bits.
inline bool readNumber(const char*& p, std::uint64_t& number) noexcept {
    const char* first = p;
    std::uint64_t value = 0;
    bool fits = true;
    for (; isDigit(*p); ++p) {
        const auto digit = static_cast<std::uint64_t>(*p - '0');
        if (p - first >= 19 && (value > UINT64_MAX / 10 || value * 10 > UINT64_MAX - digit))
            fits = false;
        value = value * 10 + digit;
    }
    number = value;
    return fits && p != first;
}

/// Calls `visit(first, last, number)` for each reference in a text. Behind `text` there must be padding.
template <class Visit>
void forEachReference(std::string_view text, Visit visit) {
    const char* p = text.data();
    const char* const end = p + text.size();
    while ((p = skipBlanks(p, end)) < end) {
        const char* const first = p++;
        std::uint64_t number = 0;
        if (*first == '\'') {
            const char* const behind = stringEnd(first, end);
            p = behind ? behind : end;
        } else if (*first == '#' && readNumber(p, number)) {
            visit(first, p, number);
        }
    }
}

} // namespace VN_SDAI::spf
