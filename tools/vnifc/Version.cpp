#include "Commands.h"
#include "DictionaryRecord.h"

#include <VnIfcCore/VnIfcFile.h>
#include <VnIfcCore/VnIfcSchema.h>

#include <fmt/format.h>
#include <vnifc/version.h>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

std::string lineOf(const VnIfcRelease& release) {
    try {
        const VnModule module = vnLoadModule(release);
        return fmt::format("{:<12} version {}, {}", release.name, versionOf(*module.schema()), release.title);
    } catch (const VnModuleError& error) {
        // A module that is there and does not fit is no package to install.
        if (error.isMissing())
            return fmt::format("{:<12} not installed (package {})", release.name, release.package);
        return fmt::format("{:<12} not usable: {}", release.name, error.what());
    }
}

} // namespace

std::string versionText() {
    std::string text = fmt::format("vnifc {}", version());
    for (const VnIfcRelease& release : vnIfcReleases())
        text += '\n' + lineOf(release);
    return text;
}

} // namespace vnifc::tool
