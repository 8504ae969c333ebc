#pragma once
#include <VnIfcCore/VnIfcTypes.h>
#include <VnRx/VnModuleLifeCycleApp.h>

#include <filesystem>
#include <memory>
#include <string_view>

namespace VN_SDAI {

/// A schema module that is loaded and initialised for as long as this object lives. Move-only.
class VNRX_API VnModule {
public:
    /// Loads a module and initialises it. `pathOrName` is a path (it contains a separator), or a name: "VnIfc4x3"
    /// stands for the platform's libVnIfc4x3.so or VnIfc4x3.dll, which is looked for beside the core library first and
    /// then where the system looks. Throws std::runtime_error that names the file and the reason; what initialisation
    /// throws passes through, after the module is unloaded.
    static VnModule load(std::string_view pathOrName);

    VnModule(VnModule&& other) noexcept = default;
    VnModule& operator=(VnModule&& other) noexcept;
    /// Uninitialises, if it was this object that initialised the module, and unloads. No instance of the schema's
    /// classes may be left.
    ~VnModule();

    /// The schema; null once another user of the same module has uninitialised it.
    VnIfcSchema* schema() const noexcept { return m_schema(); }
    VnModuleLifeCycleApp& lifeCycle() const noexcept { return *m_app; }
    /// The address of a function that the module exports, "vnIfcBuildPropertyForSimple" say; null when it has none of
    /// that name. To be cast to the type that the module's header declares, and good as long as this object lives.
    void* symbol(const char* name) const noexcept;

private:
    struct Unloader {
        void operator()(void* library) const noexcept;
    };
    using Library = std::unique_ptr<void, Unloader>;
    using SchemaPointer = VnIfcSchema* (*)();

    VnModule(Library library, VnModuleLifeCycleApp& app, SchemaPointer schema);

    void uninitialise() noexcept;

    Library m_library;
    VnModuleLifeCycleApp* m_app;
    SchemaPointer m_schema;
    bool m_initialised;
};

} // namespace VN_SDAI
