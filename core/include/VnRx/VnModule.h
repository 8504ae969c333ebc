#pragma once
#include <VnIfcCore/VnIfcTypes.h>
#include <VnRx/VnModuleLifeCycleApp.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace VN_SDAI {

/// The entry points of a schema module that a program links, for use beside those of other modules: each release has
/// them under a name of its own, IFC4X3_ADD2::vnIfc4x3Add2Module(). A host that loads a module finds the same functions
/// under their plain names.
struct VnModuleEntryPoints {
    const char* schemaName; ///< "IFC4X3_ADD2"
    /// The life-cycle object; never null. Its initApp builds the schema, uninitApp takes it away.
    VnModuleLifeCycleApp* (*lifeCycleApp)();
    /// The schema, which the module owns; null before initialisation and after uninitialisation.
    VnIfcSchema* (*schema)();
    /// Makes the property object that stands for a whole instance, which the caller owns: a VnIfcSimpleProperty for an
    /// IfcPropertySingleValue or IfcPropertyBoundedValue, a VnIfcComplexProperty for an IfcComplexProperty or
    /// IfcPhysicalComplexQuantity, a VnIfcQuantityClusterProperty for the quantities of one number. Nothing is made,
    /// and the result is false, for all others, their subtypes too, and for null. `code` becomes the kind of the value
    /// (VnTypeCodeKind): of a single value that of what it holds, 6 for quantities, 12 for complex ones; it stays as it
    /// was for a bounded value. The result is false also for a single value, although its property was made: go by
    /// `property`. Throws nothing: where the model's access mode forbids reading the value, and where memory is
    /// lacking, nothing is made.
    bool (*buildPropertyForSimple)(VnIfcEntityBase* instance, VnIfcProperty*& property, int& code);
};

/// A module that cannot be used: the message names it, its file and the reason.
class VNRX_API VnModuleError : public std::runtime_error {
public:
    /// The message is for people, in UTF-8.
    VnModuleError(const std::string& message, bool isMissing) : std::runtime_error(message), m_isMissing(isMissing) {}
    /// There is no file of that name; false for one that is there and is no module, or one of another version.
    bool isMissing() const noexcept { return m_isMissing; }

private:
    bool m_isMissing;
};

/// A use of a schema module, which is loaded and initialised for as long as any such object for it lives. Move-only;
/// making and destroying such objects is safe from several threads.
class VNRX_API VnModule {
public:
    /// Loads a module and initialises it. `pathOrName` is a path (it contains a separator), or a name: "VnIfc4x3"
    /// stands for the platform's libVnIfc4x3.so or VnIfc4x3.dll, which is looked for beside the core library first and
    /// then where the system looks, in both places under the name with the core's version (libVnIfc4x3.so.0.2) before
    /// the plain one. A module of another version than the core's (VNIFC_SOVERSION) is refused. Throws VnModuleError;
    /// what initialisation throws passes through, after the module is unloaded.
    static VnModule load(std::string_view pathOrName);

    /// A use of a module that the program links; initialises it.
    explicit VnModule(const VnModuleEntryPoints& linked);

    ///@{
    /// Takes the use over; what is moved from can only be destroyed or assigned to. Assignment ends the use that was
    /// there.
    VnModule(VnModule&& other) noexcept;
    VnModule& operator=(VnModule&& other) noexcept;
    ///@}
    /// The last use of a module uninitialises it, unless the host had initialised it before the first one, and unloads
    /// it. No instance of the schema's classes may be left then.
    ~VnModule();

    /// The schema; null once somebody has called the life cycle's uninitApp.
    VnIfcSchema* schema() const noexcept { return m_schema(); }
    /// The module's life cycle, owned by the module. Calling uninitApp takes the schema away from all uses.
    VnModuleLifeCycleApp& lifeCycle() const noexcept { return *m_app; }
    /// The address of a function that the module exports, "vnIfcBuildPropertyForSimple" say; null when it has none of
    /// that name, and for a linked module. To be cast to the type that the module's header declares, and good as long
    /// as this object lives.
    void* symbol(const char* name) const noexcept;

private:
    struct Unloader {
        void operator()(void* library) const noexcept;
    };
    using Library = std::unique_ptr<void, Unloader>;
    using SchemaPointer = VnIfcSchema* (*)();

    VnModule(Library library, VnModuleLifeCycleApp& app, SchemaPointer schema, std::string_view name);

    void release() noexcept;

    Library m_library;           ///< null for a linked module
    VnModuleLifeCycleApp* m_app; ///< null when moved from
    SchemaPointer m_schema;
};

} // namespace VN_SDAI
