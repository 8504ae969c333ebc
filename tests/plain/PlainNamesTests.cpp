// A program that links another module before VnIfc4x3: the plain names of IFC4X3/Module.h still mean IFC4X3.
#include <IFC4X3/IfcPropertySingleValue.h>
#include <IFC4X3/IfcWall.h>
#include <IFC4X3/Module.h>
#include <IFC4X3_ADD2/IfcWall.h>
#include <IFC4X3_ADD2/Module.h>
#include <VnIfcCore/VnIfcProperty.h>
#include <VnIfcCore/VnIfcSchema.h>

#include <gtest/gtest.h>

using namespace VN_SDAI;
using namespace IFC4X3;

TEST(PlainNames, MeanTheModuleOfTheirHeaderInAnyLinkOrder) {
    const VnModule other(IFC4X3_ADD2::vnIfc4x3Add2Module());
    EXPECT_EQ(vnifcGetSchemaPointer(), nullptr) << "only the other one is initialised";
    ASSERT_TRUE(vnGetModuleLifeCycleApp()->initApp());
    EXPECT_EQ(vnGetModuleLifeCycleApp(), vnIfc4x3Module().lifeCycleApp());
    EXPECT_NE(vnGetModuleLifeCycleApp(), &other.lifeCycle());
    ASSERT_TRUE(vnifcGetSchemaPointer());
    EXPECT_EQ(vnifcGetSchemaPointer()->name(), "IFC4X3");
    EXPECT_EQ(other.schema()->name(), "IFC4X3_ADD2");
    EXPECT_EQ(IfcWall::g_pEntityType->schema(), vnifcGetSchemaPointer());

    IfcPropertySingleValue value;
    VnIfcProperty* property = nullptr;
    int code = 0;
    vnIfcBuildPropertyForSimple(&value, property, code);
    const std::unique_ptr<VnIfcProperty> owned(property);
    EXPECT_TRUE(property);

    // A host that looks the plain names up finds those of the module that it asks.
    for (const char* name : {"VnIfc4x3", "VnIfc4x3Add2"}) {
        const VnModule loaded = VnModule::load(name);
        const auto schema = reinterpret_cast<VnIfcSchema* (*)()>(loaded.symbol("vnifcGetSchemaPointer"));
        ASSERT_TRUE(schema);
        EXPECT_EQ(schema(), loaded.schema());
        EXPECT_EQ(schema() == other.schema(), std::string(name) == "VnIfc4x3Add2");
    }
    vnGetModuleLifeCycleApp()->uninitApp();
    EXPECT_EQ(vnifcGetSchemaPointer(), nullptr);
    EXPECT_NE(other.schema(), nullptr);
}
