#include "CppTypes.h"
#include "Emit.h"
#include "Writer.h"

namespace expgen {
namespace {

void writeTexts(Writer& out, std::string_view table, const std::vector<std::string>& texts) {
    out.line("constexpr const char* ", table, "[] = {");
    for (const std::string& text : texts)
        out.line("    \"", text, "\",");
    out.line("};");
}

void writeEntities(Writer& out, const Model& model) {
    out.line("constexpr const EntityClass* entityTable[] = {");
    for (const Entity* entity : model.entityOrder)
        out.line("    &", entity->name, "::s_class,");
    out.line("};\n");
}

void writeEnumerations(Writer& out, const Model& model) {
    out.line("constexpr const EnumerationClass* enumerationClassTable[] = {");
    for (const Enumeration& enumeration : model.enumerations)
        out.line("    &", enumeration.name, "::s_class,");
    out.line("};\n");
    for (const Enumeration& record : model.enumerationRecords)
        writeTexts(out, "literals_" + record.name, record.literals);
    out.line("constexpr EnumerationRecord enumerationTable[] = {");
    for (const Enumeration& record : model.enumerationRecords)
        out.line("    {\"", lower(record.name), "\", literals_", record.name, "},");
    out.line("};\n");
}

void writeDefinedTypes(Writer& out, const Model& model) {
    out.line("constexpr DefinedType definedTypeTable[] = {");
    for (const DefinedType* type : model.definedTypeOrder)
        out.line("    {\"", type->name, "\", \"", type->underlying, "\"},");
    out.line("};\n");
}

void writeSelects(Writer& out, const Model& model) {
    out.line("constexpr const SelectClass* selectClassTable[] = {");
    for (const Select* select : model.selectOrder)
        out.line("    &", select->name, "::s_class,");
    out.line("};\n");
    for (const Select* select : model.selectOrder) {
        std::vector<std::string> members;
        for (const std::string& member : select->members)
            members.push_back(upper(member));
        writeTexts(out, "members_" + select->name, members);
    }
    out.line("constexpr SelectRecord selectTable[] = {");
    for (const Select* select : model.selectOrder)
        out.line("    {\"", select->name, "\", members_", select->name, ", &", select->name, "::sType},");
    out.line("};\n");
}

std::string_view kindText(AggregateKind kind) {
    switch (kind) {
    case AggregateKind::kArray:
        return "kArray";
    case AggregateKind::kList:
        return "kList";
    default:
        return "kSet";
    }
}

void writeAggregations(Writer& out, const Model& model) {
    out.line("constexpr AggregationRecord aggregationTable[] = {");
    for (const Aggregation& aggregation : model.aggregations) {
        out.line("    {\"", aggregation.name, "\", AggregationKind::", kindText(aggregation.layer.kind), ", ",
                 boundText(aggregation.layer.lower), ", ", boundText(aggregation.layer.upper), ", \"",
                 aggregation.element, "\", ", aggregation.isNamed ? "true" : "false", "},");
    }
    out.line("};");
}

std::string source(const Model& model, const Target& target) {
    Writer out(target);
    out.beginSource();
    out.includeClass("AllEntities");
    out.includeClass("AllTypes");
    out.include("VnIfcTyped/Release.h");
    out.openSource();
    out.line("namespace {\n");
    writeEntities(out, model);
    writeEnumerations(out, model);
    writeDefinedTypes(out, model);
    writeSelects(out, model);
    writeAggregations(out, model);
    out.line("\n} // namespace\n");
    out.line("constinit std::atomic<std::size_t> descriptorCount{0};\n");
    out.line("extern const Release release;");
    out.line("constinit const Release release{");
    out.line("    .name = \"", target.release.name, "\",");
    out.line("    .majorVersion = VN_SDAI::IfcSchemaMajorVersion::", target.release.version[0], ",");
    out.line("    .minorVersion = VN_SDAI::IfcSchemaMinorVersion::", target.release.version[1], ",");
    out.line("    .entities = entityTable,\n    .selectClasses = selectClassTable,");
    out.line("    .enumerationClasses = enumerationClassTable,\n    .definedTypes = definedTypeTable,");
    out.line("    .enumerations = enumerationTable,\n    .selects = selectTable,");
    out.line("    .aggregations = aggregationTable};");
    out.closeNamespace();
    return out.take();
}

template <class Records>
void includeAll(Writer& out, const Records& records) {
    for (const auto& record : records)
        out.includeClass(record.name);
}

} // namespace

void emitDictionary(Files& files, const Model& model, const Target& target) {
    Writer entities(target);
    entities.line("#pragma once");
    includeAll(entities, model.entities);
    files[target.header("AllEntities")] = entities.take();

    Writer types(target);
    types.line("#pragma once");
    includeAll(types, model.enumerations);
    includeAll(types, model.selects);
    files[target.header("AllTypes")] = types.take();

    files["src/Dictionary.cpp"] = source(model, target);
}

} // namespace expgen
