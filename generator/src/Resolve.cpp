#include "Resolve.h"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <unordered_set>

namespace expgen {
namespace {

enum class SymbolKind { kDefinedType, kEntity, kEnumeration, kSelect };

struct Symbol {
    SymbolKind kind;
    std::size_t index;
};

std::string inQuotes(std::string_view text) { return "\"" + std::string(text) + "\""; }

Kind kindOf(const TypeSpec& type) {
    switch (*type.simple) {
    case SimpleType::kBinary:
        return Kind::kBinary;
    case SimpleType::kBoolean:
        return Kind::kBoolean;
    case SimpleType::kInteger:
        return Kind::kInteger;
    case SimpleType::kLogical:
        return Kind::kLogical;
    case SimpleType::kNumber:
    case SimpleType::kReal:
        return Kind::kReal;
    case SimpleType::kString:
        break;
    }
    // Globally unique ids are the only strings of a fixed width of 22, which is that of a base-64 text of 128 bits.
    return type.isFixed && type.width == 22 ? Kind::kGuid : Kind::kString;
}

std::string simpleName(const TypeSpec& type) {
    return type.simple == SimpleType::kNumber ? "real" : lower(type.name.text);
}

// An attribute's own simple type: the dictionary has a record for binaries of a width.
std::string anonymousName(const TypeSpec& type) {
    const std::string name = simpleName(type);
    return type.simple == SimpleType::kBinary && type.width != 0 ? name + "(" + std::to_string(type.width) + ")" : name;
}

Enumeration enumerationOf(const ItemsDecl& decl) {
    Enumeration enumeration{decl.name.text, {}};
    for (const Name& item : decl.items)
        enumeration.literals.push_back(upper(item.text));
    return enumeration;
}

class Resolver {
public:
    Resolver(const SchemaDecl& schema, const Differences& differences) : m_schema(schema), m_differences(differences) {}

    Model resolve();

private:
    [[noreturn]] void fail(const Name& found, std::string_view expected) const {
        throw ExpressError(m_schema.file, found.at, inQuotes(found.text), expected);
    }

    template <class Decl>
    void declare(const std::vector<Decl>& decls, SymbolKind kind);
    const Symbol& lookUp(const Name& name, std::string_view expected) const;
    Entity& lookUpEntity(const Name& name);
    Type resolveType(const TypeSpec& spec) const;
    void setElement(Type& type, const Name& name, const Symbol& symbol) const;

    void createRecords();
    void resolveDefinedTypes();
    void resolveSelects();
    void addLeaves(Select& select, std::size_t index) const;
    void resolveSupertypes();
    void orderEntities();
    void addInOrder(const Entity& entity, std::unordered_set<const Entity*>& placed);
    void resolveAttributes();
    void resolveDerived(Entity& entity, const AttributeDecl& decl);
    void resolveInverse(Entity& entity, const InverseDecl& decl);
    void resolveUnique(Entity& entity, const UniqueDecl& decl);
    void buildFields(Entity& entity) const;
    Entity& mutableEntity(const Entity* entity) { return m_model.entities[indexOf(entity)]; }
    std::size_t indexOf(const Entity* entity) const {
        return static_cast<std::size_t>(entity - m_model.entities.data());
    }
    void keepTextOrder();
    void readOrder(const BuildingOrder& order);
    void collectAggregations();

    const SchemaDecl& m_schema;
    const Differences& m_differences;
    std::unordered_map<std::string, Symbol> m_symbols;
    std::vector<std::size_t> m_namedAggregations;
    std::vector<const Entity*> m_firstEntities;
    Model m_model;
};

template <class Decl>
void Resolver::declare(const std::vector<Decl>& decls, SymbolKind kind) {
    for (std::size_t i = 0; i < decls.size(); ++i)
        if (!m_symbols.emplace(lower(decls[i].name.text), Symbol{kind, i}).second)
            fail(decls[i].name, "a name that is not declared before");
}

const Symbol& Resolver::lookUp(const Name& name, std::string_view expected) const {
    const auto found = m_symbols.find(lower(name.text));
    if (found == m_symbols.end())
        fail(name, expected);
    return found->second;
}

Entity& Resolver::lookUpEntity(const Name& name) {
    const Symbol& symbol = lookUp(name, "an entity of the schema");
    if (symbol.kind != SymbolKind::kEntity)
        fail(name, "an entity of the schema");
    return m_model.entities[symbol.index];
}

void Resolver::setElement(Type& type, const Name& name, const Symbol& symbol) const {
    switch (symbol.kind) {
    case SymbolKind::kEntity:
        type.kind = Kind::kEntity;
        type.entity = &m_model.entities[symbol.index];
        type.name = type.entity->name;
        return;
    case SymbolKind::kEnumeration:
        type.kind = Kind::kEnumeration;
        type.enumeration = &m_model.enumerations[symbol.index];
        type.name = type.enumeration->name;
        return;
    case SymbolKind::kSelect:
        type.kind = Kind::kSelect;
        type.select = &m_model.selects[symbol.index];
        type.name = type.select->name;
        return;
    case SymbolKind::kDefinedType:
        fail(name, "no defined type here");
    }
}

// Follows defined types down to what the value is. The name stays that of the first defined type, except that an
// aggregation stands for itself: attributes refer to it by its descriptive text.
Type Resolver::resolveType(const TypeSpec& spec) const {
    Type type;
    const TypeSpec* current = &spec;
    for (std::size_t steps = 0;; ++steps) {
        if (!current->layers.empty()) {
            type.layers.insert(type.layers.end(), current->layers.begin(), current->layers.end());
            type.name.clear();
        }
        if (current->simple) {
            type.kind = kindOf(*current);
            type.name = type.name.empty() ? anonymousName(*current) : type.name;
            return type;
        }
        const Symbol& symbol = lookUp(current->name, "a type or entity of the schema");
        if (symbol.kind != SymbolKind::kDefinedType) {
            setElement(type, current->name, symbol);
            return type;
        }
        if (steps > m_schema.definedTypes.size())
            fail(current->name, "a type that is not defined by itself");
        const DefinedTypeDecl& decl = m_schema.definedTypes[symbol.index];
        type.name = type.name.empty() ? decl.name.text : type.name;
        current = &decl.type;
    }
}

void Resolver::createRecords() {
    for (const ItemsDecl& decl : m_schema.enumerations)
        m_model.enumerations.push_back(enumerationOf(decl));
    const SchemaDecl& records = m_differences.enumerations ? *m_differences.enumerations : m_schema;
    for (const ItemsDecl& decl : records.enumerations)
        m_model.enumerationRecords.push_back(enumerationOf(decl));
    for (const ItemsDecl& decl : m_schema.selects)
        m_model.selects.push_back({decl.name.text, {}, {}});
    m_model.entities.resize(m_schema.entities.size());
    for (std::size_t i = 0; i < m_schema.entities.size(); ++i) {
        m_model.entities[i].name = m_schema.entities[i].name.text;
        m_model.entities[i].isAbstract = m_schema.entities[i].isAbstract;
    }
}

void Resolver::resolveDefinedTypes() {
    for (const DefinedTypeDecl& decl : m_schema.definedTypes) {
        const std::string underlying = decl.type.simple ? simpleName(decl.type) : lower(decl.type.name.text);
        m_model.definedTypes.push_back({decl.name.text, resolveType(decl.type), underlying});
    }
}

void Resolver::resolveSelects() {
    for (std::size_t i = 0; i < m_schema.selects.size(); ++i)
        addLeaves(m_model.selects[i], i);
}

// Walks nested selects with a stack of its own.
void Resolver::addLeaves(Select& select, std::size_t index) const {
    std::vector<std::pair<std::size_t, std::size_t>> open{{index, 0}}; // select, next item
    std::unordered_set<std::string> seen;
    while (!open.empty()) {
        const std::vector<Name>& items = m_schema.selects[open.back().first].items;
        if (open.back().second == items.size()) {
            open.pop_back();
            continue;
        }
        const Name& item = items[open.back().second++];
        const Symbol& symbol = lookUp(item, "a type or entity of the schema");
        Type type = resolveType({{}, std::nullopt, item, 0, false});
        const bool isDefinedType = symbol.kind == SymbolKind::kDefinedType;
        const std::string name = isDefinedType ? m_schema.definedTypes[symbol.index].name.text : type.name;
        if (open.size() == 1)
            select.members.push_back(name);
        const bool isSelect = symbol.kind == SymbolKind::kSelect;
        const auto isOpen = [&](const auto& each) { return each.first == symbol.index; };
        if (isSelect && std::any_of(open.begin(), open.end(), isOpen))
            fail(item, "a select that does not contain itself");
        // Selects count as well, or those without members could be walked through once for each way to them.
        if (!seen.insert(name).second)
            fail(item, "a member that the select " + select.name + " does not have already");
        if (isSelect)
            open.emplace_back(symbol.index, 0);
        else
            select.leaves.push_back({name, std::move(type)});
    }
}

void Resolver::resolveSupertypes() {
    for (std::size_t i = 0; i < m_schema.entities.size(); ++i) {
        const EntityDecl& decl = m_schema.entities[i];
        if (decl.supertypes.size() > 1)
            fail(decl.supertypes[1], "a single supertype: entity classes have one base");
        if (!decl.supertypes.empty())
            m_model.entities[i].supertype = &lookUpEntity(decl.supertypes[0]);
    }
    for (std::size_t i = 0; i < m_schema.entities.size(); ++i) {
        std::size_t depth = 0;
        for (const Entity* entity = &m_model.entities[i]; entity != nullptr; entity = entity->supertype)
            if (++depth > m_model.entities.size())
                fail(m_schema.entities[i].name, "an entity that is not its own supertype");
    }
}

void Resolver::addInOrder(const Entity& entity, std::unordered_set<const Entity*>& placed) {
    for (const Entity* ancestor : entity.lineage())
        if (placed.insert(ancestor).second)
            m_model.entityOrder.push_back(ancestor);
}

void Resolver::orderEntities() {
    std::unordered_set<const Entity*> placed;
    for (const Entity* entity : m_firstEntities)
        addInOrder(*entity, placed);
    for (const Entity& entity : m_model.entities)
        addInOrder(entity, placed);
}

void Resolver::resolveAttributes() {
    for (std::size_t i = 0; i < m_schema.entities.size(); ++i) {
        for (const AttributeDecl& decl : m_schema.entities[i].explicits) {
            if (!decl.redeclaredOwner.text.empty())
                fail(decl.redeclaredOwner, "an attribute of its own: only derived attributes redeclare");
            m_model.entities[i].explicits.push_back({decl.name.text, resolveType(decl.type), decl.isOptional});
        }
    }
    for (const Entity* ordered : m_model.entityOrder) {
        Entity& entity = mutableEntity(ordered);
        const EntityDecl& decl = m_schema.entities[indexOf(ordered)];
        for (const AttributeDecl& derived : decl.derived)
            resolveDerived(entity, derived);
        buildFields(entity);
    }
    for (std::size_t i = 0; i < m_schema.entities.size(); ++i) {
        for (const InverseDecl& inverse : m_schema.entities[i].inverses)
            resolveInverse(m_model.entities[i], inverse);
        for (const UniqueDecl& unique : m_schema.entities[i].uniques)
            resolveUnique(m_model.entities[i], unique);
    }
}

void Resolver::resolveDerived(Entity& entity, const AttributeDecl& decl) {
    DerivedAttribute attribute{decl.name.text, resolveType(decl.type), nullptr};
    if (!decl.redeclaredOwner.text.empty()) {
        const Entity& owner = lookUpEntity(decl.redeclaredOwner);
        const auto& fields = entity.supertype ? entity.supertype->fields : entity.fields;
        const bool isField = std::any_of(fields.begin(), fields.end(), [&](const Field& field) {
            return field.owner == &owner && !field.isDerived &&
                   equalNoCase(owner.explicits[field.index].name, decl.redeclaredName.text);
        });
        if (!isField)
            fail(decl.redeclaredName, "an inherited explicit attribute of " + owner.name);
        attribute.redeclaredOwner = &owner;
    }
    entity.derived.push_back(std::move(attribute));
}

void Resolver::buildFields(Entity& entity) const {
    if (entity.supertype != nullptr)
        entity.fields = entity.supertype->fields;
    for (Field& field : entity.fields) {
        for (std::size_t i = 0; i < entity.derived.size(); ++i) {
            const DerivedAttribute& derived = entity.derived[i];
            if (derived.redeclaredOwner == field.owner && !field.isDerived &&
                equalNoCase(derived.name, field.owner->explicits[field.index].name)) {
                field = {&entity, i, true};
                break;
            }
        }
    }
    for (std::size_t i = 0; i < entity.explicits.size(); ++i)
        entity.fields.push_back({&entity, i, false});
}

void Resolver::resolveInverse(Entity& entity, const InverseDecl& decl) {
    InverseAttribute inverse;
    inverse.name = decl.name.text;
    inverse.target = &lookUpEntity(decl.entity);
    inverse.hasBounds = decl.layer.has_value();
    inverse.layer = decl.layer.value_or(Layer{AggregateKind::kSet, {}, {}});
    const auto& fields = inverse.target->fields;
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const Field& field) {
        return !field.isDerived && equalNoCase(field.owner->explicits[field.index].name, decl.attribute.text);
    });
    if (found == fields.end())
        fail(decl.attribute, "an explicit attribute of " + inverse.target->name);
    inverse.owner = found->owner;
    inverse.attribute = found->index;

    std::vector<Link>& links = mutableEntity(found->owner).links;
    auto link = std::find_if(links.begin(), links.end(), [&](const Link& l) { return l.attribute >= found->index; });
    if (link == links.end() || link->attribute != found->index)
        link = links.insert(link, {found->index, {}});
    link->targets.push_back({&entity, entity.inverses.size()});
    entity.inverses.push_back(std::move(inverse));
}

// A rule over derived or inverse attributes is left out: their values are not stored.
void Resolver::resolveUnique(Entity& entity, const UniqueDecl& decl) {
    UniqueRule rule{decl.label, {}};
    for (const Name& name : decl.attributes) {
        const auto found = std::find_if(entity.fields.begin(), entity.fields.end(), [&](const Field& field) {
            return !field.isDerived && equalNoCase(field.owner->explicits[field.index].name, name.text);
        });
        if (found == entity.fields.end())
            return;
        rule.attributes.push_back(*found);
    }
    entity.uniques.push_back(std::move(rule));
}

void Resolver::keepTextOrder() {
    for (const Select& select : m_model.selects)
        m_model.selectOrder.push_back(&select);
    for (std::size_t i = 0; i < m_model.definedTypes.size(); ++i)
        if (m_model.definedTypes[i].type.isAggregate())
            m_namedAggregations.push_back(i);
        else
            m_model.definedTypeOrder.push_back(&m_model.definedTypes[i]);
}

void Resolver::readOrder(const BuildingOrder& order) {
    const auto refuse = [&order](const Name& name, std::string_view expected) {
        throw ExpressError(order.file, name.at, inQuotes(name.text), expected);
    };
    std::unordered_set<std::string> seen;
    for (const Name& name : order.names) {
        const auto found = m_symbols.find(lower(name.text));
        if (found == m_symbols.end() || !seen.insert(found->first).second)
            refuse(name, "a name of the schema, once");
        const auto [kind, index] = found->second;
        if (kind == SymbolKind::kEntity)
            m_firstEntities.push_back(&m_model.entities[index]);
        else if (kind == SymbolKind::kSelect)
            m_model.selectOrder.push_back(&m_model.selects[index]);
        else if (kind == SymbolKind::kEnumeration)
            refuse(name, "no enumeration: their order is that of their file");
        else if (m_model.definedTypes[index].type.isAggregate())
            m_namedAggregations.push_back(index);
        else
            m_model.definedTypeOrder.push_back(&m_model.definedTypes[index]);
    }
    const auto isMissing = [&](const auto& decl) { return !seen.contains(lower(decl.name.text)); };
    const auto type = std::find_if(m_schema.definedTypes.begin(), m_schema.definedTypes.end(), isMissing);
    const auto select = std::find_if(m_schema.selects.begin(), m_schema.selects.end(), isMissing);
    if (type != m_schema.definedTypes.end())
        fail(type->name, "a type that " + order.file + " names");
    if (select != m_schema.selects.end())
        fail(select->name, "a select that " + order.file + " names");
}

void Resolver::collectAggregations() {
    for (const std::size_t index : m_namedAggregations) {
        const DefinedType& defined = m_model.definedTypes[index];
        m_model.aggregations.push_back({defined.name, defined.type.layers[0], typeText(defined.type, 1), true});
    }
    std::map<std::string, Aggregation> anonymous; // in byte order
    const auto add = [&](const Type& type) {
        for (std::size_t depth = 0; depth < type.layers.size(); ++depth) {
            const std::string text = typeText(type, depth);
            anonymous.emplace(text, Aggregation{text, type.layers[depth], typeText(type, depth + 1), false});
        }
    };
    for (const Entity& entity : m_model.entities) {
        for (const ExplicitAttribute& attribute : entity.explicits)
            add(attribute.type);
        for (const DerivedAttribute& attribute : entity.derived)
            add(attribute.type);
        for (const InverseAttribute& attribute : entity.inverses)
            if (attribute.hasBounds)
                add({{attribute.layer}, Kind::kEntity, attribute.target->name, attribute.target, nullptr, nullptr});
    }
    for (auto& [text, aggregation] : anonymous)
        m_model.aggregations.push_back(std::move(aggregation));
}

Model Resolver::resolve() {
    declare(m_schema.definedTypes, SymbolKind::kDefinedType);
    declare(m_schema.enumerations, SymbolKind::kEnumeration);
    declare(m_schema.selects, SymbolKind::kSelect);
    declare(m_schema.entities, SymbolKind::kEntity);
    createRecords();
    resolveDefinedTypes();
    resolveSelects();
    resolveSupertypes();
    if (m_differences.order)
        readOrder(*m_differences.order);
    else
        keepTextOrder();
    orderEntities();
    resolveAttributes();
    collectAggregations();
    return std::move(m_model);
}

} // namespace

Model resolve(const SchemaDecl& schema, const Differences& differences) {
    return Resolver(schema, differences).resolve();
}

} // namespace expgen
