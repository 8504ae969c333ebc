#include <VnIfcCore/VnIfcText.h>
#include <VnRx/VrString.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace VN_SDAI {

namespace {

using Fault = VnIfcDecodedText::Fault;
using FaultKind = VnIfcDecodedText::FaultKind;

/// Stands in the tables for positions that a part of ISO 8859 leaves empty.
constexpr char16_t kNone = 0xFFFD;

/// The upper halves, 0xA0 to 0xFF, of the parts of ISO 8859 that `\PB\` to `\PI\` choose; that of ISO 8859-1 is
/// Unicode's own.
constexpr char16_t kUpperHalves[][97] = {
    // clang-format off
    // ISO 8859-2
    u"\u00A0\u0104\u02D8\u0141\u00A4\u013D\u015A\u00A7\u00A8\u0160\u015E\u0164\u0179\u00AD\u017D\u017B"
    u"\u00B0\u0105\u02DB\u0142\u00B4\u013E\u015B\u02C7\u00B8\u0161\u015F\u0165\u017A\u02DD\u017E\u017C"
    u"\u0154\u00C1\u00C2\u0102\u00C4\u0139\u0106\u00C7\u010C\u00C9\u0118\u00CB\u011A\u00CD\u00CE\u010E"
    u"\u0110\u0143\u0147\u00D3\u00D4\u0150\u00D6\u00D7\u0158\u016E\u00DA\u0170\u00DC\u00DD\u0162\u00DF"
    u"\u0155\u00E1\u00E2\u0103\u00E4\u013A\u0107\u00E7\u010D\u00E9\u0119\u00EB\u011B\u00ED\u00EE\u010F"
    u"\u0111\u0144\u0148\u00F3\u00F4\u0151\u00F6\u00F7\u0159\u016F\u00FA\u0171\u00FC\u00FD\u0163\u02D9",
    // ISO 8859-3
    u"\u00A0\u0126\u02D8\u00A3\u00A4\uFFFD\u0124\u00A7\u00A8\u0130\u015E\u011E\u0134\u00AD\uFFFD\u017B"
    u"\u00B0\u0127\u00B2\u00B3\u00B4\u00B5\u0125\u00B7\u00B8\u0131\u015F\u011F\u0135\u00BD\uFFFD\u017C"
    u"\u00C0\u00C1\u00C2\uFFFD\u00C4\u010A\u0108\u00C7\u00C8\u00C9\u00CA\u00CB\u00CC\u00CD\u00CE\u00CF"
    u"\uFFFD\u00D1\u00D2\u00D3\u00D4\u0120\u00D6\u00D7\u011C\u00D9\u00DA\u00DB\u00DC\u016C\u015C\u00DF"
    u"\u00E0\u00E1\u00E2\uFFFD\u00E4\u010B\u0109\u00E7\u00E8\u00E9\u00EA\u00EB\u00EC\u00ED\u00EE\u00EF"
    u"\uFFFD\u00F1\u00F2\u00F3\u00F4\u0121\u00F6\u00F7\u011D\u00F9\u00FA\u00FB\u00FC\u016D\u015D\u02D9",
    // ISO 8859-4
    u"\u00A0\u0104\u0138\u0156\u00A4\u0128\u013B\u00A7\u00A8\u0160\u0112\u0122\u0166\u00AD\u017D\u00AF"
    u"\u00B0\u0105\u02DB\u0157\u00B4\u0129\u013C\u02C7\u00B8\u0161\u0113\u0123\u0167\u014A\u017E\u014B"
    u"\u0100\u00C1\u00C2\u00C3\u00C4\u00C5\u00C6\u012E\u010C\u00C9\u0118\u00CB\u0116\u00CD\u00CE\u012A"
    u"\u0110\u0145\u014C\u0136\u00D4\u00D5\u00D6\u00D7\u00D8\u0172\u00DA\u00DB\u00DC\u0168\u016A\u00DF"
    u"\u0101\u00E1\u00E2\u00E3\u00E4\u00E5\u00E6\u012F\u010D\u00E9\u0119\u00EB\u0117\u00ED\u00EE\u012B"
    u"\u0111\u0146\u014D\u0137\u00F4\u00F5\u00F6\u00F7\u00F8\u0173\u00FA\u00FB\u00FC\u0169\u016B\u02D9",
    // ISO 8859-5
    u"\u00A0\u0401\u0402\u0403\u0404\u0405\u0406\u0407\u0408\u0409\u040A\u040B\u040C\u00AD\u040E\u040F"
    u"\u0410\u0411\u0412\u0413\u0414\u0415\u0416\u0417\u0418\u0419\u041A\u041B\u041C\u041D\u041E\u041F"
    u"\u0420\u0421\u0422\u0423\u0424\u0425\u0426\u0427\u0428\u0429\u042A\u042B\u042C\u042D\u042E\u042F"
    u"\u0430\u0431\u0432\u0433\u0434\u0435\u0436\u0437\u0438\u0439\u043A\u043B\u043C\u043D\u043E\u043F"
    u"\u0440\u0441\u0442\u0443\u0444\u0445\u0446\u0447\u0448\u0449\u044A\u044B\u044C\u044D\u044E\u044F"
    u"\u2116\u0451\u0452\u0453\u0454\u0455\u0456\u0457\u0458\u0459\u045A\u045B\u045C\u00A7\u045E\u045F",
    // ISO 8859-6
    u"\u00A0\uFFFD\uFFFD\uFFFD\u00A4\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\u060C\u00AD\uFFFD\uFFFD"
    u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\u061B\uFFFD\uFFFD\uFFFD\u061F"
    u"\uFFFD\u0621\u0622\u0623\u0624\u0625\u0626\u0627\u0628\u0629\u062A\u062B\u062C\u062D\u062E\u062F"
    u"\u0630\u0631\u0632\u0633\u0634\u0635\u0636\u0637\u0638\u0639\u063A\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"
    u"\u0640\u0641\u0642\u0643\u0644\u0645\u0646\u0647\u0648\u0649\u064A\u064B\u064C\u064D\u064E\u064F"
    u"\u0650\u0651\u0652\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD",
    // ISO 8859-7
    u"\u00A0\u2018\u2019\u00A3\u20AC\u20AF\u00A6\u00A7\u00A8\u00A9\u037A\u00AB\u00AC\u00AD\uFFFD\u2015"
    u"\u00B0\u00B1\u00B2\u00B3\u0384\u0385\u0386\u00B7\u0388\u0389\u038A\u00BB\u038C\u00BD\u038E\u038F"
    u"\u0390\u0391\u0392\u0393\u0394\u0395\u0396\u0397\u0398\u0399\u039A\u039B\u039C\u039D\u039E\u039F"
    u"\u03A0\u03A1\uFFFD\u03A3\u03A4\u03A5\u03A6\u03A7\u03A8\u03A9\u03AA\u03AB\u03AC\u03AD\u03AE\u03AF"
    u"\u03B0\u03B1\u03B2\u03B3\u03B4\u03B5\u03B6\u03B7\u03B8\u03B9\u03BA\u03BB\u03BC\u03BD\u03BE\u03BF"
    u"\u03C0\u03C1\u03C2\u03C3\u03C4\u03C5\u03C6\u03C7\u03C8\u03C9\u03CA\u03CB\u03CC\u03CD\u03CE\uFFFD",
    // ISO 8859-8
    u"\u00A0\uFFFD\u00A2\u00A3\u00A4\u00A5\u00A6\u00A7\u00A8\u00A9\u00D7\u00AB\u00AC\u00AD\u00AE\u00AF"
    u"\u00B0\u00B1\u00B2\u00B3\u00B4\u00B5\u00B6\u00B7\u00B8\u00B9\u00F7\u00BB\u00BC\u00BD\u00BE\uFFFD"
    u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"
    u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\u2017"
    u"\u05D0\u05D1\u05D2\u05D3\u05D4\u05D5\u05D6\u05D7\u05D8\u05D9\u05DA\u05DB\u05DC\u05DD\u05DE\u05DF"
    u"\u05E0\u05E1\u05E2\u05E3\u05E4\u05E5\u05E6\u05E7\u05E8\u05E9\u05EA\uFFFD\uFFFD\u200E\u200F\uFFFD",
    // ISO 8859-9
    u"\u00A0\u00A1\u00A2\u00A3\u00A4\u00A5\u00A6\u00A7\u00A8\u00A9\u00AA\u00AB\u00AC\u00AD\u00AE\u00AF"
    u"\u00B0\u00B1\u00B2\u00B3\u00B4\u00B5\u00B6\u00B7\u00B8\u00B9\u00BA\u00BB\u00BC\u00BD\u00BE\u00BF"
    u"\u00C0\u00C1\u00C2\u00C3\u00C4\u00C5\u00C6\u00C7\u00C8\u00C9\u00CA\u00CB\u00CC\u00CD\u00CE\u00CF"
    u"\u011E\u00D1\u00D2\u00D3\u00D4\u00D5\u00D6\u00D7\u00D8\u00D9\u00DA\u00DB\u00DC\u0130\u015E\u00DF"
    u"\u00E0\u00E1\u00E2\u00E3\u00E4\u00E5\u00E6\u00E7\u00E8\u00E9\u00EA\u00EB\u00EC\u00ED\u00EE\u00EF"
    u"\u011F\u00F1\u00F2\u00F3\u00F4\u00F5\u00F6\u00F7\u00F8\u00F9\u00FA\u00FB\u00FC\u0131\u015F\u00FF",
    // clang-format on
};

constexpr char32_t upperHalf(char part, unsigned char position) noexcept {
    return part == 'A' ? position : kUpperHalves[part - 'B'][position - 0xA0];
}

constexpr bool isHexDigit(char c) noexcept {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

/// The number that `digits`, all hexadecimal and at most eight, stand for.
char32_t hexNumber(std::string_view digits) noexcept {
    std::uint32_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    return number;
}

/// The character of UTF-16 in hexadecimal digits at `at`, which is moved past it; a lone surrogate gives itself.
char32_t utf16Character(std::string_view hex, std::size_t& at) noexcept {
    const char32_t high = hexNumber(hex.substr(at, 4));
    at += 4;
    if (high < 0xD800 || high > 0xDBFF || at == hex.size())
        return high;
    const char32_t low = hexNumber(hex.substr(at, 4));
    if (low < 0xDC00 || low > 0xDFFF)
        return high;
    at += 4;
    return 0x10000 + ((high & 0x3FF) << 10 | (low & 0x3FF));
}

const char* skipAscii(const char* p, const char* end) noexcept {
    for (; end - p >= 8; p += 8) {
        std::uint64_t bytes;
        std::memcpy(&bytes, p, 8);
        if ((bytes & 0x8080808080808080) != 0)
            break;
    }
    return std::find_if(p, end, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

bool isUtf8(std::string_view text) noexcept {
    const char* const end = text.data() + text.size();
    for (const char* p = text.data(); (p = skipAscii(p, end)) < end;)
        if (VrString::readCharacter(p, end) == VrString::kNoCharacter)
            return false;
    return true;
}

class Decoder {
public:
    Decoder(std::string_view source, VnIfcRawBytes rawBytes, std::string& text, std::vector<Fault>* faults)
        : m_source(source), m_rest(source), m_rawBytes(rawBytes), m_text(text), m_faults(faults) {}

    void run() {
        m_text.reserve(m_source.size());
        while (!m_rest.empty())
            if (m_rest.front() == '\\')
                readDirective();
            else
                readBytes();
    }

private:
    void readBytes();
    void readDirective();
    void readUpperHalf();
    void readByteDirective();
    void readExtended(std::size_t digits);

    void append(char32_t character, std::size_t length) {
        VrString::appendCharacter(m_text, character);
        m_rest.remove_prefix(length);
    }
    void keep(std::size_t length, FaultKind kind) {
        report(length, kind);
        m_text.append(m_rest.substr(0, length));
        m_rest.remove_prefix(length);
    }
    void report(std::size_t length, FaultKind kind) {
        if (m_faults)
            m_faults->push_back({m_source.size() - m_rest.size(), length, kind});
    }

    const std::string_view m_source;
    std::string_view m_rest;
    const VnIfcRawBytes m_rawBytes;
    std::string& m_text;
    std::vector<Fault>* const m_faults;
    char m_part = 'A';
};

/// Takes what stands before the next backslash.
void Decoder::readBytes() {
    const char* const end = m_rest.data() + std::min(m_rest.find('\\'), m_rest.size());
    while (m_rest.data() < end) {
        const char* next = skipAscii(m_rest.data(), end);
        const bool isAscii = next > m_rest.data();
        const bool isValid = isAscii || VrString::readCharacter(next, end) != VrString::kNoCharacter;
        const auto length = static_cast<std::size_t>(next - m_rest.data());
        if (!isValid)
            report(length, FaultKind::kBytes);
        if (!isValid && m_rawBytes == VnIfcRawBytes::kReplace)
            VrString::appendCharacter(m_text, VrString::kReplacement);
        else
            m_text.append(m_rest.data(), length);
        m_rest.remove_prefix(length);
    }
}

void Decoder::readDirective() {
    const auto startsWith = [this](std::string_view head) { return m_rest.starts_with(head); };
    const auto at = [this](std::size_t i) { return i < m_rest.size() ? m_rest[i] : '\0'; };
    if (startsWith("\\\\"))
        return append('\\', 2);
    if (startsWith("\\X2\\"))
        return readExtended(4);
    if (startsWith("\\X4\\"))
        return readExtended(8);
    if (startsWith("\\X\\"))
        return readByteDirective();
    if (startsWith("\\S\\"))
        return readUpperHalf();
    if (at(1) == 'P' && at(2) >= 'A' && at(2) <= 'I' && at(3) == '\\') {
        m_part = at(2);
        return m_rest.remove_prefix(4);
    }
    // Taken whole, so that their last backslash is not taken for the first of what follows.
    if (startsWith("\\X0\\") || (at(1) == 'P' && at(2) > 'I' && at(2) <= 'Z' && at(3) == '\\'))
        return keep(4, FaultKind::kDirective);
    if (startsWith("\\N\\") || startsWith("\\F\\") || startsWith("\\T\\"))
        return keep(3, FaultKind::kDirective);
    keep(1, FaultKind::kDirective);
}

/// `\S\c`: the character 128 positions above c in the chosen part of ISO 8859.
void Decoder::readUpperHalf() {
    const char c = m_rest.size() > 3 ? m_rest[3] : '\0';
    if (c < 0x20 || c > 0x7E)
        return keep(3, FaultKind::kCharacter);
    const char32_t character = upperHalf(m_part, static_cast<unsigned char>(c + 0x80));
    if (character == kNone)
        return keep(4, FaultKind::kCharacter);
    append(character, 4);
}

/// `\X\hh`: a character of the first 256 of Unicode.
void Decoder::readByteDirective() {
    const std::string_view hex = m_rest.substr(3, 2);
    const auto digits = static_cast<std::size_t>(std::find_if_not(hex.begin(), hex.end(), isHexDigit) - hex.begin());
    if (digits < 2)
        return keep(3 + digits, FaultKind::kDigits);
    append(hexNumber(hex), 5);
}

/// `\X2\` or `\X4\`, with 4 or 8 hexadecimal digits a piece, up to `\X0\`.
void Decoder::readExtended(std::size_t digits) {
    const char* const first = m_rest.data() + 4;
    const char* const last = std::find_if_not(first, m_rest.data() + m_rest.size(), isHexDigit);
    const std::string_view hex(first, static_cast<std::size_t>(last - first));
    const std::string_view behind = m_rest.substr(4 + hex.size());
    const bool isClosed = behind.starts_with("\\X0\\");
    const std::size_t length = 4 + hex.size() + (isClosed ? 4 : behind.starts_with("\\X0") ? 3 : 0);
    if (!isClosed || hex.empty() || hex.size() % digits != 0)
        return keep(length, FaultKind::kDigits);

    const std::size_t before = m_text.size();
    for (std::size_t at = 0; at < hex.size();) {
        const char32_t character = digits == 4 ? utf16Character(hex, at) : hexNumber(hex.substr(at, 8));
        if (digits == 8)
            at += 8;
        if (!VrString::isCharacter(character)) {
            m_text.resize(before);
            return keep(length, FaultKind::kCharacter);
        }
        VrString::appendCharacter(m_text, character);
    }
    m_rest.remove_prefix(length);
}

constexpr bool isPrintable(char32_t character) noexcept { return character >= ' ' && character <= '~'; }

/// True for what stands in an exchange text as it is.
constexpr bool isPlain(char c) noexcept { return isPrintable(static_cast<unsigned char>(c)) && c != '\\'; }

void appendHex(std::string& text, char32_t number, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += "0123456789ABCDEF"[number >> shift & 0xF];
}

} // namespace

std::string_view vnDecodeText(std::string_view exchangeText, std::string& buffer, VnIfcRawBytes rawBytes,
                              std::vector<Fault>* faults) {
    const bool isAnyByteGood = rawBytes == VnIfcRawBytes::kKeep && !faults;
    if (exchangeText.find('\\') == std::string_view::npos && (isAnyByteGood || isUtf8(exchangeText)))
        return exchangeText;
    buffer.clear();
    Decoder(exchangeText, rawBytes, buffer, faults).run();
    return buffer;
}

VnIfcDecodedText vnDecodeText(std::string_view exchangeText, VnIfcRawBytes rawBytes) {
    VnIfcDecodedText result;
    Decoder(exchangeText, rawBytes, result.text, &result.faults).run();
    return result;
}

std::string vnEncodeText(std::string_view utf8) {
    std::string text;
    text.reserve(utf8.size());
    const char* const end = utf8.data() + utf8.size();
    int open = 0; // the digits for each character of the directive that is open
    for (const char* next = utf8.data(); next < end;) {
        const char* const first = next;
        const char32_t character = VrString::readCharacter(next, end);
        const bool isAsItIs = isPrintable(character) || character == VrString::kNoCharacter;
        const int digits = isAsItIs ? 0 : character < 0x10000 ? 4 : 8;
        if (open != 0 && digits != open)
            text += "\\X0\\";
        if (digits != 0 && digits != open)
            text += digits == 4 ? "\\X2\\" : "\\X4\\";
        open = digits;
        if (character == '\\')
            text += '\\';
        if (isAsItIs)
            text.append(first, next);
        else
            appendHex(text, character, digits);
    }
    if (open != 0)
        text += "\\X0\\";
    return text;
}

std::string_view vnEncodeText(std::string_view utf8, std::string& buffer) {
    if (std::all_of(utf8.begin(), utf8.end(), isPlain))
        return utf8;
    buffer = vnEncodeText(utf8);
    return buffer;
}

} // namespace VN_SDAI
