#pragma once
#include <VnRx/VnPlatform.h>

/// The life cycle of a loadable module, as its host drives it. The host never deletes the object: it belongs to the
/// module. All operations are called from one thread.
class VNRX_API VnModuleLifeCycleApp {
public:
    virtual ~VnModuleLifeCycleApp();
    /// Makes what the module offers; does nothing when that is there already. True when the module can be used.
    virtual bool initApp() = 0;
    /// Takes it away again; initApp may follow.
    virtual void uninitApp() = 0;
    /// A code of the module's own; 0 means that there is nothing to tell.
    virtual int status() = 0;

protected:
    constexpr VnModuleLifeCycleApp() noexcept = default;
    VnModuleLifeCycleApp(const VnModuleLifeCycleApp&) = delete;
    VnModuleLifeCycleApp& operator=(const VnModuleLifeCycleApp&) = delete;
};

/// Type of the exported function "vnGetModuleLifeCycleApp" of a module: its life-cycle object, never null.
using VnGetModuleLifeCycleApp = VnModuleLifeCycleApp* (*)();
