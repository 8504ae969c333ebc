#pragma once
#include <VnRx/VnPlatform.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string_view>

namespace VN_SDAI {

/// A file that is written beside its target and takes the target's name when everything is on disk, so that the target
/// is complete or as it was. Where the system has files without a name, nothing is left behind even by a process that
/// is killed; elsewhere its name ends in ".part" and a number. A link stays a link: what it points to is replaced. The
/// permissions of a file that is replaced stay.
class VNIFC_API VnSafeFile {
public:
    /// Opens the file for writing and reading; error() says when that fails.
    explicit VnSafeFile(const std::filesystem::path& target);
    /// Takes the file away, unless it was committed.
    ~VnSafeFile();
    VnSafeFile(const VnSafeFile&) = delete;
    VnSafeFile& operator=(const VnSafeFile&) = delete;

    /// The file, unbuffered and good for seeking; null when it could not be opened. Not to be closed.
    std::FILE* stream() const noexcept { return m_file; }
    /// Appends to the file; false when that fails.
    bool write(std::string_view text);
    /// Brings everything to disk and gives the file its name; false, and the target as it was, when that fails. The
    /// last operation on the file.
    bool commit();
    /// Why an operation failed, as in errno; 0 when none did.
    int error() const noexcept { return m_error; }

private:
    bool fail(int error) noexcept;
    void openNamed();
    bool giveName();
    void keepPermissions() noexcept;

    std::filesystem::path m_target;
    std::filesystem::path m_name; ///< beside the target
    bool m_isNamed = false;       ///< the file has that name already
    std::FILE* m_file = nullptr;
    std::uint64_t m_written = 0;
    int m_error = 0;
};

} // namespace VN_SDAI
