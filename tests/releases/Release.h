#pragma once
#include "support/Declarations.h"
#include "support/Files.h"
#include "support/Releases.h"

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcFile.h>
#include <VnIfcCore/VnIfcSchema.h>

namespace vnifc::test {

/// All releases of the build and the tests' own.
inline std::vector<std::string> allReleases() {
    std::vector<std::string> names = builtReleases();
    names.push_back("TOY");
    return names;
}

/// A use of the module of a release, for hosts that link none.
inline VN_SDAI::VnModule moduleOf(const std::string& name) {
    const VN_SDAI::VnIfcRelease* release = VN_SDAI::vnFindRelease(name);
    return release ? VN_SDAI::vnLoadModule(*release) : VN_SDAI::VnModule::load("VnToy");
}

/// A suite that runs once for each release, beside its declarations.
class Release : public testing::TestWithParam<std::string> {
protected:
    std::string fileOf(std::string_view data) const { return vnifc::test::fileOf(GetParam(), data); }

    VN_SDAI::VnModule m_module = moduleOf(GetParam());
    const VN_SDAI::VnIfcSchema& m_schema = *m_module.schema();
    const declared::Schema& m_declared = declared::schemaNamed(GetParam());
};

} // namespace vnifc::test
