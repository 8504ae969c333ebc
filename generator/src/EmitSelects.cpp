#include "CppTypes.h"
#include "Emit.h"
#include "Writer.h"

#include <set>
#include <span>

namespace expgen {
namespace {

constexpr std::size_t kUnits = 2;

/// How a member is set and described, by what its value is.
struct Form {
    std::string_view parameter; ///< type of the setter's parameter, where it is the same for all of the kind
    std::string_view call;      ///< what the setter does
    std::string_view code;      ///< kind in the member table, for simple values
};

Form formOf(const Type& type) {
    switch (type.kind) {
    case Kind::kBinary:
        return {"VN_SDAI::VnAnsiString", "setBinary", "kBinary"};
    case Kind::kBoolean:
        return {"VN_SDAI::VnIfcBoolean", "setBooleanValue", "kBoolean"};
    case Kind::kInteger:
        return {"int", "setInteger", "kInteger"};
    case Kind::kLogical:
        return {"VN_SDAI::VnIfcLogical", "setLogicalValue", "kLogical"};
    case Kind::kReal:
        return {"double", "setReal", "kReal"};
    default:
        return {"VN_SDAI::VnAnsiString", "setText", "kString"};
    }
}

bool isEntity(const SelectLeaf& leaf) { return leaf.type.kind == Kind::kEntity && !leaf.type.isAggregate(); }
bool isEnumeration(const SelectLeaf& leaf) { return leaf.type.kind == Kind::kEnumeration && !leaf.type.isAggregate(); }

std::string nameConstant(const SelectLeaf& leaf) { return (isEntity(leaf) ? "sHandle" : "s") + leaf.name; }

void writeSetter(Writer& out, const SelectLeaf& leaf) {
    const std::string& name = leaf.name;
    if (isEntity(leaf)) {
        out.line("    void set", name, "(", name, "* value);");
    } else if (leaf.type.isAggregate()) {
        out.line("    void set", name, "(const ", arrayType(leaf.type), "& value) { setAggregate(k", name,
                 ", value); }");
    } else if (isEnumeration(leaf)) {
        out.line("    void set", name, "(const ", name, "& value) { setEnumeration(k", name, ", value.code()); }");
    } else {
        const Form form = formOf(leaf.type);
        const bool isText = form.parameter == "VN_SDAI::VnAnsiString";
        out.line("    void set", name, "(", form.parameter, " value) { ", form.call, "(k", name, ", ",
                 isText ? "std::move(value)" : "value", "); }");
    }
}

void writeIncludes(Writer& out, const Select& select) {
    out.line("#pragma once");
    out.includeClass("Release");
    out.include("VnIfcTyped/Select.h");
    for (const SelectLeaf& leaf : select.leaves)
        if (isEnumeration(leaf))
            out.includeClass(leaf.name);
    out.line("\n#include <utility>");
}

void writeMembers(Writer& out, const Select& select) {
    for (const SelectLeaf& leaf : select.leaves) {
        out.line("    bool is", leaf.name, "() const noexcept { return is(k", leaf.name, "); }");
        writeSetter(out, leaf);
    }
    out.line("    const typed::SelectClass& selectClass() const noexcept override;\n");
    for (const SelectLeaf& leaf : select.leaves)
        out.line("    static const VN_SDAI::VnAnsiString ", nameConstant(leaf), ";");
}

/// The aggregate of the select that entities have as members; empty when there is none.
std::string aggregateOf(const Model& model, const Select& select) {
    for (const Entity& entity : model.entities) {
        for (const ExplicitAttribute& attribute : entity.explicits) {
            if (attribute.type.select == &select && attribute.type.isAggregate()) {
                const AggregateKind kind = attribute.type.layers.back().kind;
                const bool isSet = kind == AggregateKind::kSet || kind == AggregateKind::kBag;
                return std::string(isSet ? "VN_SDAI::VnIfcSetAggr<" : "VN_SDAI::VnIfcListAggr<") + select.name + ">";
            }
        }
    }
    return {};
}

std::string header(const Select& select, const std::string& aggregate, const Target& target) {
    const std::string& name = select.name;
    Writer out(target);
    writeIncludes(out, select);
    out.openNamespace();
    for (const SelectLeaf& leaf : select.leaves)
        if (isEntity(leaf))
            out.line("class ", leaf.name, ";");
    out.line("\n/// EXPRESS select ", name, " (ISO 16739).");
    out.line("class ", target.release.api(), " ", name, " : public typed::Select {");
    out.line("public:");
    out.line("    enum e", name, " : std::int32_t {");
    for (const SelectLeaf& leaf : select.leaves)
        out.line("        k", leaf.name, ",");
    out.line("        kUnset,\n        kPending\n    };\n");
    if (!aggregate.empty()) {
        out.line("    /// What members of entities hold this select in.");
        out.line("    using Aggregate = ", aggregate, ";\n");
    }
    out.line("    ", name, "() noexcept : Select(kUnset) {}");
    out.line("    static constexpr const char* kSchemaName = \"", target.release.name, "\";\n");
    out.line("    using Select::_d;");
    out.line("    void _d(e", name, " code) noexcept { setDiscriminator(code); }");
    out.line("    /// The code of the member of that name, in any case; kUnset when there is none.");
    out.line("    virtual e", name, " underlyingTypeByName(const VN_SDAI::VnAnsiString& member) const {");
    out.line("        return static_cast<e", name, ">(memberByName(member));\n    }");
    writeMembers(out, select);
    out.line("    static VN_SDAI::VnIfcNameType* sType;");
    out.line("    static const typed::SelectClass s_class;\n");
    out.line("protected:");
    out.line("    VN::ErrorStatus setUnderlyingType(e", name, " code) { return chooseType(code); }");
    out.line("};");
    out.closeNamespace();
    return out.take();
}

void writeRow(Writer& out, const Select& select, const SelectLeaf& leaf) {
    const std::string constant = select.name + "::" + nameConstant(leaf);
    if (isEntity(leaf))
        out.line("    entityMember(", constant, ", &", leaf.name, "::g_pEntityType),");
    else if (leaf.type.isAggregate())
        out.line("    aggregateMember<", memberType(leaf.type), ">(", constant, "),");
    else if (isEnumeration(leaf))
        out.line("    enumerationMember(", constant, ", ", leaf.name, "::s_class),");
    else
        out.line("    simpleMember(", constant, ", VN_SDAI::VnTypeCodeKind::", formOf(leaf.type).code, "),");
}

void writeTable(Writer& out, const Select& select) {
    const std::string& name = select.name;
    out.line("namespace {");
    out.line("constinit const SelectMember members_", name, "[] = {");
    for (const SelectLeaf& leaf : select.leaves)
        writeRow(out, select, leaf);
    out.line("};");
    if (select.leaves.empty()) {
        out.line("constexpr std::span<const std::uint16_t> index_", name, ";");
    } else {
        out.line("constexpr auto index_", name, " = memberIndex({");
        for (const SelectLeaf& leaf : select.leaves)
            out.line("    \"", leaf.name, "\",");
        out.line("});");
    }
    out.line("} // namespace");
}

void writeDefinitions(Writer& out, const Select& select) {
    const std::string& name = select.name;
    out.line();
    // constexpr, so that no destructor has to be registered for each of them when the module is loaded.
    for (const SelectLeaf& leaf : select.leaves)
        out.line("constexpr VN_SDAI::VnAnsiString ", name, "::", nameConstant(leaf), "{text_", leaf.name, "};");
    writeTable(out, select);
    out.line("VN_SDAI::VnIfcNameType* ", name, "::sType = nullptr;");
    out.line("constinit const SelectClass ", name, "::s_class = typed::selectClass<", name, ", descriptorCount>(\"",
             name, "\", members_", name, ", index_", name, ");");
    out.line("const SelectClass& ", name, "::selectClass() const noexcept { return s_class; }");
    for (const SelectLeaf& leaf : select.leaves)
        if (isEntity(leaf))
            out.line("void ", name, "::set", leaf.name, "(", leaf.name, "* value) { setInstance(value); }");
}

std::string selectSource(std::span<const Select> selects, const Target& target) {
    std::set<std::string> classes;
    std::set<std::string> names;
    for (const Select& select : selects) {
        classes.insert(select.name);
        for (const SelectLeaf& leaf : select.leaves) {
            names.insert(leaf.name);
            if (isEntity(leaf))
                classes.insert(leaf.name);
        }
    }
    Writer out(target);
    out.beginSource();
    out.include("types/Descriptors.h");
    out.line();
    for (const std::string& name : classes)
        out.includeClass(name);
    out.openSource();
    out.line("extern std::atomic<std::size_t> descriptorCount;\n\nnamespace {");
    for (const std::string& name : names)
        out.line("constexpr VN_SDAI::VnStaticText text_", name, "{\"", name, "\"};");
    out.line("} // namespace");
    for (const Select& select : selects)
        writeDefinitions(out, select);
    out.closeNamespace();
    return out.take();
}

} // namespace

void emitSelects(Files& files, const Model& model, const Target& target) {
    for (const Select& select : model.selects)
        files[target.header(select.name)] = header(select, aggregateOf(model, select), target);
    const std::span<const Select> selects(model.selects);
    const std::size_t size = (selects.size() + kUnits - 1) / kUnits;
    for (std::size_t unit = 0; unit < kUnits; ++unit) {
        const std::size_t first = std::min(unit * size, selects.size());
        const auto part = selects.subspan(first, std::min(size, selects.size() - first));
        files["src/Selects_" + std::to_string(unit) + ".cpp"] = selectSource(part, target);
    }
}

} // namespace expgen
