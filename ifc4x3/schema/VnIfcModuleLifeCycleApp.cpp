#include "VnIfcModuleLifeCycleApp.h"

#include "VnIFC4X3SchemaBuilder.h"

#include <IFC4X3/Module.h>
#include <types/Descriptors.h>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace IFC4X3 {

namespace {

// A plain pointer, so that a schema that the host forgot is not destroyed after the core's own statics.
VN_SDAI::VnIfcSchema* schema = nullptr;
constinit VnIfcModuleLifeCycleApp lifeCycle;

} // namespace

bool VnIfcModuleLifeCycleApp::initApp() {
    if (schema)
        return true;
    schema = new VN_SDAI::VnIfcSchema;
    VnIFC4X3SchemaBuilder(schema, VN_SDAI::VnAnsiString("IFC4X3")).build();
    return true;
}

void VnIfcModuleLifeCycleApp::uninitApp() {
    delete schema;
    schema = nullptr;
    releaseEnumerationDescriptors();
    releaseSelectDescriptors();
    releaseAggregateDescriptors();
}

} // namespace IFC4X3

VnModuleLifeCycleApp* vnGetModuleLifeCycleApp() { return &IFC4X3::lifeCycle; }

VN_SDAI::VnIfcSchema* vnifcGetSchemaPointer() { return IFC4X3::schema; }

#if defined(_WIN32)
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH)
        ::DisableThreadLibraryCalls(module);
    return TRUE;
}
#endif
