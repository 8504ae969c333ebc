#pragma once
#include <IFC4X3/Export.h>
#include <VnIfcCore/VnIfcProperty.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnRx/VnModuleLifeCycleApp.h>

// The module's entry points, under plain names so that a host finds them in a loaded library.
extern "C" {

/// The module's life-cycle object; never null, valid while the module is loaded. Its initApp builds the schema,
/// uninitApp takes it away.
IFC4X3_API VnModuleLifeCycleApp* vnGetModuleLifeCycleApp();

/// The schema; null before initialisation and after uninitialisation. Owned by the module.
IFC4X3_API VN_SDAI::VnIfcSchema* vnifcGetSchemaPointer();

/// Makes the property object that stands for a whole instance, which the caller owns: a VnIfcSimpleProperty for an
/// IfcPropertySingleValue or IfcPropertyBoundedValue, a VnIfcComplexProperty for an IfcComplexProperty or
/// IfcPhysicalComplexQuantity, a VnIfcQuantityClusterProperty for the quantities of one number. Nothing is made, and
/// the answer is false, for all others, their subtypes too, and for null. `code` becomes the kind of the value
/// (VnTypeCodeKind): of a single value that of what it holds, 6 for quantities, 12 for complex ones; it stays as it was
/// for a bounded value. The answer is false also for a single value, although its property was made: go by `property`.
IFC4X3_API bool vnIfcBuildPropertyForSimple(VN_SDAI::VnIfcEntityBase* instance, VN_SDAI::VnIfcProperty*& property,
                                            int& code);
}
