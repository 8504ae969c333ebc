#include "Schema.h"

#include <express/Text.h>
#include <vnifc/Rules.h>

#include <algorithm>

namespace vnifc::rules {
namespace {

using express::AggregateKind;
using express::SimpleType;
using express::upper;

struct Base {
    TypeIndex index;
    TypeKind kind;
    const char* name;
    /// What every value of the type is, too (9.2.7).
    TypeIndex general;
};
constexpr Base kBases[] = {{kArrayType, TypeKind::kAggregate, "ARRAY", kNoType},
                           {kBagType, TypeKind::kAggregate, "BAG", kNoType},
                           {kListType, TypeKind::kAggregate, "LIST", kNoType},
                           {kSetType, TypeKind::kAggregate, "SET", kNoType},
                           {kBinaryType, TypeKind::kBinary, "BINARY", kNoType},
                           {kBooleanType, TypeKind::kBoolean, "BOOLEAN", kLogicalType},
                           {kIntegerType, TypeKind::kInteger, "INTEGER", kRealType},
                           {kLogicalType, TypeKind::kLogical, "LOGICAL", kNoType},
                           {kNumberType, TypeKind::kNumber, "NUMBER", kNoType},
                           {kRealType, TypeKind::kReal, "REAL", kNumberType},
                           {kStringType, TypeKind::kString, "STRING", kNoType}};

TypeIndex baseOf(SimpleType simple) {
    switch (simple) {
    case SimpleType::kBinary:
        return kBinaryType;
    case SimpleType::kBoolean:
        return kBooleanType;
    case SimpleType::kInteger:
        return kIntegerType;
    case SimpleType::kLogical:
        return kLogicalType;
    case SimpleType::kNumber:
        return kNumberType;
    case SimpleType::kReal:
        return kRealType;
    case SimpleType::kString:
        return kStringType;
    }
    return kNoType;
}

} // namespace

TypeIndex baseOf(AggregateKind kind) noexcept {
    switch (kind) {
    case AggregateKind::kArray:
        return kArrayType;
    case AggregateKind::kBag:
        return kBagType;
    case AggregateKind::kList:
        return kListType;
    case AggregateKind::kSet:
        return kSetType;
    }
    return kNoType;
}

Schema::Schema(express::SchemaDecl declarations, const VN_SDAI::VnIfcSchema& dictionary)
    : m_declarations(std::move(declarations)), m_dictionary(dictionary) {
    m_types.emplace_back();
    m_names.emplace_back(); // 0 is no name
    m_attributes.emplace_back();
    addNamedTypes();
    resolveNamedTypes();
    addAttributes();
    addLiterals();
    close();
    agree();
}

void Schema::addNamed(const std::string& name, TypeKind kind) {
    if (m_named.size() > std::numeric_limits<TypeIndex>::max() - 1)
        throw RulesError(m_declarations.file + ": more types than this library can take");
    const auto index = static_cast<TypeIndex>(m_named.size());
    Named& named = m_named.emplace_back();
    named.name = name;
    named.qualified = upper(m_declarations.name.text) + '.' + upper(name);
    named.kind = kind;
    named.type = static_cast<TypeId>(m_types.size());
    Type& type = m_types.emplace_back();
    type.kind = kind;
    type.name = index;
    if (!m_byName.emplace(upper(name), index).second)
        throw RulesError(m_declarations.file + ": \"" + name + "\" is declared twice");
    m_byQualified.emplace(named.qualified, index);
}

void Schema::addNamedTypes() {
    m_named.emplace_back();
    for (const Base& base : kBases) {
        Named& named = m_named.emplace_back();
        named.name = named.qualified = base.name;
        named.kind = base.kind;
        named.type = static_cast<TypeId>(m_types.size());
        Type& type = m_types.emplace_back();
        type.kind = base.kind;
        m_byQualified.emplace(base.name, base.index);
    }
    for (const express::DefinedTypeDecl& each : m_declarations.definedTypes) {
        addNamed(each.name.text, TypeKind::kDefined);
        m_named.back().defined = &each;
    }
    for (const express::ItemsDecl& each : m_declarations.enumerations) {
        addNamed(each.name.text, TypeKind::kEnumeration);
        m_named.back().items = &each;
    }
    for (const express::ItemsDecl& each : m_declarations.selects) {
        addNamed(each.name.text, TypeKind::kSelect);
        m_named.back().items = &each;
    }
    m_firstEntity = static_cast<TypeIndex>(m_named.size());
    for (const express::EntityDecl& each : m_declarations.entities) {
        addNamed(each.name.text, TypeKind::kEntity);
        m_named.back().entity = &each;
    }
}

TypeIndex Schema::find(std::string_view name) const {
    const auto found = m_byName.find(upper(name));
    return found == m_byName.end() ? static_cast<TypeIndex>(kNoType) : found->second;
}

TypeIndex Schema::findQualified(std::string_view name) const {
    const auto found = m_byQualified.find(std::string(name));
    return found == m_byQualified.end() ? static_cast<TypeIndex>(kNoType) : found->second;
}

TypeId Schema::addType(const Type& type) {
    m_types.push_back(type);
    return static_cast<TypeId>(m_types.size() - 1);
}

TypeId Schema::resolve(const express::TypeSpec& spec, std::string& problem) {
    TypeId id = 0;
    if (spec.simple) {
        id = m_named[baseOf(*spec.simple)].type;
    } else if (!spec.isGeneric) {
        const TypeIndex name = find(spec.name.text);
        if (name == kNoType)
            problem = "a type, found \"" + spec.name.text + '"';
        id = name == kNoType ? 0 : m_named[name].type;
    }
    for (std::size_t i = spec.layers.size(); i-- > 0;) {
        const express::Layer& layer = spec.layers[i];
        Type type;
        type.kind = TypeKind::kAggregate;
        type.aggregate = layer.kind;
        type.isGeneral = layer.isGeneral;
        type.isOptional = layer.isOptional;
        type.inner = id;
        type.lower = layer.lower.value.value_or(layer.kind == AggregateKind::kArray ? 1 : 0);
        type.upper = layer.upper.value.value_or(kOpenBound);
        id = addType(type);
    }
    return id;
}

TypeId Schema::resolveOrThrow(const express::TypeSpec& spec, std::string_view where) {
    std::string problem;
    const TypeId id = resolve(spec, problem);
    if (!problem.empty()) {
        throw RulesError(m_declarations.file + ':' + std::to_string(spec.name.at.line) + ':' +
                         std::to_string(spec.name.at.column) + ": " + std::string(where) + ": expected " + problem);
    }
    return id;
}

const Type& Schema::underlying(TypeId id) const noexcept {
    const Type* type = &m_types[id];
    // Texts may define types in a circle; there are no more steps than types.
    for (std::size_t i = 0; type->kind == TypeKind::kDefined && i < m_named.size(); ++i)
        type = &m_types[type->inner];
    return *type;
}

void Schema::resolveNamedTypes() {
    for (TypeIndex i = kFirstNamedType; i < m_named.size(); ++i) {
        Named& named = m_named[i];
        if (named.defined) {
            const TypeId inner = resolveOrThrow(named.defined->type, named.name);
            m_types[named.type].inner = inner;
        } else if (named.kind == TypeKind::kSelect) {
            for (const express::Name& member : named.items->items) {
                const TypeIndex index = find(member.text);
                if (index == kNoType)
                    throw RulesError(m_declarations.file + ": " + named.name + ": \"" + member.text + "\" is no type");
                named.members.push_back(index);
            }
        } else if (named.kind == TypeKind::kEntity) {
            resolveEntity(named);
        }
    }
}

void Schema::resolveEntity(Named& named) {
    for (const express::Name& each : named.entity->supertypes) {
        const TypeIndex supertype = find(each.text);
        if (supertype == kNoType || !isEntity(supertype))
            throw RulesError(m_declarations.file + ": " + named.name + ": \"" + each.text + "\" is no entity");
        named.supertypes.push_back(supertype);
    }
}

NameId Schema::nameId(std::string_view name) {
    std::string key = upper(name);
    const auto [found, isNew] = m_nameIds.emplace(std::move(key), static_cast<NameId>(m_names.size()));
    if (isNew) {
        if (m_names.size() > std::numeric_limits<NameId>::max() - 1)
            throw RulesError(m_declarations.file + ": more names than this library can take");
        m_names.push_back(found->first);
    }
    return found->second;
}

bool Schema::findName(std::string_view name, NameId& id) const {
    const auto found = m_nameIds.find(upper(name));
    if (found == m_nameIds.end())
        return false;
    id = found->second;
    return true;
}

void Schema::addLiterals() {
    for (TypeIndex i = kFirstNamedType; i < m_named.size(); ++i) {
        if (m_named[i].kind != TypeKind::kEnumeration)
            continue;
        std::uint32_t position = 0;
        for (const express::Name& item : m_named[i].items->items) {
            const NameId name = nameId(item.text);
            m_named[i].literals.push_back(name);
            m_literals[name].push_back({i, position++});
        }
    }
}

const std::vector<Schema::Literal>* Schema::literals(NameId name) const {
    const auto found = m_literals.find(name);
    return found == m_literals.end() ? nullptr : &found->second;
}

void Schema::addAttributes() {
    // All names first, because the table has a row for each.
    for (const express::EntityDecl& entity : m_declarations.entities) {
        for (const express::AttributeDecl& each : entity.explicits)
            nameId(each.name.text);
        for (const express::AttributeDecl& each : entity.derived)
            nameId(each.name.text);
        for (const express::InverseDecl& each : entity.inverses)
            nameId(each.name.text);
    }
    m_attributeNames = m_names.size();
    m_parameters.resize(m_named.size());
    fillTable();
    m_explicit.resize(m_named.size());
    for (TypeIndex i = m_firstEntity; i < m_named.size(); ++i) {
        for (const NameId name : attributesOf(i)) {
            const Attribute* const each = attribute(i, name);
            if (each->kind == AttributeKind::kExplicit)
                m_explicit[i].push_back(each);
        }
    }
}

void Schema::addOwnAttributes(TypeIndex index) {
    const Named& named = m_named[index];
    const auto add = [&](const std::string& name, AttributeKind kind, TypeId type) -> Attribute& {
        if (m_attributes.size() > std::numeric_limits<std::uint16_t>::max() - 1)
            throw RulesError(m_declarations.file + ": more attributes than this library can take");
        Attribute& attribute = m_attributes.emplace_back();
        attribute.name = nameId(name);
        attribute.kind = kind;
        attribute.owner = index;
        attribute.type = type;
        attribute.valueType =
            m_types[type].kind == TypeKind::kDefined ? m_types[type].name : static_cast<TypeIndex>(kNoType);
        m_table[place(index, attribute.name)] = static_cast<std::uint16_t>(m_attributes.size() - 1);
        return attribute;
    };
    for (const express::AttributeDecl& each : named.entity->explicits) {
        Attribute& attribute = add(each.name.text, AttributeKind::kExplicit, resolveOrThrow(each.type, named.name));
        attribute.declaration = &each;
        m_parameters[index].push_back(attribute.name);
    }
    for (const express::AttributeDecl& each : named.entity->derived)
        add(each.name.text, AttributeKind::kDerived, resolveOrThrow(each.type, named.name)).declaration = &each;
    for (const express::InverseDecl& each : named.entity->inverses) {
        express::TypeSpec spec;
        spec.name = each.entity;
        if (each.layer)
            spec.layers.push_back(*each.layer);
        add(each.name.text, AttributeKind::kInverse, resolveOrThrow(spec, named.name)).inverse = &each;
    }
}

void Schema::fillTable() {
    const std::size_t count = m_named.size();
    m_table.assign(m_attributeNames * (count - m_firstEntity), 0);
    std::vector<std::uint8_t> state(count, 0); // 1: its supertypes are being looked at, 2: done
    std::vector<TypeIndex> stack;
    for (TypeIndex start = m_firstEntity; start < count; ++start) {
        stack.push_back(start);
        while (!stack.empty()) {
            const TypeIndex index = stack.back();
            if (state[index] == 2) {
                stack.pop_back();
                continue;
            }
            if (state[index] == 0) {
                state[index] = 1;
                for (const TypeIndex supertype : m_named[index].supertypes) {
                    if (state[supertype] == 1)
                        throw RulesError(m_declarations.file + ": " + m_named[index].name + " is its own supertype");
                    stack.push_back(supertype);
                }
                continue;
            }
            for (const TypeIndex supertype : m_named[index].supertypes) {
                for (std::size_t name = 0; name < m_attributeNames; ++name) {
                    if (const std::uint16_t inherited = m_table[place(supertype, name)])
                        m_table[place(index, name)] = inherited;
                }
            }
            addOwnAttributes(index);
            state[index] = 2;
            stack.pop_back();
        }
    }
}

std::vector<NameId> Schema::attributesOf(TypeIndex entity) const {
    std::vector<const Attribute*> found;
    for (std::size_t name = 0; name < m_attributeNames; ++name) {
        if (const Attribute* each = attribute(entity, static_cast<NameId>(name)))
            found.push_back(each);
    }
    // Attributes were entered supertypes first, each entity's in the order of the text.
    std::ranges::sort(found);
    std::vector<NameId> names;
    for (const Attribute* each : found)
        names.push_back(each->name);
    return names;
}

void Schema::close() {
    const std::size_t count = m_named.size();
    m_closureWords = (count + 63) / 64;
    m_closure.assign(count * m_closureWords, 0);
    std::vector<std::vector<TypeIndex>> up(count); // what a value of the type directly is, too
    for (const Base& base : kBases) {
        if (base.general != kNoType)
            up[base.index].push_back(base.general);
    }
    for (TypeIndex i = kFirstNamedType; i < count; ++i) {
        const Named& named = m_named[i];
        up[i].insert(up[i].end(), named.supertypes.begin(), named.supertypes.end());
        for (const TypeIndex member : named.members)
            up[member].push_back(i);
        if (named.defined) {
            const Type& inner = m_types[m_types[named.type].inner];
            if (inner.name != kNoType)
                up[i].push_back(inner.name);
            else if (inner.kind == TypeKind::kAggregate)
                up[i].push_back(baseOf(inner.aggregate));
            else if (named.defined->type.simple)
                up[i].push_back(baseOf(*named.defined->type.simple));
        }
    }
    std::vector<TypeIndex> open;
    for (TypeIndex i = 0; i < count; ++i) {
        std::uint64_t* const bits = &m_closure[i * m_closureWords];
        open.assign(1, i);
        while (!open.empty()) {
            const TypeIndex each = open.back();
            open.pop_back();
            if (bits[each / 64] >> (each % 64) & 1)
                continue;
            bits[each / 64] |= std::uint64_t{1} << (each % 64);
            open.insert(open.end(), up[each].begin(), up[each].end());
        }
    }
}

} // namespace vnifc::rules
