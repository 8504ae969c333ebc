#include "Platform.h"

#if defined(_WIN32)
#include <windows.h>

#include <io.h>
#include <process.h>
#include <psapi.h>
#else
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace vnifc::tool {

#if defined(_WIN32)

std::uint64_t peakMemory() noexcept {
    PROCESS_MEMORY_COUNTERS counters{};
    if (!::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters))
        return 0;
    return counters.PeakWorkingSetSize;
}

std::uint64_t physicalMemory() noexcept {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return ::GlobalMemoryStatusEx(&status) ? status.ullTotalPhys : 0;
}

bool isTerminal() noexcept { return ::_isatty(2) != 0; }
bool isOutputTerminal() noexcept { return ::_isatty(1) != 0; }
unsigned terminalWidth() noexcept {
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info))
        return 0;
    return static_cast<unsigned>(info.srWindow.Right - info.srWindow.Left + 1);
}

std::int64_t tellIn(std::FILE* file) noexcept { return ::_ftelli64(file); }

bool seekIn(std::FILE* file, std::int64_t offset, int origin) noexcept {
    return ::_fseeki64(file, offset, origin) == 0;
}

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

std::uint64_t physicalMemory() noexcept {
    return static_cast<std::uint64_t>(::sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

bool isTerminal() noexcept { return ::isatty(STDERR_FILENO) == 1; }
bool isOutputTerminal() noexcept { return ::isatty(STDOUT_FILENO) == 1; }
unsigned terminalWidth() noexcept {
    winsize size{};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

std::int64_t tellIn(std::FILE* file) noexcept { return ::ftello(file); }

bool seekIn(std::FILE* file, std::int64_t offset, int origin) noexcept { return ::fseeko(file, offset, origin) == 0; }

#endif

#if defined(__linux__)

bool pipeBeginsWith(char byte) noexcept {
    int copy[2];
    if (::pipe(copy) != 0)
        return false;
    char first = 0;
    const bool isThere = ::tee(STDIN_FILENO, copy[1], 1, 0) == 1 && ::read(copy[0], &first, 1) == 1;
    ::close(copy[0]);
    ::close(copy[1]);
    return isThere && first == byte;
}

#else

bool pipeBeginsWith(char) noexcept { return false; }

#endif

} // namespace vnifc::tool
