#include <VnIfcCore/VnIfcSchemaBuilder.h>

#include <algorithm>
#include <stdexcept>

namespace VN_SDAI {

namespace {

VnIfcSchema* checked(VnIfcSchema* schema) {
    if (!schema)
        throw std::invalid_argument("schema builder: no schema");
    return schema;
}

/// Takes a record's entry out of a map; an empty value when there is none.
template <class Record, class Value>
Value take(std::unordered_map<Record*, Value>& map, Record& record) {
    auto node = map.extract(&record);
    return node.empty() ? Value() : std::move(node.mapped());
}

} // namespace

VnIfcSchemaBuilder::VnIfcSchemaBuilder(VnIfcSchema* schema, const VnAnsiString& name)
    : m_schema(checked(schema)), m_namedTypes(schema->m_namedTypes), m_anonymousTypes(schema->m_anonymousTypes),
      m_entities(schema->m_entities) {
    schema->m_name = name;
}

VnIfcSchemaBuilder::~VnIfcSchemaBuilder() = default;

void VnIfcSchemaBuilder::initSchemaVersion(IfcSchemaMajorVersion majorVersion,
                                           IfcSchemaMinorVersion minorVersion) noexcept {
    m_schema->m_majorVersion = majorVersion;
    m_schema->m_minorVersion = minorVersion;
}

void VnIfcSchemaBuilder::build() {
    if (m_namedTypes.size() + m_anonymousTypes.size() + m_entities.size() != 0)
        throw std::logic_error("schema builder: the schema is built already");
    buildSchema();
    checkRecords();
    for (const Dictionary* types : {&m_namedTypes, &m_anonymousTypes})
        for (const Dictionary::Entry& entry : *types)
            resolveDefinedType(static_cast<VnIfcDefinedType&>(*entry.instance));
    for (const Dictionary::Entry& entry : m_entities)
        resolveEntity(static_cast<VnIfcEntityType&>(*entry.instance));
    checkNothingLeft();
    if (!m_problems.empty())
        throw std::runtime_error("schema " + std::string(m_schema->name().view()) + ": no record for" + m_problems);
}

// Everything else relies on the dictionaries holding records of the right class.
void VnIfcSchemaBuilder::checkRecords() {
    const auto check = [](const Dictionary& dictionary, auto isRight) {
        for (const Dictionary::Entry& entry : dictionary)
            if (!isRight(entry.instance.get()))
                throw std::logic_error("schema builder: wrong class of record \"" + std::string(entry.name.view()) +
                                       '"');
    };
    const auto isDefinedType = [](const auto* record) {
        return dynamic_cast<const VnIfcDefinedType*>(record) != nullptr;
    };
    check(m_namedTypes, isDefinedType);
    check(m_anonymousTypes, isDefinedType);
    check(m_entities, [](const auto* record) { return dynamic_cast<const VnIfcEntityType*>(record) != nullptr; });
}

void VnIfcSchemaBuilder::resolveDefinedType(VnIfcDefinedType& type) {
    if (auto* select = dynamic_cast<VnIfcSelectType*>(type.m_owned.get()))
        return resolveSelect(*select, type.name());
    if (auto* aggregation = dynamic_cast<VnIfcAggregationType*>(type.m_owned.get()))
        return resolveAggregation(*aggregation, type.name());
    if (type.m_underlying)
        return;
    type.m_underlyingName = take(m_underlyingTypes, type);
    type.m_underlying = resolveType(type.m_underlyingName, "underlying type", type.name());
}

void VnIfcSchemaBuilder::resolveSelect(VnIfcSelectType& type, const VnAnsiString& name) {
    type.m_memberNames = take(m_selectMembers, type);
    type.m_members.reserve(type.m_memberNames.size());
    for (const VnAnsiString& member : type.m_memberNames) {
        type.m_members.push_back(m_schema->namedType(member));
        if (!type.m_members.back())
            reportMissing(member, "member", name);
    }
}

void VnIfcSchemaBuilder::resolveAggregation(VnIfcAggregationType& type, const VnAnsiString& name) {
    if (type.m_elementType)
        return;
    type.m_elementTypeName = take(m_elementTypes, type);
    type.m_elementType = resolveType(type.m_elementTypeName, "element type", name);
}

void VnIfcSchemaBuilder::resolveEntity(VnIfcEntityType& entity) {
    if (const VnIfcEntityType* supertype = entity.m_supertype) {
        auto* record = static_cast<VnIfcEntityType*>(m_entities.at(supertype->name()));
        if (record == supertype)
            record->m_subtypes.push_back(&entity);
        else
            reportMissing(supertype->name(), "supertype", entity.name());
    }
    for (const auto& attribute : entity.m_owned) {
        switch (attribute->attributeKind()) {
        case VnIfcAttributeDefinition::Kind::kExplicit:
            resolveAttribute(static_cast<VnIfcExplicitAttributeDefinition&>(*attribute));
            break;
        case VnIfcAttributeDefinition::Kind::kDerived:
            resolveAttribute(static_cast<VnIfcDerivedAttributeDefinition&>(*attribute));
            break;
        case VnIfcAttributeDefinition::Kind::kInverse:
            resolveAttribute(static_cast<VnIfcInverseAttributeDefinition&>(*attribute));
            break;
        }
    }
}

void VnIfcSchemaBuilder::resolveAttribute(VnIfcExplicitAttributeDefinition& attribute) {
    if (attribute.m_type)
        return;
    attribute.m_typeName = take(m_attributeTypes, attribute);
    attribute.m_type = resolveAttributeType(attribute);
}

void VnIfcSchemaBuilder::resolveAttribute(VnIfcDerivedAttributeDefinition& attribute) {
    VnIfcDerivedAttributeNames names = take(m_derivedAttributes, attribute);
    if (!attribute.m_type) {
        attribute.m_typeName = std::move(names.typeName);
        attribute.m_type = resolveAttributeType(attribute);
    }
    if (!names.redeclares || attribute.m_redeclared)
        return;
    attribute.m_redeclaredName = std::move(names.redeclaredName);
    const VnIfcEntityType* supertype = attribute.m_parent->supertype();
    attribute.m_redeclared = supertype ? supertype->findAttribute(attribute.m_redeclaredName) : nullptr;
    if (!attribute.m_redeclared)
        reportMissing(attribute.m_redeclaredName, "redeclared attribute", pathOf(attribute));
}

void VnIfcSchemaBuilder::resolveAttribute(VnIfcInverseAttributeDefinition& attribute) {
    if (attribute.m_inverted)
        return;
    VnIfcInverseAttributeNames names = take(m_inverseAttributes, attribute);
    attribute.m_typeName = std::move(names.entityName);
    attribute.m_invertedName = std::move(names.attributeName);
    const VnIfcEntityType* entity = m_schema->entity(attribute.m_typeName);
    attribute.m_type = entity;
    if (!entity)
        return reportMissing(attribute.m_typeName, "entity", pathOf(attribute));
    attribute.m_inverted = entity->findAttribute(attribute.m_invertedName);
    if (!attribute.m_inverted)
        reportMissing(attribute.m_invertedName, "inverted attribute", pathOf(attribute));
}

const VnIfcParameterType* VnIfcSchemaBuilder::resolveType(const VnAnsiString& name, std::string_view role,
                                                          std::string_view owner) {
    const VnIfcParameterType* type = m_schema->type(name);
    if (!type)
        reportMissing(name, role, owner);
    return type;
}

const VnIfcParameterType* VnIfcSchemaBuilder::resolveAttributeType(const VnIfcAttributeDefinition& attribute) {
    const VnIfcParameterType* type = m_schema->type(attribute.typeName());
    const auto isName = [&](const VnAnsiString& name) { return name.compareNoCase(attribute.typeName()) == 0; };
    if (!type && std::ranges::none_of(m_typesWithoutRecord, isName))
        reportMissing(attribute.typeName(), "type", pathOf(attribute));
    return type;
}

// A name that was registered for a record that no dictionary owns would be lost without a word.
void VnIfcSchemaBuilder::checkNothingLeft() {
    const std::size_t left = m_underlyingTypes.size() + m_elementTypes.size() + m_selectMembers.size() +
                             m_attributeTypes.size() + m_derivedAttributes.size() + m_inverseAttributes.size();
    if (left != 0)
        m_problems += " [" + std::to_string(left) + " registered names whose own record is in no dictionary]";
}

void VnIfcSchemaBuilder::reportMissing(std::string_view name, std::string_view role, std::string_view owner) {
    m_problems.append(" \"").append(name).append("\" (").append(role).append(" of ").append(owner).append(")");
}

std::string VnIfcSchemaBuilder::pathOf(const VnIfcAttributeDefinition& attribute) {
    return std::string(attribute.m_parent->name().view()) + '.' + attribute.m_name.constStr();
}

} // namespace VN_SDAI
