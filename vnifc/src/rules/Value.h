#pragma once
#include "Arena.h"

#include <VnIfcTyped/Entity.h>
#include <express/Syntax.h>

#include <limits>

namespace vnifc::rules {

using VN_SDAI::typed::Entity;

/// Index of a named type of the schema, or of what TYPEOF calls a simple or aggregation type.
using TypeIndex = std::uint16_t;
/// Index into the schema's table of types: what attributes, variables and parameters are declared with.
using TypeId = std::uint32_t;
/// Index of the name of an attribute or a literal, the same in any case.
using NameId = std::uint16_t;

/// What is in front of the named types.
enum BaseType : TypeIndex {
    kNoType,
    kArrayType,
    kBagType,
    kListType,
    kSetType,
    kBinaryType,
    kBooleanType,
    kIntegerType,
    kLogicalType,
    kNumberType,
    kRealType,
    kStringType,
    kFirstNamedType
};

enum class Tag : std::uint8_t {
    kIndeterminate,
    kLogical, ///< `integer` is a Truth
    kInteger,
    kReal,
    kString,      ///< UTF-8, `length` bytes
    kBinary,      ///< binary digits as characters, `length` of them
    kEnumeration, ///< `integer` is the literal's name, `length` its position
    kInstance,    ///< of the model
    kConstructed, ///< by an entity constructor
    kAggregate,
};

/// In the order of the standard (12.2.1.2).
enum Truth : std::uint8_t { kFalse, kUnknown, kTrue };

struct Aggregate;
struct Constructed;

/// A value during an evaluation. What it points to lives in the model, in the program or in the evaluation's arena.
struct Value {
    Tag tag = Tag::kIndeterminate;
    bool isLogical = false;   ///< declared LOGICAL, so that TRUE is no BOOLEAN
    TypeIndex type = kNoType; ///< the named type that the value is of, where it is of one
    std::uint32_t length = 0;
    union {
        std::int64_t integer = 0;
        double real;
        const char* text;
        const Entity* instance;
        Constructed* constructed;
        Aggregate* aggregate;
    };

    bool exists() const noexcept { return tag != Tag::kIndeterminate; }
    bool is(Tag other) const noexcept { return tag == other; }
    bool isNumber() const noexcept { return tag == Tag::kInteger || tag == Tag::kReal; }
    bool isEntity() const noexcept { return tag == Tag::kInstance || tag == Tag::kConstructed; }
    double number() const noexcept { return tag == Tag::kInteger ? static_cast<double>(integer) : real; }
    std::string_view view() const noexcept { return {text, length}; }
    /// Of a logical value; indeterminate is UNKNOWN (12.4), and so is what is no logical value.
    Truth truth() const noexcept { return tag == Tag::kLogical ? static_cast<Truth>(integer) : kUnknown; }

    static Value of(Truth truth) noexcept {
        Value value;
        value.tag = Tag::kLogical;
        value.integer = truth;
        return value;
    }
    static Value of(bool truth) noexcept { return of(truth ? kTrue : kFalse); }
    static Value of(std::int64_t integer) noexcept {
        Value value;
        value.tag = Tag::kInteger;
        value.integer = integer;
        return value;
    }
    static Value of(double real) noexcept {
        Value value;
        // What arithmetic does not define is indeterminate, so that NaN and infinity never are values.
        if (real - real != 0)
            return value;
        value.tag = Tag::kReal;
        value.real = real;
        return value;
    }
    static Value of(std::string_view text) noexcept {
        Value value;
        value.tag = Tag::kString;
        value.length = static_cast<std::uint32_t>(text.size());
        value.text = text.data();
        return value;
    }
    static Value of(const Entity* instance) noexcept {
        Value value;
        if (!instance)
            return value;
        value.tag = Tag::kInstance;
        value.instance = instance;
        return value;
    }
    static Value of(Constructed* constructed) noexcept {
        Value value;
        value.tag = Tag::kConstructed;
        value.constructed = constructed;
        return value;
    }
    static Value of(Aggregate* aggregate) noexcept {
        Value value;
        value.tag = Tag::kAggregate;
        value.aggregate = aggregate;
        return value;
    }
};

static_assert(sizeof(Value) == 16);

/// The upper bound "?".
inline constexpr std::int32_t kOpenBound = std::numeric_limits<std::int32_t>::max();

/// An aggregate value: elements of its own, or a view of the model's.
struct Aggregate {
    enum class Source : std::uint8_t {
        kValues,  ///< `count` values
        kModel,   ///< a VnIfcAggr
        kHandles, ///< `count` VnDbObjectIds
    };

    express::AggregateKind kind = express::AggregateKind::kList;
    Source source = Source::kValues;
    bool isInitializer = false; ///< takes the kind that is wanted of it
    bool isBinary = false;      ///< of the model: the texts are binaries
    bool isOfTypes = false;     ///< what TYPEOF gives: all elements have values, and it is the same one each time
    TypeIndex type = kNoType;   ///< the defined type that the value is of
    std::uint32_t count = 0;
    std::uint32_t capacity = 0;
    std::int32_t lower = 0;          ///< declared bound; of an ARRAY, the first index
    std::int32_t upper = kOpenBound; ///< declared bound
    TypeId element = 0;              ///< declared type of the elements; 0 when not known
    const void* data = nullptr;
    /// The variable, attribute or element that alone may change it in place; null for one that nobody may.
    const void* owner = nullptr;

    Value* values() noexcept { return static_cast<Value*>(const_cast<void*>(data)); }
    const Value* values() const noexcept { return static_cast<const Value*>(data); }
    bool isArray() const noexcept { return kind == express::AggregateKind::kArray; }
    /// SET or BAG.
    bool isUnordered() const noexcept {
        return kind == express::AggregateKind::kSet || kind == express::AggregateKind::kBag;
    }
    /// Index of the first element.
    std::int64_t first() const noexcept { return isArray() ? lower : 1; }
};

/// An entity value made by constructors and "||" (12.11): explicit attributes by name.
struct Constructed {
    struct Attribute {
        NameId name;
        Value value;
    };

    TypeIndex leaf = kNoType; ///< the one part that all others are supertypes of; kNoType when there is none
    std::uint16_t partCount = 0;
    std::uint16_t attributeCount = 0;
    const TypeIndex* parts = nullptr;
    Attribute* attributes = nullptr;
    /// The variable, attribute or element that alone may change it in place; null for one that nobody may.
    const void* owner = nullptr;

    const Value* find(NameId name) const noexcept {
        for (std::uint16_t i = 0; i < attributeCount; ++i) {
            if (attributes[i].name == name)
                return &attributes[i].value;
        }
        return nullptr;
    }
};

} // namespace vnifc::rules
