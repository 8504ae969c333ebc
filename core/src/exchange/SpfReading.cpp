#include "../base/Logical.h"
#include "SpfScan.h"

#include <VnIfcCore/VnIfcConsts.h>
#include <VnIfcCore/VnIfcSelect.h>
#include <VnIfcCore/VnSpfFilerBase.h>

#include <charconv>
#include <limits>

namespace VN_SDAI {

namespace {

/// Every whole number of so many digits is an std::int64_t.
constexpr int kDigitsOfInt64 = std::numeric_limits<std::int64_t>::digits10;

constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::uint64_t kLargestExact = std::uint64_t{1} << 53;

/// The pieces of a number as they are scanned.
struct Digits {
    std::uint64_t mantissa = 0;
    std::ptrdiff_t count = 0;

    const char* scan(const char* p) noexcept {
        const char* first = p;
        for (; spf::isDigit(*p); ++p)
            mantissa = mantissa * 10 + static_cast<std::uint64_t>(*p - '0');
        count += p - first;
        return p;
    }
};

/// Behind an exponent that begins at `p`; `p` itself when there is none, and the exponent is added to `exponent`.
const char* scanExponent(const char* p, int& exponent) noexcept {
    if (*p != 'E' && *p != 'e')
        return p;
    const char* q = p + 1;
    const bool negative = *q == '-';
    if (*q == '-' || *q == '+')
        ++q;
    if (!spf::isDigit(*q))
        return p;
    int value = 0;
    for (; spf::isDigit(*q); ++q)
        value = value < 100000 ? value * 10 + (*q - '0') : value;
    exponent += negative ? -value : value;
    return q;
}

} // namespace

// ---- look-ahead

void VnSpfReadHelper::skipBlanks() noexcept { next = spf::skipBlanks(next, end); }

void VnSpfReadHelper::ignoreParamter(bool before) {
    if (before)
        return; // the comma is missing, the parameter itself may still be there
    next = spf::parameterEnd(next, end);
}

bool VnSpfFilerBase::ignoreUntilComments(char character, bool) {
    for (const char* p = m_helper.next; (p = spf::skipBlanks(p, m_helper.end)) < m_helper.end; ++p) {
        if (*p != character)
            continue;
        m_helper.next = p + 1;
        return true;
    }
    return false;
}

// ---- the parameter list

void VnSpfFilerBase::startReading(const char* begin, const char* end) noexcept {
    m_helper.next = begin;
    m_helper.end = end;
    m_fieldBegin = begin;
    m_seen = 0;
    m_position = 0;
    m_failed = m_nested = m_short = false;
}

bool VnSpfFilerBase::finishReading(const char*& surplusBegin, const char*& surplusEnd) {
    const char* const end = m_helper.end;
    const bool closes = m_helper.peek() == ')' && m_helper.next < end;
    surplusBegin = m_helper.next;
    surplusEnd = closes ? surplusBegin : spf::listEnd(surplusBegin, end);
    return closes && spf::skipBlanks(m_helper.next + 1, end) == end;
}

VnSpfFilerBase::Token VnSpfFilerBase::beginField(bool separated, bool optional) {
    m_failed = false;
    char c = m_helper.peek();
    if (separated) {
        if (c == ',') {
            ++m_helper.next;
            c = m_helper.peek();
        } else if (!separatorMissing()) {
            m_short = true;
            return Token::kNothing;
        }
    }
    m_fieldBegin = m_helper.next;
    if (c == '$') {
        ++m_helper.next;
        ++m_seen;
        if (!optional && !m_nested)
            onMandatoryUnset(m_fieldBegin);
        return Token::kUnset;
    }
    if (m_helper.next >= m_helper.end || (c == ')' && !separated)) {
        m_short = true;
        return Token::kNothing;
    }
    ++m_seen;
    if (c == ',' || c == ')') { // a comma that nothing follows
        failField(VnSpfProblem::kMalformed);
        return Token::kNothing;
    }
    return Token::kValue;
}

bool VnSpfFilerBase::separatorMissing() {
    const char c = m_helper.peek();
    m_fieldBegin = m_helper.next;
    if (c == ')' || m_helper.next >= m_helper.end)
        return false;
    if (m_seen > 0)
        onMisfit(m_position, VnSpfProblem::kMissingComma, m_helper.next, m_helper.next);
    return true;
}

void VnSpfFilerBase::misfit(VnSpfProblem problem) { failField(problem); }

bool VnSpfFilerBase::failField(VnSpfProblem problem) {
    m_failed = true;
    m_problem = problem;
    if (m_nested)
        return false; // the whole parameter is dealt with once its reader gives up
    const std::string_view text = parameterText();
    m_helper.next = spf::parameterEnd(m_fieldBegin, m_helper.end);
    onMisfit(m_position, problem, text.data(), text.data() + text.size());
    return false;
}

std::string_view VnSpfFilerBase::valueText() const noexcept {
    const char* p = m_fieldBegin;
    if (*p == '$')
        return {p, 1};
    while (spf::isNameCharacter(*p))
        ++p;
    p = spf::skipBlanks(p, m_helper.end);
    if (*p != '(')
        return parameterText();
    const char* const close = spf::listEnd(p + 1, m_helper.end);
    return {m_fieldBegin, static_cast<std::size_t>(close - m_fieldBegin) + (close < m_helper.end)};
}

std::string_view VnSpfFilerBase::parameterText() const noexcept {
    const char* end = spf::parameterEnd(m_fieldBegin, m_helper.end);
    while (end > m_fieldBegin && spf::isBlank(end[-1]))
        --end;
    return {m_fieldBegin, static_cast<std::size_t>(end - m_fieldBegin)};
}

void VnSpfFilerBase::onMisfit(unsigned, VnSpfProblem, const char*, const char*) {}
void VnSpfFilerBase::watchField(unsigned) {}
void VnSpfFilerBase::onMandatoryUnset(const char*) {}
void VnSpfFilerBase::onUnwritable(VnSpfUnwritable) {}
void VnSpfFilerBase::onAccepted(VnSpfAccepted) {}

bool VnSpfFilerBase::openAggregate(bool separated, bool isBinary, bool optional) {
    m_nested = false;
    m_elementQuote = isBinary ? '"' : '\'';
    if (beginField(separated, optional) != Token::kValue)
        return false;
    m_nested = true;
    return true;
}

void VnSpfFilerBase::closeAggregate(bool read) {
    m_nested = false;
    if (!read)
        failField(m_failed ? m_problem : VnSpfProblem::kWrongKind);
}

void VnSpfFilerBase::compareEmptyForm(bool writtenAsUnset) {
    if (!m_short && (*m_fieldBegin == '$') != writtenAsUnset)
        onAccepted(VnSpfAccepted::kEmptyForm);
}

bool VnSpfFilerBase::atDelimiter() const noexcept {
    const char c = *m_helper.next;
    if (c == ',' || c == ')' || m_helper.next >= m_helper.end || spf::isBlank(c))
        return true;
    // A comment, or another value, where the comma between them was forgotten.
    if (c == '#')
        return spf::isDigit(m_helper.next[1]); // not so in 1.#INF
    return c == '/' || c == '$' || c == '*' || c == '(' || c == '\'' || c == '"';
}

// ---- tokens

bool VnSpfFilerBase::readReal(double& value, VnSpfProblem& problem) {
    const char* const first = m_helper.next;
    const char* p = first;
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+')
        ++p;
    const char* const unsignedFirst = p;
    Digits digits;
    p = digits.scan(p);
    int exponent = 0;
    if (*p == '.') {
        const std::ptrdiff_t before = digits.count;
        p = digits.scan(p + 1);
        exponent = static_cast<int>(std::max<std::ptrdiff_t>(before - digits.count, -100000));
    }
    problem = VnSpfProblem::kWrongKind;
    if (digits.count == 0)
        return false;
    p = scanExponent(p, exponent);
    m_helper.next = p;
    if (!atDelimiter()) {
        m_helper.next = first;
        return false;
    }
    // Both factors are exact, so one rounding gives the nearest double.
    if (digits.count <= 19 && digits.mantissa <= kLargestExact && exponent >= -22 && exponent <= 22) {
        const auto mantissa = static_cast<double>(digits.mantissa);
        const double result = exponent < 0 ? mantissa / kPowersOfTen[-exponent] : mantissa * kPowersOfTen[exponent];
        value = negative ? -result : result;
        return true;
    }
    double result = 0;
    if (std::from_chars(unsignedFirst, p, result).ec == std::errc()) {
        value = negative ? -result : result;
        return true;
    }
    m_helper.next = first;
    problem = VnSpfProblem::kOutOfRange;
    return false;
}

bool VnSpfFilerBase::readInteger(std::int64_t& value, VnSpfProblem& problem) {
    const char* const first = m_helper.next;
    const char* p = first;
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+')
        ++p;
    while (*p == '0' && spf::isDigit(p[1]))
        ++p;
    Digits digits;
    p = digits.scan(p);
    m_helper.next = p;
    problem = VnSpfProblem::kWrongKind;
    const bool whole = digits.count > 0 && atDelimiter();
    if (whole && digits.count <= kDigitsOfInt64) {
        value = static_cast<std::int64_t>(digits.mantissa);
        if (negative)
            value = -value;
        return true;
    }
    if (whole)
        problem = VnSpfProblem::kOutOfRange;
    m_helper.next = first;
    return false;
}

bool VnSpfFilerBase::readReference(VnDbObjectId& value) {
    if (*m_helper.next != '#')
        return false;
    const char* p = m_helper.next + 1;
    std::uint64_t number = 0;
    if (!spf::readNumber(p, number))
        return false;
    const char* const first = m_helper.next;
    m_helper.next = p;
    if (!atDelimiter()) {
        m_helper.next = first;
        return false;
    }
    VnIfcInstanceSlot* slot = m_slots.find(number);
    value = VnDbObjectId(slot ? slot : slotOf(number));
    return true;
}

/// A string in which there is nothing to undouble or to take as a directive, in place.
bool VnSpfFilerBase::readPlainText(std::string_view& text) noexcept {
    const char* const open = m_helper.next;
    const char* const end = m_helper.end;
    const char* const close = spf::findInString(open + 1, end);
    if (close >= end || *close != '\'' || close[1] == '\'')
        return false;
    text = {open + 1, static_cast<std::size_t>(close - open - 1)};
    m_helper.next = close + 1;
    return true;
}

/// Text in memory is what stands in the file, but for doubled apostrophes.
bool VnSpfFilerBase::readText(VnAnsiString& value) {
    std::string_view plain;
    if (readPlainText(plain)) {
        value = plain;
        return true;
    }
    const char* const open = m_helper.next;
    const char* const end = m_helper.end;
    const char* p = spf::findInString(open + 1, end);
    std::size_t doubled = 0;
    while (true) {
        if (p >= end)
            return false;
        if (*p == '\\') {
            p += spf::backslashLength(p, end);
        } else if (p[1] == '\'') {
            ++doubled;
            p += 2;
        } else {
            break;
        }
        p = spf::findInString(p, end);
    }
    if (p >= end)
        return false;
    VnAnsiString text;
    char* to = text.allocate(static_cast<std::size_t>(p - open - 1) - doubled);
    for (const char* from = open + 1; from < p;) {
        const std::size_t length = *from == '\\' ? spf::backslashLength(from, p) : 1;
        to = std::copy_n(from, length, to);
        from += *from == '\'' ? 2 : length;
    }
    value = std::move(text);
    m_helper.next = p + 1;
    return true;
}

bool VnSpfFilerBase::readString(VnAnsiString& value, char quote) {
    if (*m_helper.next != quote)
        return false;
    if (quote == '\'')
        return readText(value);
    const char* const first = m_helper.next + 1;
    const char* p = first;
    while (p < m_helper.end && (spf::isDigit(*p) || spf::isLetter(*p)))
        ++p;
    if (p >= m_helper.end || *p != quote)
        return false;
    value = std::string_view(first, static_cast<std::size_t>(p - first));
    m_helper.next = p + 1;
    return true;
}

std::string_view VnSpfFilerBase::readLiteral() {
    if (*m_helper.next != '.')
        return {};
    const char* const first = m_helper.next + 1;
    const char* p = first;
    while (spf::isNameCharacter(*p))
        ++p;
    if (*p != '.' || p == first || p >= m_helper.end)
        return {};
    m_helper.next = p + 1;
    return {first, static_cast<std::size_t>(p - first)};
}

// ---- attributes

bool VnSpfFilerBase::rdLimitedString(char* buffer, std::size_t length, bool optional, bool separated) {
    std::string_view text = VnUnsetText.text;
    VnAnsiString special;
    bool read = false;
    if (beginField(separated, optional) == Token::kValue) {
        read = *m_helper.next == '\'';
        if (read && !readPlainText(text) && (read = readText(special)))
            text = special.view();
        if (!read)
            failField(VnSpfProblem::kWrongKind);
        else if (text == VnUnsetText.text)
            failField(VnSpfProblem::kReservedValue);
        else if (text.size() > length || text.find('\0') != text.npos)
            failField(VnSpfProblem::kOutOfRange);
    }
    const std::size_t taken = std::min(text.size(), length);
    std::copy_n(text.data(), taken, buffer);
    std::fill_n(buffer + taken, length - taken, '\0');
    return read;
}

bool VnSpfFilerBase::rdVnAnsiString(VnAnsiString& value, bool optional, bool separated) {
    if (beginField(separated, optional) == Token::kValue) {
        if (!readString(value, '\'')) {
            value = VnUnsetText;
            return failField(VnSpfProblem::kWrongKind);
        }
        if (value.isUnset())
            failField(VnSpfProblem::kReservedValue);
        return true;
    }
    value = VnUnsetText;
    return false;
}

bool VnSpfFilerBase::rdDouble(double& value, bool optional, bool separated) {
    if (beginField(separated, optional) == Token::kValue) {
        VnSpfProblem problem;
        if (readReal(value, problem))
            return true;
        failField(problem);
    }
    value = Consts::VnRealUnset;
    return false;
}

bool VnSpfFilerBase::rdInt(int& value, bool optional, bool separated) {
    value = Consts::VnIntUnset;
    if (beginField(separated, optional) != Token::kValue)
        return false;
    VnSpfProblem problem;
    std::int64_t number = 0;
    if (!readInteger(number, problem))
        return failField(problem);
    if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max())
        return failField(VnSpfProblem::kOutOfRange);
    value = static_cast<int>(number);
    if (value == Consts::VnIntUnset)
        failField(VnSpfProblem::kReservedValue);
    return true;
}

bool VnSpfFilerBase::rdPrimitive(VnIfcLogical& value, bool optional, bool separated) {
    value = VnIfcLogical::Unset;
    if (beginField(separated, optional) != Token::kValue)
        return false;
    value = logicalOf(readLiteral());
    return !value.isUnset() || failField(VnSpfProblem::kWrongKind);
}

bool VnSpfFilerBase::rdPrimitive(VnIfcBoolean& value, bool optional, bool separated) {
    value = VnIfcBoolean::Unset;
    if (beginField(separated, optional) != Token::kValue)
        return false;
    value = booleanOf(readLiteral());
    return !value.isUnset() || failField(VnSpfProblem::kWrongKind);
}

bool VnSpfFilerBase::rdReference(VnDbObjectId& value, bool separated, bool optional) {
    if (beginField(separated, optional) == Token::kValue) {
        if (readReference(value))
            return true;
        failField(VnSpfProblem::kWrongKind);
    }
    value.setNull();
    return false;
}

VnAnsiString VnSpfFilerBase::rdEnumerationToStr(bool optional, bool separated) {
    return VnAnsiString(rdEnumeration(optional, separated));
}

std::string_view VnSpfFilerBase::rdEnumeration(bool optional, bool separated) {
    if (beginField(separated, optional) != Token::kValue)
        return {};
    const std::string_view literal = readLiteral();
    if (literal.empty())
        failField(VnSpfProblem::kWrongKind);
    return literal;
}

bool VnSpfFilerBase::rdDerive(bool separated) {
    const Token token = beginField(separated);
    if (token == Token::kNothing)
        return false;
    if (token == Token::kUnset || *m_helper.next != '*')
        return failField(VnSpfProblem::kNotDerived);
    ++m_helper.next;
    return true;
}

void VnSpfFilerBase::rdBinary(bool separated, bool optional) {
    if (beginField(separated, optional) == Token::kValue)
        failField(VnSpfProblem::kNotRead);
}

bool VnSpfFilerBase::rdSelect(VnIfcSelect& value, bool optional, bool separated) {
    if (beginField(separated, optional) == Token::kValue) {
        if (readSelectValue(value))
            return true;
        failField(m_failed ? m_problem : VnSpfProblem::kWrongKind);
        // As any list, one in a select keeps what came before a faulty element.
        if (const VnIfcAggr* list = value.getAggr(); list && list->count() > 0)
            return false;
    }
    value.nullify();
    return false;
}

// ---- values of selects

bool VnSpfFilerBase::readSelectValue(VnIfcSelect& value) {
    const char c = *m_helper.next;
    if (c == '#') {
        VnDbObjectId handle;
        if (!readReference(handle))
            return false;
        value.setHandleOnLoad(handle);
        m_tookPending = true;
        return true;
    }
    return spf::isLetter(c) && readTypedValue(value);
}

bool VnSpfFilerBase::readTypedValue(VnIfcSelect& value) {
    const char* const first = m_helper.next;
    const char* p = first;
    while (spf::isNameCharacter(*p))
        ++p;
    const std::string_view name(first, static_cast<std::size_t>(p - first));
    m_helper.next = p;
    VnTypeCodeKind kind = VnTypeCodeKind::kNone;
    if (!skipUntil('('))
        return false;
    if (!value.chooseForReading(name) || !value.chosenKind(kind))
        return failValue(VnSpfProblem::kUnknownSelectType);
    m_helper.peek();
    const bool read = kind == VnTypeCodeKind::kEnumeration || kind == VnTypeCodeKind::kAggregation
                          ? readSelectField(value, name)
                          : readSelectSimple(value, kind);
    return read && skipUntil(')');
}

bool VnSpfFilerBase::readSelectField(VnIfcSelect& value, std::string_view name) {
    // The typed value counts as one parameter, whatever the field layer reads inside of it.
    const char* const begin = m_fieldBegin;
    const unsigned seen = m_seen;
    const bool nested = m_nested;
    const bool ranShort = m_short;
    m_nested = true;
    const VN::ErrorStatus status = value.readTypedField(VnAnsiString(name), this);
    m_fieldBegin = begin;
    m_seen = seen;
    m_nested = nested;
    m_short = ranShort;
    if (status == VN::eUnknownLiteral && !m_failed)
        return failValue(VnSpfProblem::kUnknownLiteral);
    return status == VN::eOk && !m_failed;
}

bool VnSpfFilerBase::readSelectSimple(VnIfcSelect& value, VnTypeCodeKind kind) {
    VnSpfProblem problem;
    switch (kind) {
    case VnTypeCodeKind::kReal: {
        double real = 0;
        if (!readReal(real, problem))
            return failValue(problem);
        value.setDouble(real);
        return true;
    }
    case VnTypeCodeKind::kInteger: {
        std::int64_t number = 0;
        if (!readInteger(number, problem))
            return failValue(problem);
        if (number != static_cast<std::int32_t>(number))
            return failValue(VnSpfProblem::kOutOfRange);
        value.setInt32(static_cast<std::int32_t>(number));
        return true;
    }
    case VnTypeCodeKind::kString:
    case VnTypeCodeKind::kBinary: {
        VnAnsiString text;
        if (!readString(text, kind == VnTypeCodeKind::kString ? '\'' : '"'))
            return false;
        if (text.isUnset())
            return failValue(VnSpfProblem::kReservedValue);
        if (kind == VnTypeCodeKind::kString)
            value.setString(std::move(text));
        else
            value.setBINARY(std::move(text));
        return true;
    }
    case VnTypeCodeKind::kBoolean: {
        const VnIfcBoolean read = booleanOf(readLiteral());
        if (!read.isUnset())
            value.setBoolean(read);
        return !read.isUnset();
    }
    case VnTypeCodeKind::kLogical: {
        const VnIfcLogical read = logicalOf(readLiteral());
        if (!read.isUnset())
            value.setLogical(read);
        return !read.isUnset();
    }
    default:
        return false;
    }
}

// ---- elements

bool VnSpfFilerBase::failValue(VnSpfProblem problem) {
    m_failed = true;
    m_problem = problem;
    return false;
}

/// Reads one element; one that cannot be read leaves the position at its first character.
template <class Read>
bool VnSpfFilerBase::readElement(bool separated, Read read) {
    if (separated && !skipUntil(','))
        return false;
    m_helper.peek();
    const char* const first = m_helper.next;
    if (read())
        return true;
    m_helper.next = first;
    return false;
}

bool VnSpfFilerBase::rdPrimitive(double& value, bool separated) {
    return readElement(separated, [&] {
        VnSpfProblem problem;
        if (readReal(value, problem))
            return true;
        value = Consts::VnRealUnset;
        return m_helper.skipUntilRet('$') || failValue(problem);
    });
}

bool VnSpfFilerBase::rdPrimitive(int& value, bool separated) {
    return readElement(separated, [&] {
        VnSpfProblem problem;
        std::int64_t number = 0;
        value = Consts::VnIntUnset;
        if (!readInteger(number, problem))
            return m_helper.skipUntilRet('$') || failValue(problem);
        if (number != static_cast<int>(number))
            return failValue(VnSpfProblem::kOutOfRange);
        if (number == Consts::VnIntUnset)
            return failValue(VnSpfProblem::kReservedValue);
        value = static_cast<int>(number);
        return true;
    });
}

bool VnSpfFilerBase::rdPrimitive(VnDbObjectId& value, bool separated) {
    return readElement(separated, [&] {
        if (readReference(value))
            return true;
        value.setNull();
        return m_helper.skipUntilRet('$');
    });
}

bool VnSpfFilerBase::rdPrimitive(VnAnsiString& value, bool separated) {
    return readElement(separated, [&] {
        if (readString(value, m_elementQuote))
            return !value.isUnset() || failValue(VnSpfProblem::kReservedValue);
        value = VnUnsetText;
        return m_helper.skipUntilRet('$');
    });
}

bool VnSpfFilerBase::rdPrimitive(VnIfcSelect& value, bool separated) {
    return readElement(separated, [&] {
        if (readSelectValue(value))
            return true;
        value.nullify();
        return !m_failed && m_helper.skipUntilRet('$');
    });
}

} // namespace VN_SDAI
