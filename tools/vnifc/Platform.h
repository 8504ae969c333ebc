#pragma once
#include <cstdint>

namespace vnifc {

/// The most memory that the process has occupied so far, in bytes; 0 where the system does not tell.
std::uint64_t peakMemory() noexcept;

/// Standard error is read by a person.
bool isTerminal() noexcept;

} // namespace vnifc
