#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace vnifc::tool {

enum class Stream : std::uint8_t { kOutput, kErrors };
enum class Paint : std::uint8_t { kError, kWarning, kFaint, kStrong, kAccent };

/// What --color says: "auto", "always" or "never".
void chooseColours(std::string_view choice);

/// Whether a stream gets colours: as --color says; else not when NO_COLOR is set to something or CLICOLOR to 0 or the
/// terminal is a dumb one, always when CLICOLOR_FORCE is set to something but 0, and otherwise when it is a terminal.
bool hasColours(Stream stream) noexcept;

/// The text in a colour, or as it is.
std::string painted(std::string_view text, Paint paint, bool isColoured);

/// How wide lines for standard output may be: as the terminal, or as COLUMNS says; without both, 80.
unsigned lineWidth() noexcept;

/// A number for standard output: with separators for thousands when a person reads it.
std::string forReader(std::uint64_t number);
/// A bar of block characters, UTF-8, for a share of at most 1 of `width` columns.
std::string bar(double share, unsigned width);

} // namespace vnifc::tool
