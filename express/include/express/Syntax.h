#pragma once

#include "ExpressError.h"

#include <optional>
#include <string>
#include <vector>

namespace express {

/// A name as written, with its place for messages. An absent name has an empty text.
struct Name {
    std::string text;
    Position at;
};

/// Bound of an aggregation. Without value it is "?" or an expression; `text` is as written.
struct Bound {
    std::string text = "?";
    std::optional<int> value;
};

enum class AggregateKind { kArray, kBag, kList, kSet };

/// One level of an aggregation type; without bounds in the text it is [0:?].
struct Layer {
    AggregateKind kind = AggregateKind::kList;
    Bound lower{"0", 0};
    Bound upper;
    bool isUnique = false; ///< elements must differ
};

enum class SimpleType { kBinary, kBoolean, kInteger, kLogical, kNumber, kReal, kString };

/// A type as written. Nested aggregations are a flat list, so that depth costs no stack.
struct TypeSpec {
    std::vector<Layer> layers; ///< outermost first
    std::optional<SimpleType> simple;
    Name name;     ///< named type, or the keyword of a simple type
    int width = 0; ///< of STRING(n) and BINARY(n) with a literal n
    bool isFixed = false;
};

/// Explicit or derived attribute.
struct AttributeDecl {
    Name name;
    Name redeclaredOwner; ///< X of SELF\X.Y
    Name redeclaredName;  ///< Y of SELF\X.Y
    bool isOptional = false;
    TypeSpec type;
};

struct InverseDecl {
    Name name;
    std::optional<Layer> layer; ///< absent in "name : entity FOR attribute"
    Name entity;
    Name attribute;
};

/// A rule of the UNIQUE clause: no two instances have the same values in all of these attributes.
struct UniqueDecl {
    std::string label;
    std::vector<Name> attributes;
};

struct EntityDecl {
    Name name;
    bool isAbstract = false;
    std::vector<Name> supertypes;
    std::vector<AttributeDecl> explicits;
    std::vector<AttributeDecl> derived;
    std::vector<InverseDecl> inverses;
    std::vector<UniqueDecl> uniques;
};

/// ENUMERATION or SELECT: a name and its items.
struct ItemsDecl {
    Name name;
    std::vector<Name> items;
};

struct DefinedTypeDecl {
    Name name;
    TypeSpec type;
};

/// The declarations of one SCHEMA, each kind in the text's order.
struct SchemaDecl {
    std::string file;
    Name name;
    std::vector<DefinedTypeDecl> definedTypes;
    std::vector<ItemsDecl> enumerations;
    std::vector<ItemsDecl> selects;
    std::vector<EntityDecl> entities;
};

} // namespace express
