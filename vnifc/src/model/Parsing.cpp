#include "ParameterReader.h"
#include "Reading.h"
#include "Writing.h"

#include <VnIfcCore/VnIfcEnumerationType.h>
#include <VnIfcCore/VnIfcSelectType.h>
#include <VnIfcCore/VnIfcText.h>

#include <algorithm>

namespace vnifc::detail {

using namespace VN_SDAI;
using typed::AttributeKind;

namespace {

// ---- from what is typed to the form of a file

std::string quoted(std::string_view text) {
    if (text.size() > 1 && text.starts_with('\'') && text.ends_with('\''))
        return std::string(text);
    std::string result = "'";
    for (const char c : vnEncodeText(text))
        result.append(c == '\'' ? 2 : 1, c);
    return result + '\'';
}

std::string dotted(std::string_view literal) {
    return literal.starts_with('.') ? std::string(literal) : '.' + std::string(literal) + '.';
}

std::string logicalForm(std::string_view text) {
    for (const std::string_view word : {"True", "False", "Unknown"})
        if (sameName(word, text))
            text = word.substr(0, 1);
    return dotted(text);
}

/// True for "IFCLABEL(...)" if the schema has such a type.
bool isTyped(const VnIfcSchema& schema, std::string_view text) {
    const std::size_t open = text.find('(');
    return open != text.npos && text.ends_with(')') && schema.namedType(text.substr(0, open));
}

bool isReference(std::string_view text) {
    return text.starts_with('#') && text.size() > 1 && text.find_first_not_of("0123456789", 1) == text.npos;
}

std::string heldForm(VnTypeCodeKind kind, std::string_view text) {
    switch (kind) {
    case VnTypeCodeKind::kString:
        return quoted(text);
    case VnTypeCodeKind::kBoolean:
    case VnTypeCodeKind::kLogical:
        return logicalForm(text);
    case VnTypeCodeKind::kEnumeration:
        return dotted(text);
    default:
        return std::string(text);
    }
}

std::string exchangeForm(const VnIfcSchema& schema, const VnIfcEntityBase& instance, const AttributeInfo& attribute,
                         std::string_view text) {
    if (text == "$")
        return "$";
    switch (attribute.row->kind) {
    case AttributeKind::kString:
    case AttributeKind::kGuid:
        return quoted(text);
    case AttributeKind::kBoolean:
    case AttributeKind::kLogical:
        return logicalForm(text);
    case AttributeKind::kEnumeration:
        return dotted(text);
    case AttributeKind::kSelect:
        break;
    default:
        return std::string(text);
    }
    const auto& select = typed::fieldOf<typed::Select>(instance, *attribute.row);
    if (!select.isSet() || isReference(text) || isTyped(schema, text) || select.kind() == VnTypeCodeKind::kEntity)
        return std::string(text);
    return std::string(select.underlyingTypeName().view()) + '(' + heldForm(select.kind(), text) + ')';
}

// ---- why something does not fit

std::string literalsOf(const VnIfcParameterType* type) {
    const auto* enumeration = dynamic_cast<const VnIfcEnumerationType*>(underlying(type));
    std::string literals;
    for (const VnAnsiString& literal : enumeration ? enumeration->literals() : std::span<const VnAnsiString>())
        literals.append(literals.empty() ? "one of " : ", ").append(literal.view());
    return literals;
}

std::string typeNameOf(const VnIfcParameterType* type) {
    const auto* named = dynamic_cast<const VnIfcNameType*>(type);
    return named ? std::string(named->name().view()) : "the attribute";
}

std::string reasonOf(const ParameterReader& reader, const AttributeInfo& attribute) {
    if (reader.missing() != 0)
        return "there is no instance #" + std::to_string(reader.missing());
    const std::string type = typeNameOf(attribute.type);
    switch (reader.problem()) {
    case VnSpfProblem::kNotRead:
        return "values of BINARY are kept as text and cannot be changed";
    case VnSpfProblem::kOutOfRange:
    case VnSpfProblem::kReservedValue:
        return "expected a value in the range of " + type;
    case VnSpfProblem::kUnknownSelectType:
        return "expected a type of " + type;
    default:
        break;
    }
    const std::string literals = literalsOf(attribute.type);
    if (!literals.empty())
        return "expected " + literals;
    const bool isSelect = dynamic_cast<const VnIfcSelectType*>(innermost(attribute.type)) != nullptr;
    return (reader.problem() == VnSpfProblem::kNone ? "expected one value of " : "expected a value of ") + type +
           (isSelect ? ", such as IFCLABEL('text') or #1" : "");
}

/// True when a value of the type can refer to the instance, as far as that can be told.
bool canReferTo(const VnIfcParameterType* type, const VnIfcEntityBase& target) {
    type = innermost(type);
    if (const auto* entity = dynamic_cast<const VnIfcEntityType*>(type))
        return target.isKindOf(entity);
    if (const auto* select = dynamic_cast<const VnIfcSelectType*>(type))
        return std::ranges::any_of(select->members(),
                                   [&](const VnIfcNameType* member) { return member && canReferTo(member, target); });
    return type == nullptr;
}

void checkTargets(const VnIfcEntityBase& instance, const VnIfcEntityBase& holder, const AttributeInfo& attribute,
                  std::string_view text) {
    const auto check = [&](const VnDbObjectId& handle) {
        const VnIfcEntityBase* target = handle.openObject();
        // What has no class may be of a subtype that the schema lacks.
        if (target && target->getInstanceType() && !canReferTo(attribute.type, *target))
            throw BadValue(placeOf(instance, attribute) + ": " + typeNameOf(attribute.type) + " cannot refer to #" +
                           std::to_string(handle.number()) + ' ' +
                           std::string(target->getInstanceType()->name().view()) + ", found " + std::string(text));
    };
    forEachHandle(holder, *attribute.row, check);
}

} // namespace

std::string placeOf(const VnIfcEntityBase& instance, const AttributeInfo& attribute) {
    return '#' + std::to_string(instance.objectId().number()) + ' ' +
           std::string(instance.getInstanceType()->name().view()) + '.' + attribute.row->name;
}

Value parse(ModelState& state, const VnIfcEntityBase& instance, const AttributeInfo& attribute, std::string_view text) {
    if (attribute.isDerived)
        throw BadValue(placeOf(instance, attribute) + ": the value is derived and cannot be changed");
    const std::unique_ptr<VnIfcEntityBase> holder(instance.getInstanceType()->create());
    ParameterReader reader(state.model());
    if (!reader.read(*holder, attribute.position, exchangeForm(state.schema(), instance, attribute, text)))
        throw BadValue(placeOf(instance, attribute) + ": " + reasonOf(reader, attribute) + ", found " +
                       std::string(text));
    checkTargets(instance, *holder, attribute, text);
    return valueOf(state, *holder, *attribute.row, &attribute);
}

} // namespace vnifc::detail
