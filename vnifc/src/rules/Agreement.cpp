// Whether a text and the dictionary of a release tell of the same schema: what the one has and the other has not would
// give findings that mean nothing.
#include "Schema.h"

#include <VnIfcTyped/Enumeration.h>
#include <express/Text.h>
#include <vnifc/Rules.h>

#include <algorithm>

namespace vnifc::rules {
namespace {

using VN_SDAI::typed::AttributeRow;
using VN_SDAI::typed::EntityClass;
using VN_SDAI::typed::EnumerationClass;
using RowKind = VN_SDAI::typed::AttributeKind;
using express::equalNoCase;

class Agreement {
public:
    explicit Agreement(const Schema& schema) : m_schema(schema) {}

    [[noreturn]] void differ(const std::string& what, express::Position at = {}) const {
        std::string where = m_schema.declarations().file;
        if (at.line > 0)
            where += ':' + std::to_string(at.line) + ':' + std::to_string(at.column);
        throw RulesError(where + ": the text (SCHEMA " + m_schema.declarations().name.text +
                         ") is not that of the release " + std::string(m_schema.dictionary().name().view()) + ": " +
                         what);
    }

    const EntityClass& classOf(const Named& named) const;
    void checkEntities() const;
    void checkTypes() const;
    void checkSupertype(const Named& named, const EntityClass& entityClass) const;
    void checkFields(TypeIndex entity, const EntityClass& entityClass) const;
    const AttributeRow& explicitRow(const Named& named, const EntityClass& entityClass,
                                    const Attribute& attribute) const;
    const AttributeRow& inverseRow(const Named& named, const EntityClass& entityClass,
                                   const Attribute& attribute) const;
    void checkLiterals(const Named& enumeration, const EnumerationClass& enumerationClass,
                       const express::Name& attribute) const;

private:
    bool fits(RowKind kind, const Type& type) const;

    const Schema& m_schema;
};

const EntityClass& Agreement::classOf(const Named& named) const {
    const VN_SDAI::VnIfcEntityType* const record = m_schema.dictionary().entity(named.name);
    if (!record)
        differ("it has no entity " + named.name, named.entity->name.at);
    const std::unique_ptr<VN_SDAI::VnIfcEntityBase> sample(record->create());
    const auto* const entity = dynamic_cast<const Entity*>(sample.get());
    if (!entity)
        differ("its entity " + named.name + " has no class of a schema module", named.entity->name.at);
    return entity->entityClass();
}

void Agreement::checkEntities() const {
    for (const auto& entry : m_schema.dictionary().entities()) {
        const TypeIndex index = m_schema.find(entry.name.view());
        if (index == kNoType || !m_schema.isEntity(index))
            differ("the text has no entity " + std::string(entry.name.view()));
    }
}

void Agreement::checkTypes() const {
    for (TypeIndex i = kFirstNamedType; i < m_schema.named().size(); ++i) {
        const Named& named = m_schema.named(i);
        const bool isChecked = named.kind == TypeKind::kDefined || named.kind == TypeKind::kSelect;
        if (isChecked && !m_schema.dictionary().namedType(named.name)) {
            differ("it has no type " + named.name, named.defined ? named.defined->name.at : named.items->name.at);
        }
    }
    for (const auto& entry : m_schema.dictionary().namedTypes()) {
        const auto* const record = static_cast<const VN_SDAI::VnIfcDefinedType*>(entry.instance.get());
        // The dictionary of a release may take enumerations from elsewhere; classes are checked with the attributes.
        if (record->kind() != VN_SDAI::VnTypeCodeKind::kEnumeration && m_schema.find(entry.name.view()) == kNoType)
            differ("the text has no type " + std::string(entry.name.view()));
    }
}

void Agreement::checkSupertype(const Named& named, const EntityClass& entityClass) const {
    const std::string inClass = entityClass.supertype ? entityClass.supertype->name : "";
    const std::string inText = named.supertypes.empty() ? "" : m_schema.named(named.supertypes.front()).name;
    if (named.supertypes.size() > 1 || !equalNoCase(inClass, inText)) {
        differ("the supertype of " + named.name + " is " + (inClass.empty() ? "none" : inClass) + ", in the text " +
                   (inText.empty() ? "none" : inText),
               named.entity->name.at);
    }
}

bool Agreement::fits(RowKind kind, const Type& type) const {
    switch (type.kind) {
    case TypeKind::kBinary:
        return kind == RowKind::kBinary;
    case TypeKind::kBoolean:
        return kind == RowKind::kBoolean;
    case TypeKind::kInteger:
        return kind == RowKind::kInteger;
    case TypeKind::kLogical:
        return kind == RowKind::kLogical;
    case TypeKind::kNumber:
    case TypeKind::kReal:
        return kind == RowKind::kReal;
    case TypeKind::kString:
        return kind == RowKind::kString || kind == RowKind::kGuid;
    case TypeKind::kEntity:
        return kind == RowKind::kReference;
    case TypeKind::kEnumeration:
        return kind == RowKind::kEnumeration;
    case TypeKind::kSelect:
        return kind == RowKind::kSelect;
    case TypeKind::kAggregate:
        return kind == RowKind::kAggregate;
    case TypeKind::kUnknown:
    case TypeKind::kDefined:
        break;
    }
    return false;
}

const AttributeRow& Agreement::explicitRow(const Named& named, const EntityClass& entityClass,
                                           const Attribute& attribute) const {
    const express::AttributeDecl& declaration = *attribute.declaration;
    const std::string name = named.name + '.' + declaration.name.text;
    const auto row = std::ranges::find_if(entityClass.attributes, [&](const AttributeRow& each) {
        return equalNoCase(each.name, declaration.name.text);
    });
    if (row == entityClass.attributes.end())
        differ("it has no attribute " + name, declaration.name.at);
    const Type& type = m_schema.underlying(attribute.type);
    if (!fits(row->kind, type))
        differ("the attribute " + name + " is of type " + row->typeText, declaration.name.at);
    if ((row->mark == VN_SDAI::typed::kOptional) != declaration.isOptional)
        differ("the attribute " + name + " is " + (declaration.isOptional ? "not optional" : "optional"),
               declaration.name.at);
    if (row->kind == RowKind::kEnumeration)
        checkLiterals(m_schema.named(type.name), *static_cast<const EnumerationClass*>(row->type), declaration.name);
    return *row;
}

void Agreement::checkLiterals(const Named& enumeration, const EnumerationClass& enumerationClass,
                              const express::Name& attribute) const {
    const auto& items = enumeration.items->items;
    const bool isSame =
        std::ranges::equal(items, enumerationClass.literals, [](const express::Name& item, const char* literal) {
            return equalNoCase(item.text, literal);
        });
    if (!isSame)
        differ("the enumeration " + enumeration.name + " of " + attribute.text + " has other literals",
               enumeration.items->name.at);
}

const AttributeRow& Agreement::inverseRow(const Named& named, const EntityClass& entityClass,
                                          const Attribute& attribute) const {
    const express::InverseDecl& declaration = *attribute.inverse;
    for (const VN_SDAI::typed::InverseRow& row : entityClass.inverses) {
        if (equalNoCase(row.attribute.name, declaration.name.text)) {
            // A SET that may hold one instance is a single handle in the class.
            if ((row.attribute.kind == RowKind::kAggregate && !declaration.layer) ||
                !equalNoCase(row.inverted, declaration.attribute.text))
                break;
            return row.attribute;
        }
    }
    differ("it has no inverse attribute " + named.name + '.' + declaration.name.text + " like that of the text",
           declaration.name.at);
}

void Agreement::checkFields(TypeIndex entity, const EntityClass& entityClass) const {
    const Named& named = m_schema.named(entity);
    if (entityClass.attributes.size() != named.entity->explicits.size()) {
        differ("the entity " + named.name + " has " + std::to_string(entityClass.attributes.size()) +
                   " attributes of its own, in the text " + std::to_string(named.entity->explicits.size()),
               named.entity->name.at);
    }
    for (const AttributeRow* field : entityClass.fields) {
        NameId name = 0;
        if (!m_schema.findName(field->name, name) || !m_schema.attribute(entity, name))
            differ("the text has no attribute " + named.name + '.' + field->name, named.entity->name.at);
    }
}

} // namespace

void Schema::agree() {
    const Agreement agreement(*this);
    agreement.checkEntities();
    for (TypeIndex i = m_firstEntity; i < m_named.size(); ++i) {
        m_named[i].entityClass = &agreement.classOf(m_named[i]);
        m_classes.add(m_named[i].entityClass, i);
        agreement.checkSupertype(m_named[i], *m_named[i].entityClass);
        agreement.checkFields(i, *m_named[i].entityClass);
    }
    agreement.checkTypes();
    for (Attribute& attribute : m_attributes) {
        if (attribute.owner == kNoType)
            continue;
        const Named& owner = m_named[attribute.owner];
        if (attribute.kind == AttributeKind::kExplicit)
            attribute.row = &agreement.explicitRow(owner, *owner.entityClass, attribute);
        else if (attribute.kind == AttributeKind::kInverse)
            attribute.row = &agreement.inverseRow(owner, *owner.entityClass, attribute);
    }
}

} // namespace vnifc::rules
