#pragma once
#include <VnRx/VnPlatform.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace VN_SDAI {

/// A name in FILE_SCHEMA for which the classes of a release are taken.
struct VnIfcServedName {
    std::string_view text; ///< upper case
    bool isPrefix;         ///< stands for all names that begin so
    bool differs;          ///< of a text whose entities differ from the release's: a draft, an older or a later one
};

/// A release of the schema that this version of the library has classes for, whether its module is installed or not.
struct VnIfcRelease {
    std::string_view name;    ///< of its schema: "IFC4X3_ADD2"
    std::string_view module;  ///< to load: "VnIfc4x3Add2"
    std::string_view package; ///< that installs it: "vnifc-ifc4x3-add2"
    std::string_view title;   ///< for people: "IFC4X3 ADD2 (ISO 16739-1:2024)"
    /// The names in FILE_SCHEMA that it serves, its own among them.
    std::span<const VnIfcServedName> serves;
};

/// All releases, oldest first.
VNIFC_API std::span<const VnIfcRelease> vnIfcReleases() noexcept;

/// The release of that name, in any case; null when there is none.
VNIFC_API const VnIfcRelease* vnFindRelease(std::string_view name) noexcept;

/// How well the classes of a release fit what FILE_SCHEMA says.
enum class VnIfcReleaseFit : std::uint8_t {
    kExact,   ///< FILE_SCHEMA has the release's own name
    kServed,  ///< the release's classes are those of that name: IFC4_ADD2 with IFC4
    kDiffers, ///< a draft, an older or a later text, whose entities differ
    kUnknown, ///< a name that is not known, or none
};

/// The release whose classes are taken for a file.
struct VnIfcReleaseChoice {
    const VnIfcRelease* release; ///< never null
    /// How well its classes fit `schema`.
    VnIfcReleaseFit fit;
    std::string schema; ///< the name in FILE_SCHEMA that decided; the first one when none is known, empty when none
};

/// Chooses by the names in FILE_SCHEMA (ISO 10303-21, 8.2.4), in any case: the first that a release serves decides, and
/// the newest release is taken when there is none.
VNIFC_API VnIfcReleaseChoice vnChooseRelease(std::span<const std::string> schemas);

} // namespace VN_SDAI
