#pragma once
#include <IFC4X3/Module.h>

#include <gtest/gtest.h>

/// The module's schema, built anew for each test.
class SchemaTest : public testing::Test {
protected:
    SchemaTest() {
        vnGetModuleLifeCycleApp()->initApp();
        schema = vnifcGetSchemaPointer();
    }
    ~SchemaTest() override { vnGetModuleLifeCycleApp()->uninitApp(); }

    VN_SDAI::VnIfcSchema* schema;
};
