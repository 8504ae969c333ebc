#include "Platform.h"

#if defined(_WIN32)
#include <windows.h>

#include <io.h>
#include <psapi.h>
#else
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace vnifc {

#if defined(_WIN32)

std::uint64_t peakMemory() noexcept {
    PROCESS_MEMORY_COUNTERS counters{};
    if (!::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters))
        return 0;
    return counters.PeakWorkingSetSize;
}

bool isTerminal() noexcept { return ::_isatty(2) != 0; }

#else

std::uint64_t peakMemory() noexcept {
    rusage usage{};
    if (::getrusage(RUSAGE_SELF, &usage) != 0)
        return 0;
    const auto peak = static_cast<std::uint64_t>(usage.ru_maxrss);
#if defined(__APPLE__)
    return peak;
#else
    return peak * 1024;
#endif
}

bool isTerminal() noexcept { return ::isatty(STDERR_FILENO) == 1; }

#endif

} // namespace vnifc
