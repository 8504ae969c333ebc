#pragma once
#include <VnRx/VnPlatform.h>

#if defined(VNIFC4X3_BUILD)
#define IFC4X3_API VN_DLL_EXPORT
#else
#define IFC4X3_API VN_DLL_IMPORT
#endif
