#pragma once

#include <string>
#include <string_view>

namespace express {

/// Copy of `text` with the ASCII letters in lower case; EXPRESS ignores case in all names.
std::string lower(std::string_view text);

/// Copy of `text` with the ASCII letters in upper case.
std::string upper(std::string_view text);

/// True when both texts are equal but for the case of ASCII letters.
bool equalNoCase(std::string_view left, std::string_view right);

/// The text, or its beginning and "..." if it is too long to be quoted in a message. Cuts no character of UTF-8.
std::string quotable(std::string_view text);

} // namespace express
