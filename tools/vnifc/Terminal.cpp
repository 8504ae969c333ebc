#include "Terminal.h"

#include "Platform.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace vnifc::tool {

namespace {

enum class Choice : std::uint8_t { kAuto, kAlways, kNever };
Choice theChoice = Choice::kAuto;

std::string_view variable(const char* name) noexcept {
    const char* value = std::getenv(name);
    return value ? value : "";
}

} // namespace

void chooseColours(std::string_view choice) {
    theChoice = Choice::kAuto;
    if (choice == "always")
        theChoice = Choice::kAlways;
    else if (choice == "never")
        theChoice = Choice::kNever;
}

bool hasColours(Stream stream) noexcept {
    if (theChoice != Choice::kAuto)
        return theChoice == Choice::kAlways;
    if (!variable("NO_COLOR").empty())
        return false;
    if (const std::string_view force = variable("CLICOLOR_FORCE"); !force.empty() && force != "0")
        return true;
    if (variable("CLICOLOR") == "0" || variable("TERM") == "dumb")
        return false;
    return stream == Stream::kOutput ? isOutputTerminal() : isTerminal();
}

std::string painted(std::string_view text, Paint paint, bool isColoured) {
    if (!isColoured)
        return std::string(text);
    // Of the eight colours that every terminal has, in the order of Paint.
    constexpr std::string_view kCodes[] = {"\x1b[1;31m", "\x1b[1;33m", "\x1b[2m", "\x1b[1m", "\x1b[36m"};
    return std::string(kCodes[static_cast<std::size_t>(paint)]).append(text).append("\x1b[0m");
}

unsigned lineWidth() noexcept {
    constexpr unsigned kUsual = 80;
    constexpr unsigned kLeast = 40;
    unsigned width = terminalWidth();
    const std::string_view columns = variable("COLUMNS");
    if (width == 0 && std::from_chars(columns.data(), columns.data() + columns.size(), width).ec != std::errc())
        width = kUsual;
    return std::max(width, kLeast);
}

std::string forReader(std::uint64_t number) {
    std::string digits = std::to_string(number);
    if (!isOutputTerminal())
        return digits;
    constexpr std::size_t kGroup = 3;
    for (std::size_t at = digits.size(); at > kGroup;)
        digits.insert(at -= kGroup, ",");
    return digits;
}

std::string bar(double share, unsigned width) {
    // What is there at all is seen.
    const auto count = std::max(1L, std::lround(share * width));
    std::string text;
    for (long i = 0; i < count; ++i)
        text += "▇";
    return text;
}

} // namespace vnifc::tool
