#include "Commands.h"
#include "DictionaryRecord.h"

#include <VnIfcCore/VnIfcFile.h>
#include <VnIfcCore/VnIfcSchema.h>

#include <fmt/format.h>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

std::string lineOf(const VnIfcRelease& release) {
    try {
        const VnModule module = vnLoadModule(release);
        return fmt::format("{:<12} version {}, {}", release.name, versionOf(*module.schema()), release.title);
    } catch (const std::runtime_error&) {
        return fmt::format("{:<12} not installed (package {})", release.name, release.package);
    }
}

} // namespace

std::string versionText() {
    std::string text = "vnifc " VNIFC_VERSION;
    for (const VnIfcRelease& release : vnIfcReleases())
        text += '\n' + lineOf(release);
    return text;
}

} // namespace vnifc::tool
