#include "SpfScan.h"

#include <VnIfcCore/VnAscii.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcSelect.h>
#include <VnIfcCore/VnIfcText.h>
#include <VnIfcCore/VnSpfFilerBase.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>

namespace VN_SDAI {

namespace {

// Longer than any number that to_chars makes: sign, 17 digits, point, exponent.
constexpr std::size_t kNumberSpace = 40;

constexpr std::array<char, 200> makeTwoDigits() {
    std::array<char, 200> digits{};
    for (std::size_t i = 0; i < 100; ++i) {
        digits[2 * i] = static_cast<char>('0' + i / 10);
        digits[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return digits;
}

constexpr std::array<char, 200> kTwoDigits = makeTwoDigits();

constexpr bool isHexDigit(char c) noexcept {
    return spf::isDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

/// Copies a text that is short most often; a call would take longer than the copy.
char* copyShort(char* to, const char* from, std::size_t length) noexcept {
    if (length > 16) {
        std::memcpy(to, from, length);
    } else if (length >= 8) { // two halves, which may overlap
        std::memcpy(to, from, 8);
        std::memcpy(to + length - 8, from + length - 8, 8);
    } else {
        for (std::size_t i = 0; i < length; ++i)
            to[i] = from[i];
    }
    return to + length;
}

/// How many digits a number below 10^8 has.
unsigned digitsOf(std::uint32_t number) noexcept {
    if (number < 10'000)
        return number < 100 ? 1 + (number >= 10) : 3 + (number >= 1'000);
    return number < 1'000'000 ? 5 + (number >= 100'000) : 7 + (number >= 10'000'000);
}

/// Writes the last digits of a number below 10^8, with zeros in front where it has less: two at a time, from the end.
void putDigits(char* to, std::uint32_t number, unsigned digits) noexcept {
    for (; digits >= 2; digits -= 2, number /= 100)
        std::memcpy(to + digits - 2, kTwoDigits.data() + 2 * (number % 100), 2);
    if (digits == 1)
        *to = static_cast<char>('0' + number % 10);
}

/// Writes a real that has few digits; null for any other. What has at most 15 digits reads back as the double that it
/// was made of, and no shorter text does (IEEE 754), so that nothing has to be searched for.
char* putShortReal(char* to, double value) noexcept {
    constexpr unsigned kDecimals = 6;
    constexpr double kScale = 1e6;
    const double size = std::fabs(value);
    // Smaller ones, and whole numbers from 10^5, may be shorter with an exponent.
    if (!(size >= 1e-3 && size < 1e8))
        return nullptr;
    const auto scaled = static_cast<std::uint64_t>(size * kScale + 0.5);
    if (static_cast<double>(scaled) / kScale != size)
        return nullptr;
    const auto whole = static_cast<std::uint32_t>(scaled / 1'000'000);
    const auto decimals = static_cast<std::uint32_t>(scaled % 1'000'000);
    if (decimals == 0 && whole >= 100'000)
        return nullptr;
    if (value < 0)
        *to++ = '-';
    const unsigned digits = digitsOf(whole);
    putDigits(to, whole, digits);
    to += digits;
    *to++ = '.';
    if (decimals == 0)
        return to;
    putDigits(to, decimals, kDecimals);
    to += kDecimals;
    while (to[-1] == '0')
        --to;
    return to;
}

} // namespace

VnSpfFilerBase::VnSpfFilerBase() = default;

VnSpfFilerBase::~VnSpfFilerBase() { std::free(m_outBegin); }

void VnSpfFilerBase::growOutput(std::size_t need) {
    const auto used = static_cast<std::size_t>(m_out - m_outBegin);
    const auto space = static_cast<std::size_t>(m_outEnd - m_outBegin);
    const std::size_t wanted = std::max(used + need, space + space / 2 + 256);
    char* grown = static_cast<char*>(std::realloc(m_outBegin, wanted));
    if (!grown)
        throw std::bad_alloc();
    m_outBegin = grown;
    m_out = grown + used;
    m_outEnd = grown + wanted;
}

void VnSpfFilerBase::write(std::string_view text) {
    char* to = reserve(text.size());
    m_out = copyShort(to, text.data(), text.size());
}

void VnSpfFilerBase::writeNumber(std::uint64_t number) {
    char* const to = reserve(kNumberSpace);
    if (number >= 100'000'000) {
        m_out = std::to_chars(to, to + kNumberSpace, number).ptr;
        return;
    }
    const auto low = static_cast<std::uint32_t>(number);
    const unsigned digits = digitsOf(low);
    putDigits(to, low, digits);
    m_out = to + digits;
}

void VnSpfFilerBase::writeInteger(std::int64_t value) {
    char* to = reserve(kNumberSpace);
    m_out = std::to_chars(to, to + kNumberSpace, value).ptr;
}

/// The shortest text that reads back the same, with the point that a real must have (ISO 10303-21, 6.4.2).
void VnSpfFilerBase::writeReal(double value) {
    if (!std::isfinite(value)) {
        if (std::isinf(value))
            onUnwritable(VnSpfUnwritable::kNotFinite);
        return wrChar('$');
    }
    char* const first = reserve(kNumberSpace);
    if (char* const end = putShortReal(first, value)) {
        m_out = end;
        return;
    }
    char* last = std::to_chars(first, first + kNumberSpace - 2, value).ptr;
    char* p = first;
    while (p < last && *p != '.' && *p != 'e')
        ++p;
    const bool hasPoint = p < last && *p == '.';
    while (p < last && *p != 'e')
        ++p;
    if (!hasPoint) {
        std::copy_backward(p, last, last + 1);
        *p++ = '.';
        ++last;
    }
    if (p < last)
        *p = 'E';
    m_out = last;
}

void VnSpfFilerBase::writeString(std::string_view text) {
    const auto before = m_out - m_outBegin;
    if (writeExchangeText(text))
        return;
    if (m_encodesText) {
        m_out = m_outBegin + before;
        if (writeExchangeText(vnEncodeText(vnDecodeText(text).text)))
            return;
    }
    onUnwritable(VnSpfUnwritable::kNoText);
}

/// Apostrophes are doubled but for those that a `\S\` directive consumes. A `\S\` at the very end would consume the
/// closing one, so its first backslash is escaped. False when the text has bytes other than printable ASCII, or a
/// backslash that begins no directive; it is written all the same.
bool VnSpfFilerBase::writeExchangeText(std::string_view text) {
    char* to = reserve(2 * text.size() + 4);
    *to++ = '\'';
    const char* from = text.data();
    const char* const end = from + text.size();
    bool isRaw = false;
    while (from < end) {
        const char* special = from;
        for (; special < end && *special != '\'' && *special != '\\'; ++special)
            isRaw |= *special < ' ' || *special > '~';
        to = copyShort(to, from, static_cast<std::size_t>(special - from));
        if ((from = special) == end)
            break;
        if (*from == '\'') {
            *to++ = '\'';
            *to++ = *from++;
            continue;
        }
        if (end - from == 3 && from[1] == 'S' && from[2] == '\\')
            *to++ = '\\';
        std::size_t length = spf::backslashLength(from, end);
        if (length == 1) {
            // Without its digits it would hide a directive that the reader sees.
            const bool isByte =
                end - from >= 5 && from[1] == 'X' && from[2] == '\\' && isHexDigit(from[3]) && isHexDigit(from[4]);
            isRaw |= !isByte;
            length = isByte ? 3 : 1;
        }
        to = std::copy_n(from, length, to);
        from += length;
    }
    *to++ = '\'';
    m_out = to;
    return !isRaw;
}

// ---- attributes

void VnSpfFilerBase::wrLimitedString(const char* value, std::size_t length, bool, bool separated) {
    separate(separated);
    std::string_view text(value, length);
    text = text.substr(0, text.find('\0'));
    if (text == VnUnsetText.text)
        return wrChar('$');
    writeString(text);
}

void VnSpfFilerBase::wrVnAnsiString(const VnAnsiString& value, bool, bool separated) {
    separate(separated);
    wrPrimitive(value);
}

void VnSpfFilerBase::wrDouble(const double& value, bool, bool separated) {
    separate(separated);
    wrPrimitive(value);
}

void VnSpfFilerBase::wrInt(const int& value, bool, bool separated) {
    separate(separated);
    wrPrimitive(value);
}

void VnSpfFilerBase::wrPrimitive(const VnIfcLogical& value, bool, bool separated) {
    separate(separated);
    constexpr std::string_view kTexts[] = {".F.", ".T.", ".U.", "$"};
    write(kTexts[std::min<std::uint32_t>(value.code(), VnIfcLogical::Unset)]);
}

void VnSpfFilerBase::wrPrimitive(const VnIfcBoolean& value, bool, bool separated) {
    separate(separated);
    constexpr std::string_view kTexts[] = {".F.", ".T.", "$"};
    write(kTexts[std::min<std::uint32_t>(value.code(), VnIfcBoolean::Unset)]);
}

void VnSpfFilerBase::wrReference(const VnDbObjectId& value, bool separated) {
    separate(separated);
    wrPrimitive(value);
}

void VnSpfFilerBase::wrSelect(const VnIfcSelect& value, bool, bool separated) {
    separate(separated);
    writeSelectValue(value);
}

void VnSpfFilerBase::wrEnumeration(std::string_view literal, bool, bool separated) {
    separate(separated);
    if (literal.empty())
        return wrChar('$');
    wrChar('.');
    write(literal);
    wrChar('.');
}

void VnSpfFilerBase::wrDerive(bool separated) {
    separate(separated);
    wrChar('*');
}

// ---- elements

void VnSpfFilerBase::wrPrimitive(const double& value) { writeReal(value); }

void VnSpfFilerBase::wrPrimitive(const int& value) {
    if (value == 0x7fffffff)
        return wrChar('$');
    writeInteger(value);
}

void VnSpfFilerBase::wrPrimitive(const VnDbObjectId& value) {
    if (value.isNull() || value.isErased())
        return wrChar('$');
    if (m_home && value.model() != m_home) {
        onUnwritable(VnSpfUnwritable::kForeignReference);
        return wrChar('$');
    }
    wrChar('#');
    writeNumber(value.number());
}

void VnSpfFilerBase::wrPrimitive(const VnAnsiString& value) {
    if (value.isUnset())
        return wrChar('$');
    writeString(value.view());
}

void VnSpfFilerBase::wrPrimitive(const VnIfcSelect& value) { writeSelectValue(value); }

void VnSpfFilerBase::wrBinaryElement(const VnAnsiString& value) {
    if (value.isUnset())
        return wrChar('$');
    wrChar('"');
    write(value.view());
    wrChar('"');
}

void VnSpfFilerBase::writeSelectValue(const VnIfcSelect& value) {
    const VnTypeCodeKind kind = value.kind();
    if (!value.hasValue()) {
        if (value.isSet())
            onUnwritable(VnSpfUnwritable::kNoValue);
        return wrChar('$');
    }
    if (kind == VnTypeCodeKind::kReal && std::isinf(value.m_value.real))
        return writeReal(value.m_value.real);
    if (kind == VnTypeCodeKind::kEntity)
        return wrPrimitive(value.getHandle());
    const std::string_view name = value.underlyingTypeName().view();
    char* to = reserve(name.size() + 1);
    for (const char c : name)
        *to++ = vnUpper(c);
    *to++ = '(';
    m_out = to;
    switch (kind) {
    case VnTypeCodeKind::kString:
        writeString(value.text());
        break;
    case VnTypeCodeKind::kBinary:
        wrBinaryElement(VnAnsiString(value.text()));
        break;
    case VnTypeCodeKind::kReal:
        writeReal(value.m_value.real);
        break;
    case VnTypeCodeKind::kInteger:
        writeInteger(value.m_value.number);
        break;
    case VnTypeCodeKind::kBoolean:
        wrPrimitive(VnIfcBoolean(static_cast<VnIfcBoolean::Code>(value.m_value.number)), false, false);
        break;
    case VnTypeCodeKind::kLogical:
        wrPrimitive(VnIfcLogical(static_cast<VnIfcLogical::Code>(value.m_value.number)), false, false);
        break;
    default:
        if (value.writeTypedField(this) != VN::eOk)
            wrChar('$');
        break;
    }
    wrChar(')');
}

} // namespace VN_SDAI
