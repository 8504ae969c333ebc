#include "TypedValue.h"

#include "Commands.h"
#include "Values.h"

#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcBoolean.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcCore/VnIfcSelectType.h>
#include <VnIfcCore/VnIfcText.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>
#include <VnIfcCore/VnSpfFilerBase.h>
#include <VnIfcTyped/Entity.h>
#include <VnIfcTyped/Enumeration.h>

#include <fmt/format.h>

#include <algorithm>

namespace vnifc::tool {

using namespace VN_SDAI;

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
    return literal.starts_with('.') ? std::string(literal) : fmt::format(".{}.", literal);
}

std::string logicalForm(std::string_view text) {
    for (const char* word : {"True", "False", "Unknown"})
        if (VnAnsiString(word).compareNoCase(text) == 0)
            text = {word, 1};
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

/// `current` is the value that the attribute has now, which tells its kind.
std::string exchangeForm(const VnIfcSchema& schema, const VnIfcVariant& current, std::string_view text) {
    if (text == "$")
        return "$";
    if (current.is<const char*>() || current.is<VnAnsiString>() || current.is<VnIfcGUID>())
        return quoted(text);
    if (current.is<VnIfcBoolean>() || current.is<VnIfcLogical>())
        return logicalForm(text);
    if (!current.isNull() && current.type()->enumeration())
        return dotted(text);
    const auto* type = dynamic_cast<const VnIfcSelectVariantType*>(current.type());
    const VnIfcSelect* select = type ? type->selectIn(current) : nullptr;
    VnIfcVariant held;
    if (!select || isReference(text) || isTyped(schema, text) || select->kind() == VnTypeCodeKind::kEntity ||
        !select->toVariant(held))
        return std::string(text);
    return fmt::format("{}({})", select->underlyingTypeName().constStr(), exchangeForm(schema, held, text));
}

// ---- from the form of a file to a value

/// Reads a single parameter, by the rules for files, into an instance that stands in no model.
class ParameterReader final : public VnSpfFilerBase {
public:
    explicit ParameterReader(const VnIfcModel& model) noexcept : m_model(model) {}

    /// False when the text is not one value of the attribute at that position; problem() and missing() say why.
    bool read(VnIfcEntityBase& instance, unsigned position, std::string_view text) {
        m_wanted = position;
        std::string list;
        for (unsigned i = 0; i < position; ++i)
            list += "$,";
        list.append(text).append(")");
        const std::size_t length = list.size();
        list.append(kLookAhead, '\0');
        startReading(list.data(), list.data() + length);
        instance._inFields(this);
        const char* rest = nullptr;
        const bool isWhole = finishReading(rest, rest) && parametersSeen() == position + 1;
        return isWhole && m_problem == VnSpfProblem::kNone && m_missing == 0;
    }
    VnSpfProblem problem() const noexcept { return m_problem; }
    /// The number of an instance that is referred to and not there; 0 when there is none.
    std::uint64_t missing() const noexcept { return m_missing; }

protected:
    VnIfcInstanceSlot* slotOf(std::uint64_t number) override {
        const VnDbObjectId handle = m_model.find(number);
        if (!handle.openObject())
            m_missing = number;
        return handle.slot();
    }
    void onMisfit(unsigned position, VnSpfProblem problem, const char*, const char*) override {
        if (position == m_wanted)
            m_problem = problem;
    }

private:
    // The reader looks at several characters at once, and so beyond the end.
    static constexpr std::size_t kLookAhead = 64;

    const VnIfcModel& m_model;
    unsigned m_wanted = 0;
    VnSpfProblem m_problem = VnSpfProblem::kNone;
    std::uint64_t m_missing = 0;
};

// ---- what fits

/// The type beneath names and aggregations.
const VnIfcParameterType* innermost(const VnIfcParameterType* type) {
    if (const auto* named = dynamic_cast<const VnIfcDefinedType*>(type))
        return innermost(named->underlyingType());
    if (const auto* aggregation = dynamic_cast<const VnIfcAggregationType*>(type))
        return innermost(aggregation->elementType());
    return type;
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

/// Finds the first instance in a value that the attribute cannot refer to.
class TargetCheck final : public ValueVisitor {
public:
    explicit TargetCheck(const Attribute& attribute) noexcept : m_attribute(attribute) {}

    void reference(const VnDbObjectId& handle) override {
        const VnIfcEntityBase* target = handle.openObject();
        // What has no class may be of a subtype that the schema lacks.
        if (!m_unfit && target && target->getInstanceType() && !canReferTo(m_attribute.type, *target))
            m_unfit = target;
    }
    const VnIfcEntityBase* unfit() const noexcept { return m_unfit; }

private:
    const Attribute& m_attribute;
    const VnIfcEntityBase* m_unfit = nullptr;
};

/// Those that the class takes, which need not be those of the dictionary's record; empty for no enumeration.
std::string literalsOf(const VnIfcEntityType& entity, const Attribute& attribute) {
    const typed::AttributeRow& row = *entity.entityClass()->fields[attribute.position];
    std::string literals;
    if (row.kind == typed::AttributeKind::kEnumeration)
        for (const char* literal : static_cast<const typed::EnumerationClass*>(row.type)->literals)
            literals.append(literals.empty() ? "one of " : ", ").append(literal);
    return literals;
}

std::string typeNameOf(const VnIfcParameterType* type) {
    const auto* named = dynamic_cast<const VnIfcNameType*>(type);
    return named ? std::string(named->name().view()) : "the attribute";
}

std::string reasonOf(const ParameterReader& reader, const VnIfcEntityType& entity, const Attribute& attribute) {
    if (reader.missing() != 0)
        return fmt::format("there is no instance #{}", reader.missing());
    const std::string type = typeNameOf(attribute.type);
    switch (reader.problem()) {
    case VnSpfProblem::kNotRead:
        return "values of BINARY are kept as text and cannot be changed";
    case VnSpfProblem::kOutOfRange:
    case VnSpfProblem::kReservedValue:
        return fmt::format("expected a value in the range of {}", type);
    case VnSpfProblem::kUnknownSelectType:
        return fmt::format("expected a type of {}", type);
    default:
        break;
    }
    const std::string literals = literalsOf(entity, attribute);
    if (!literals.empty())
        return "expected " + literals;
    const bool isSelect = dynamic_cast<const VnIfcSelectType*>(innermost(attribute.type)) != nullptr;
    return fmt::format("expected {} {}{}", reader.problem() == VnSpfProblem::kNone ? "one value of" : "a value of",
                       type, isSelect ? ", such as IFCLABEL('text') or #1" : "");
}

} // namespace

std::string placeOf(const VnIfcEntityBase& instance, const Attribute& attribute) {
    return fmt::format("#{} {}.{}", instance.objectId().number(), keywordOf(instance), attribute.name->constStr());
}

TypedValue::TypedValue(const VnIfcEntityBase& instance, const Attribute& attribute, std::string_view text)
    : m_attribute(attribute), m_holder(instance.getInstanceType()->create()) {
    const auto refuse = [&](const std::string& reason) {
        throw Failure(kWrongUse, fmt::format("{}: {}, found {}", placeOf(instance, attribute), reason, text));
    };
    instance.getAttr(*attribute.name, m_value);
    ParameterReader reader(*instance.owningModel());
    const std::string form = exchangeForm(*instance.owningModel()->schema(), m_value, text);
    if (!reader.read(*m_holder, attribute.position, form))
        refuse(reasonOf(reader, *instance.getInstanceType(), attribute));
    m_holder->getAttr(*attribute.name, m_value);
    TargetCheck targets(attribute);
    visitValue(m_value, targets);
    if (targets.unfit())
        refuse(fmt::format("{} cannot refer to #{} {}", typeNameOf(attribute.type),
                           targets.unfit()->objectId().number(), keywordOf(*targets.unfit())));
}

void TypedValue::putInto(VnIfcEntityBase& instance) const {
    const VnAnsiString& name = *m_attribute.name;
    if (!m_holder->testAttr(name))
        return instance.unsetAttr(name);
    // An instance does not take enumerations and aggregates in the form in which it gives them.
    VnIfcVariant offered = m_value;
    if (m_value.type()->enumeration())
        m_value.convertTo(VnIfcVariantType::Desc<const char*>::value(), offered);
    else if (m_value.type()->isAggregate())
        m_value.convertTo(VnIfcVariantType::Desc<VnIfcArray<VnIfcVariant>>::value(), offered);
    if (!instance.putAttr(name, offered))
        throw Failure(kWrongUse, fmt::format("{}: the value cannot be taken", placeOf(instance, m_attribute)));
}

} // namespace vnifc::tool
