#include "SpfInput.h"

#include "SpfScan.h"
#include "SpfStructure.h"
#include "WorkSharing.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <system_error>

#if !defined(_WIN32)
#include <unistd.h>
#endif

namespace VN_SDAI {

namespace {

constexpr std::size_t kReadStep = std::size_t{1} << 20;
constexpr std::size_t kReadPiece = std::size_t{4} << 20; // that a thread reads at a time

struct FileCloser {
    void operator()(std::FILE* file) const noexcept {
        if (file != stdin)
            std::fclose(file);
    }
};

std::FILE* openForReading(const std::filesystem::path& path) {
    if (path == "-")
        return stdin;
#if defined(_WIN32)
    return ::_wfopen(path.c_str(), L"rb");
#else
    return std::fopen(path.c_str(), "rb");
#endif
}

} // namespace

// Fresh pages are zeroed, so that the padding needs no writing.
void SpfInput::copyFrom(std::string_view text) {
    m_memory = PageMemory(text.size() + kVnSpfPadding);
    std::copy(text.begin(), text.end(), m_memory.data());
    m_size = text.size();
}

/// Reads as much of a regular file as its size promises, in pieces, and leaves the file's position past what was read
/// without a gap.
void SpfInput::readTogether([[maybe_unused]] std::FILE* file, [[maybe_unused]] std::size_t size,
                            [[maybe_unused]] unsigned threads) {
#if !defined(_WIN32)
    const std::size_t pieces = size / kReadPiece; // the rest is read by whoever reads on
    if (pieces < 2)
        return;
    m_memory = PageMemory(size + 1 + kVnSpfPadding);
    std::vector<std::size_t> read(pieces);
    shareWork(pieces, threadsFor(threads, pieces), {}, [&](unsigned, std::size_t i) {
        while (read[i] < kReadPiece) {
            const std::size_t at = i * kReadPiece + read[i];
            const ::ssize_t more =
                ::pread(::fileno(file), m_memory.data() + at, kReadPiece - read[i], static_cast<off_t>(at));
            if (more <= 0)
                break; // the file became shorter, or who reads on from here meets the same error
            read[i] += static_cast<std::size_t>(more);
        }
        return true;
    });
    const auto firstShort = std::ranges::find_if(read, [](std::size_t bytes) { return bytes < kReadPiece; });
    m_size = static_cast<std::size_t>(firstShort - read.begin()) * kReadPiece;
    // What lies beyond, as in fresh memory.
    if (firstShort != read.end())
        std::fill(m_memory.data() + m_size, m_memory.data() + pieces * kReadPiece, '\0');
    if (::fseeko(file, static_cast<off_t>(m_size), SEEK_SET) != 0)
        m_size = 0;
#endif
}

VN::ErrorStatus SpfInput::readFile(const std::filesystem::path& path, unsigned threads, std::string& message) try {
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
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    if (std::filesystem::is_regular_file(status)) {
        const std::uintmax_t size = std::filesystem::file_size(path, error);
        if (!error) {
            capacity = static_cast<std::size_t>(size) + 1;
            readTogether(file.get(), static_cast<std::size_t>(size), threads);
        }
    }
    while (true) {
        m_memory.grow(capacity + kVnSpfPadding);
        const std::size_t wanted = capacity - m_size;
        const std::size_t read = std::fread(m_memory.data() + m_size, 1, wanted, file.get());
        m_size += read;
        if (read < wanted)
            break;
        // Some devices and pipes never end.
        if (capacity == kReadStep && !SpfStructure::canBegin(begin(), end()))
            break;
        capacity *= 2;
    }
    if (std::ferror(file.get())) {
        message = std::strerror(errno);
        return VN::eCannotRead;
    }
    return VN::eOk;
} catch (const std::bad_alloc&) {
    message = "it does not fit into memory";
    return VN::eCannotRead;
}

} // namespace VN_SDAI
