#include "Emit.h"
#include "Writer.h"

namespace expgen {
namespace {

std::string header(const Enumeration& enumeration, const Target& target) {
    const std::string& name = enumeration.name;
    Writer out(target);
    out.line("#pragma once");
    out.includeClass("Release");
    out.include("VnIfcTyped/Enumeration.h");
    out.openNamespace();
    out.line("/// Literals of ", name, " in the schema's order; UNSET means that no value is set.");
    out.line("enum ", name, "Code : std::uint32_t {");
    for (const std::string& literal : enumeration.literals)
        out.line("    k", name, "_", literal, ",");
    out.line("    k", name, "_UNSET");
    out.line("};\n");
    out.line("/// EXPRESS enumeration ", name, " (ISO 16739).");
    out.line("class ", name, " : public typed::Enumeration<", name, ", ", name, "Code, k", name, "_UNSET> {");
    out.line("public:");
    out.line("    using Enumeration::Enumeration;");
    out.line("    static constexpr const char* kSchemaName = \"", target.release.name, "\";");
    out.line("    ", target.release.api(), " static const typed::EnumerationClass s_class;");
    out.line("};");
    out.closeNamespace();
    return out.take();
}

std::string enumerationSource(const Model& model, const Target& target) {
    Writer out(target);
    out.beginSource();
    out.include("types/Descriptors.h");
    out.line();
    for (const Enumeration& enumeration : model.enumerations)
        out.includeClass(enumeration.name);
    out.openSource();
    out.line("extern std::atomic<std::size_t> descriptorCount;\n\nnamespace {\n");
    for (const Enumeration& enumeration : model.enumerations) {
        out.line("constexpr const char* literals_", enumeration.name, "[] = {");
        for (const std::string& literal : enumeration.literals)
            out.line("    \"", literal, "\",");
        out.line("};");
    }
    out.line("\n} // namespace\n");
    for (const Enumeration& enumeration : model.enumerations) {
        const std::string& name = enumeration.name;
        out.line("constinit const EnumerationClass ", name, "::s_class =");
        out.line("    enumerationClass<", name, ", descriptorCount>(\"", name, "\", literals_", name, ");");
    }
    out.closeNamespace();
    return out.take();
}

} // namespace

void emitEnumerations(Files& files, const Model& model, const Target& target) {
    for (const Enumeration& enumeration : model.enumerations)
        files[target.header(enumeration.name)] = header(enumeration, target);
    files["src/Enumerations.cpp"] = enumerationSource(model, target);
}

} // namespace expgen
