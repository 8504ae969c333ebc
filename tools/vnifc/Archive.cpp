#include "Archive.h"

#include "Commands.h"
#include "Platform.h"

#include <VnIfcCore/VnSafeFile.h>

#include <fmt/format.h>
#include <minizip/unzip.h>
#include <minizip/zip.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

namespace vnifc::tool {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kLargestRatio = 200; // exchange files deflate to a fifth or a tenth of their size
constexpr std::uint64_t kAlwaysAllowed = std::uint64_t{16} << 20;
constexpr std::uint64_t kShareOfMemory = 4;
constexpr std::size_t kStep = std::size_t{1} << 20; // minizip counts in int

struct FileCloser {
    void operator()(std::FILE* file) const noexcept {
        if (file != stdin)
            std::fclose(file);
    }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

[[noreturn]] void fail(const std::string& what, const std::string& file, const std::string& reason) {
    throw Failure(kFileFailure, fmt::format("cannot {} {}: {}", what, file == "-" ? "standard input" : file, reason));
}

bool endsWith(std::string_view name, std::string_view suffix) {
    const auto equal = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 0x20 : a) == b; };
    return name.size() >= suffix.size() && std::ranges::equal(name.substr(name.size() - suffix.size()), suffix, equal);
}

bool isExchangeName(std::string_view name) { return endsWith(name, ".ifc"); }

/// Lets minizip work on a file that is open, and leave it open.
zlib_filefunc64_def functionsOn(std::FILE* file) {
    zlib_filefunc64_def functions{};
    functions.opaque = file;
    functions.zopen64_file = [](voidpf opaque, const void*, int) { return opaque; };
    functions.zread_file = [](voidpf, voidpf stream, void* to, uLong size) {
        return static_cast<uLong>(std::fread(to, 1, size, static_cast<std::FILE*>(stream)));
    };
    functions.zwrite_file = [](voidpf, voidpf stream, const void* from, uLong size) {
        return static_cast<uLong>(std::fwrite(from, 1, size, static_cast<std::FILE*>(stream)));
    };
    functions.ztell64_file = [](voidpf, voidpf stream) {
        return static_cast<ZPOS64_T>(tellIn(static_cast<std::FILE*>(stream)));
    };
    functions.zseek64_file = [](voidpf, voidpf stream, ZPOS64_T offset, int origin) -> long {
        return seekIn(static_cast<std::FILE*>(stream), static_cast<std::int64_t>(offset), origin) ? 0 : -1;
    };
    functions.zclose_file = [](voidpf, voidpf) { return 0; };
    functions.zerror_file = [](voidpf, voidpf stream) { return std::ferror(static_cast<std::FILE*>(stream)); };
    return functions;
}

// ---- reading

/// A copy of standard input in which one can go back.
File spooledInput() {
    File copy(std::tmpfile());
    std::array<char, 65536> buffer;
    std::uint64_t left = physicalMemory() / kShareOfMemory;
    std::size_t read = 0;
    while (copy && (read = std::fread(buffer.data(), 1, buffer.size(), stdin)) > 0) {
        if (read > left)
            fail("read", "-", "it is too large to be copied");
        left -= read;
        if (std::fwrite(buffer.data(), 1, read, copy.get()) != read)
            copy.reset();
    }
    if (!copy)
        fail("read", "-", std::strerror(errno));
    std::rewind(copy.get());
    return copy;
}

std::string restOf(std::FILE* file) {
    std::string text;
    std::array<char, 65536> buffer;
    while (const std::size_t read = std::fread(buffer.data(), 1, buffer.size(), file))
        text.append(buffer.data(), read);
    return text;
}

/// The input, opened, if it can be an archive and one can go back in it; null otherwise.
File openInput(const std::string& file) {
    std::error_code error;
    if (file != "-")
        return File(fs::is_regular_file(file, error) ? std::fopen(file.c_str(), "rb") : nullptr);
    if (tellIn(stdin) >= 0)
        return File(stdin);
    return pipeBeginsWith('P') ? spooledInput() : nullptr;
}

bool beginsAsArchive(std::FILE* file) {
    const std::int64_t begin = tellIn(file);
    char magic[4];
    const bool isArchive =
        std::fread(magic, 1, sizeof magic, file) == sizeof magic && std::memcmp(magic, "PK\3\4", sizeof magic) == 0;
    return seekIn(file, begin, SEEK_SET) && isArchive;
}

class ArchiveReader {
public:
    ArchiveReader(const std::string& name, std::FILE* file) : m_name(name) {
        seekIn(file, 0, SEEK_END);
        m_size = static_cast<std::uint64_t>(std::max<std::int64_t>(tellIn(file), 0));
        zlib_filefunc64_def functions = functionsOn(file);
        m_archive = unzOpen2_64("", &functions);
        if (!m_archive)
            fail("it is a broken archive");
    }
    ~ArchiveReader() {
        if (m_archive)
            unzClose(m_archive);
    }
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;

    std::string read(const std::function<void(std::string_view)>& say) {
        choose(say);
        const unz_file_info64 info = currentInfo(nullptr);
        if ((info.flag & 1) != 0)
            fail("the file in the archive is encrypted");
        const std::uint64_t stored = std::min<std::uint64_t>(info.compressed_size, m_size);
        const std::uint64_t limit =
            std::min(std::max(stored * kLargestRatio, kAlwaysAllowed), physicalMemory() / kShareOfMemory);
        if (info.uncompressed_size > limit)
            fail(fmt::format("the file in the archive is too large: {} bytes, {} at most", info.uncompressed_size,
                             limit));
        return inflate(static_cast<std::size_t>(info.uncompressed_size));
    }

private:
    [[noreturn]] void fail(const std::string& reason) const { tool::fail("read", m_name, reason); }

    unz_file_info64 currentInfo(std::string* name) const {
        unz_file_info64 info;
        char buffer[65536]; // as long as a name can be
        if (unzGetCurrentFileInfo64(m_archive, &info, buffer, sizeof buffer, nullptr, 0, nullptr, 0) != UNZ_OK)
            fail("it is a broken archive");
        if (name)
            name->assign(buffer, std::min<std::size_t>(info.size_filename, sizeof buffer));
        return info;
    }

    /// Makes the exchange file the current one.
    void choose(const std::function<void(std::string_view)>& say) {
        std::uint64_t files = 0;
        unz64_file_pos chosen{}, place{};
        std::string chosenName, name;
        int status = unzGoToFirstFile(m_archive);
        for (; status == UNZ_OK; status = unzGoToNextFile(m_archive)) {
            currentInfo(&name);
            if (name.ends_with('/'))
                continue;
            unzGetFilePos64(m_archive, &place);
            if (++files > 1 && (isExchangeName(chosenName) || !isExchangeName(name)))
                continue;
            chosen = place;
            chosenName = name;
        }
        if (status != UNZ_END_OF_LIST_OF_FILE)
            fail("it is a broken archive");
        if (files == 0 || (files > 1 && !isExchangeName(chosenName)))
            fail(files == 0 ? "the archive is empty" : "the archive has several files, and none of them is an .ifc");
        if (files > 1)
            say(fmt::format("{} files in the archive; reading {}", files, chosenName));
        if (unzGoToFilePos64(m_archive, &chosen) != UNZ_OK)
            fail("it is a broken archive");
    }

    std::string inflate(std::size_t size) {
        std::string text(size, '\0');
        std::size_t done = 0;
        int read = unzOpenCurrentFile(m_archive);
        if (read == UNZ_OK)
            while ((read = unzReadCurrentFile(m_archive, text.data() + done,
                                              static_cast<unsigned>(std::min(size - done, kStep)))) > 0)
                done += static_cast<std::size_t>(read);
        if (read != UNZ_OK || unzCloseCurrentFile(m_archive) != UNZ_OK || done != size)
            fail("the file in the archive is broken");
        return text;
    }

    std::string m_name;
    std::uint64_t m_size = 0;
    unzFile m_archive = nullptr;
};

// ---- writing

[[noreturn]] void failToWrite(const std::string& target, const VN_SDAI::VnSafeFile& file) {
    fail("write", target, std::strerror(file.error() != 0 ? file.error() : errno));
}

/// Begins a file in an archive; its name is in UTF-8, and its time always the same, so that equal models give equal
/// archives.
bool beginEntry(zipFile archive, const std::string& name, std::size_t size) {
    constexpr uLong kNamesAreUtf8 = 1 << 11, kMadeBy = 20;
    constexpr std::size_t kLargestOfOldForm = 0xFFFFFFFF;
    zip_fileinfo info{};
    info.dosDate = 0x21 << 16; // 1 January 1980, the first that there is
    return zipOpenNewFileInZip4_64(archive, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                                   Z_DEFAULT_COMPRESSION, 0, -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY, nullptr, 0,
                                   kMadeBy, kNamesAreUtf8, size >= kLargestOfOldForm) == ZIP_OK;
}

} // namespace

bool isArchiveName(std::string_view name) { return endsWith(name, ".ifczip") || endsWith(name, ".zip"); }

std::optional<std::string> readArchive(const std::string& file, const std::function<void(std::string_view)>& say) {
    const File input = openInput(file);
    if (!input)
        return std::nullopt;
    if (beginsAsArchive(input.get()))
        return ArchiveReader(file, input.get()).read(say);
    // What came through a pipe cannot be read there again.
    const bool isCopy = file == "-" && input.get() != stdin;
    return isCopy ? std::optional(restOf(input.get())) : std::nullopt;
}

void writeArchive(const std::string& target, std::string_view text) {
    VN_SDAI::VnSafeFile pending(target);
    if (!pending.stream())
        failToWrite(target, pending);
    zlib_filefunc64_def functions = functionsOn(pending.stream());
    const zipFile archive = zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &functions);
    const std::string name = fs::path(target).stem().string() + ".ifc";
    bool good = archive && beginEntry(archive, name, text.size());
    for (; good && !text.empty(); text.remove_prefix(std::min(text.size(), kStep)))
        good = zipWriteInFileInZip(archive, text.data(), static_cast<unsigned>(std::min(text.size(), kStep))) == ZIP_OK;
    // An archive that is open must be closed, whatever happened before.
    good = good && zipCloseFileInZip(archive) == ZIP_OK;
    good = archive && zipClose(archive, nullptr) == ZIP_OK && good;
    if (!good || !pending.commit())
        failToWrite(target, pending);
}

} // namespace vnifc::tool
