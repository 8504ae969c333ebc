#pragma once
#include <VnIfcCore/VnIfcBoolean.h>
#include <VnIfcCore/VnIfcConsts.h>
#include <VnIfcCore/VnIfcEnumDescription.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcLogical.h>
#include <VnRx/VrString.h>

#include <optional>
#include <string>

// What the core's simple types convert to: wider numbers, other kinds of text, and text in exchange form. What would
// lose something is refused.
namespace VN_SDAI {

/// A NUL-terminated text, and the copy of it that a conversion made. Begins with the pointer that users see.
struct TextPointer {
    TextPointer() noexcept = default;
    explicit TextPointer(const char* foreign) noexcept : text(foreign) {}
    TextPointer(const TextPointer& other) : text(other.text), copy(other.copy) {
        if (other.text == other.copy.constStr())
            text = copy.constStr();
    }
    TextPointer& operator=(const TextPointer&) = delete;

    const char* text = nullptr;
    VnAnsiString copy;
};

template <class T>
inline constexpr bool isText = std::is_same_v<T, const char*> || std::is_same_v<T, VnAnsiString> ||
                               std::is_same_v<T, VrString> || std::is_same_v<T, VnIfcGUID>;
template <class T>
inline constexpr bool isSimple =
    std::is_same_v<T, int> || std::is_same_v<T, double> || std::is_same_v<T, unsigned long> ||
    std::is_same_v<T, VnIfcBoolean> || std::is_same_v<T, VnIfcLogical>;

/// The exchange form of a value; empty for an unset one, and for a number that has no such form.
std::string exchangeForm(int value);
std::string exchangeForm(unsigned long value);
std::string exchangeForm(double value);
std::string exchangeForm(VnIfcBoolean value);
std::string exchangeForm(VnIfcLogical value);

/// Reads the exchange form; false for any other text, and for values that stand for "unset".
bool fromExchangeForm(std::string_view text, int& value);
bool fromExchangeForm(std::string_view text, unsigned long& value);
bool fromExchangeForm(std::string_view text, double& value);
bool fromExchangeForm(std::string_view text, VnIfcBoolean& value);
bool fromExchangeForm(std::string_view text, VnIfcLogical& value);

/// The exchange text of a text: what stands in the value itself, or in `buffer`. Nothing for a null pointer.
std::optional<std::string_view> exchangeText(const char* value, std::string& buffer);
std::optional<std::string_view> exchangeText(const VnAnsiString& value, std::string& buffer);
std::optional<std::string_view> exchangeText(const VrString& value, std::string& buffer);
std::optional<std::string_view> exchangeText(const VnIfcGUID& value, std::string& buffer);

/// Makes a text of an exchange text; false when it has no room for it.
bool fromExchangeText(std::string_view text, TextPointer& value);
bool fromExchangeText(std::string_view text, VnAnsiString& value);
bool fromExchangeText(std::string_view text, VrString& value);
bool fromExchangeText(std::string_view text, VnIfcGUID& value);

// All other pairs, which would else find one of these by implicit conversion.
template <class From, class To>
bool widen(From from, To& to) = delete;
bool widen(int from, double& to);
bool widen(int from, unsigned long& to);
bool widen(unsigned long from, double& to);
bool widen(VnIfcBoolean from, VnIfcLogical& to);

} // namespace VN_SDAI
