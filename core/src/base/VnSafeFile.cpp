#include <VnIfcCore/VnSafeFile.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#if defined(_WIN32)
#include <io.h>
#include <process.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace VN_SDAI {

namespace {

namespace fs = std::filesystem;

/// The file that is replaced: what a link points to, in the end.
fs::path replacedBy(const fs::path& target) {
    std::error_code error;
    if (!fs::is_symlink(target, error))
        return target;
    const fs::path real = fs::canonical(target, error);
    return error ? target : real;
}

/// A name beside the target that no other file has that is being written.
fs::path nameBeside(const fs::path& target) {
    static std::atomic<unsigned> count{0};
#if defined(_WIN32)
    const int process = ::_getpid();
#else
    const int process = ::getpid();
#endif
    fs::path name = target;
    name += ".part" + std::to_string(process) + '_' + std::to_string(count++);
    return name;
}

bool bringToDisk(std::FILE* file) noexcept {
#if defined(_WIN32)
    return std::fflush(file) == 0 && ::_commit(::_fileno(file)) == 0;
#else
    return std::fflush(file) == 0 && ::fsync(::fileno(file)) == 0;
#endif
}

#if defined(__linux__)
std::string pathOf(std::FILE* file) { return "/proc/self/fd/" + std::to_string(::fileno(file)); }

/// A file without a name in the directory of the target; null where there are none, or where they could get no name.
std::FILE* openUnnamed(const fs::path& target) {
    const fs::path directory = target.has_parent_path() ? target.parent_path() : fs::path(".");
    constexpr mode_t kByUmask = 0666;
    const int descriptor = ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kByUmask);
    if (descriptor < 0)
        return nullptr;
    std::FILE* file = ::fdopen(descriptor, "wb+");
    if (!file) {
        ::close(descriptor);
        return nullptr;
    }
    if (::access(pathOf(file).c_str(), F_OK) == 0)
        return file;
    std::fclose(file);
    return nullptr;
}
#endif

} // namespace

VnSafeFile::VnSafeFile(const fs::path& target) : m_target(replacedBy(target)), m_name(nameBeside(m_target)) {
#if defined(__linux__)
    m_file = openUnnamed(m_target);
#endif
    if (!m_file)
        openNamed();
    if (m_file)
        std::setvbuf(m_file, nullptr, _IONBF, 0); // pieces are large
}

void VnSafeFile::openNamed() {
    m_file = std::fopen(m_name.string().c_str(), "wb+x");
    m_isNamed = m_file != nullptr;
    if (!m_file)
        m_error = errno;
}

VnSafeFile::~VnSafeFile() {
    if (m_file)
        std::fclose(m_file);
    std::error_code ignored;
    if (m_isNamed)
        fs::remove(m_name, ignored);
}

bool VnSafeFile::fail(int error) noexcept {
    m_error = error;
    return false;
}

bool VnSafeFile::write(std::string_view text) {
    if (!m_file)
        return false;
    if (std::fwrite(text.data(), 1, text.size(), m_file) != text.size())
        return fail(errno);
#if defined(__linux__)
    // Begins to bring it to the disk while the rest is being made, so that little is left to wait for at the end.
    ::sync_file_range(::fileno(m_file), static_cast<off_t>(m_written), static_cast<off_t>(text.size()),
                      SYNC_FILE_RANGE_WRITE);
#endif
    m_written += text.size();
    return true;
}

/// Files that cannot keep them get those of a new file.
void VnSafeFile::keepPermissions() noexcept {
    std::error_code error;
    const fs::file_status replaced = fs::status(m_target, error);
    if (!error && fs::exists(replaced))
        fs::permissions(m_name, replaced.permissions(), error);
}

bool VnSafeFile::giveName() {
#if defined(__linux__)
    if (!m_isNamed && ::linkat(AT_FDCWD, pathOf(m_file).c_str(), AT_FDCWD, m_name.c_str(), AT_SYMLINK_FOLLOW) != 0)
        return fail(errno);
    m_isNamed = true;
#endif
    keepPermissions();
    return true;
}

bool VnSafeFile::commit() {
    if (!m_file)
        return false;
    if (!bringToDisk(m_file))
        return fail(errno);
    if (!giveName())
        return false;
    if (std::fclose(std::exchange(m_file, nullptr)) != 0)
        return fail(errno);
    std::error_code error;
    fs::rename(m_name, m_target, error);
    if (error)
        return fail(error.value());
    m_isNamed = false;
    return true;
}

} // namespace VN_SDAI
