// What expressions become (ISO 10303-11, clause 12).
#include "Compiler.h"

#include <express/Text.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <numbers>

namespace vnifc::rules {

using express::equalNoCase;
using express::ExpressionKind;
using express::lower;
using express::Operator;
using express::upper;

namespace {

struct BuiltInName {
    std::string_view name;
    std::uint8_t fewest;
    std::uint8_t most;
};
/// In the order of BuiltIn.
constexpr BuiltInName kBuiltIns[] = {
    {"ABS", 1, 1},     {"ACOS", 1, 1},    {"ASIN", 1, 1},   {"ATAN", 2, 2},     {"BLENGTH", 1, 1},     {"COS", 1, 1},
    {"EXISTS", 1, 1},  {"EXP", 1, 1},     {"FORMAT", 2, 2}, {"HIBOUND", 1, 1},  {"HIINDEX", 1, 1},     {"LENGTH", 1, 1},
    {"LOBOUND", 1, 1}, {"LOG", 1, 1},     {"LOG10", 1, 1},  {"LOG2", 1, 1},     {"LOINDEX", 1, 1},     {"NVL", 2, 2},
    {"ODD", 1, 1},     {"ROLESOF", 1, 1}, {"SIN", 1, 1},    {"SIZEOF", 1, 1},   {"SQRT", 1, 1},        {"TAN", 1, 1},
    {"TYPEOF", 1, 1},  {"USEDIN", 2, 2},  {"VALUE", 1, 1},  {"VALUE_IN", 2, 2}, {"VALUE_UNIQUE", 1, 1}};
static_assert(std::size(kBuiltIns) == static_cast<std::size_t>(BuiltIn::kValueUnique) + 1);

/// Those that give back what they are given, or keep it.
constexpr bool keepsParameters(BuiltIn function) { return function == BuiltIn::kNvl; }

bool findBuiltIn(std::string_view name, BuiltIn& function) {
    for (std::size_t i = 0; i < std::size(kBuiltIns); ++i) {
        if (equalNoCase(kBuiltIns[i].name, name)) {
            function = static_cast<BuiltIn>(i);
            return true;
        }
    }
    return false;
}

bool isCallOf(const express::Expression& expression, std::string_view name) {
    return expression.kind == ExpressionKind::kCall && equalNoCase(expression.text, name) &&
           expression.operands.size() == 1;
}

void appendUtf8(std::string& text, std::uint32_t code) {
    constexpr std::uint32_t kTwo = 0x80, kThree = 0x800, kFour = 0x10000;
    if (code < kTwo) {
        text += static_cast<char>(code);
        return;
    }
    if (code < kThree) {
        text += static_cast<char>(0xC0 | code >> 6);
    } else {
        if (code < kFour) {
            text += static_cast<char>(0xE0 | code >> 12);
        } else {
            text += static_cast<char>(0xF0 | (code >> 18 & 7));
            text += static_cast<char>(0x80 | (code >> 12 & 0x3F));
        }
        text += static_cast<char>(0x80 | (code >> 6 & 0x3F));
    }
    text += static_cast<char>(0x80 | (code & 0x3F));
}

} // namespace

void Compiler::pushConstant(const Value& value) {
    m_program.constants.push_back(value);
    emit(Op::kConstant, static_cast<std::int32_t>(m_program.constants.size() - 1));
}

void Compiler::pushText(std::string text) {
    pushConstant(Value::of(std::string_view(m_program.texts.emplace_back(std::move(text)))));
}

void Compiler::pushNumber(const Expression& expression) {
    const char* const begin = expression.text.data();
    const char* const end = begin + expression.text.size();
    if (expression.kind == ExpressionKind::kInteger) {
        std::int64_t number = 0;
        if (std::from_chars(begin, end, number).ec != std::errc())
            fail(expression, "an INTEGER of 64 bits");
        return pushConstant(Value::of(number));
    }
    double number = 0;
    if (std::from_chars(begin, end, number).ec != std::errc())
        fail(expression, "a REAL that this machine can hold");
    pushConstant(Value::of(number));
}

/// The characters that a string literal stands for, in UTF-8.
std::string Compiler::stringOf(const Expression& expression) const {
    std::string text;
    const std::string_view inner = expression.text.substr(1, expression.text.size() - 2);
    if (expression.kind == ExpressionKind::kString) {
        for (std::size_t i = 0; i < inner.size(); ++i) {
            text += inner[i];
            i += inner[i] == '\'' ? 1 : 0;
        }
        return text;
    }
    constexpr std::size_t kDigits = 8;
    constexpr std::uint32_t kLastCharacter = 0x10FFFF;
    for (std::size_t i = 0; i < inner.size(); i += kDigits) {
        const std::string_view digits = inner.substr(i, kDigits);
        std::uint32_t code = 0;
        const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
        if (digits.size() != kDigits || read.ptr != digits.data() + kDigits || code > kLastCharacter)
            fail(expression, "eight hexadecimal digits for each character");
        appendUtf8(text, code);
    }
    return text;
}

TypeId Compiler::expression(const Expression& each) {
    switch (each.kind) {
    case ExpressionKind::kIndeterminate:
        emit(Op::kIndeterminate);
        return 0;
    case ExpressionKind::kInteger:
        pushNumber(each);
        return m_schema.named(kIntegerType).type;
    case ExpressionKind::kReal:
        pushNumber(each);
        return m_schema.named(kRealType).type;
    case ExpressionKind::kString:
    case ExpressionKind::kEncodedString:
        pushText(stringOf(each));
        return m_schema.named(kStringType).type;
    case ExpressionKind::kBinary: {
        Value value = Value::of(std::string_view(m_program.texts.emplace_back(each.text.substr(1))));
        value.tag = Tag::kBinary;
        pushConstant(value);
        return m_schema.named(kBinaryType).type;
    }
    case ExpressionKind::kName:
        return name(each);
    case ExpressionKind::kCall:
        return call(each);
    case ExpressionKind::kAttribute:
        return attribute(each);
    case ExpressionKind::kGroup:
        return group(each);
    case ExpressionKind::kIndex:
        return index(each);
    case ExpressionKind::kUnary:
        return unary(each);
    case ExpressionKind::kOperation:
        return operation(each);
    case ExpressionKind::kInterval:
        return interval(each);
    case ExpressionKind::kQuery:
        return query(each, false);
    case ExpressionKind::kAggregate:
        return aggregate(each);
    case ExpressionKind::kRepeated:
        break;
    }
    fail(each, "an expression");
}

TypeId Compiler::look(const Expression& each) {
    if (each.kind == ExpressionKind::kName) {
        const Found found = findVariable(each.text);
        if (found.variable && !found.variable->alias && found.variable->population == kNoType)
            return load(found, true);
    }
    return expression(each);
}

TypeId Compiler::load(const Found& found, bool toLook) {
    if (found.variable->alias)
        return expression(*found.variable->alias);
    if (found.variable->population != kNoType) {
        emit(Op::kPopulation, found.variable->population);
        return 0;
    }
    emit(Op::kLoad, found.variable->slot, toLook ? 1 : 0, found.levels);
    return found.variable->type;
}

TypeId Compiler::self(const Expression& expression) {
    if (!m_activation->hasSelf)
        fail(expression, "an expression; SELF stands in entities and types only");
    emit(Op::kLoad, 0);
    return m_schema.named(m_activation->self).type;
}

TypeId Compiler::name(const Expression& each) {
    if (const Found found = findVariable(each.text); found.variable)
        return load(found, false);
    if (equalNoCase(each.text, "SELF"))
        return self(each);
    NameId id = 0;
    const bool isName = m_schema.findName(each.text, id);
    if (isName && m_activation->hasSelf && m_schema.isEntity(m_activation->self)) {
        if (const Attribute* const attribute = m_schema.attribute(m_activation->self, id)) {
            emit(Op::kSelfAttribute, id);
            return attribute->type;
        }
    }
    bool isKnown = false;
    if (const TypeId type = knownConstant(each, isKnown); isKnown)
        return type;
    if (isName && m_schema.literals(id))
        return literal(each, id);
    std::uint32_t index = 0;
    std::uint8_t levels = 0;
    if (findAlgorithm(each.text, index, levels))
        return callAlgorithm(each, index, levels);
    fail(each, "a name that is declared");
}

TypeId Compiler::knownConstant(const Expression& each, bool& isKnown) {
    isKnown = true;
    const std::string key = upper(each.text);
    if (key == "TRUE" || key == "FALSE" || key == "UNKNOWN") {
        pushConstant(Value::of(key == "TRUE" ? kTrue : key == "FALSE" ? kFalse : kUnknown));
        return m_schema.named(key == "UNKNOWN" ? kLogicalType : kBooleanType).type;
    }
    if (key == "PI" || key == "CONST_E") {
        pushConstant(Value::of(key == "PI" ? std::numbers::pi : std::numbers::e));
        return m_schema.named(kRealType).type;
    }
    const auto constant = m_constants.find(lower(each.text));
    if (constant != m_constants.end()) {
        emit(Op::kCall, static_cast<std::int32_t>(constant->second), 0, kGlobal);
        return chunk(constant->second).result;
    }
    isKnown = false;
    return 0;
}

TypeId Compiler::literal(const Expression&, NameId id) {
    const std::vector<Schema::Literal>& literals = *m_schema.literals(id);
    Value value;
    value.tag = Tag::kEnumeration;
    value.integer = id;
    // Which enumeration is meant follows from what it is compared with; with one there is no question.
    if (literals.size() == 1) {
        value.type = literals.front().enumeration;
        value.length = literals.front().position;
    }
    pushConstant(value);
    return value.type == kNoType ? 0 : m_schema.named(value.type).type;
}

TypeId Compiler::attribute(const Expression& each) {
    const Expression& of = each.operands.front();
    NameId id = 0;
    const bool isName = m_schema.findName(each.text, id);
    if (of.kind == ExpressionKind::kName && !findVariable(of.text).variable) {
        const TypeIndex enumeration = m_schema.find(of.text);
        if (enumeration != kNoType && m_schema.named(enumeration).kind == TypeKind::kEnumeration) {
            const std::vector<NameId>& literals = m_schema.named(enumeration).literals;
            const auto found = std::ranges::find(literals, id);
            if (!isName || found == literals.end())
                fail(each, "a literal of " + m_schema.named(enumeration).name);
            Value value;
            value.tag = Tag::kEnumeration;
            value.integer = id;
            value.type = enumeration;
            value.length = static_cast<std::uint32_t>(found - literals.begin());
            pushConstant(value);
            return m_schema.named(enumeration).type;
        }
    }
    if (!isName || !m_schema.isAttributeName(id))
        fail(each, "the name of an attribute");
    const bool isSelf = (of.kind == ExpressionKind::kName && equalNoCase(of.text, "SELF")) ||
                        (of.kind == ExpressionKind::kGroup && isSelfGroup(of));
    if (isSelf && m_activation->hasSelf && m_schema.isEntity(m_activation->self)) {
        emit(Op::kSelfAttribute, id);
        const TypeId selfType = m_schema.named(m_activation->self).type;
        checkAttribute(each, id, selfType);
        return typeOfAttribute(selfType, id);
    }
    const TypeId type = look(of);
    checkAttribute(each, id, type);
    emit(Op::kAttribute, id);
    return typeOfAttribute(type, id);
}

/// SELF\X, where X is the entity itself or one of its supertypes: SELF.
bool Compiler::isSelfGroup(const Expression& group) const {
    const Expression& of = group.operands.front();
    if (of.kind != ExpressionKind::kName || !equalNoCase(of.text, "SELF") || !m_activation->hasSelf)
        return false;
    const TypeIndex entity = m_schema.find(group.text);
    return entity != kNoType && m_schema.isEntity(entity) && m_schema.isOf(m_activation->self, entity);
}

void Compiler::checkAttribute(const Expression& each, NameId id, TypeId of) {
    const Type& type = m_schema.underlying(of);
    if (type.kind != TypeKind::kEntity)
        return;
    for (TypeIndex i = kFirstNamedType; i < m_schema.named().size(); ++i) {
        // Texts may well ask a supertype for what only subtypes have; the value is indeterminate for the others.
        if (m_schema.isEntity(i) && m_schema.isOf(i, type.name) && m_schema.attribute(i, id))
            return;
    }
    remark("rule-text", m_ruleName, each.at, '"' + express::quotable(each.text) + '"',
           "an attribute of " + m_schema.named(type.name).name);
}

TypeId Compiler::typeOfAttribute(TypeId of, NameId id) const {
    const Type& type = m_schema.underlying(of);
    if (type.kind != TypeKind::kEntity)
        return 0;
    const Attribute* const attribute = m_schema.attribute(type.name, id);
    return attribute ? attribute->type : 0;
}

TypeId Compiler::group(const Expression& each) {
    const TypeIndex entity = m_schema.find(each.text);
    if (entity == kNoType || !m_schema.isEntity(entity))
        fail(each, "the name of an entity");
    look(each.operands.front());
    emit(Op::kGroup, entity);
    return m_schema.named(entity).type;
}

TypeId Compiler::index(const Expression& each) {
    const TypeId type = look(each.operands[0]);
    expression(each.operands[1]);
    const Type& aggregate = m_schema.underlying(type);
    const TypeId element = aggregate.kind == TypeKind::kAggregate ? aggregate.inner : 0;
    if (each.operands.size() == 2) {
        emit(Op::kIndex);
        return element;
    }
    expression(each.operands[2]);
    emit(Op::kIndexRange);
    return 0;
}

TypeId Compiler::unary(const Expression& each) {
    const TypeId type = look(each.operands.front());
    emit(each.op == Operator::kNot ? Op::kNot : each.op == Operator::kMinus ? Op::kNegate : Op::kPlus);
    return type;
}

bool Compiler::isTypeof(const Expression& each) const {
    std::uint32_t index = 0;
    std::uint8_t levels = 0;
    return isCallOf(each, "TYPEOF") && !findAlgorithm(each.text, index, levels);
}

/// The type that a text names which is compared with what TYPEOF gives. Texts in another case, and without the
/// schema's name, are taken as they were meant; a remark tells.
TypeIndex Compiler::typeNamed(const Expression& each) {
    const std::string text = stringOf(each);
    if (const TypeIndex exact = m_schema.findQualified(text); exact != kNoType)
        return exact;
    TypeIndex meant = m_schema.findQualified(upper(text));
    if (meant == kNoType && text.find('.') == text.npos)
        meant = m_schema.find(text);
    const std::string expected =
        meant == kNoType ? "the name of a type as TYPEOF gives it" : "'" + m_schema.named(meant).qualified + "'";
    remark("rule-text", m_ruleName, each.at, express::quotable(each.text), expected);
    return meant;
}

/// 'S.T' IN TYPEOF(x)
bool Compiler::isOf(const Expression& each) {
    if (each.op != Operator::kIn || each.operands[0].kind != ExpressionKind::kString || !isTypeof(each.operands[1]))
        return false;
    const TypeIndex type = typeNamed(each.operands[0]);
    look(each.operands[1].operands.front());
    emit(Op::kIsOf, type);
    return true;
}

TypeId Compiler::operation(const Expression& each) {
    const TypeId logical = m_schema.named(kLogicalType).type;
    if (isOf(each))
        return logical;
    const bool keeps = each.op == Operator::kPlus || each.op == Operator::kMinus || each.op == Operator::kMultiply ||
                       each.op == Operator::kConcatenate;
    const TypeId left = keeps ? expression(each.operands[0]) : look(each.operands[0]);
    const auto op = static_cast<std::uint8_t>(each.op);
    if (each.op == Operator::kAnd || each.op == Operator::kOr) {
        const std::size_t jump = emit(each.op == Operator::kAnd ? Op::kAndJump : Op::kOrJump);
        look(each.operands[1]);
        emit(Op::kBinary, 0, 0, op);
        patch(jump);
        return logical;
    }
    const TypeId right = keeps ? expression(each.operands[1]) : look(each.operands[1]);
    emit(Op::kBinary, 0, 0, op);
    if (!keeps)
        return each.op >= Operator::kEqual || each.op == Operator::kXor ? logical : 0;
    return m_schema.underlying(left).kind == TypeKind::kAggregate ? left : right == left ? left : 0;
}

TypeId Compiler::interval(const Expression& each) {
    for (const Expression& operand : each.operands)
        look(operand);
    const int flags = (each.op == Operator::kLessOrEqual ? 1 : 0) + (each.second == Operator::kLessOrEqual ? 2 : 0);
    emit(Op::kInterval, 0, 0, static_cast<std::uint8_t>(flags));
    return m_schema.named(kLogicalType).type;
}

TypeId Compiler::query(const Expression& each, bool onlyCounts) {
    const TypeId source = expression(each.operands[0]);
    const std::uint16_t slot = addSlots(kQuerySlots);
    const std::size_t begin = emit(Op::kQueryBegin, 0, slot, onlyCounts ? 1 : 0);
    const std::int32_t again = here();
    const std::size_t next = emit(Op::kQueryNext, 0, slot, onlyCounts ? 1 : 0);
    const Type& aggregate = m_schema.underlying(source);
    const TypeId element = aggregate.kind == TypeKind::kAggregate ? aggregate.inner : 0;
    const auto variable = static_cast<std::uint16_t>(slot + kQueryElement);
    m_activation->variables.push_back({each.text, variable, element, nullptr, kNoType});
    look(each.operands[1]);
    m_activation->variables.pop_back();
    emit(Op::kQueryTest, again, slot, onlyCounts ? 1 : 0);
    patch(begin);
    patch(next);
    return onlyCounts ? m_schema.named(kIntegerType).type : source;
}

TypeId Compiler::aggregate(const Expression& each) {
    const bool isRepeated = std::ranges::any_of(
        each.operands, [](const Expression& operand) { return operand.kind == ExpressionKind::kRepeated; });
    for (const Expression& operand : each.operands) {
        const bool isThis = operand.kind == ExpressionKind::kRepeated;
        expression(isThis ? operand.operands[0] : operand);
        if (isThis)
            expression(operand.operands[1]);
        else if (isRepeated)
            pushConstant(Value::of(std::int64_t{1}));
    }
    emit(Op::kAggregate, static_cast<std::int32_t>(each.operands.size()), 0, isRepeated ? 1 : 0);
    return 0;
}

/// SIZEOF(TYPEOF(x) * ['S.A', 'S.B']), either way round.
bool Compiler::countOf(const Expression& each) {
    if (each.kind != ExpressionKind::kOperation || each.op != Operator::kMultiply)
        return false;
    const bool isFirst = isTypeof(each.operands[0]);
    const Expression& list = each.operands[isFirst ? 1 : 0];
    const Expression& types = each.operands[isFirst ? 0 : 1];
    const auto isText = [](const Expression& element) { return element.kind == ExpressionKind::kString; };
    if (!isTypeof(types) || list.kind != ExpressionKind::kAggregate || !std::ranges::all_of(list.operands, isText))
        return false;
    std::vector<TypeIndex> known;
    for (const Expression& text : list.operands) {
        const TypeIndex type = typeNamed(text);
        if (type != kNoType && std::ranges::find(known, type) == known.end())
            known.push_back(type);
    }
    look(types.operands.front());
    m_program.typeLists.push_back(std::move(known));
    emit(Op::kCountOf, static_cast<std::int32_t>(m_program.typeLists.size() - 1));
    return true;
}

TypeId Compiler::call(const Expression& each) {
    std::uint32_t index = 0;
    std::uint8_t levels = 0;
    if (findAlgorithm(each.text, index, levels))
        return callAlgorithm(each, index, levels);
    BuiltIn function{};
    if (findBuiltIn(each.text, function))
        return builtIn(each, function);
    const TypeIndex entity = m_schema.find(each.text);
    if (entity != kNoType && m_schema.isEntity(entity))
        return construct(each, entity);
    fail(each, "a function or an entity");
}

TypeId Compiler::callAlgorithm(const Expression& each, std::uint32_t index, std::uint8_t levels) {
    if (chunk(index).isProcedure)
        fail(each, "a function");
    if (each.operands.size() != chunk(index).parameters) {
        fail(each.at, std::to_string(each.operands.size()) + " parameters",
             std::to_string(chunk(index).parameters) + " of " + chunk(index).name);
    }
    for (const Expression& parameter : each.operands)
        expression(parameter);
    emit(Op::kCall, static_cast<std::int32_t>(index), static_cast<std::uint16_t>(each.operands.size()), levels);
    return chunk(index).result;
}

TypeId Compiler::construct(const Expression& each, TypeIndex entity) {
    const std::size_t count = m_schema.parametersOf(entity).size();
    if (each.operands.size() != count) {
        fail(each.at, std::to_string(each.operands.size()) + " parameters",
             std::to_string(count) + " for the explicit attributes of " + m_schema.named(entity).name);
    }
    for (const Expression& parameter : each.operands)
        expression(parameter);
    emit(Op::kConstruct, entity, static_cast<std::uint16_t>(count));
    return m_schema.named(entity).type;
}

/// True when the text is a role, or can only mean one; `canonical` is how USEDIN wants it.
bool Compiler::roleNamed(const Expression& each, std::string& canonical) {
    const std::string text = stringOf(each);
    canonical = text;
    if (text.empty()) {
        m_program.needsAllRoles = true;
        return true;
    }
    const std::size_t last = text.rfind('.');
    std::string_view owner = last == text.npos ? std::string_view() : std::string_view(text).substr(0, last);
    if (const std::size_t dot = owner.find('.'); dot != owner.npos)
        owner.remove_prefix(dot + 1);
    const TypeIndex entity = m_schema.find(owner);
    NameId name = 0;
    if (entity != kNoType && m_schema.isEntity(entity) && m_schema.findName(text.substr(last + 1), name)) {
        const Attribute* const attribute = m_schema.attribute(entity, name);
        if (attribute && attribute->kind == AttributeKind::kExplicit && attribute->owner == entity) {
            canonical = m_schema.named(entity).qualified + '.' + m_schema.nameOf(name);
            m_program.roles.emplace_back(entity, name);
            if (canonical != text)
                remark("rule-text", m_ruleName, each.at, express::quotable(each.text), "'" + canonical + "'");
            return true;
        }
    }
    remark("rule-text", m_ruleName, each.at, express::quotable(each.text), "a role: 'SCHEMA.ENTITY.ATTRIBUTE'");
    return false;
}

TypeId Compiler::builtIn(const Expression& each, BuiltIn function) {
    const BuiltInName& known = kBuiltIns[static_cast<std::size_t>(function)];
    if (each.operands.size() < known.fewest || each.operands.size() > known.most) {
        fail(each.at, std::to_string(each.operands.size()) + " parameters",
             std::to_string(known.fewest) + " of " + std::string(known.name));
    }
    const TypeId integer = m_schema.named(kIntegerType).type;
    if (function == BuiltIn::kSizeof) {
        if (each.operands.front().kind == ExpressionKind::kQuery)
            return query(each.operands.front(), true);
        if (countOf(each.operands.front()))
            return integer;
    }
    if (function == BuiltIn::kUsedin && each.operands[1].kind == ExpressionKind::kString) {
        look(each.operands[0]);
        std::string role;
        roleNamed(each.operands[1], role);
        pushText(std::move(role));
    } else {
        m_program.needsAllRoles |= function == BuiltIn::kUsedin || function == BuiltIn::kRolesof;
        TypeId type = 0;
        for (const Expression& parameter : each.operands) {
            const TypeId other = keepsParameters(function) ? expression(parameter) : look(parameter);
            type = type == 0 ? other : type;
        }
        emit(Op::kBuiltIn, static_cast<std::int32_t>(function), static_cast<std::uint16_t>(each.operands.size()));
        return keepsParameters(function) ? type : 0;
    }
    emit(Op::kBuiltIn, static_cast<std::int32_t>(function), static_cast<std::uint16_t>(each.operands.size()));
    return 0;
}

} // namespace vnifc::rules
