#pragma once
// The one place that knows compilers and operating systems.

#if defined(_WIN32)
#define VN_DLL_EXPORT __declspec(dllexport)
#define VN_DLL_IMPORT __declspec(dllimport)
#define VN_DLL_LOCAL
#else
#define VN_DLL_EXPORT __attribute__((visibility("default")))
#define VN_DLL_IMPORT __attribute__((visibility("default")))
#define VN_DLL_LOCAL __attribute__((visibility("hidden")))
#endif

#if defined(VNIFCCORE_BUILD)
#define VNIFC_API VN_DLL_EXPORT
#else
#define VNIFC_API VN_DLL_IMPORT
#endif

/// Marks what the base runtime VnRx exports; it is part of the same library as the core.
#define VNRX_API VNIFC_API
