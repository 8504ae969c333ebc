#include "SpfStructure.h"

#include "SpfScan.h"

#include <algorithm>

namespace VN_SDAI {

namespace {

using namespace std::string_view_literals;

// How far into a text the beginning of an exchange structure is looked for when it does not begin with one.
constexpr std::ptrdiff_t kSearched = 64 * 1024;

bool startsWith(const char* p, const char* end, std::string_view word) noexcept {
    if (static_cast<std::size_t>(end - p) < word.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i) {
        const char c = p[i] >= 'a' && p[i] <= 'z' ? static_cast<char>(p[i] - 0x20) : p[i];
        if (c != word[i]) return false;
    }
    return true;
}

/// As startsWith, and the word ends there.
bool isWord(const char* p, const char* end, std::string_view word) noexcept {
    return startsWith(p, end, word) && !spf::isNameCharacter(p[word.size()]) && p[word.size()] != '-';
}

/// Behind "#123 =" if that is what stands at `p`, else null.
const char* instanceBegin(const char* p, const char* end) noexcept {
    if (*p != '#') return nullptr;
    const char* q = p + 1;
    while (spf::isDigit(*q)) ++q;
    if (q == p + 1) return nullptr;
    while (q < end && spf::isBlank(*q)) ++q;
    return q < end && *q == '=' ? q + 1 : nullptr;
}

/// The "#" of an instance that begins a line in (p, end); null when there is none.
const char* nextLineWithInstance(const char* p, const char* end) noexcept {
    while (p < end) {
        p = static_cast<const char*>(std::memchr(p, '#', static_cast<std::size_t>(end - p)));
        if (!p) return nullptr;
        const char* before = p - 1;
        while (*before == ' ' || *before == '\t') --before;
        if ((*before == '\n' || *before == '\r') && instanceBegin(p, end)) return p;
        ++p;
    }
    return nullptr;
}

/// The next character that decides where an instance ends, or `end`.
const char* findStructural(const char* p, const char* end) noexcept {
#if VN_SPF_SSE2
    const __m128i semicolon = _mm_set1_epi8(';'), apostrophe = _mm_set1_epi8('\'');
    const __m128i slash = _mm_set1_epi8('/'), equals = _mm_set1_epi8('=');
    for (; p < end; p += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i hits = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, semicolon), _mm_cmpeq_epi8(bytes, apostrophe)),
                                          _mm_or_si128(_mm_cmpeq_epi8(bytes, slash), _mm_cmpeq_epi8(bytes, equals)));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(hits));
        if (mask != 0) return std::min(p + std::countr_zero(mask), end);
    }
    return end;
#else
    while (p < end && *p != ';' && *p != '\'' && *p != '/' && *p != '=') ++p;
    return p;
#endif
}

class Scanner {
public:
    Scanner(SpfStructure& structure, const char* begin, const char* end) noexcept
        : m_structure(structure), m_p(begin), m_begin(begin), m_end(end) {}

    bool scan(std::string& reason) {
        if (!findBeginning(reason)) return false;
        scanHeader();
        while (scanSection()) {}
        return true;
    }

private:
    void report(SpfFinding::Kind kind, const char* begin, const char* end, std::uint64_t number = 0) {
        m_structure.findings.push_back({kind, begin, std::min(end, m_end), number});
    }

    /// Moves to the next significant character. A comment that is never closed counts as garbage of two characters,
    /// because taking it by the letter would lose the rest of the file.
    bool blank() {
        while (m_p < m_end) {
            if (spf::isBlank(*m_p)) {
                ++m_p;
            } else if (startsWith(m_p, m_end, "/*"sv)) {
                const char* behind = m_commentsEnd ? nullptr : spf::commentEnd(m_p, m_end);
                if (!behind) {
                    m_commentsEnd = true;
                    report(SpfFinding::kOpenComment, m_p, m_p + 2);
                    behind = m_p + 2;
                    const char* line = nextLineWithInstance(behind, m_end);
                    if (line) behind = line;
                }
                m_p = behind;
            } else {
                return true;
            }
        }
        return false;
    }

    bool findBeginning(std::string& reason) {
        if (m_end - m_p >= 2 && ((m_p[0] == '\xFF' && m_p[1] == '\xFE') || (m_p[0] == '\xFE' && m_p[1] == '\xFF') ||
                                 (m_p[0] == '\0') != (m_p[1] == '\0'))) {
            reason = "it is UTF-16 text; an exchange file is 8-bit text";
            return false;
        }
        if (m_end - m_p >= 3 && startsWith(m_p, m_end, "\xEF\xBB\xBF"sv)) m_p += 3;
        if (!blank()) {
            reason = "it is empty";
            return false;
        }
        if (startsWith(m_p, m_end, "ISO-10303-21"sv)) {
            m_p += 12;
            skipSemicolon();
            return true;
        }
        const char* const limit = m_p + std::min<std::ptrdiff_t>(m_end - m_p, kSearched);
        for (const char* p = m_p; p < limit; ++p) {
            const bool isMagic = startsWith(p, m_end, "ISO-10303-21"sv);
            const bool atWord = p == m_begin || !spf::isNameCharacter(p[-1]);
            if (!isMagic && !(atWord && (isWord(p, m_end, "HEADER"sv) || isWord(p, m_end, "DATA"sv)))) continue;
            report(SpfFinding::kNoMagic, m_p, p);
            m_p = isMagic ? p + 12 : p;
            if (isMagic) skipSemicolon();
            return true;
        }
        reason = "it does not begin with ISO-10303-21";
        return false;
    }

    void skipSemicolon() {
        if (blank() && *m_p == ';') ++m_p;
    }

    // ---- header

    void scanHeader() {
        if (!blank() || !isWord(m_p, m_end, "HEADER"sv)) {
            report(SpfFinding::kNoHeader, m_p, m_p + 20);
            return;
        }
        m_p += 6;
        skipSemicolon();
        while (blank() && !isWord(m_p, m_end, "ENDSEC"sv) && !isWord(m_p, m_end, "DATA"sv)) {
            if (!scanHeaderEntry()) return;
        }
        if (m_p < m_end && isWord(m_p, m_end, "ENDSEC"sv)) {
            m_p += 6;
            skipSemicolon();
        }
    }

    bool scanHeaderEntry() {
        const char* const first = m_p;
        while (spf::isNameCharacter(*m_p) || *m_p == '!') ++m_p;
        const std::string_view keyword(first, static_cast<std::size_t>(m_p - first));
        if (keyword.empty() || !blank() || *m_p != '(') {
            report(SpfFinding::kHeaderEntry, first, first + 40);
            // The data must not be lost to a broken header.
            const char* data = nextWord("DATA"sv, std::max(m_p, first + 1));
            m_p = data ? data : m_end;
            return data != nullptr;
        }
        const char* const open = m_p + 1;
        const char* close = spf::parameterEnd(open, m_end);
        while (close < m_end && *close == ',') close = spf::parameterEnd(close + 1, m_end);
        if (close == m_end) {
            report(SpfFinding::kHeaderEntry, first, first + 40);
            const char* data = nextWord("DATA"sv, open);
            m_p = data ? data : m_end;
            return data != nullptr;
        }
        m_structure.header.entries().push_back({std::string(keyword), std::string(open, close)});
        m_p = close + 1;
        if (blank() && *m_p == ';') ++m_p;
        else report(SpfFinding::kHeaderEntry, first, m_p);
        return true;
    }

    /// The word that stands at the beginning of a line, or null.
    const char* nextWord(std::string_view word, const char* from) const noexcept {
        for (const char* p = from; p < m_end; ++p) {
            p = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(m_end - p)));
            if (!p) return nullptr;
            if (isWord(p + 1, m_end, word)) return p + 1;
        }
        return nullptr;
    }

    // ---- sections

    /// One section, or what stands in its place; false at the end of the text.
    bool scanSection() {
        if (!blank()) {
            if (!m_ended) report(SpfFinding::kNoEnd, m_end, m_end);
            return false;
        }
        const char* const first = m_p;
        if (isWord(m_p, m_end, "DATA"sv)) {
            skipStatement();
            scanData();
        } else if (startsWith(m_p, m_end, "END-ISO-10303-21"sv)) {
            m_p += 16;
            skipSemicolon();
            return scanBehindEnd();
        } else if (isWord(m_p, m_end, "ANCHOR"sv) || isWord(m_p, m_end, "REFERENCE"sv) ||
                   isWord(m_p, m_end, "SIGNATURE"sv)) {
            skipSection();
            report(SpfFinding::kSection, first, m_p);
        } else if (*m_p == '#') {
            scanData();
        } else {
            skipGarbage();
        }
        return true;
    }

    /// Only the first exchange structure of a text counts, but instances of another one are not passed over in silence.
    bool scanBehindEnd() {
        m_ended = true;
        if (!blank()) return false;
        const bool another = std::search(m_p, m_end, kMagic.begin(), kMagic.end()) != m_end;
        report(another ? SpfFinding::kSecondStructure : SpfFinding::kGarbage, m_p, m_end);
        return false;
    }

    /// Moves behind the semicolon of the statement at hand.
    void skipStatement() {
        m_p = statementEnd(m_p);
        if (m_p < m_end) ++m_p;
    }

    const char* statementEnd(const char* p) const noexcept {
        while ((p = findStructural(p, m_end)) < m_end && *p != ';') {
            const char* behind = *p == '\'' ? spf::stringEnd(p, m_end)
                                 : startsWith(p, m_end, "/*"sv) ? spf::commentEnd(p, m_end)
                                                                : p + 1;
            p = behind ? behind : p + 1;
        }
        return p;
    }

    void skipSection() {
        while (m_p < m_end) {
            skipStatement();
            if (!blank()) return;
            if (isWord(m_p, m_end, "ENDSEC"sv)) return skipStatement();
            if (isWord(m_p, m_end, "DATA"sv) || startsWith(m_p, m_end, "END-ISO-10303-21"sv)) return;
        }
    }

    /// What is none of an instance, up to the next thing that may be one.
    void skipGarbage() {
        const char* const first = m_p;
        while (m_p < m_end && *m_p != ';' && *m_p != '#' && *m_p != '\n') ++m_p;
        if (m_p < m_end && *m_p != '#') ++m_p;
        if (m_p == first) ++m_p;
        report(SpfFinding::kGarbage, first, m_p);
    }

    // ---- instances

    void scanData() {
        while (blank()) {
            if (*m_p == '#') {
                scanInstance();
            } else if (isWord(m_p, m_end, "ENDSEC"sv)) {
                return skipStatement();
            } else if (isWord(m_p, m_end, "DATA"sv) || startsWith(m_p, m_end, "END-ISO-10303-21"sv)) {
                return;
            } else {
                skipGarbage();
            }
        }
    }

    void scanInstance() {
        const char* const first = m_p++;
        std::uint64_t number = 0;
        const bool hasNumber = spf::readNumber(m_p, number);
        if (!blank() || *m_p != '=') {
            skipGarbage();
            return report(SpfFinding::kNoNumber, first, m_p);
        }
        if (!hasNumber) report(SpfFinding::kNoNumber, first, m_p);
        ++m_p;
        blank();
        const char* const begin = m_p;
        const char* const end = *m_p == '&' ? scopeEnd(number) : instanceEnd(number);
        m_structure.add(hasNumber ? number : kNoNumber, begin, end);
    }

    /// A scope holds instances of its own (an early edition of the format); it is kept whole.
    const char* scopeEnd(std::uint64_t number) {
        report(SpfFinding::kScope, m_p, m_p + 6, number);
        while (m_p < m_end && !isWord(m_p, m_end, "ENDSCOPE"sv)) skipStatement(), blank();
        return instanceEnd(number);
    }

    /// The end of the instance's text; moves behind its semicolon.
    const char* instanceEnd(std::uint64_t number) {
        const char* p = m_p;
        while ((p = findStructural(p, m_end)) < m_end) {
            if (*p == ';') {
                m_p = p + 1;
                return p;
            }
            if (*p == '\'') {
                const char* behind = stringEndIn(p, number);
                if (!behind) return m_p;
                p = behind;
            } else if (*p == '=') {
                if (const char* other = startOf(p)) return resume(SpfFinding::kNoSemicolon, other, number);
                ++p;
            } else {
                p = p[1] == '*' ? commentEndIn(p) : p + 1;
            }
        }
        m_p = m_end;
        report(SpfFinding::kNoSemicolon, m_end, m_end, number);
        return m_end;
    }

    /// Behind the string at `open`; null when it is broken and the text was resumed at the next instance.
    const char* stringEndIn(const char* open, std::uint64_t number) {
        const char* behind = spf::stringEnd(open, m_end);
        if (behind) {
            const char* next = *behind == ',' || *behind == ')' ? behind : spf::skipBlanks(behind, m_end);
            if (next < m_end && (*next == ',' || *next == ')')) return behind;
        }
        // Not closed, or something else than a string follows its closing apostrophe: then the string may have swallowed
        // the next instance.
        const char* line = nextLineWithInstance(open, behind ? behind : m_end);
        if (!line && behind) return behind;
        resume(SpfFinding::kBrokenString, line ? line : m_end, number);
        return nullptr;
    }

    const char* commentEndIn(const char* p) {
        const char* behind = m_commentsEnd ? nullptr : spf::commentEnd(p, m_end);
        if (behind) return behind;
        if (!m_commentsEnd) report(SpfFinding::kOpenComment, p, p + 2);
        m_commentsEnd = true;
        return p + 2;
    }

    /// The "#" of the instance whose "=" is at `p`; null when it is none.
    const char* startOf(const char* p) const noexcept {
        const char* q = p;
        while (q > m_p && spf::isBlank(q[-1])) --q;
        const char* const digits = q;
        while (q > m_p && spf::isDigit(q[-1])) --q;
        return q < digits && q > m_p && q[-1] == '#' ? q - 1 : nullptr;
    }

    const char* resume(SpfFinding::Kind kind, const char* at, std::uint64_t number) {
        report(kind, at, at, number);
        m_p = at;
        while (at > m_begin && spf::isBlank(at[-1])) --at;
        return at;
    }

public:
    // Stands for "#" without a number that fits; the loader gives such instances a fresh one.
    static constexpr std::uint64_t kNoNumber = 0;

private:
    static constexpr std::string_view kMagic = "ISO-10303-21;";

    SpfStructure& m_structure;
    const char* m_p;
    const char* m_begin;
    const char* m_end;
    bool m_commentsEnd = false;  // a comment was never closed, so none behind it is
    bool m_ended = false;
};

}  // namespace

void SpfStructure::add(std::uint64_t number, const char* begin, const char* end) {
    const auto offset = static_cast<std::uint64_t>(begin - text);
    const auto length = static_cast<std::uint64_t>(end - begin);
    largestNumber = std::max(largestNumber, number);
    if (length < kLargeLength) {
        instances.push_back({number, length << kOffsetBits | offset});
    } else {
        instances.push_back({number, kLargeLength << kOffsetBits | large.size()});
        large.emplace_back(offset, length);
    }
}

bool SpfStructure::scan(const char* begin, const char* end, std::string& reason) {
    text = begin;
    // Room that is not used costs nothing, moving the records would.
    instances.reserve(static_cast<std::size_t>(end - begin) / 16 + 16);
    return Scanner(*this, begin, end).scan(reason);
}

}  // namespace VN_SDAI
