#pragma once
#include <IFC4X3/Export.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnRx/VnModuleLifeCycleApp.h>

// The module's entry points, under plain names so that a host finds them in a loaded library.
extern "C" {

/// The module's life-cycle object; never null, valid while the module is loaded. Its initApp builds the schema,
/// uninitApp takes it away.
IFC4X3_API VnModuleLifeCycleApp* vnGetModuleLifeCycleApp();

/// The schema; null before initialisation and after uninitialisation. Owned by the module.
IFC4X3_API VN_SDAI::VnIfcSchema* vnifcGetSchemaPointer();
}
