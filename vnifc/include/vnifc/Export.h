#pragma once
#include <VnRx/VnPlatform.h>

#if defined(VNIFC_LAYER_BUILD)
#define VNIFC_LAYER_API VN_DLL_EXPORT
#else
#define VNIFC_LAYER_API VN_DLL_IMPORT
#endif
