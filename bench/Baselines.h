#pragma once
#include <cstddef>
#include <cstdint>
#include <string_view>

/// What any reader of the same bytes has to do at the least; every figure is quoted as a ratio to these.
namespace bench {

/// Looks at every byte once: the number of line ends. Close to the speed of memory.
std::size_t scan(std::string_view text) noexcept;

struct Tokens {
    std::uint64_t instances = 0;
    std::uint64_t references = 0;
    std::uint64_t strings = 0;
    std::uint64_t lists = 0;
    std::uint64_t others = 0;
};

/// Takes the text apart, byte by byte, on one thread: instance numbers are converted, strings and comments skipped,
/// parentheses matched; nothing is stored.
Tokens tokenize(std::string_view text) noexcept;

} // namespace bench
