#include <express/Text.h>

#include <algorithm>

namespace express {
namespace {

// Not the <cctype> functions: the result must not depend on the locale of the host.
constexpr char lowerChar(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
constexpr char upperChar(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

} // namespace

std::string lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lowerChar);
    return result;
}

std::string upper(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), upperChar);
    return result;
}

bool equalNoCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lowerChar(a) == lowerChar(b); });
}

std::string quotable(std::string_view text) {
    constexpr std::size_t kMost = 100;
    if (text.size() <= kMost)
        return std::string(text);
    std::size_t end = kMost;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return std::string(text.substr(0, end)) + "...";
}

} // namespace express
