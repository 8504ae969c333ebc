// The module's life cycle, and its links between records and classes.
#include "SchemaFixture.h"

#include <IFC4X3/IfcRelationship.h>
#include <IFC4X3/IfcRoot.h>
#include <IFC4X3/IfcValue.h>

#include <memory>

using namespace VN_SDAI;

TEST(LifeCycle, InitialisationIsIdempotentAndRepeatable) {
    VnModuleLifeCycleApp* app = vnGetModuleLifeCycleApp();
    ASSERT_TRUE(app);
    EXPECT_EQ(vnifcGetSchemaPointer(), nullptr);
    app->uninitApp();
    EXPECT_EQ(app->status(), 0);
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(app->initApp());
        const VnIfcSchema* schema = vnifcGetSchemaPointer();
        ASSERT_TRUE(schema);
        EXPECT_TRUE(app->initApp());
        EXPECT_EQ(vnifcGetSchemaPointer(), schema);
        EXPECT_EQ(schema->name(), "IFC4X3");
        EXPECT_EQ(static_cast<int>(schema->majorVersion()), 4);
        EXPECT_EQ(static_cast<int>(schema->minorVersion()), 3);
        EXPECT_EQ(schema->entityCount(), 880u);
        EXPECT_EQ(app->status(), 0);
        app->uninitApp();
        EXPECT_EQ(vnifcGetSchemaPointer(), nullptr);
        app->uninitApp();
    }
}

TEST(LifeCycle, ClassesShowTheirRecordsWhileTheSchemaLives) {
    vnGetModuleLifeCycleApp()->initApp();
    const VnIfcSchema* schema = vnifcGetSchemaPointer();
    EXPECT_EQ(IFC4X3::IfcRoot::g_pEntityType, schema->entities().at("IFCROOT"));
    EXPECT_EQ(IFC4X3::IfcRoot::g_pEntityType->typeCode()->parameters()[0].text(), "IfcRoot");
    EXPECT_EQ(IFC4X3::IfcValue::sType, schema->namedTypes().at("IfcValue"));
    vnGetModuleLifeCycleApp()->uninitApp();
    EXPECT_EQ(IFC4X3::IfcRoot::g_pEntityType, nullptr);
    EXPECT_EQ(IFC4X3::IfcValue::sType, nullptr);
}

TEST_F(SchemaTest, EveryEntityHasAFactoryOfItsOwnClass) {
    for (std::size_t i = 0; i < schema->entityCount(); ++i) {
        const VnIfcEntityType* entity = schema->entityAt(i);
        const std::unique_ptr<VnIfcEntityBase> instance(entity->create());
        EXPECT_EQ(instance->getInstanceType(), entity) << entity->name().constStr();
    }
}
