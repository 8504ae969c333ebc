#include "CppTypes.h"
#include "Emit.h"
#include "Writer.h"

#include <algorithm>
#include <set>
#include <span>

namespace expgen {
namespace {

constexpr std::size_t kUnits = 16;

// An inverse attribute that stands for more than one instance is a plain set, whatever its bounds.
constexpr std::string_view kInverseSet = "VN_SDAI::VnIfcSetAggr<VN_SDAI::VnDbObjectId>";
constexpr std::string_view kHandle = "VN_SDAI::VnDbObjectId";

bool isReference(const Type& type) { return type.kind == Kind::kEntity && !type.isAggregate(); }

void writeAccessors(Writer& out, const ExplicitAttribute& attribute, std::size_t position, bool isMirrored) {
    const std::string& name = attribute.name;
    const std::string type = memberType(attribute.type);
    if (isReference(attribute.type)) {
        out.line("    ", type, " get", name, "() const noexcept { return m_", name, "; }");
        out.line("    ", attribute.type.name, "* ", name, "() const;");
    } else {
        out.line("    const ", type, "& get", name, "() const noexcept { return m_", name, "; }");
    }
    out.line("    void set", name, "(const ", arrayType(attribute.type), "& value) {");
    if (isMirrored)
        out.line("        referenceChanges();");
    if (attribute.type.isAggregate())
        out.line("        m_", name, ".assign(value);");
    else
        out.line("        m_", name, " = value;");
    out.line("        touched(", position, ");");
    out.line("    }");
}

void writeIncludes(Writer& out, const Entity& entity) {
    std::set<std::string> held;
    std::set<std::string> named;
    for (const ExplicitAttribute& attribute : entity.explicits)
        if (attribute.type.kind == Kind::kEnumeration || attribute.type.kind == Kind::kSelect)
            held.insert(attribute.type.name);
        else if (isReference(attribute.type))
            named.insert(attribute.type.name);
    for (const Entity* known : entity.lineage())
        named.erase(known->name);
    out.line("#pragma once");
    out.includeClass(entity.supertype ? entity.supertype->name : "Release");
    for (const std::string& name : held)
        out.includeClass(name);
    out.openNamespace();
    for (const std::string& name : named)
        out.line("class ", name, ";");
    if (!named.empty())
        out.line();
}

void writeTableDeclarations(Writer& out, const Entity& entity) {
    out.line("    static VN_SDAI::VnIfcEntityType* g_pEntityType;");
    out.line("    static const typed::EntityClass s_class;");
    const auto declare = [&out](std::string_view type, std::string_view name, std::size_t count) {
        if (count != 0)
            out.line("    static const typed::", type, " ", name, "[", count, "];");
    };
    declare("AttributeRow", "s_rows", entity.explicits.size());
    declare("InverseRow", "s_inverses", entity.inverses.size());
    declare("DerivedRow", "s_derived", entity.derived.size());
    declare("AttributeRow* const", "s_fields", entity.changesFields() ? entity.fields.size() : 0);
}

void writeMembers(Writer& out, const Entity& entity) {
    if (entity.explicits.empty() && entity.inverses.empty())
        return;
    out.line("\nprotected:");
    for (const ExplicitAttribute& attribute : entity.explicits)
        out.line("    ", memberType(attribute.type), " m_", attribute.name, unsetInitialiser(attribute.type), ";");
    for (const InverseAttribute& inverse : entity.inverses)
        out.line("    ", inverse.isSingle() ? kHandle : kInverseSet, " m_", inverse.name, ";");
}

std::string header(const Entity& entity, const Target& target) {
    Writer out(target);
    writeIncludes(out, entity);
    out.line("/// ", entity.isAbstract ? "Abstract " : "", "EXPRESS entity ", entity.name, " (ISO 16739).");
    out.line("class ", target.release.api(), " ", entity.name, " : public ",
             entity.supertype ? entity.supertype->name : "typed::Entity", " {");
    out.line("public:");
    const std::size_t inherited = entity.fields.size() - entity.explicits.size();
    for (std::size_t i = 0; i < entity.explicits.size(); ++i) {
        const auto isOfAttribute = [i](const Link& link) { return link.attribute == i; };
        writeAccessors(out, entity.explicits[i], inherited + i, std::ranges::any_of(entity.links, isOfAttribute));
    }
    for (const InverseAttribute& inverse : entity.inverses) {
        const std::string type = inverse.isSingle() ? std::string(kHandle) : "const " + std::string(kInverseSet) + "&";
        out.line("    ", type, " getInv", inverse.name, "() const noexcept { return m_", inverse.name, "; }");
    }
    out.line("    const typed::EntityClass& entityClass() const noexcept override;");
    out.line("    VN_SDAI::VnIfcEntityType* getInstanceType() const override;\n");
    writeTableDeclarations(out, entity);
    writeMembers(out, entity);
    out.line("};");
    out.closeNamespace();
    return out.take();
}

// What the values must fulfil beyond their kind: the entity that they refer to, the levels on which they differ, and
// whether they are binary.
std::string constraints(const Type& type) {
    unsigned unique = 0;
    for (std::size_t level = 0; level < type.layers.size(); ++level)
        unique |= type.layers[level].isUnique ? 1u << level : 0u;
    const bool isBinary = type.kind == Kind::kBinary && type.isAggregate();
    if (type.kind != Kind::kEntity && unique == 0 && !isBinary)
        return "";
    std::string text = type.kind == Kind::kEntity ? ", &" + type.name + "::g_pEntityType" : ", nullptr";
    if (unique != 0 || isBinary)
        text += ", " + std::to_string(unique);
    return isBinary ? text + ", true" : text;
}

void writeRows(Writer& out, const Entity& entity) {
    if (entity.explicits.empty())
        return;
    out.line("constinit const AttributeRow ", entity.name, "::s_rows[", entity.explicits.size(), "] = {");
    for (const ExplicitAttribute& attribute : entity.explicits) {
        const std::string member = entity.name + "::m_" + attribute.name;
        const bool isBinary = attribute.type.kind == Kind::kBinary && !attribute.type.isAggregate();
        out.line("    ", isBinary ? "binaryRow" : "explicitRow<decltype(" + member + ")>", "(\"", attribute.name,
                 "\", \"", attributeTypeText(attribute.type), "\", offsetof(", entity.name, ", m_", attribute.name,
                 "), ", attribute.isOptional ? "kOptional" : "kMandatory", constraints(attribute.type), "),");
    }
    out.line("};");
}

void writeInverses(Writer& out, const Entity& entity) {
    if (entity.inverses.empty())
        return;
    out.line("constinit const InverseRow ", entity.name, "::s_inverses[", entity.inverses.size(), "] = {");
    for (const InverseAttribute& inverse : entity.inverses) {
        const std::string bounds = inverse.hasBounds
                                       ? boundText(inverse.layer.lower) + ", " + boundText(inverse.layer.upper)
                                       : "kUnset, kUnset";
        out.line("    inverseRow<decltype(", entity.name, "::m_", inverse.name, ")>(\"", inverse.name, "\", \"",
                 lower(inverse.target->name), "\", \"", inverse.owner->explicits[inverse.attribute].name, "\", ",
                 bounds, ", offsetof(", entity.name, ", m_", inverse.name, ")),");
    }
    out.line("};");
}

void writeDerived(Writer& out, const Entity& entity) {
    if (entity.derived.empty())
        return;
    out.line("constinit const DerivedRow ", entity.name, "::s_derived[", entity.derived.size(), "] = {");
    for (const DerivedAttribute& attribute : entity.derived) {
        const std::string type = attributeTypeText(attribute.type);
        if (attribute.redeclaredOwner == nullptr) {
            out.line("    derivedRow(\"", attribute.name, "\", \"", type, "\"),");
        } else {
            out.line("    redeclaredRow(\"", lower(attribute.redeclaredOwner->name + "_" + attribute.name), "\", \"",
                     type, "\", \"", attribute.name, "\"),");
        }
    }
    out.line("};");
}

void writeFields(Writer& out, const Entity& entity) {
    if (!entity.changesFields())
        return;
    out.line("constinit const AttributeRow* const ", entity.name, "::s_fields[", entity.fields.size(), "] = {");
    for (const Field& field : entity.fields) {
        out.line("    &", field.owner->name, field.isDerived ? "::s_derived[" : "::s_rows[", field.index,
                 field.isDerived ? "].field," : "],");
    }
    out.line("};");
}

void writeChain(Writer& out, const Entity& entity) {
    out.line("constexpr VN_SDAI::VnIfcEntityType** chain_", entity.name, "[] = {");
    out.line("    &", entity.name, "::g_pEntityType,");
    for (const Entity* ancestor : entity.lineage())
        if (ancestor != &entity)
            out.line("    &", ancestor->name, "::g_pEntityType,");
    out.line("};");
}

void writeLinks(Writer& out, const Entity& entity) {
    if (entity.links.empty())
        return;
    for (const Link& link : entity.links) {
        out.line("constexpr InverseTarget targets_", entity.name, "_", entity.explicits[link.attribute].name, "[] = {");
        for (const LinkTarget& target : link.targets) {
            const std::string& name = target.entity->name;
            out.line("    {&", name, "::g_pEntityType, &", name, "::s_inverses[", target.inverse, "]},");
        }
        out.line("};");
    }
    out.line("constexpr InverseLink links_", entity.name, "[] = {");
    for (const Link& link : entity.links) {
        out.line("    {&", entity.name, "::s_rows[", link.attribute, "], targets_", entity.name, "_",
                 entity.explicits[link.attribute].name, "},");
    }
    out.line("};");
}

void writeUniques(Writer& out, const Entity& entity) {
    if (entity.uniques.empty())
        return;
    for (const UniqueRule& rule : entity.uniques) {
        out.line("constexpr const AttributeRow* unique_", entity.name, "_", rule.label, "[] = {");
        for (const Field& field : rule.attributes)
            out.line("    &", field.owner->name, "::s_rows[", field.index, "],");
        out.line("};");
    }
    out.line("constexpr UniqueRule uniques_", entity.name, "[] = {");
    for (const UniqueRule& rule : entity.uniques)
        out.line("    {\"", rule.label, "\", unique_", entity.name, "_", rule.label, "},");
    out.line("};");
}

// The nearest class that has a table for the parameter list.
const Entity* ownerOfFields(const Entity& entity) {
    const Entity* owner = &entity;
    while (owner != nullptr && !owner->changesFields())
        owner = owner->supertype;
    return owner;
}

std::string collector(const Entity& entity) {
    std::string properties;
    for (const Property& property : propertiesOf(entity))
        properties += (properties.empty() ? "" : ", ") + property.name;
    return properties.empty() ? "collectNothing" : "collectProperties<" + properties + ">";
}

void writeClass(Writer& out, const Entity& entity) {
    const std::string& name = entity.name;
    const std::string scope = name + "::";
    const Entity* const fields = ownerOfFields(entity);
    const auto orNone = [](bool exists, const std::string& table) { return exists ? table : std::string("{}"); };
    out.line("constinit const EntityClass ", scope, "s_class{");
    out.line("    .name = \"", name, "\",");
    out.line("    .keyword = \"", upper(name), "\",");
    out.line("    .supertype = ", entity.supertype ? "&" + entity.supertype->name + "::s_class" : "nullptr", ",");
    out.line("    .record = &", scope, "g_pEntityType,");
    out.line("    .create = &createEntity<", name, ">,");
    out.line("    .properties = &", collector(entity), ",");
    out.line("    .attributes = ", orNone(!entity.explicits.empty(), scope + "s_rows"), ",");
    out.line("    .inverses = ", orNone(!entity.inverses.empty(), scope + "s_inverses"), ",");
    out.line("    .derived = ", orNone(!entity.derived.empty(), scope + "s_derived"), ",");
    out.line("    .fields = ", fields ? fields->name + "::s_fields" : "{}", ",");
    out.line("    .chain = chain_", name, ",");
    out.line("    .links = ", orNone(!entity.links.empty(), "links_" + name), ",");
    out.line("    .uniques = ", orNone(!entity.uniques.empty(), "uniques_" + name), ",");
    out.line("    .isAbstract = ", entity.isAbstract ? "true" : "false", "};");
}

void writeFunctions(Writer& out, const Entity& entity) {
    const std::string& name = entity.name;
    out.line("const EntityClass& ", name, "::entityClass() const noexcept { return s_class; }");
    out.line("VN_SDAI::VnIfcEntityType* ", name, "::getInstanceType() const { return g_pEntityType; }");
    for (const ExplicitAttribute& attribute : entity.explicits) {
        if (isReference(attribute.type)) {
            out.line(attribute.type.name, "* ", name, "::", attribute.name, "() const { return openAs<", out.scope(),
                     attribute.type.name, ">(m_", attribute.name, "); }");
        }
    }
}

void writeDefinitions(Writer& out, const Entity& entity) {
    out.line("\nVN_SDAI::VnIfcEntityType* ", entity.name, "::g_pEntityType = nullptr;");
    writeRows(out, entity);
    writeInverses(out, entity);
    writeDerived(out, entity);
    writeFields(out, entity);
    out.line("namespace {");
    writeChain(out, entity);
    writeLinks(out, entity);
    writeUniques(out, entity);
    out.line("} // namespace");
    writeClass(out, entity);
    writeFunctions(out, entity);
}

std::set<std::string> classesFor(std::span<const Entity> entities) {
    std::set<std::string> names;
    for (const Entity& entity : entities) {
        names.insert(entity.name);
        for (const ExplicitAttribute& attribute : entity.explicits)
            if (attribute.type.kind == Kind::kEntity)
                names.insert(attribute.type.name);
        for (const Link& link : entity.links)
            for (const LinkTarget& target : link.targets)
                names.insert(target.entity->name);
    }
    return names;
}

std::string entitySource(std::span<const Entity> entities, const Target& target) {
    Writer out(target);
    out.beginSource();
    out.include("entities/EntityTables.h");
    out.includeClass("AttributeProperties");
    out.line();
    for (const std::string& name : classesFor(entities))
        out.includeClass(name);
    out.openSource();
    for (const Entity& entity : entities)
        writeDefinitions(out, entity);
    out.closeNamespace();
    return out.take();
}

} // namespace

void emitEntities(Files& files, const Model& model, const Target& target) {
    for (const Entity& entity : model.entities)
        files[target.header(entity.name)] = header(entity, target);
    const std::span<const Entity> entities(model.entities);
    const std::size_t size = (entities.size() + kUnits - 1) / kUnits;
    for (std::size_t unit = 0; unit < kUnits; ++unit) {
        const std::size_t first = std::min(unit * size, entities.size());
        const auto part = entities.subspan(first, std::min(size, entities.size() - first));
        const std::string digits = {static_cast<char>('0' + unit / 10), static_cast<char>('0' + unit % 10)};
        files["src/Entities_" + digits + ".cpp"] = entitySource(part, target);
    }
}

} // namespace expgen
