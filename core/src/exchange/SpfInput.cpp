#include "SpfInput.h"

#include "SpfScan.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <system_error>

namespace VN_SDAI {

namespace {

constexpr std::size_t kReadStep = std::size_t{1} << 20;

struct FileCloser {
    void operator()(std::FILE* file) const noexcept {
        if (file != stdin) std::fclose(file);
    }
};

std::FILE* openForReading(const std::filesystem::path& path) {
    if (path == "-") return stdin;
#if defined(_WIN32)
    return ::_wfopen(path.c_str(), L"rb");
#else
    return std::fopen(path.c_str(), "rb");
#endif
}

}  // namespace

SpfInput::~SpfInput() { std::free(m_data); }

bool SpfInput::reserve(std::size_t capacity) {
    if (capacity <= m_capacity) return true;
    char* grown = static_cast<char*>(std::realloc(m_data, capacity + spf::kPadding));
    if (!grown) return false;
    m_data = grown;
    m_capacity = capacity;
    return true;
}

void SpfInput::finish() noexcept { std::memset(m_data + m_size, 0, spf::kPadding); }

void SpfInput::copyFrom(std::string_view text) {
    if (!reserve(text.size())) throw std::bad_alloc();
    if (!m_data && !reserve(1)) throw std::bad_alloc();
    std::copy(text.begin(), text.end(), m_data);
    m_size = text.size();
    finish();
}

VN::ErrorStatus SpfInput::readFile(const std::filesystem::path& path, std::string& message) {
    std::error_code error;
    const bool isStandardInput = path == "-";
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (!isStandardInput && !std::filesystem::exists(status)) {
        message = "there is no such file";
        return VN::eNotFound;
    }
    if (std::filesystem::is_directory(status)) {
        message = "it is a directory";
        return VN::eCannotRead;
    }
    const std::unique_ptr<std::FILE, FileCloser> file(openForReading(path));
    if (!file) {
        message = std::strerror(errno);
        return VN::eCannotRead;
    }
    // The stated size is a hint only: the file may grow or shrink while it is read.
    std::size_t capacity = kReadStep;
    if (std::filesystem::is_regular_file(status)) {
        const std::uintmax_t size = std::filesystem::file_size(path, error);
        if (!error) capacity = static_cast<std::size_t>(size) + 1;
    }
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    while (true) {
        if (!reserve(capacity)) {
            message = "it does not fit into memory";
            return VN::eCannotRead;
        }
        const std::size_t wanted = m_capacity - m_size;
        const std::size_t read = std::fread(m_data + m_size, 1, wanted, file.get());
        m_size += read;
        if (read < wanted) break;
        capacity = 2 * m_capacity;
    }
    if (std::ferror(file.get())) {
        message = std::strerror(errno);
        return VN::eCannotRead;
    }
    finish();
    return VN::eOk;
}

}  // namespace VN_SDAI
