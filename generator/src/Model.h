#pragma once

#include "Express.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace expgen {

struct Entity;
struct Enumeration;
struct Select;

/// What the value of a type is in the end; decides all that the generated code does with it.
enum class Kind { kBinary, kBoolean, kEntity, kEnumeration, kGuid, kInteger, kLogical, kReal, kSelect, kString };

/// A type with all names resolved. Defined types over aggregations are replaced by their aggregation.
struct Type {
    std::vector<Layer> layers;      ///< outermost first; empty for a type that is no aggregation
    Kind kind = Kind::kString;      ///< of the value, or of the innermost element
    std::string name;               ///< declared name of the type or innermost element; simple types in lower case
    const Entity* entity = nullptr; ///< for kEntity
    const Enumeration* enumeration = nullptr; ///< for kEnumeration
    const Select* select = nullptr;           ///< for kSelect

    bool isAggregate() const { return !layers.empty(); }
};

/// Descriptive text of a type without its first `depth` levels: "list [1:?] of IfcActorRole".
std::string typeText(const Type& type, std::size_t depth = 0);

/// The same with the element's name in upper case, as attributes refer to their types.
std::string attributeTypeText(const Type& type);

struct DefinedType {
    std::string name;
    Type type;              ///< of the underlying type, followed down to a simple type or aggregation
    std::string underlying; ///< lower-case name of the type directly below; NUMBER counts as REAL
};

struct Enumeration {
    std::string name;
    std::vector<std::string> literals; ///< upper case
};

/// Member of a select after flattening: a defined type, an enumeration or an entity.
struct SelectLeaf {
    std::string name;
    Type type;
};

struct Select {
    std::string name;
    std::vector<std::string> members; ///< direct members, declared names
    std::vector<SelectLeaf> leaves;   ///< nested selects replaced by their leaves
};

struct ExplicitAttribute {
    std::string name;
    Type type;
    bool isOptional = false;
};

struct DerivedAttribute {
    std::string name;
    Type type;
    const Entity* redeclaredOwner = nullptr; ///< null when it redeclares nothing
};

struct InverseAttribute {
    std::string name;
    const Entity* target = nullptr; ///< the entity that the declaration names
    const Entity* owner = nullptr;  ///< declares the inverted attribute: `target` or a supertype of it
    std::size_t attribute = 0;      ///< the inverted attribute among the owner's explicit ones
    Layer layer;
    bool hasBounds = false;

    /// True when at most one instance can stand here, so that it is kept as a single handle.
    bool isSingle() const { return !hasBounds || layer.upper.value == 1; }
};

/// A position of an entity's parameter list: one of the owner's explicit attributes, or a derived one that redeclares.
struct Field {
    const Entity* owner = nullptr;
    std::size_t index = 0;
    bool isDerived = false;
};

/// An inverse attribute that a forward attribute feeds.
struct LinkTarget {
    const Entity* entity = nullptr;
    std::size_t inverse = 0;
};

/// An entity's own forward attribute that some inverse attribute names.
struct Link {
    std::size_t attribute = 0;
    std::vector<LinkTarget> targets; ///< in the text's order
};

/// No two instances have the same values in all of these attributes.
struct UniqueRule {
    std::string label;
    std::vector<Field> attributes;
};

struct Entity {
    std::string name;
    bool isAbstract = false;
    const Entity* supertype = nullptr;
    std::vector<ExplicitAttribute> explicits;
    std::vector<DerivedAttribute> derived;
    std::vector<InverseAttribute> inverses;
    std::vector<Field> fields; ///< the whole parameter list, inherited positions first
    std::vector<Link> links;   ///< by attribute
    std::vector<UniqueRule> uniques;

    /// The root of the inheritance chain, then each entity down to this one.
    std::vector<const Entity*> lineage() const;
    /// True when the parameter list differs from the supertype's.
    bool changesFields() const;
    /// True when an attribute of its own can be read and written by name.
    bool hasProperties() const;
};

/// Aggregation record of the dictionary.
struct Aggregation {
    std::string name; ///< of the defined type, or the descriptive text
    Layer layer;
    std::string element;
    bool isNamed = false;
};

/// The schema with all names resolved. Vectors are in the text's order unless said otherwise. Entities, enumerations
/// and selects point at each other, so that a model can be moved but not copied.
struct Model {
    Model() = default;
    Model(const Model&) = delete;
    Model(Model&&) = default;
    Model& operator=(const Model&) = delete;
    Model& operator=(Model&&) = default;

    std::vector<DefinedType> definedTypes;
    std::vector<Enumeration> enumerations;
    std::vector<Select> selects;
    std::vector<Entity> entities;
    std::vector<Enumeration> enumerationRecords; ///< the dictionary's, whose literals differ by design

    std::vector<const Entity*> entityOrder;           ///< building order
    std::vector<const DefinedType*> definedTypeOrder; ///< building order, those over simple types only
    std::vector<const Select*> selectOrder;           ///< building order
    std::vector<Aggregation> aggregations;            ///< named ones in building order, then by name

    const Entity* findEntity(std::string_view name) const;
    const Select* findSelect(std::string_view name) const;
};

} // namespace expgen
