// What looks like a schema module of another version: nothing of it may be called but what tells the version.
#include <cstdlib>

#define STUB_EXPORT extern "C" __attribute__((visibility("default")))

STUB_EXPORT void* vnGetModuleLifeCycleApp();
STUB_EXPORT void* vnifcGetSchemaPointer();

void* vnGetModuleLifeCycleApp() { std::abort(); }
void* vnifcGetSchemaPointer() { std::abort(); }

#if defined(STUB_VERSION)
STUB_EXPORT const char* vnifcModuleVersion();
const char* vnifcModuleVersion() { return STUB_VERSION; }
#endif
