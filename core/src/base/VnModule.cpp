#include <VnRx/VnModule.h>

#include <mutex>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <utility>

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
#else
constexpr std::string_view fileSuffix = ".so";
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

[[noreturn]] void fail(std::string_view module, std::string_view reason) {
    throw std::runtime_error("module \"" + std::string(module) + "\": " + std::string(reason));
}

fs::path fileOf(std::string_view pathOrName) {
    const fs::path path(pathOrName);
    if (path.has_parent_path())
        return path;
    std::string name(pathOrName);
    if (!pathOrName.ends_with(fileSuffix))
        name = std::string(filePrefix).append(pathOrName).append(fileSuffix);
    const fs::path besideCore = coreDirectory() / name;
    std::error_code ignored;
    return fs::exists(besideCore, ignored) ? besideCore : fs::path(name);
}

template <class Function>
Function function(void* library, const char* name, std::string_view module) {
    void* symbol = findSymbol(library, name);
    if (!symbol)
        fail(module, std::string("no schema module, it does not export ") + name);
    return reinterpret_cast<Function>(symbol);
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
        fail(pathOrName, "no name");
    Library library(openLibrary(fileOf(pathOrName)));
    if (!library)
        fail(pathOrName, lastError());
    const auto getApp = function<VnGetModuleLifeCycleApp>(library.get(), "vnGetModuleLifeCycleApp", pathOrName);
    const auto getSchema = function<SchemaPointer>(library.get(), "vnifcGetSchemaPointer", pathOrName);
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
