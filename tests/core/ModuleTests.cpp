// Loading the schema module into a program that does not link it.
#include <VnIfcCore/VnIfcSchema.h>
#include <VnRx/VnModule.h>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <stdexcept>
#include <string>

using namespace VN_SDAI;

namespace {

/// The file that the module was loaded from.
std::string fileOf(const VnModule& module) {
    Dl_info info{};
    return ::dladdr(&module.lifeCycle(), &info) != 0 ? info.dli_fname : "";
}

} // namespace

TEST(Module, IsLoadedByNameAndByPathAndInitialisedForItsLifetime) {
    std::string file;
    {
        const VnModule module = VnModule::load("VnIfc4x3");
        ASSERT_TRUE(module.schema());
        EXPECT_EQ(module.schema()->name(), "IFC4X3");
        EXPECT_TRUE(module.schema()->entity("IfcWall"));
        EXPECT_TRUE(module.symbol("vnIfcBuildPropertyForSimple"));
        EXPECT_FALSE(module.symbol("vnIfcBuildNothing"));
        file = fileOf(module);
        EXPECT_NE(file.find("VnIfc4x3"), std::string::npos);
    }
    const VnModule again = VnModule::load(file);
    ASSERT_TRUE(again.schema());
    EXPECT_EQ(again.schema()->entityCount(), 880u);
}

TEST(Module, LastsUntilItsLastUseEnds) {
    VnModule first = VnModule::load("VnIfc4x3");
    const VnIfcSchema* schema = first.schema();
    {
        const VnModule second = VnModule::load("VnIfc4x3");
        EXPECT_EQ(second.schema(), schema);
        const VnModule moved = std::move(first);
        EXPECT_EQ(moved.schema(), schema);
        first = VnModule::load("VnIfc4x3");
    }
    EXPECT_EQ(first.schema(), schema) << "the use that initialised the module is gone, another one is left";
    VnModuleLifeCycleApp& app = first.lifeCycle();
    first = VnModule::load("VnIfc4x3Add2");
    EXPECT_EQ(first.schema()->name(), "IFC4X3_ADD2");

    // Each use that is assigned over ends.
    VnModule one = VnModule::load("VnIfc2x3"), two = VnModule::load("VnIfc2x3");
    VnModuleLifeCycleApp& old = one.lifeCycle();
    const auto schemaOf = one.symbol("vnifcGetSchemaPointer");
    const auto isThere = [&] { return reinterpret_cast<VnIfcSchema* (*)()>(schemaOf)() != nullptr; };
    void* const stays = ::dlopen(fileOf(one).c_str(), RTLD_NOW);
    one = VnModule::load("VnIfc4x3Add2");
    EXPECT_TRUE(isThere());
    two = std::move(one);
    EXPECT_FALSE(isThere()) << "its last use is gone";
    EXPECT_EQ(two.schema()->name(), "IFC4X3_ADD2");
    EXPECT_NE(&two.lifeCycle(), &old);
    ::dlclose(stays);

    // What the host initialised itself is the host's to take away.
    const VnModule again = VnModule::load("VnIfc4x3");
    EXPECT_EQ(&again.lifeCycle(), &app) << "the module stayed at its place";
}

TEST(Module, TellsWhyItCannotBeLoaded) {
    struct Case {
        const char* name;
        const char* reason;
    };
    const Case cases[] = {
        {"", "no name"},
        {"NoSuchModule", "libNoSuchModule.so"},
        {"/nowhere/libVnIfc4x3.so", "/nowhere/libVnIfc4x3.so"},
        {VNIFC_TEST_DATA "/ModuleTests.cpp", "ModuleTests.cpp"},
        {"VnIfcCore", "does not export vnGetModuleLifeCycleApp"},
    };
    for (const Case& test : cases) {
        try {
            VnModule::load(test.name);
            ADD_FAILURE() << test.name << " was loaded";
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find(test.reason), std::string::npos) << error.what();
        }
    }
}
