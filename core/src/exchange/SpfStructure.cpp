#include "SpfStructure.h"

#include "SpfScan.h"
#include "WorkSharing.h"

#include <algorithm>

namespace VN_SDAI {

namespace {

using namespace std::string_view_literals;

// How far into a text the beginning of an exchange structure is looked for when it does not begin with one.
constexpr std::ptrdiff_t kSearched = 64 * 1024;

// Text that one thread looks through at a time: small enough that all end together, and that little is lost when a
// fault makes the rest of it be looked through again.
constexpr std::size_t kPiece = 1024 * 1024;

bool startsWith(const char* p, const char* end, std::string_view word) noexcept {
    if (static_cast<std::size_t>(end - p) < word.size())
        return false;
    for (std::size_t i = 0; i < word.size(); ++i) {
        const char c = p[i] >= 'a' && p[i] <= 'z' ? static_cast<char>(p[i] - 0x20) : p[i];
        if (c != word[i])
            return false;
    }
    return true;
}

/// As startsWith, and the word ends there.
bool isWord(const char* p, const char* end, std::string_view word) noexcept {
    return startsWith(p, end, word) && !spf::isNameCharacter(p[word.size()]) && p[word.size()] != '-';
}

/// Behind "#123 =" if that is what stands at `p`, else null.
const char* instanceBegin(const char* p, const char* end) noexcept {
    if (*p != '#')
        return nullptr;
    const char* q = p + 1;
    while (spf::isDigit(*q))
        ++q;
    if (q == p + 1)
        return nullptr;
    while (q < end && spf::isBlank(*q))
        ++q;
    return q < end && *q == '=' ? q + 1 : nullptr;
}

/// The first line in (p, end) that begins with an instance or with the end of the section; null when there is none.
const char* nextLine(const char* p, const char* end) noexcept {
    while ((p = spf::findLineEnd(p, end)) < end) {
        while (p < end && spf::isBlank(*p))
            ++p;
        if (p < end && (instanceBegin(p, end) || isWord(p, end, "ENDSEC"sv)))
            return p;
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
        const __m128i hits =
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, semicolon), _mm_cmpeq_epi8(bytes, apostrophe)),
                         _mm_or_si128(_mm_cmpeq_epi8(bytes, slash), _mm_cmpeq_epi8(bytes, equals)));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(hits));
        if (mask != 0)
            return std::min(p + std::countr_zero(mask), end);
    }
    return end;
#else
    while (p < end && *p != ';' && *p != '\'' && *p != '/' && *p != '=')
        ++p;
    return p;
#endif
}

/// The first "#123=" in [p, limit) that seems to begin an instance, because a semicolon or a comment comes before it;
/// null when there is none.
const char* findInstance(const char* p, const char* limit, const char* end) noexcept {
    for (; p < limit; ++p) {
        p = static_cast<const char*>(std::memchr(p, '#', static_cast<std::size_t>(limit - p)));
        if (!p)
            return nullptr;
        if (!instanceBegin(p, end))
            continue;
        const char* before = p - 1; // a header stands before every piece
        while (spf::isBlank(*before))
            --before;
        if (*before == ';' || *before == '/')
            return p;
    }
    return nullptr;
}

/// Instances that were found from a place on where one seems to begin, all of them without a fault. They count if the
/// search that began at the beginning of the text comes there, too.
struct Piece {
    const char* begin = nullptr; ///< the "#" of the first one; null when there is none
    const char* end = nullptr;   ///< past the last one
    SpfStructure found;
    // The first record that is not known to lie before the place where the search is.
    std::size_t block = 0;
    const SpfInstance* record = nullptr;
};

class Scanner {
public:
    Scanner(SpfStructure& structure, SpfRecords& records, const char* begin, const char* end) noexcept
        : m_structure(structure), m_records(records), m_p(begin), m_begin(begin), m_end(end) {}

    bool canBegin() {
        while (m_p < m_end && spf::isBlank(*m_p))
            ++m_p;
        std::string reason;
        return startsWith(m_p, m_end, "/*"sv) || findBeginning(reason); // a comment may end later
    }

    bool scan(std::string& reason, SpfAllRecords& allRecords, const SpfSharing& sharing) {
        if (!findBeginning(reason))
            return false;
        scanHeader();
        scanPieces(allRecords, sharing);
        while (scanSection()) {
        }
        takeRecords();
        return true;
    }

private:
    // ---- pieces

    /// Looks for instances in all pieces of the rest of the text at once, each as if what comes before it had no fault.
    void scanPieces(SpfAllRecords& allRecords, const SpfSharing& sharing) {
        const std::size_t size = sharing.piece ? sharing.piece : kPiece;
        const auto rest = static_cast<std::size_t>(m_end - m_p);
        if (rest <= size)
            return;
        m_pieces = std::vector<Piece>((rest - 1) / size + 1);
        const unsigned threads = threadsFor(sharing.threads, m_pieces.size());
        while (allRecords.size() < threads)
            allRecords.push_back(std::make_unique<SpfRecords>(static_cast<std::size_t>(m_end - m_begin)));
        const char* const first = m_p;
        shareWork(m_pieces.size(), threads, {}, [&](unsigned worker, std::size_t i) {
            const char* const begin = first + i * size;
            const char* const limit = first + std::min(rest, (i + 1) * size);
            // What the last instance may reach into is bounded, so that no fault makes many look at the same text.
            const char* const end = first + std::min(rest, (i + 2) * size);
            m_pieces[i].begin = findInstance(begin, limit, m_end);
            if (m_pieces[i].begin) {
                m_pieces[i].found.text = m_begin;
                Scanner(m_pieces[i].found, *allRecords[worker], m_begin, end).scanPiece(m_pieces[i], limit);
            }
            return true;
        });
    }

    /// Instances up to the first one that begins at `limit` or later, or to something that is to be reported.
    void scanPiece(Piece& piece, const char* limit) {
        m_p = piece.begin;
        std::size_t count = 0;
        while (m_p < limit) {
            const char* const before = m_p;
            const std::size_t added = m_added;
            if (skipToText() && *m_p == '#' && m_p < limit)
                scanInstance();
            const bool isClean = m_added > added && m_structure.findings.empty();
            if (isClean) {
                ++count;
                continue;
            }
            if (m_added > added)
                m_records.dropLast();
            m_p = before;
            break;
        }
        m_structure.findings.clear();
        takeRecords();
        piece.end = m_p;
        if (count == 0)
            piece.begin = nullptr;
        else
            piece.record = m_structure.blocks.front().begin();
    }

    /// Takes the instances of a piece from the place at hand on, if one of them begins there: what follows an instance
    /// does not depend on what comes before it, as long as no fault is remembered.
    bool takePiece() {
        if (m_commentsEnd || !maySearchAgain())
            return false;
        while (m_piece < m_pieces.size() && (!m_pieces[m_piece].begin || m_pieces[m_piece].end <= m_p))
            m_pieces[m_piece++] = {};
        if (m_piece == m_pieces.size() || m_p < m_pieces[m_piece].begin)
            return false;
        Piece& piece = m_pieces[m_piece];
        if (m_p > piece.begin && !isInstanceOf(piece))
            return false;
        auto& blocks = piece.found.blocks;
        blocks.erase(blocks.begin(), blocks.begin() + static_cast<std::ptrdiff_t>(piece.block));
        blocks.front().first += piece.record - blocks.front().first;
        takeRecords();
        m_structure.take(std::move(piece.found));
        m_p = piece.end;
        return true;
    }

    /// True when the piece has the instance that begins at hand; it is its first one then.
    bool isInstanceOf(Piece& piece) const noexcept {
        const char* begin = instanceBegin(m_p, m_end);
        if (!begin)
            return false;
        begin = spf::skipBlanks(begin, m_end);
        const char* p = m_p + 1;
        std::uint64_t number = 0;
        const bool isNumber = spf::readNumber(p, number);
        const std::vector<SpfRecords::Block>& blocks = piece.found.blocks;
        while (piece.found.textOf(*piece.record).data() < begin) {
            if (++piece.record < blocks[piece.block].end())
                continue;
            if (piece.block + 1 == blocks.size()) {
                --piece.record;
                return false;
            }
            piece.record = blocks[++piece.block].begin();
        }
        return isNumber && piece.record->number == number && piece.found.textOf(*piece.record).data() == begin;
    }

    void takeRecords() {
        for (const SpfRecords::Block& block : m_records.takeBlocks())
            if (block.size() > 0)
                m_structure.blocks.push_back(block);
    }

    void report(SpfFinding::Kind kind, const char* begin, const char* end, std::uint64_t number = 0) {
        std::vector<SpfFinding>& findings = m_structure.findings;
        end = std::min(end, m_end);
        const bool extendsLast = kind == SpfFinding::kGarbage && !findings.empty() && findings.back().kind == kind &&
                                 spf::skipBlanks(findings.back().end, begin) == begin;
        if (extendsLast)
            findings.back().end = end;
        else
            findings.push_back({kind, begin, end, number});
    }

    /// Moves to the next significant character; false at the end of the text.
    bool skipToText() {
        while (m_p < m_end) {
            if (spf::isBlank(*m_p)) {
                ++m_p;
            } else if (startsWith(m_p, m_end, "/*"sv)) {
                m_p = commentEndIn(m_p);
                const char* line = m_commentsEnd ? nextLineFrom(m_p) : nullptr;
                if (line)
                    m_p = line;
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
        if (m_end - m_p >= 3 && startsWith(m_p, m_end, "\xEF\xBB\xBF"sv))
            m_p += 3;
        if (!skipToText()) {
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
            if (!isMagic && !(atWord && (isWord(p, m_end, "HEADER"sv) || isWord(p, m_end, "DATA"sv))))
                continue;
            report(SpfFinding::kNoMagic, m_p, p);
            m_p = isMagic ? p + 12 : p;
            if (isMagic)
                skipSemicolon();
            return true;
        }
        reason = "it does not begin with ISO-10303-21";
        return false;
    }

    void skipSemicolon() {
        if (skipToText() && *m_p == ';')
            ++m_p;
    }

    // ---- header

    void scanHeader() {
        if (!skipToText() || !isWord(m_p, m_end, "HEADER"sv)) {
            report(SpfFinding::kNoHeader, m_p, m_p + 20);
            return;
        }
        m_p += 6;
        skipSemicolon();
        while (skipToText() && *m_p != '#' && !isWord(m_p, m_end, "ENDSEC"sv) && !isWord(m_p, m_end, "DATA"sv))
            scanHeaderEntry();
        if (m_p < m_end && isWord(m_p, m_end, "ENDSEC"sv))
            skipSectionWord(6);
    }

    void scanHeaderEntry() {
        const char* const first = m_p;
        while (spf::isNameCharacter(*m_p) || *m_p == '!')
            ++m_p;
        const std::string_view keyword(first, static_cast<std::size_t>(m_p - first));
        if (keyword.empty() || !skipToText() || *m_p != '(')
            return leaveHeader(first);
        const char* const open = m_p + 1;
        const char* const close = spf::listEnd(open, m_end);
        // A string that is not closed swallows what follows, up to an apostrophe anywhere in the data.
        if (close == m_end || nextLine(open, close))
            return leaveHeader(first);
        m_structure.header.entries().push_back({std::string(keyword), std::string(open, close)});
        m_p = close + 1;
        if (skipToText() && *m_p == ';')
            ++m_p;
        else
            report(SpfFinding::kHeaderEntry, first, m_p);
    }

    /// The data must not be lost to a broken header.
    void leaveHeader(const char* first) {
        report(SpfFinding::kHeaderEntry, first, first + 40);
        m_p = std::max(m_p, first + 1);
        const char* const line = nextLineFrom(m_p);
        m_p = line ? line : m_end;
    }

    // ---- sections

    /// One section, or what stands in its place; false at the end of the text.
    bool scanSection() {
        if (!skipToText()) {
            if (!m_ended)
                report(SpfFinding::kNoEnd, m_end, m_end);
            return false;
        }
        const char* const first = m_p;
        if (isWord(m_p, m_end, "DATA"sv)) {
            const char* const open = spf::skipBlanks(m_p + 4, m_end);
            const bool hasParameters = open < m_end && *open == '(';
            skipSectionWord(4);
            if (m_hasData || hasParameters)
                report(SpfFinding::kDataSection, first, hasParameters ? m_p : first + 4);
            m_hasData = true;
            scanData();
        } else if (startsWith(m_p, m_end, "END-ISO-10303-21"sv)) {
            m_p += 16;
            skipSemicolon();
            return scanBehindEnd();
        } else if (isWord(m_p, m_end, "ANCHOR"sv) || isWord(m_p, m_end, "REFERENCE"sv) ||
                   isWord(m_p, m_end, "SIGNATURE"sv)) {
            skipSection();
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
        while (skipToText() && isWord(m_p, m_end, "SIGNATURE"sv))
            skipSection(); // edition 3 has it there
        if (m_p >= m_end)
            return false;
        const bool another = std::search(m_p, m_end, kMagic.begin(), kMagic.end()) != m_end;
        report(another ? SpfFinding::kSecondStructure : SpfFinding::kGarbage, m_p, m_end);
        return false;
    }

    /// Moves past the word that opens or ends a section, its parameters (edition 3) and its semicolon.
    void skipSectionWord(std::ptrdiff_t length) {
        m_p += length;
        const char* const behind = m_p;
        if (skipToText() && *m_p == '(') {
            const char* const end = statementEnd(m_p);
            const char* const line = nextLine(m_p, end);
            m_p = line ? line : end;
        }
        if (m_p < m_end && *m_p == ';')
            ++m_p;
        else
            report(SpfFinding::kNoSemicolon, behind, behind);
    }

    /// Moves past the semicolon of the statement at hand.
    void skipStatement() {
        m_p = statementEnd(m_p);
        if (m_p < m_end)
            ++m_p;
    }

    const char* statementEnd(const char* p) {
        while ((p = findStructural(p, m_end)) < m_end && *p != ';') {
            const char* behind = *p == '\'' ? stringEnd(p) : startsWith(p, m_end, "/*"sv) ? commentEndIn(p) : p + 1;
            p = behind ? behind : p + 1;
        }
        return p;
    }

    /// Leaves out a section that is neither the header nor data.
    void skipSection() {
        const char* const first = m_p;
        while (m_p < m_end) {
            const char* const end = statementEnd(m_p);
            const bool ends = end < m_end && endsSection(end); // a signature has no semicolons of its own
            m_p = end < m_end ? end + 1 : end;
            if (ends || !skipToText())
                break;
            if (isWord(m_p, m_end, "ENDSEC"sv)) {
                skipSectionWord(6);
                break;
            }
            if (isWord(m_p, m_end, "DATA"sv) || startsWith(m_p, m_end, "END-ISO-10303-21"sv))
                break;
        }
        report(SpfFinding::kSection, first, m_p);
    }

    /// What is none of an instance, up to the next thing that may be one.
    void skipGarbage() {
        const char* const first = m_p;
        while (m_p < m_end && *m_p != ';' && *m_p != '#' && *m_p != '\n')
            ++m_p;
        if (m_p < m_end && *m_p == ';')
            ++m_p;
        report(SpfFinding::kGarbage, first, m_p);
    }

    // ---- instances

    void scanData() {
        while (skipToText()) {
            if (*m_p == '#') {
                if (!takePiece())
                    scanInstance();
            } else if (isWord(m_p, m_end, "ENDSEC"sv)) {
                return skipSectionWord(6);
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
        const bool hasNumber = spf::readNumber(m_p, number) && number != 0;
        if (!skipToText() || *m_p != '=')
            return report(SpfFinding::kGarbage, first, m_p);
        if (!hasNumber)
            report(SpfFinding::kNoNumber, first, m_p);
        ++m_p;
        skipToText();
        const char* const begin = m_p;
        const char* const end = isWord(m_p, m_end, "&SCOPE"sv) ? scopeEnd(number) : instanceEnd(number);
        // Where the instance is missing altogether, the blanks before the next one are none of it.
        m_structure.add(m_records, hasNumber ? number : kNoNumber, begin, std::max(begin, end));
        ++m_added;
    }

    /// A scope holds instances of its own, with scopes of their own (an early edition of the format); it is kept whole.
    const char* scopeEnd(std::uint64_t number) {
        report(SpfFinding::kScope, m_p, m_p + 6, number);
        const char* const begin = m_p;
        for (std::uint64_t depth = 0; !m_scopesEnd;) {
            if (isWord(m_p, m_end, "ENDSCOPE"sv)) {
                m_p += 8;
                if (--depth == 0)
                    return instanceEnd(number);
                skipStatement();
            } else if (isWord(m_p, m_end, "&SCOPE"sv)) {
                m_p += 6;
                ++depth;
            } else if (const char* const inner = instanceBegin(m_p, m_end)) {
                m_p = inner;
            } else {
                skipStatement();
            }
            m_scopesEnd = !skipToText() || isWord(m_p, m_end, "ENDSEC"sv);
        }
        m_p = begin;
        return instanceEnd(number);
    }

    /// The end of the instance's text; moves past its semicolon.
    const char* instanceEnd(std::uint64_t number) {
        const char* p = m_p;
        while ((p = findStructural(p, m_end)) < m_end) {
            if (*p == ';') {
                if (endsSection(p))
                    return resume(p - 6, number);
                m_p = p + 1;
                return p;
            }
            if (*p == '\'') {
                const char* behind = stringEndIn(p);
                if (!behind)
                    return brokenString(p, number);
                p = behind;
            } else if (*p == '=') {
                if (const char* other = startOf(p))
                    return resume(other, number);
                ++p;
            } else {
                p = p[1] == '*' ? commentEndIn(p) : p + 1;
            }
        }
        return resume(m_end, number);
    }

    /// True when the semicolon at `p` is the one of the section's end, which a missing semicolon made part of an
    /// instance.
    bool endsSection(const char* p) const noexcept {
        return (p[-1] == 'C' || p[-1] == 'c') && p - m_p > 6 && spf::isBlank(p[-7]) &&
               startsWith(p - 6, m_end, "ENDSEC"sv);
    }

    /// The place past the string at `open`; null when it is broken: not closed, or what follows is nothing that can
    /// follow a string, and there is an instance inside that it may have swallowed.
    const char* stringEndIn(const char* open) {
        const char* const behind = stringEnd(open);
        if (!behind)
            return nullptr;
        const char* next = behind;
        while (next < m_end && (spf::isBlank(*next) || startsWith(next, m_end, "/*"sv)))
            next = spf::isBlank(*next) ? next + 1 : commentEndIn(next);
        if (next < m_end && (*next == ',' || *next == ')'))
            return behind;
        if (!nextLine(open, behind))
            return behind;
        m_searched += behind - open;
        return nullptr;
    }

    /// The place past the string at `open`; null when it is not closed. What was searched without success may be
    /// searched again, so a hostile text that makes it too much gets no more than a glance.
    const char* stringEnd(const char* open) {
        const char* const limit = maySearchAgain() ? m_end : std::min(m_end, open + kGlance);
        const char* const behind = spf::stringEnd(open, limit);
        if (!behind)
            m_searched += limit - open;
        return behind;
    }

    bool maySearchAgain() const noexcept { return m_searched <= kMostSearched * (m_end - m_begin); }

    /// Ends the instance before the next line that seems to be none of the string at `open`.
    const char* brokenString(const char* open, std::uint64_t number) {
        const char* const line = nextLineFrom(open);
        m_p = line ? line : m_end;
        const char* const end = trimmed(m_p);
        report(SpfFinding::kBrokenString, open, end, number);
        return end;
    }

    /// Ends the instance, which has no semicolon, where the next one begins.
    const char* resume(const char* at, std::uint64_t number) {
        m_p = at;
        const char* const end = trimmed(at);
        report(SpfFinding::kNoSemicolon, end, end, number);
        return end;
    }

    const char* trimmed(const char* end) const noexcept {
        while (end > m_begin && spf::isBlank(end[-1]))
            --end;
        return end;
    }

    /// As nextLine up to the end of the text, which is searched without success only once.
    const char* nextLineFrom(const char* p) {
        if (m_noLineFrom && p >= m_noLineFrom)
            return nullptr;
        const char* const line = nextLine(p, m_end);
        if (!line)
            m_noLineFrom = p;
        return line;
    }

    /// The place past the comment at `p`. The mark of one that is never closed counts as two characters of garbage,
    /// because taking it by the letter would lose the rest of the file.
    const char* commentEndIn(const char* p) {
        const char* behind = m_commentsEnd ? nullptr : spf::commentEnd(p, m_end);
        if (behind)
            return behind;
        if (!m_commentsEnd)
            report(SpfFinding::kOpenComment, p, p + 2);
        m_commentsEnd = true;
        return p + 2;
    }

    /// The "#" of the instance whose "=" is at `p`; null when it is none.
    const char* startOf(const char* p) const noexcept {
        const char* q = p;
        while (q > m_p && spf::isBlank(q[-1]))
            --q;
        const char* const digits = q;
        while (q > m_p && spf::isDigit(q[-1]))
            --q;
        return q < digits && q > m_p && q[-1] == '#' ? q - 1 : nullptr;
    }

public:
    // Stands for "#" without a number that fits; the loader gives such instances a fresh one.
    static constexpr std::uint64_t kNoNumber = 0;

private:
    static constexpr std::string_view kMagic = "ISO-10303-21;";
    static constexpr std::ptrdiff_t kMostSearched = 8; // times the size of the text
    static constexpr std::ptrdiff_t kGlance = 256;

    SpfStructure& m_structure;
    SpfRecords& m_records;
    std::size_t m_added = 0; // instances
    const char* m_p;
    const char* m_begin;
    const char* m_end;
    bool m_commentsEnd = false; // a comment was never closed, so none after it is
    bool m_scopesEnd = false;   // likewise
    const char* m_noLineFrom = nullptr;
    std::ptrdiff_t m_searched = 0;
    bool m_ended = false;
    bool m_hasData = false;
    std::vector<Piece> m_pieces;
    std::size_t m_piece = 0; // the first one that ends past the place at hand
};

} // namespace

void SpfStructure::add(SpfRecords& records, std::uint64_t number, const char* begin, const char* end) {
    const auto offset = static_cast<std::uint64_t>(begin - text);
    const auto length = static_cast<std::uint64_t>(end - begin);
    largestNumber = std::max(largestNumber, number);
    if (length < kLargeLength) {
        records.add({number, length << kOffsetBits | offset});
    } else {
        records.add({number, kLargeLength << kOffsetBits | large.size()});
        large.emplace_back(offset, length);
    }
}

void SpfStructure::take(SpfStructure&& other) {
    if (!other.large.empty()) {
        for (const SpfRecords::Block& block : other.blocks)
            for (SpfInstance& instance : block)
                if (instance.place >> kOffsetBits == kLargeLength)
                    instance.place += large.size();
        large.insert(large.end(), other.large.begin(), other.large.end());
    }
    largestNumber = std::max(largestNumber, other.largestNumber);
    blocks.insert(blocks.end(), other.blocks.begin(), other.blocks.end());
}

bool SpfStructure::canBegin(const char* begin, const char* end) {
    SpfStructure unused;
    SpfRecords records(0);
    return Scanner(unused, records, begin, end).canBegin();
}

bool SpfStructure::scan(const char* begin, const char* end, const SpfSharing& sharing, std::string& reason) {
    text = begin;
    m_records.push_back(std::make_unique<SpfRecords>(static_cast<std::size_t>(end - begin)));
    if (!Scanner(*this, *m_records.front(), begin, end).scan(reason, m_records, sharing))
        return false;
    for (const SpfRecords::Block& block : blocks)
        ++block.page->blocksInUse;
    return true;
}

} // namespace VN_SDAI
