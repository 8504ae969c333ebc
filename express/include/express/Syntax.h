#pragma once

#include "ExpressError.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace express {

/// A name as written, with its place for messages. An absent name has an empty text.
struct Name {
    std::string text;
    Position at;
};

enum class Operator : std::uint8_t {
    kNone,
    kPlus,
    kMinus,
    kMultiply,
    kDivide,
    kIntegerDivide, ///< DIV
    kModulo,
    kPower,
    kConcatenate, ///< "||"
    kNot,
    kAnd,
    kOr,
    kXor,
    kEqual,
    kUnequal,
    kLess,
    kLessOrEqual,
    kGreater,
    kGreaterOrEqual,
    kSame,    ///< ":=:"
    kNotSame, ///< ":<>:"
    kIn,
    kLike,
};

enum class ExpressionKind : std::uint8_t {
    kIndeterminate, ///< "?"
    kInteger,       ///< `text` as written, and so below
    kReal,
    kString,        ///< in apostrophes, inner ones doubled
    kEncodedString, ///< in quotation marks, eight hexadecimal digits a character
    kBinary,        ///< "%" and binary digits
    kName,          ///< `text`; SELF and constants such as TRUE as well
    kCall,          ///< `text` and parameters: function, entity constructor
    kAttribute,     ///< operand "." `text`; a literal of an enumeration as well
    kGroup,         ///< operand "\\" `text`
    kIndex,         ///< operand, index and, in a range, the second index
    kUnary,
    kOperation,
    kInterval,  ///< low, item, high; `op` stands in front of the item, `second` after it
    kQuery,     ///< `text` is the variable; source, condition
    kAggregate, ///< elements of an initializer
    kRepeated,  ///< an element of an initializer and how often it stands there
};

/// An expression (ISO 10303-11, clause 12). `text` points into the source. No deeper than kMaxNesting.
struct Expression {
    ExpressionKind kind = ExpressionKind::kIndeterminate;
    Operator op = Operator::kNone;
    Operator second = Operator::kNone;
    std::uint16_t depth = 1; ///< levels of operands, this one included
    Position at;
    std::string_view text;
    std::vector<Expression> operands;
};

/// Levels of nesting that expressions and statements may have, so that whoever walks over them may recurse.
inline constexpr std::uint16_t kMaxNesting = 500;

/// Bound of an aggregation. Without value it is "?" or an expression; `text` is as written.
struct Bound {
    std::string text = "?";
    std::optional<int> value;
    std::vector<Expression> expression = {}; ///< one, or none if only declarations were read
};

enum class AggregateKind { kArray, kBag, kList, kSet };

/// One level of an aggregation type; without bounds in the text it is [0:?].
struct Layer {
    AggregateKind kind = AggregateKind::kList;
    Bound lower{"0", 0};
    Bound upper;
    bool isUnique = false;   ///< elements must differ
    bool isOptional = false; ///< elements may be missing
    bool isGeneral = false;  ///< AGGREGATE: of any kind
};

enum class SimpleType { kBinary, kBoolean, kInteger, kLogical, kNumber, kReal, kString };

/// A type as written. Nested aggregations are a flat list, so that depth costs no stack.
struct TypeSpec {
    std::vector<Layer> layers; ///< outermost first
    std::optional<SimpleType> simple;
    Name name;     ///< named type, or the keyword of a simple type
    int width = 0; ///< of STRING(n) and BINARY(n) with a literal n
    bool isFixed = false;
    bool isGeneric = false; ///< GENERIC or GENERIC_ENTITY, of parameters
};

/// A rule of a WHERE clause. The label may be empty; `text` is the expression in the source.
struct DomainRule {
    std::string label;
    Position at;
    Expression expression;
    std::string_view text;
};

/// Explicit or derived attribute.
struct AttributeDecl {
    Name name;
    Name redeclaredOwner; ///< X of SELF\X.Y
    Name redeclaredName;  ///< Y of SELF\X.Y
    bool isOptional = false;
    TypeSpec type;
    std::vector<Expression> value; ///< of a derived one; none if only declarations were read
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
    std::vector<DomainRule> where;
};

/// ENUMERATION or SELECT: a name and its items.
struct ItemsDecl {
    Name name;
    std::vector<Name> items;
    std::vector<DomainRule> where = {};
};

struct DefinedTypeDecl {
    Name name;
    TypeSpec type;
    std::vector<DomainRule> where = {};
};

enum class StatementKind : std::uint8_t {
    kNull,
    kAlias,      ///< `name` stands for expressions[0] in `body`
    kAssign,     ///< expressions[0] := expressions[1]
    kCall,       ///< procedure `name` with `expressions`
    kCase,       ///< selector expressions[0]; `body` holds statements of kind kCaseAction, `otherwise` the rest
    kCaseAction, ///< labels are `expressions`, the action is body[0]
    kCompound,   ///< BEGIN `body` END
    kEscape,
    kIf,     ///< expressions[0], `body`, `otherwise`
    kRepeat, ///< `name` from expressions[0] to [1] by [2], if there are any; the conditions; `body`
    kReturn, ///< expressions[0], if any
    kSkip,
};

/// A statement (ISO 10303-11, clause 13). No deeper than kMaxNesting.
struct Statement {
    StatementKind kind = StatementKind::kNull;
    Position at;
    std::string_view name; ///< points into the source
    std::vector<Expression> expressions;
    std::vector<Expression> whileCondition; ///< one or none
    std::vector<Expression> untilCondition;
    std::vector<Statement> body;
    std::vector<Statement> otherwise; ///< ELSE, OTHERWISE
};

/// A constant or a local variable.
struct VariableDecl {
    Name name;
    TypeSpec type;
    std::vector<Expression> value; ///< one, or none
};

struct ParameterDecl {
    Name name;
    TypeSpec type;
    bool isVariable = false; ///< VAR: the actual parameter changes with it
};

enum class AlgorithmKind : std::uint8_t { kFunction, kProcedure, kRule };

/// A function, procedure or global rule.
struct AlgorithmDecl {
    AlgorithmKind kind = AlgorithmKind::kFunction;
    Name name;
    std::vector<ParameterDecl> parameters;
    TypeSpec result;                       ///< of a function
    std::vector<Name> populations;         ///< of a rule: the entities that it looks at
    std::vector<Name> types;               ///< types and entities declared within
    std::vector<AlgorithmDecl> algorithms; ///< declared within
    std::vector<VariableDecl> constants;
    std::vector<VariableDecl> locals;
    std::vector<Statement> body;
    std::vector<DomainRule> where; ///< of a rule
};

/// The declarations of one SCHEMA, each kind in the text's order.
struct SchemaDecl {
    std::string file;
    Name name;
    std::vector<DefinedTypeDecl> definedTypes;
    std::vector<ItemsDecl> enumerations;
    std::vector<ItemsDecl> selects;
    std::vector<EntityDecl> entities;
    // Empty if only declarations were read.
    std::vector<VariableDecl> constants;
    std::vector<AlgorithmDecl> algorithms;
};

} // namespace express
