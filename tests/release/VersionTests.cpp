// The version of the library, and modules that do not have it.
#include "support/Releases.h"

#include <VnIfcCore/VnIfcRelease.h>
#include <VnIfcCore/VnIfcVersion.h>
#include <VnRx/VnModule.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

using namespace VN_SDAI;
using namespace vnifc::test;

namespace {

TEST(Version, OfTheLoadedCoreIsThatOfItsHeaders) {
    EXPECT_STREQ(vnIfcVersion(), VNIFC_VERSION);
    const std::string minor = std::to_string(VNIFC_VERSION_MAJOR) + '.' + std::to_string(VNIFC_VERSION_MINOR);
    EXPECT_EQ(minor + '.' + std::to_string(VNIFC_VERSION_PATCH), VNIFC_VERSION);
    EXPECT_EQ(VNIFC_VERSION_MAJOR == 0 ? minor : std::to_string(VNIFC_VERSION_MAJOR), VNIFC_SOVERSION);
}

TEST(Version, IsInTheNameOfTheFileThatAModuleIsLoadedFrom) {
    for (const std::string& release : builtReleases()) {
        const std::string name(vnFindRelease(release)->module);
        const VnModule module = VnModule::load(name);
        Dl_info info{};
        ASSERT_NE(::dladdr(&module.lifeCycle(), &info), 0);
        EXPECT_TRUE(std::string(info.dli_fname).ends_with("/lib" + name + ".so." VNIFC_SOVERSION)) << info.dli_fname;
    }
}

TEST(Version, OfAModuleThatDiffersIsRefusedBeforeAnythingIsCalled) {
    const struct {
        const char* name;
        const char* said;
        bool isMissing;
    } cases[] = {
        {"VnOtherVersion",
         "libVnOtherVersion.so." VNIFC_SOVERSION " is of another version: expected " VNIFC_SOVERSION
         " as the core library, found 9.9",
         false},
        {"VnNoVersion", "found none", false},
        {"VnNowhere", "expected libVnNowhere.so." VNIFC_SOVERSION " in ", true},
        {"/nowhere/libVnIfc.so", "/nowhere/libVnIfc.so cannot be loaded", true},
        {VNIFC_TEST_DATA "/VersionTests.cpp", "VersionTests.cpp cannot be loaded", false},
    };
    for (const auto& each : cases) {
        try {
            VnModule::load(each.name);
            ADD_FAILURE() << each.name << " was loaded";
        } catch (const VnModuleError& error) {
            EXPECT_NE(std::string(error.what()).find(each.said), std::string::npos) << error.what();
            EXPECT_EQ(error.isMissing(), each.isMissing) << error.what();
        }
    }
}

} // namespace
