#include "Emit.h"
#include "Express.h"
#include "Writer.h"

namespace expgen {
namespace {

std::string releaseHeader(const Target& target) {
    const std::string api = target.release.api();
    Writer out(target);
    out.line("#pragma once");
    out.include("VnIfcTyped/Entity.h");
    out.line("\n#if defined(VN", target.release.name, "_BUILD)");
    out.line("#define ", api, " VN_DLL_EXPORT\n#else\n#define ", api, " VN_DLL_IMPORT\n#endif\n");
    out.line("/// The classes of ", target.release.title, ".");
    out.line("namespace ", target.release.name, " {\n");
    out.line("namespace typed = VN_SDAI::typed;");
    out.line("using typed::openAs;");
    out.closeNamespace();
    return out.take();
}

void writePlainEntryPoints(Writer& out, const Target& target) {
    const std::string entryPoints = target.release.name + "::" + target.release.entryPoints() + "()";
    out.line("\n// The same under the plain names, by which a host finds them in a loaded module. Inline and hidden, "
             "so that a");
    out.line("// program that links modules of several releases reaches this one, whichever is linked first.");
    out.line("extern \"C\" {\n");
    out.line("/// The module's life-cycle object; never null, valid while the module is loaded. Its initApp builds the "
             "schema,");
    out.line("/// uninitApp takes it away.");
    out.line("VN_DLL_LOCAL inline VnModuleLifeCycleApp* vnGetModuleLifeCycleApp() {");
    out.line("    return ", entryPoints, ".lifeCycleApp();\n}\n");
    out.line("/// The schema; null before initialisation and after uninitialisation. Owned by the module.");
    out.line("VN_DLL_LOCAL inline VN_SDAI::VnIfcSchema* vnifcGetSchemaPointer() { return ", entryPoints,
             ".schema(); }\n");
    out.line("/// Makes the property object that stands for a whole instance; see VnModuleEntryPoints.");
    out.line("VN_DLL_LOCAL inline bool vnIfcBuildPropertyForSimple(VN_SDAI::VnIfcEntityBase* instance,");
    out.line("                                                     VN_SDAI::VnIfcProperty*& property, int& code) {");
    out.line("    return ", entryPoints, ".buildPropertyForSimple(instance, property, code);\n}\n");
    out.line("} // extern \"C\"");
}

std::string moduleHeader(const Target& target) {
    Writer out(target);
    out.line("#pragma once");
    out.includeClass("Release");
    out.include("VnIfcTyped/Release.h");
    out.openNamespace();
    out.line("/// The entry points of the module ", target.release.module, ", in a program that links it.");
    out.line(target.release.api(), " const VN_SDAI::VnModuleEntryPoints& ", target.release.entryPoints(),
             "() noexcept;\n");
    out.line(
        "/// How many variant type descriptors the module has made and not yet released; 0 after uninitialisation.");
    out.line(target.release.api(), " std::size_t livingDescriptors() noexcept;");
    out.closeNamespace();
    if (target.release.isPlain)
        writePlainEntryPoints(out, target);
    return out.take();
}

void writeLifeCycle(Writer& out, const std::string& name) {
    out.line(
        "// A plain pointer, so that a schema that the host forgot is not destroyed after the core's own statics.");
    out.line("VN_SDAI::VnIfcSchema* schema = nullptr;\n");
    out.line("class Vn", name, "SchemaBuilder final : public SchemaBuilder {");
    out.line("public:\n    using SchemaBuilder::SchemaBuilder;\n};\n");
    out.line("class VnIfcModuleLifeCycleApp final : public VnModuleLifeCycleApp {");
    out.line("public:\n    constexpr VnIfcModuleLifeCycleApp() noexcept = default;");
    out.line("    // What building throws passes through and leaves the schema as far as it was built.");
    out.line("    bool initApp() override {\n        if (schema)\n            return true;");
    out.line("        schema = new VN_SDAI::VnIfcSchema;");
    out.line("        Vn", name, "SchemaBuilder(schema, release).build();\n        return true;\n    }");
    out.line("    void uninitApp() override {\n        delete schema;\n        schema = nullptr;");
    out.line("        releaseDescriptors(release);\n    }");
    out.line("    int status() override { return 0; }\n};\n");
    out.line("constinit VnIfcModuleLifeCycleApp lifeCycle;\n");
}

std::string source(const Target& target) {
    const std::string& name = target.release.name;
    const std::string api = target.release.api();
    Writer out(target);
    out.beginSource();
    out.includeClass("Release");
    out.include("VnIfcCore/VnIfcVersion.h");
    out.include("VnIfcTyped/Release.h");
    out.include("schema/SchemaBuilder.h");
    out.openSource();
    out.line("extern const Release release;\nextern std::atomic<std::size_t> descriptorCount;\n\nnamespace {\n");
    writeLifeCycle(out, name);
    out.line("VnModuleLifeCycleApp* lifeCycleApp() { return &lifeCycle; }");
    out.line("VN_SDAI::VnIfcSchema* schemaPointer() { return schema; }");
    out.line("bool buildProperty(VN_SDAI::VnIfcEntityBase* instance, VN_SDAI::VnIfcProperty*& property, int& code) {");
    out.line("    return buildPropertyForSimple(instance, property, code, &buildProperty);\n}\n");
    out.line("constexpr VN_SDAI::VnModuleEntryPoints entryPoints{\"", name,
             "\", &lifeCycleApp, &schemaPointer, &buildProperty};\n\n} // namespace\n");
    out.line(api, " const VN_SDAI::VnModuleEntryPoints& ", target.release.entryPoints(),
             "() noexcept { return entryPoints; }");
    out.line(api, " std::size_t livingDescriptors() noexcept { return descriptorCount; }");
    out.closeNamespace();
    out.line("\n// For hosts that look them up in the loaded module.\nextern \"C\" {");
    out.line(api, " const char* vnifcModuleVersion() { return VNIFC_SOVERSION; }");
    out.line(api, " VnModuleLifeCycleApp* vnGetModuleLifeCycleApp() { return ", name, "::lifeCycleApp(); }");
    out.line(api, " VN_SDAI::VnIfcSchema* vnifcGetSchemaPointer() { return ", name, "::schemaPointer(); }");
    out.line(
        api,
        " bool vnIfcBuildPropertyForSimple(VN_SDAI::VnIfcEntityBase* instance, VN_SDAI::VnIfcProperty*& property,");
    out.line("    int& code) {\n    return ", name, "::buildProperty(instance, property, code);\n}\n} // extern \"C\"");
    return out.take();
}

} // namespace

void emitModule(Files& files, const Target& target) {
    files[target.header("Release")] = releaseHeader(target);
    files[target.header("Module")] = moduleHeader(target);
    files["src/Module.cpp"] = source(target);
}

} // namespace expgen
