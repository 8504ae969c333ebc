// What a host pays besides time: start of the module, allocations and memory of one file with its inverse attributes,
// and the cost of many files one after another. One process for each measurement, for peaks stay.
#include <VnIfcCore/VnIfcFile.h>
#include <VnIfcCore/VnIfcModel.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>

namespace {

using namespace VN_SDAI;

std::atomic<std::size_t> allocations = 0;

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// A line of what the system tells of this process, in bytes; 0 where it tells nothing.
double memoryOf(std::string_view name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(name))
            return std::strtod(line.c_str() + name.size() + 1, nullptr) * 1024;
    return 0;
}

} // namespace

void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

int main(int argc, char** argv) try {
    if (argc < 2) {
        std::fputs("usage: vnifc_footprint FILE [THREADS [TIMES]]\n", stderr);
        return 2;
    }
    const auto begin = std::chrono::steady_clock::now();
    const VnModule module = vnLoadModule(vnIfcReleases().back());
    std::printf("module loaded and initialised   %.2f ms\n", secondsSince(begin) * 1e3);

    VnIfcReadOptions options;
    options.threads = argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)) : 1;
    const int times = argc > 3 ? std::atoi(argv[3]) : 1;
    const double before = memoryOf("VmRSS");
    allocations = 0;
    double bytes = 0;
    double instances = 0;
    double held = 0;
    double seconds = 0;
    for (int i = 0; i < times; ++i) {
        VnIfcModel model(module.schema());
        const auto start = std::chrono::steady_clock::now();
        const VnIfcFileResult result = model.readFile(argv[1], options);
        seconds += secondsSince(start);
        if (!result) {
            std::fprintf(stderr, "%s: %s\n", argv[1], result.message.c_str());
            return 3;
        }
        bytes = static_cast<double>(result.bytes);
        instances = static_cast<double>(model.count());
        held = memoryOf("VmRSS");
    }
    std::printf("load with inverse attributes    %.3f ms a file, %.0f MB/s\n", seconds / times * 1e3,
                bytes * times / seconds / 1e6);
    std::printf("allocations                     %.3f an instance\n",
                static_cast<double>(allocations) / times / instances);
    std::printf("peak memory / file              %.2f\n", memoryOf("VmHWM") / bytes);
    std::printf("memory of the model / file      %.2f\n", (held - before) / bytes);
    std::printf("left when the model is gone     %.1f MB more than before\n", (memoryOf("VmRSS") - before) / 1e6);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 3;
}
