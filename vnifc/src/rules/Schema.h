#pragma once
#include "Value.h"

#include <VnIfcCore/VnIfcSchema.h>
#include <express/Syntax.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vnifc::rules {

enum class TypeKind : std::uint8_t {
    kUnknown, ///< GENERIC, and what nothing is known of
    kBinary,
    kBoolean,
    kInteger,
    kLogical,
    kNumber,
    kReal,
    kString,
    kEntity,
    kEnumeration,
    kSelect,
    kDefined,
    kAggregate,
};

/// What an attribute, a variable, a parameter or an element is declared with. Types 0 is of kind kUnknown.
struct Type {
    TypeKind kind = TypeKind::kUnknown;
    express::AggregateKind aggregate = express::AggregateKind::kList;
    bool isGeneral = false;   ///< AGGREGATE: takes any kind
    bool isOptional = false;  ///< elements may be missing
    TypeIndex name = kNoType; ///< of a named type
    TypeId inner = 0;         ///< of an aggregate, its elements; of a defined type, what it names
    std::int32_t lower = 0;   ///< as in an Aggregate
    std::int32_t upper = kOpenBound;
    // Variables that hold the bounds, where they are expressions; -1: there is none.
    std::int32_t lowerSlot = -1;
    std::int32_t upperSlot = -1;
};

/// A named type of the schema.
struct Named {
    std::string name;      ///< as declared: "IfcWall"
    std::string qualified; ///< as TYPEOF gives it: "IFC4.IFCWALL"
    TypeKind kind = TypeKind::kUnknown;
    TypeId type = 0; ///< the type that it names
    const express::EntityDecl* entity = nullptr;
    const express::ItemsDecl* items = nullptr;
    const express::DefinedTypeDecl* defined = nullptr;
    std::vector<TypeIndex> supertypes; ///< of an entity
    std::vector<TypeIndex> members;    ///< of a select
    std::vector<NameId> literals;      ///< of an enumeration
    const VN_SDAI::typed::EntityClass* entityClass = nullptr;
};

/// The aggregation type of that kind, whatever its elements.
TypeIndex baseOf(express::AggregateKind kind) noexcept;

enum class AttributeKind : std::uint8_t { kExplicit, kDerived, kInverse };

/// An attribute as one entity and its subtypes have it, until one of them redeclares it.
struct Attribute {
    NameId name = 0;
    AttributeKind kind = AttributeKind::kExplicit;
    TypeIndex owner = kNoType; ///< the entity that declares it so
    TypeId type = 0;
    const VN_SDAI::typed::AttributeRow* row = nullptr; ///< of an explicit and an inverse one
    const express::AttributeDecl* declaration = nullptr;
    const express::InverseDecl* inverse = nullptr;
    TypeIndex valueType = kNoType; ///< the defined type that it is declared with
    std::uint32_t chunk = 0;       ///< of a derived one: where its program begins; see Program
};

/// Fast look-up by address.
template <class Key, class Mapped>
class PointerMap {
public:
    void add(const Key* key, Mapped value) {
        if (2 * (m_count + 1) > m_slots.size())
            grow();
        insert(key, value);
    }
    const Mapped* find(const Key* key) const noexcept {
        if (m_slots.empty())
            return nullptr;
        for (std::size_t i = place(key);; i = (i + 1) & (m_slots.size() - 1)) {
            if (m_slots[i].key == key)
                return &m_slots[i].value;
            if (!m_slots[i].key)
                return nullptr;
        }
    }

private:
    struct Slot {
        const Key* key = nullptr;
        Mapped value{};
    };

    std::size_t place(const Key* key) const noexcept {
        const auto bits = reinterpret_cast<std::uintptr_t>(key);
        return ((bits >> 4) * 0x9E3779B97F4A7C15ull >> 20) & (m_slots.size() - 1);
    }
    void insert(const Key* key, Mapped value) {
        std::size_t i = place(key);
        while (m_slots[i].key && m_slots[i].key != key)
            i = (i + 1) & (m_slots.size() - 1);
        m_count += m_slots[i].key ? 0 : 1;
        m_slots[i] = {key, value};
    }
    void grow() {
        std::vector<Slot> old(m_slots.empty() ? 64 : 2 * m_slots.size());
        old.swap(m_slots);
        m_count = 0;
        for (const Slot& slot : old) {
            if (slot.key)
                insert(slot.key, slot.value);
        }
    }

    std::vector<Slot> m_slots;
    std::size_t m_count = 0;
};

/// The declarations of a text, resolved against the dictionary of the release that they are to be used with. Constant
/// once made.
class Schema {
public:
    /// Takes the declarations, which must have been read whole. Throws RulesError with the first difference between
    /// them and the dictionary.
    Schema(express::SchemaDecl declarations, const VN_SDAI::VnIfcSchema& dictionary);

    const express::SchemaDecl& declarations() const noexcept { return m_declarations; }
    const VN_SDAI::VnIfcSchema& dictionary() const noexcept { return m_dictionary; }

    /// Named types; those below kFirstNamedType are the simple and aggregation types.
    const std::vector<Named>& named() const noexcept { return m_named; }
    const Named& named(TypeIndex index) const noexcept { return m_named[index]; }
    /// The named type of that name in any case; kNoType when there is none.
    TypeIndex find(std::string_view name) const;
    /// The type that TYPEOF gives under that very name: "IFC4.IFCWALL", "LIST"; kNoType when there is none.
    TypeIndex findQualified(std::string_view name) const;
    bool isEntity(TypeIndex index) const noexcept { return m_named[index].kind == TypeKind::kEntity; }

    const Type& type(TypeId id) const noexcept { return m_types[id]; }
    TypeId addType(const Type& type);
    /// Says which variable holds a bound of an aggregation type.
    void setBoundSlot(TypeId id, bool isLower, std::int32_t slot) noexcept {
        (isLower ? m_types[id].lowerSlot : m_types[id].upperSlot) = slot;
    }
    /// The type that a specification means, with constant bounds; unknown names give nothing and `problem` tells.
    TypeId resolve(const express::TypeSpec& spec, std::string& problem);
    /// What is behind the names of defined types.
    const Type& underlying(TypeId id) const noexcept;

    /// True when a value of the first type is one of the second, too: supertypes, what defined types are made of, and
    /// the selects that list them.
    bool isOf(TypeIndex type, TypeIndex other) const noexcept {
        return (m_closure[type * m_closureWords + other / 64] >> (other % 64) & 1) != 0;
    }

    NameId nameId(std::string_view name);
    /// The id of a name that something in the schema has; false when nothing has it.
    bool findName(std::string_view name, NameId& id) const;
    const std::string& nameOf(NameId id) const noexcept { return m_names[id]; }

    const std::vector<Attribute>& attributes() const noexcept { return m_attributes; }
    Attribute& attribute(std::uint32_t index) noexcept { return m_attributes[index]; }
    /// The attribute of that name of an entity; null when it has none.
    const Attribute* attribute(TypeIndex entity, NameId name) const noexcept {
        if (name >= m_attributeNames || entity < m_firstEntity)
            return nullptr;
        const std::uint16_t index = m_table[place(entity, name)];
        return index == 0 ? nullptr : &m_attributes[index];
    }
    bool isAttributeName(NameId name) const noexcept { return name < m_attributeNames; }
    /// The names of the entity's own explicit attributes, in order: the parameters of its constructor.
    const std::vector<NameId>& parametersOf(TypeIndex entity) const noexcept { return m_parameters[entity]; }
    /// The names of all attributes of an entity, inherited ones first.
    std::vector<NameId> attributesOf(TypeIndex entity) const;

    /// The explicit attributes of an entity, inherited ones first, without those that are redeclared as derived.
    const std::vector<const Attribute*>& explicitOf(TypeIndex entity) const noexcept { return m_explicit[entity]; }

    /// The literals of that name, as (enumeration, position).
    struct Literal {
        TypeIndex enumeration;
        std::uint32_t position;
    };
    const std::vector<Literal>* literals(NameId name) const;

    /// The entity of an instance; kNoType for one without a class.
    TypeIndex entityOf(const Entity& instance) const noexcept {
        const TypeIndex* const found = m_classes.find(&instance.entityClass());
        return found ? *found : static_cast<TypeIndex>(kNoType);
    }

private:
    /// Where an attribute stands in m_table.
    std::size_t place(TypeIndex entity, std::size_t name) const noexcept {
        return static_cast<std::size_t>(entity - m_firstEntity) * m_attributeNames + name;
    }
    void addNamedTypes();
    void addNamed(const std::string& name, TypeKind kind);
    void resolveNamedTypes();
    void resolveEntity(Named& entity);
    void addLiterals();
    void addAttributes();
    void addOwnAttributes(TypeIndex entity);
    void fillTable();
    void close();
    /// Ties entities and attributes to the classes of the release. In Agreement.cpp.
    void agree();
    TypeId resolveOrThrow(const express::TypeSpec& spec, std::string_view where);

    express::SchemaDecl m_declarations;
    const VN_SDAI::VnIfcSchema& m_dictionary;
    std::vector<Named> m_named;
    std::unordered_map<std::string, TypeIndex> m_byName; ///< upper case
    std::unordered_map<std::string, TypeIndex> m_byQualified;
    std::vector<Type> m_types;
    std::vector<std::string> m_names; ///< upper case; those of attributes first
    std::unordered_map<std::string, NameId> m_nameIds;
    std::size_t m_attributeNames = 0;
    std::vector<Attribute> m_attributes;
    TypeIndex m_firstEntity = 0;        ///< entities are the last of the named types
    std::vector<std::uint16_t> m_table; ///< attributes by entity and name; 0: none
    std::vector<std::vector<NameId>> m_parameters;
    std::vector<std::vector<const Attribute*>> m_explicit;
    std::unordered_map<NameId, std::vector<Literal>> m_literals;
    std::vector<std::uint64_t> m_closure;
    std::size_t m_closureWords = 0;
    PointerMap<VN_SDAI::typed::EntityClass, TypeIndex> m_classes;
};

} // namespace vnifc::rules
