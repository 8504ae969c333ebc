#include "Output.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

namespace expgen {
namespace {

[[noreturn]] void fail(const char* what, const std::filesystem::path& path) {
    throw std::system_error(errno, std::generic_category(), what + path.string());
}

void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream)
        fail("cannot write ", path);
}

} // namespace

std::string readFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(stream), {});
    if (!stream.is_open() || stream.bad())
        fail("cannot read ", path);
    return text;
}

std::size_t writeChanged(const Files& files, const std::filesystem::path& directory) {
    std::size_t count = 0;
    for (const auto& [name, text] : files) {
        const std::filesystem::path path = directory / name;
        if (!std::filesystem::exists(path) || readFile(path) != text) {
            writeFile(path, text);
            ++count;
        }
    }
    return count;
}

} // namespace expgen
