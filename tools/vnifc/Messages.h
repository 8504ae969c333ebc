#pragma once
#include <string>
#include <string_view>

namespace vnifc::tool {

/// Prints a line to standard error. What comes from a file can neither break the line nor reach the terminal as a
/// command. A standard error that cannot be written is no reason to fail.
void say(std::string_view line);

/// The text, in UTF-8, with a question mark in place of each control character.
std::string printable(std::string_view text);

} // namespace vnifc::tool
