#pragma once
#include <VnRx/VnModuleLifeCycleApp.h>

namespace IFC4X3 {

/// The life cycle of this module: whether its schema exists.
class VnIfcModuleLifeCycleApp final : public VnModuleLifeCycleApp {
public:
    constexpr VnIfcModuleLifeCycleApp() noexcept = default;
    /// Builds the schema, if there is none. What building throws passes through and leaves the schema as far as it was
    /// built; uninitApp takes that away too.
    bool initApp() override;
    void uninitApp() override;
    /// Always 0.
    int status() override { return 0; }
};

} // namespace IFC4X3
