#pragma once
#include "Value.h"

#include <span>
#include <string_view>

/// What differs between the releases, as data: one line a case, with the reason that users see.
///
/// A case applies where the target lacks what the source has, so that a line says nothing of releases, serves every
/// pair of them, and in both directions where it has no function. What has the same name in both releases needs no
/// line.
namespace vnifc::conversion {

class Conversion;
struct Record;

/// Makes a value out of the instance `record`; unset when that is not possible.
using Compute = Value (*)(Conversion& conversion, const Record& record, const Value& value);

/// Another entity that instances become where the target lacks theirs; the first that the target has is taken.
/// `assignments` are values of the target, "PredefinedType=.EDGE.;Name='x'".
struct EntityCase {
    std::string_view entity;
    std::string_view other;
    std::string_view assignments;
    std::string_view reason;
};

/// The entity that stands for one whose instances the target does not allow.
struct StandInCase {
    std::string_view entity;
    std::string_view other;
};

/// An attribute that has another name, place or structure. With a function it holds in this direction only, and
/// `attribute` may name several with commas, all of which go into the value.
struct AttributeCase {
    std::string_view entity;
    std::string_view attribute;
    std::string_view other;
    Compute compute;
    std::string_view reason;
};

/// A word of an enumeration that has another spelling. Both ways.
struct LiteralCase {
    std::string_view enumeration; ///< either of the two enumerations
    std::string_view word;
    std::string_view other;
};

/// What a mandatory attribute gets that has no value: a value, "=Name" for that of another attribute,
/// "ENTITY(...)" for a new instance, "?ENTITY(...)" for the first one of the model, if there is one. @guid stands for a
/// new GlobalId, @self for the instance, @number for its number as a text, @owner for an owner history.
struct DefaultCase {
    std::string_view entity;
    std::string_view attribute;
    std::string_view value;
    Compute compute = nullptr;
};

/// Instances that stand in what refers to them: in their place comes the value of `attribute`, or of several with
/// commas between them. Without one, a coercion makes the value, or it becomes a property.
struct InlineCase {
    std::string_view entity;
    std::string_view attribute;
    std::string_view reason;
};

/// An attribute whose value follows from others, so that nothing is lost with it.
struct RedundantCase {
    std::string_view entity;
    std::string_view attribute;
    std::string_view reason;
};

/// An instance that the target wants around what the source refers to itself.
struct WrapCase {
    std::string_view entity;
    std::string_view attribute;
};

/// A value of one type that becomes one of another. `from` is an entity or a defined type of the source, `to` of the
/// target.
struct CoercionCase {
    std::string_view from;
    std::string_view to;
    Compute compute;
    std::string_view reason;
};

/// The type of a value in a select that lacks its own.
struct RetypeCase {
    std::string_view type;
    std::string_view other;
};

/// An attribute that stands at the other end: what `owner` of an instance refers to gets `value` of that instance, or
/// the instance itself ("*"), as `attribute`.
struct FoldCase {
    std::string_view entity;
    std::string_view owner;
    std::string_view attribute;
    std::string_view value;
    std::string_view reason;
};

/// An instance that says the same as one that only one may refer to, made for each further reference. @value stands
/// for the one, @value.Name for an attribute of it.
struct CopyCase {
    std::string_view entity;
    std::string_view value;
};

/// What is added where the target demands that something refers to an instance, by the inverse attribute of that name.
/// @whole stands for what the instance is nested in or aggregated by.
struct RequiredCase {
    std::string_view entity;
    std::string_view inverse;
    std::string_view value;
    std::string_view reason;
};

/// The name under which an attribute without counterpart becomes a property. Without a line it keeps its own.
struct PropertyCase {
    std::string_view entity;
    std::string_view attribute;
    std::string_view set;
    std::string_view property;
};

std::span<const EntityCase> entityCases() noexcept;
std::span<const StandInCase> standInCases() noexcept;
std::span<const AttributeCase> attributeCases() noexcept;
std::span<const LiteralCase> literalCases() noexcept;
std::span<const DefaultCase> defaultCases() noexcept;
std::span<const InlineCase> inlineCases() noexcept;
std::span<const RedundantCase> redundantCases() noexcept;
std::span<const WrapCase> wrapCases() noexcept;
std::span<const CoercionCase> coercionCases() noexcept;
std::span<const RetypeCase> retypeCases() noexcept;
std::span<const FoldCase> foldCases() noexcept;
std::span<const CopyCase> copyCases() noexcept;
std::span<const RequiredCase> requiredCases() noexcept;
std::span<const PropertyCase> propertyCases() noexcept;

} // namespace vnifc::conversion
