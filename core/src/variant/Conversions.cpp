#include "Conversions.h"

#include "../base/Logical.h"
#include "ExchangeText.h"

#include <VnIfcCore/VnIfcText.h>

#include <algorithm>
#include <charconv>

namespace VN_SDAI {

namespace {

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

template <class Write>
std::string written(Write write) {
    ExchangeText text;
    write(text);
    return std::string(text.output() == "$" ? std::string_view() : text.output());
}

template <class T>
bool readWhole(std::string_view text, T& value) {
    if (text.size() > 1 && text[0] == '+' && isDigit(text[1]))
        text.remove_prefix(1);
    T read{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, read);
    if (error != std::errc() || stop != end)
        return false;
    value = read;
    return true;
}

/// "T" of ".T."; empty for a text of another form.
std::string_view literalOf(std::string_view text) noexcept {
    return text.size() == 3 && text.front() == '.' && text.back() == '.' ? text.substr(1, 1) : std::string_view();
}

} // namespace

// ---- simple values

std::string exchangeForm(int value) {
    return written([value](ExchangeText& text) { text.wrPrimitive(value); });
}
std::string exchangeForm(unsigned long value) { return std::to_string(value); }
std::string exchangeForm(double value) {
    return written([value](ExchangeText& text) { text.wrPrimitive(value); });
}
std::string exchangeForm(VnIfcBoolean value) {
    return written([value](ExchangeText& text) { text.wrPrimitive(value, false, false); });
}
std::string exchangeForm(VnIfcLogical value) {
    return written([value](ExchangeText& text) { text.wrPrimitive(value, false, false); });
}

bool fromExchangeForm(std::string_view text, int& value) {
    int read = 0;
    if (!readWhole(text, read) || read == Consts::VnIntUnset)
        return false;
    value = read;
    return true;
}

bool fromExchangeForm(std::string_view text, unsigned long& value) { return readWhole(text, value); }

bool fromExchangeForm(std::string_view text, double& value) {
    // Words for infinite and undefined numbers are none of the exchange structure.
    const bool isNumber = std::all_of(text.begin(), text.end(), [](char c) {
        return isDigit(c) || c == '.' || c == '+' || c == '-' || c == 'E' || c == 'e';
    });
    return isNumber && readWhole(text, value);
}

bool fromExchangeForm(std::string_view text, VnIfcBoolean& value) {
    const VnIfcBoolean read = booleanOf(literalOf(text));
    if (read.isUnset())
        return false;
    value = read;
    return true;
}

bool fromExchangeForm(std::string_view text, VnIfcLogical& value) {
    const VnIfcLogical read = logicalOf(literalOf(text));
    if (read.isUnset())
        return false;
    value = read;
    return true;
}

// ---- text

std::optional<std::string_view> exchangeText(const char* value, std::string&) {
    return value ? std::optional<std::string_view>(value) : std::nullopt;
}
std::optional<std::string_view> exchangeText(const VnAnsiString& value, std::string&) { return value.view(); }
std::optional<std::string_view> exchangeText(const VrString& value, std::string& buffer) {
    return vnEncodeText(value.view(), buffer);
}
std::optional<std::string_view> exchangeText(const VnIfcGUID& value, std::string&) { return value.view(); }

bool fromExchangeText(std::string_view text, TextPointer& value) {
    if (text.find('\0') != text.npos)
        return false;
    value.copy = text;
    value.text = value.copy.constStr();
    return true;
}

bool fromExchangeText(std::string_view text, VnAnsiString& value) {
    value = text;
    return true;
}

bool fromExchangeText(std::string_view text, VrString& value) {
    std::string buffer;
    value.assign(vnDecodeText(text, buffer));
    return true;
}

bool fromExchangeText(std::string_view text, VnIfcGUID& value) {
    if (text.size() > VnIfcGUID::kLength)
        return false;
    value.assign(text);
    return true;
}

// ---- numbers

bool widen(int from, double& to) {
    to = from == Consts::VnIntUnset ? Consts::VnRealUnset : from;
    return true;
}

bool widen(int from, unsigned long& to) {
    if (from < 0 || from == Consts::VnIntUnset)
        return false;
    to = static_cast<unsigned long>(from);
    return true;
}

bool widen(unsigned long from, double& to) {
    // Compared as a difference of reals, since the nearest one may lie past the largest integer.
    const auto real = static_cast<double>(from);
    constexpr double kPastLargest = 2.0 * static_cast<double>(~0ul / 2 + 1);
    if (real >= kPastLargest || static_cast<unsigned long>(real) != from)
        return false;
    to = real;
    return true;
}

bool widen(VnIfcBoolean from, VnIfcLogical& to) {
    to = from.isUnset() ? VnIfcLogical::Unset : VnIfcLogical(from == VnIfcBoolean::True);
    return true;
}

} // namespace VN_SDAI
