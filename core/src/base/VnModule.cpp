#include <VnIfcCore/VnIfcVersion.h>
#include <VnRx/VnModule.h>

#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

VnModuleLifeCycleApp::~VnModuleLifeCycleApp() = default;

namespace VN_SDAI {

namespace {

namespace fs = std::filesystem;

const char coreMarker = 0; // its address tells where the core library was loaded from

#if defined(_WIN32)

constexpr std::string_view filePrefix = "";
constexpr std::string_view fileSuffix = ".dll";
constexpr std::string_view versionedSuffix = fileSuffix; // of libraries there is one beside each program

void* openLibrary(const fs::path& file) { return ::LoadLibraryW(file.c_str()); }
void* findSymbol(void* library, const char* name) noexcept {
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(library), name));
}
void closeLibrary(void* library) noexcept { ::FreeLibrary(static_cast<HMODULE>(library)); }
std::string lastError() { return "system error " + std::to_string(::GetLastError()); }

fs::path coreDirectory() {
    HMODULE core = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCWSTR>(&coreMarker), &core);
    wchar_t file[32768];
    return fs::path(file, file + ::GetModuleFileNameW(core, file, 32768)).parent_path();
}

#else

constexpr std::string_view filePrefix = "lib";
#if defined(__APPLE__)
constexpr std::string_view fileSuffix = ".dylib";
constexpr std::string_view versionedSuffix = "." VNIFC_SOVERSION ".dylib";
#else
constexpr std::string_view fileSuffix = ".so";
constexpr std::string_view versionedSuffix = ".so." VNIFC_SOVERSION;
#endif

void* openLibrary(const fs::path& file) { return ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL); }
void* findSymbol(void* library, const char* name) noexcept { return ::dlsym(library, name); }
void closeLibrary(void* library) noexcept { ::dlclose(library); }
std::string lastError() {
    const char* text = ::dlerror();
    return text ? text : "unknown error";
}

fs::path coreDirectory() {
    Dl_info info{};
    if (::dladdr(&coreMarker, &info) == 0 || !info.dli_fname)
        return {};
    return fs::path(info.dli_fname).parent_path();
}

#endif

[[noreturn]] void fail(std::string_view module, std::string_view reason, bool isMissing = false) {
    throw VnModuleError("module \"" + std::string(module) + "\": " + std::string(reason), isMissing);
}

bool isThere(const fs::path& file) {
    std::error_code ignored;
    return fs::exists(file, ignored);
}

/// The names that a module's file may have: with the version first, for the plain one may be of any version, and is
/// there only where programs are compiled.
std::vector<fs::path> fileNames(std::string_view name) {
    if (name.ends_with(fileSuffix) || name.find(std::string(fileSuffix) + '.') != std::string_view::npos)
        return {fs::path(name)};
    const auto with = [&](std::string_view suffix) {
        return fs::path(std::string(filePrefix).append(name).append(suffix));
    };
    if (versionedSuffix == fileSuffix)
        return {with(fileSuffix)};
    return {with(versionedSuffix), with(fileSuffix)};
}

struct OpenedLibrary {
    void* library;
    std::string file; ///< for messages
};

OpenedLibrary openFile(const fs::path& file, std::string_view module) {
    void* library = openLibrary(file);
    if (!library) {
        const std::string reason = lastError();
        fail(module, file.string() + " cannot be loaded: " + reason, !isThere(file));
    }
    return {library, file.string()};
}

OpenedLibrary openByName(std::string_view name) {
    const std::vector<fs::path> files = fileNames(name);
    const fs::path directory = coreDirectory();
    for (const fs::path& file : files)
        if (isThere(directory / file))
            return openFile(directory / file, name);
    std::string reasons;
    for (const fs::path& file : files) {
        if (void* library = openLibrary(file))
            return {library, file.string()};
        reasons.append(reasons.empty() ? "" : "; ").append(lastError());
    }
    fail(name,
         "expected " + files.front().string() + " in " + directory.string() +
             " or where the system looks, found none: " + reasons,
         true);
}

OpenedLibrary open(std::string_view pathOrName) {
    const fs::path path(pathOrName);
    return path.has_parent_path() ? openFile(path, pathOrName) : openByName(pathOrName);
}

template <class Function>
Function function(void* library, const char* name, std::string_view module, const std::string& file) {
    void* symbol = findSymbol(library, name);
    if (!symbol)
        fail(module, file + " is no schema module, it does not export " + name);
    return reinterpret_cast<Function>(symbol);
}

/// Classes that were compiled with the headers of another version have another layout: nothing of them is called.
void requireVersion(void* library, std::string_view module, const std::string& file) {
    using Version = const char* (*)();
    void* symbol = findSymbol(library, "vnifcModuleVersion");
    const std::string found = symbol ? reinterpret_cast<Version>(symbol)() : "none";
    if (found != VNIFC_SOVERSION)
        fail(module, file + " is of another version: expected " VNIFC_SOVERSION " as the core library, found " + found);
}

/// Counts the uses of each module, and initialises it for the first.
class ModuleUses {
public:
    static ModuleUses& instance() {
        static ModuleUses uses;
        return uses;
    }

    void add(VnModuleLifeCycleApp& app, VnIfcSchema* (*schema)(), std::string_view module) {
        const std::lock_guard lock(m_mutex);
        const auto [use, isFirst] = m_uses.try_emplace(&app);
        if (!isFirst) {
            ++use->second.count;
            return;
        }
        use->second.isOurs = schema() == nullptr;
        try {
            initialise(app, schema, module);
        } catch (...) {
            const bool isOurs = use->second.isOurs;
            m_uses.erase(use);
            if (isOurs)
                app.uninitApp();
            throw;
        }
    }

    void remove(VnModuleLifeCycleApp& app) noexcept {
        const std::lock_guard lock(m_mutex);
        const auto use = m_uses.find(&app);
        if (--use->second.count > 0)
            return;
        if (use->second.isOurs)
            app.uninitApp();
        m_uses.erase(use);
    }

private:
    struct Use {
        std::size_t count = 1;
        bool isOurs = false; ///< the first use initialised the module
    };

    static void initialise(VnModuleLifeCycleApp& app, VnIfcSchema* (*schema)(), std::string_view module) {
        if (!schema() && !app.initApp())
            fail(module, "it refused to initialise");
        if (!schema())
            fail(module, "it gives no schema");
    }

    std::mutex m_mutex;
    std::unordered_map<VnModuleLifeCycleApp*, Use> m_uses;
};

} // namespace

void VnModule::Unloader::operator()(void* library) const noexcept { closeLibrary(library); }

VnModule VnModule::load(std::string_view pathOrName) {
    if (pathOrName.empty())
        fail(pathOrName, "no name", true);
    const auto [opened, file] = open(pathOrName);
    Library library(opened);
    const auto getApp = function<VnGetModuleLifeCycleApp>(library.get(), "vnGetModuleLifeCycleApp", pathOrName, file);
    const auto getSchema = function<SchemaPointer>(library.get(), "vnifcGetSchemaPointer", pathOrName, file);
    requireVersion(library.get(), pathOrName, file);
    VnModuleLifeCycleApp* app = getApp();
    if (!app)
        fail(pathOrName, "it has no life-cycle object");
    return VnModule(std::move(library), *app, getSchema, pathOrName);
}

VnModule::VnModule(const VnModuleEntryPoints& linked)
    : VnModule(nullptr, *linked.lifeCycleApp(), linked.schema, linked.schemaName) {}

VnModule::VnModule(Library library, VnModuleLifeCycleApp& app, SchemaPointer schema, std::string_view name)
    : m_library(std::move(library)), m_app(&app), m_schema(schema) {
    ModuleUses::instance().add(app, schema, name);
}

VnModule::VnModule(VnModule&& other) noexcept
    : m_library(std::move(other.m_library)), m_app(std::exchange(other.m_app, nullptr)), m_schema(other.m_schema) {}

VnModule& VnModule::operator=(VnModule&& other) noexcept {
    if (this == &other)
        return *this;
    release();
    m_library = std::move(other.m_library);
    m_app = std::exchange(other.m_app, nullptr);
    m_schema = other.m_schema;
    return *this;
}

VnModule::~VnModule() { release(); }

void* VnModule::symbol(const char* name) const noexcept {
    return m_library ? findSymbol(m_library.get(), name) : nullptr;
}

void VnModule::release() noexcept {
    if (m_app)
        ModuleUses::instance().remove(*m_app);
    m_app = nullptr;
}

} // namespace VN_SDAI
