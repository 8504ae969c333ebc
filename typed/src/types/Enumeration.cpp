#include <VnIfcCore/VnAscii.h>
#include <VnIfcTyped/Enumeration.h>

namespace VN_SDAI::typed {

namespace {

bool equalNoCase(std::string_view left, const char* right) noexcept {
    for (const char c : left)
        if (vnUpper(c) != *right++)
            return false; // literals are upper-case, and end with a NUL that no text equals
    return *right == '\0';
}

} // namespace

std::uint32_t EnumerationClass::fromLiteral(std::string_view literal) const noexcept {
    std::uint32_t code = 0;
    while (code < literals.size() && !equalNoCase(literal, literals[code]))
        ++code;
    return code;
}

} // namespace VN_SDAI::typed
