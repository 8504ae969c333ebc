#include "SchemaBuilder.h"

#include <VnIfcTyped/Release.h>

namespace VN_SDAI::typed {

namespace {

/// Makes an attribute's record and appends it to its entity.
template <class Definition, class... Arguments>
Definition* append(VnIfcEntityType& entity, const char* name, Arguments... arguments) {
    auto* definition = new Definition(name, arguments...);
    entity.appendAttribute(definition);
    return definition;
}

std::unique_ptr<VnIfcEntityType> create(VnIfcSchema* schema, const EntityClass& row) {
    const VnIfcEntityType* supertype = row.supertype ? *row.supertype->record : nullptr;
    std::unique_ptr<VnIfcEntityType> entity(VnIfcEntityType::createEntityType(schema, row.keyword, true, row.create,
                                                                              row.properties, *row.record, supertype));
    entity->setAbstract(row.isAbstract);
    entity->setEntityClass(&row);
    return entity;
}

/// The rows of all entities together, to size the maps.
template <class Rows>
std::size_t countAll(const Release& release, Rows EntityClass::*rows) {
    std::size_t count = 0;
    for (const EntityClass* row : release.entities)
        count += (row->*rows).size();
    return count;
}

} // namespace

void SchemaBuilder::addEntities() {
    m_entities.reserve(m_release.entities.size());
    m_attributeTypes.reserve(countAll(m_release, &EntityClass::attributes));
    m_inverseAttributes.reserve(countAll(m_release, &EntityClass::inverses));
    for (const EntityClass* row : m_release.entities) {
        std::unique_ptr<VnIfcEntityType> entity = create(m_schema, *row);
        addAttributes(*entity, *row);
        auto typeCode = std::make_unique<VnTypeCode>(VnTypeCodeKind::kEntity);
        typeCode->appendParameter(VnAny() << row->name);
        entity->type(typeCode.release());
        m_entities.putAt(row->keyword, entity.release());
    }
}

void SchemaBuilder::addAttributes(VnIfcEntityType& entity, const EntityClass& row) {
    for (const AttributeRow& attribute : row.attributes) {
        auto* definition = append<VnIfcExplicitAttributeDefinition>(entity, attribute.name, nullptr, false);
        m_attributeTypes[definition] = attribute.typeText;
    }
    for (const DerivedRow& derived : row.derived) {
        auto* definition = append<VnIfcDerivedAttributeDefinition>(entity, derived.name, nullptr, nullptr);
        m_derivedAttributes[definition] = {derived.typeText, derived.redeclares, *derived.redeclares != '\0'};
    }
    for (const InverseRow& inverse : row.inverses) {
        auto* definition = append<VnIfcInverseAttributeDefinition>(entity, inverse.attribute.name, &entity, nullptr,
                                                                   nullptr, inverse.lower, inverse.upper, false);
        m_inverseAttributes[definition] = {inverse.attribute.typeText, inverse.inverted};
    }
}

} // namespace VN_SDAI::typed
