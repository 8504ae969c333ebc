#pragma once
#include <cstdint>
#include <cstdio>

namespace vnifc::tool {

/// The most memory that the process has occupied so far, in bytes; 0 where the system does not tell.
std::uint64_t peakMemory() noexcept;

/// The memory of the machine, in bytes.
std::uint64_t physicalMemory() noexcept;

/// Standard error is read by a person.
bool isTerminal() noexcept;
/// The same of standard output.
bool isOutputTerminal() noexcept;
/// How many columns the terminal of standard output has; 0 when there is none.
unsigned terminalWidth() noexcept;

/// The position in a file; negative where there is none, as in a pipe.
std::int64_t tellIn(std::FILE* file) noexcept;
bool seekIn(std::FILE* file, std::int64_t offset, int origin) noexcept;

/// True when standard input is a pipe and this its next byte, which stays there. Waits for it. False where the system
/// does not tell.
bool pipeBeginsWith(char byte) noexcept;

} // namespace vnifc::tool
