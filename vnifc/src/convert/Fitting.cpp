#include "Conversion.h"

#include <algorithm>

// One value, from the type that it has to the type that the target wants. What fits stays untouched.
namespace vnifc::conversion {

using namespace VN_SDAI;

namespace {

constexpr std::string_view kWord = "the enumeration has no such word";
constexpr std::string_view kSpelling = "the word has another spelling";
constexpr std::string_view kSelectType = "the select has no such type";
constexpr std::string_view kWrapped = "a select says which type its value has";
constexpr std::string_view kUnwrapped = "the attribute has one type only";
constexpr std::string_view kOtherForm = "the attribute's type has another form";
constexpr std::string_view kOneOnly = "the attribute holds one value";
constexpr std::string_view kSeveral = "the attribute holds a list";
constexpr std::string_view kTargetGone = "what it refers to is lost";
constexpr std::string_view kWrongTarget = "the attribute may not refer to that entity";
constexpr std::string_view kNoForm = "the value has no form in the attribute's type";
constexpr std::string_view kTooFew = "too little of the list is left";

bool hasWord(const Type* type, const typed::EnumerationClass* words, std::string_view word) {
    if (words)
        return words->fromLiteral(word) < words->literals.size();
    const VnIfcEnumerationType* enumeration = asEnumeration(type);
    return enumeration && std::ranges::any_of(enumeration->literals(), [&](const VnAnsiString& each) {
               return vnEqualNoCase(each.view(), word);
           });
}

/// The name under which a select takes a value of a type without a name.
std::string_view plainName(VnTypeCodeKind kind) noexcept {
    switch (kind) {
    case VnTypeCodeKind::kReal:
        return "IfcReal";
    case VnTypeCodeKind::kInteger:
        return "IfcInteger";
    case VnTypeCodeKind::kBoolean:
        return "IfcBoolean";
    case VnTypeCodeKind::kLogical:
        return "IfcLogical";
    case VnTypeCodeKind::kString:
    case VnTypeCodeKind::kEnumeration:
        return "IfcLabel";
    default:
        return {};
    }
}

/// True for types that say nothing of the meaning of their values.
bool isPlain(std::string_view name) noexcept {
    constexpr std::string_view kPlain[] = {"",           "IfcReal",  "IfcInteger", "IfcBoolean",
                                           "IfcLogical", "IfcLabel", "IfcText",    "IfcIdentifier"};
    return std::ranges::any_of(kPlain, [&](std::string_view each) { return vnEqualNoCase(each, name); });
}

} // namespace

const Value& Conversion::first(const Value& value) noexcept {
    const Value* found = &value;
    while (found->is(Value::Kind::kList) && !found->items.empty())
        found = &found->items.front();
    return *found;
}

void Conversion::tellPartLost(const Value& value, std::string_view reason) {
    tell(ConvertKind::kLostValue, m_attribute, shown(value), "", reason);
    m_isPartLost = true;
}

void Conversion::tellLost(std::string_view attribute, std::string_view reason) {
    const Value& value = (*m_record)[attribute];
    if (value.isSet())
        tell(ConvertKind::kLostValue, attribute, shown(value), "", reason);
}

/// Makes the value fit; false, with m_reasonLost, when it cannot.
bool Conversion::fit(Value& value, const Type* from, const Type* to, const typed::EnumerationClass* words) {
    m_reasonLost = kNoForm;
    if (!value.isSet() || value.is(Value::Kind::kOpaque) || !to)
        return true;
    if (const VnIfcAggregationType* aggregation = asAggregation(to))
        return fitAggregate(value, from, *aggregation);
    if (value.is(Value::Kind::kReference) && expand(value, from)) {
        ++m_depth;
        const bool fits = fit(value, from, to, words);
        --m_depth;
        return fits;
    }
    if (value.is(Value::Kind::kList)) {
        if (value.items.empty())
            return false;
        for (std::size_t i = 1; i < value.items.size(); ++i)
            tellPartLost(value.items[i], kOneOnly);
        if (value.items.size() == 1)
            tell(ConvertKind::kChangedValue, m_attribute, shown(value), shown(value.items.front()), kOneOnly);
        Value only = std::move(value.items.front());
        value = std::move(only);
        const VnIfcAggregationType* list = asAggregation(from);
        return fit(value, list ? list->elementType() : from, to, words);
    }
    if (value.is(Value::Kind::kReference))
        return fitReference(value, from, to);
    if (asSelect(to))
        return fitSelect(value, from, to);
    if (value.is(Value::Kind::kTyped))
        return fitTyped(value, to);
    if (!vnEqualNoCase(innermostName(from), nameOf(to)) && coerce(value, innermostName(from), to))
        return true;
    if (asEntity(to))
        return false;
    if (asEnumeration(to))
        return fitLiteral(value, from, to, words);
    return fitSimple(value, from, to);
}

/// Puts in place of a reference to an instance that stands in others what the instance says there.
bool Conversion::expand(Value& value, const Type*& from) {
    const std::size_t i = find(value.number);
    if (i == m_instances.size() || !m_instances[i].plan || m_depth == kDeepest)
        return false;
    const Plan& plan = *m_instances[i].plan;
    if (plan.mapping.way != Mapping::Way::kInlined || plan.mapping.inlineCase->attribute.empty())
        return false;
    const Record inner = record(value.number);
    std::string_view names = plan.mapping.inlineCase->attribute;
    Values values;
    while (!names.empty()) {
        const std::size_t comma = std::min(names.find(','), names.size());
        const std::size_t position = inner.layout->find(names.substr(0, comma));
        names.remove_prefix(std::min(comma + 1, names.size()));
        values.push_back(inner.values[position]);
        from = inner.layout->fields[position].type;
    }
    if (!values.front().isSet())
        return false;
    tell(ConvertKind::kChangedValue, m_attribute, shown(value), shown(values.front()), plan.mapping.reason);
    value = values.size() == 1 ? values.front() : Value::list(std::move(values));
    return true;
}

bool Conversion::fitAggregate(Value& value, const Type* from, const VnIfcAggregationType& to) {
    if (value.is(Value::Kind::kTyped) && value.items.size() == 1 && value.items.front().is(Value::Kind::kList)) {
        Value list = std::move(value.items.front());
        value = std::move(list);
    }
    const VnIfcAggregationType* list = asAggregation(from);
    const Type* element = list ? list->elementType() : from;
    Values items;
    if (value.is(Value::Kind::kList))
        items = std::move(value.items);
    else {
        tell(ConvertKind::kChangedValue, m_attribute, shown(value), '(' + shown(value) + ')', kSeveral);
        items.push_back(std::move(value));
    }
    value = Value::list({});
    // What was too short before is no fault of the conversion.
    const std::size_t enough = list ? items.size() : static_cast<std::size_t>(to.lowerBound().value());
    for (Value& each : items)
        appendFitting(value.items, std::move(each), element, to.elementType());
    const auto lower = static_cast<std::size_t>(to.lowerBound().value());
    m_reasonLost = kTooFew;
    return value.items.size() >= lower || value.items.size() >= enough;
}

/// Appends an element, or the several that stand in it.
void Conversion::appendFitting(Values& items, Value&& element, const Type* from, const Type* to) {
    const Type* type = from;
    if (element.is(Value::Kind::kReference) && !asAggregation(to) && m_depth < kDeepest && expand(element, type)) {
        ++m_depth;
        const VnIfcAggregationType* list = asAggregation(type);
        if (element.is(Value::Kind::kList))
            for (Value& each : element.items)
                appendFitting(items, std::move(each), list ? list->elementType() : type, to);
        else
            appendFitting(items, std::move(element), type, to);
        --m_depth;
        return;
    }
    const Value before = element;
    if (!fit(element, from, to))
        return tellPartLost(before, m_reasonLost);
    const bool isTwice = element.is(Value::Kind::kReference) && std::ranges::any_of(items, [&](const Value& each) {
                             return each.is(Value::Kind::kReference) && each.number == element.number;
                         });
    const bool wasTwice = before.is(Value::Kind::kReference) && before.number == element.number;
    if (!isTwice || wasTwice)
        items.push_back(std::move(element));
}

bool Conversion::fitReference(Value& value, const Type* from, const Type* to) {
    const std::uint64_t number = value.number;
    const std::size_t i = find(number);
    const bool isInlined =
        i < m_instances.size() && m_instances[i].plan && m_instances[i].plan->mapping.way == Mapping::Way::kInlined;
    const EntityType* type = typeInTarget(number);
    if (type && mayReferTo(to, *type))
        return true;
    const EntityType* old =
        i < m_instances.size() && m_instances[i].plan ? m_instances[i].plan->source->entity : nullptr;
    // What nobody knows, and what was wrong in the source already, is carried.
    if (i == m_instances.size() ? !type : !old)
        return true;
    if (old && from && (asEntity(from) || asSelect(from)) && !mayReferTo(from, *old) && type)
        return true;
    m_reasonLost = type || isInlined ? kWrongTarget : kTargetGone;
    for (const EntityType* each = old; each; each = each->supertype())
        if (coerce(value, nameOf(*each), to))
            return true;
    return type && wrap(value, *type, to);
}

/// Applies the line of the table that leads to the wanted type, or to a member of the wanted select.
bool Conversion::coerce(Value& value, std::string_view from, const Type* to) {
    for (const CoercionCase& each : coercionCases()) {
        if (!vnEqualNoCase(each.from, from))
            continue;
        const EntityType* entity = m_target.concrete(each.to);
        const bool isMember = asSelect(to) && (entity ? mayReferTo(to, *entity) : memberNamed(to, each.to) != nullptr);
        if (!isMember && !vnEqualNoCase(nameOf(to), each.to) &&
            !(entity && asEntity(to) && entity->isKindOf(asEntity(to))))
            continue;
        Value made = each.compute(*this, *m_record, value);
        if (!made.isSet())
            continue;
        if (isMember && !entity)
            made = Value::typed(each.to, std::move(made));
        tell(ConvertKind::kChangedValue, m_attribute, shown(value), shown(made), each.reason);
        value = std::move(made);
        return true;
    }
    return false;
}

/// Puts the instance around the value that the target wants there.
bool Conversion::wrap(Value& value, const EntityType& type, const Type* to) {
    for (const WrapCase& each : wrapCases()) {
        const EntityType* wrapper = m_target.concrete(each.entity);
        if (!wrapper || !mayReferTo(to, *wrapper))
            continue;
        const Layout& layout = m_target.layout(*wrapper);
        const VnIfcAggregationType* list = asAggregation(layout.fields[layout.find(each.attribute)].type);
        if (!list || !mayReferTo(list->elementType(), type))
            continue;
        const Value made = make(std::string(layout.keyword) + "((#" + std::to_string(value.number) + "))", true);
        tell(ConvertKind::kChangedValue, m_attribute, shown(value), shown(made),
             "styles were assigned by an instance between");
        value = made;
        return true;
    }
    return false;
}

bool Conversion::fitSelect(Value& value, const Type* from, const Type* to) {
    m_reasonLost = kSelectType;
    if (value.is(Value::Kind::kTyped)) {
        if (value.items.size() != 1)
            return true;
        const Type* old = m_source.schema().namedType(value.text);
        if (const Type* member = memberNamed(to, value.text))
            return fit(value.items.front(), old, member);
        if (coerce(value, value.text, to))
            return true;
        for (const RetypeCase& each : retypeCases()) {
            const Type* member = vnEqualNoCase(each.type, value.text) ? memberNamed(to, each.other) : nullptr;
            if (!member)
                continue;
            const std::string before = shown(value);
            value.text = vnUpper(each.other);
            const bool fits = fit(value.items.front(), old, member);
            tell(ConvertKind::kChangedValue, m_attribute, before, shown(value), kSelectType);
            return fits;
        }
        return false;
    }
    const std::string_view name = innermostName(from);
    if (coerce(value, name, to))
        return true;
    for (const std::string_view wanted : {name, from ? plainName(from->kind()) : std::string_view()}) {
        const Type* member = wanted.empty() ? nullptr : memberNamed(to, wanted);
        if (!member || asEntity(member) || !fit(value, from, member))
            continue;
        const std::string before = shown(value);
        value = Value::typed(wanted, std::move(value));
        tell(ConvertKind::kChangedValue, m_attribute, before, shown(value), kWrapped);
        return true;
    }
    return false;
}

/// A value of a select where the target has one type only.
bool Conversion::fitTyped(Value& value, const Type* to) {
    if (value.items.size() != 1)
        return false;
    const Type* old = m_source.schema().namedType(value.text);
    if (coerce(value, value.text, to))
        return true;
    const bool isSame = vnEqualNoCase(value.text, nameOf(to)) || asEnumeration(to) ||
                        value.items.front().is(Value::Kind::kList) || value.items.front().is(Value::Kind::kReference);
    m_reasonLost = kUnwrapped;
    if (!isSame && !isPlain(nameOf(to)))
        return false;
    const std::string before = shown(value);
    Value inner = std::move(value.items.front());
    value = std::move(inner);
    if (!fit(value, old, to))
        return false;
    tell(ConvertKind::kChangedValue, m_attribute, before, shown(value), kUnwrapped);
    return true;
}

bool Conversion::fitLiteral(Value& value, const Type* from, const Type* to, const typed::EnumerationClass* words) {
    if (!value.is(Value::Kind::kLiteral) && !value.is(Value::Kind::kString))
        return false;
    const std::string word = vnUpper(value.content());
    words = words ? words : m_target.words(nameOf(to));
    if (hasWord(to, words, word)) {
        if (value.is(Value::Kind::kString))
            value = Value::literal(word);
        return true;
    }
    const auto become = [&](std::string_view other, std::string_view reason) {
        tell(ConvertKind::kChangedValue, m_attribute, shown(value), '.' + std::string(other) + '.', reason);
        value = Value::literal(other);
        return true;
    };
    for (const LiteralCase& each : literalCases()) {
        if (!vnEqualNoCase(each.enumeration, nameOf(to)) && !vnEqualNoCase(each.enumeration, nameOf(from)))
            continue;
        const std::string_view other = word == each.word ? each.other : word == each.other ? each.word : "";
        if (!other.empty() && hasWord(to, words, other))
            return become(other, kSpelling);
    }
    m_reasonLost = kWord;
    for (const std::string_view stand : {"USERDEFINED", "NOTDEFINED"}) {
        if (!hasWord(to, words, stand))
            continue;
        if (word != "NOTDEFINED" && word != "USERDEFINED")
            m_words.emplace_back(m_targetAttribute, word);
        return become(word == "NOTDEFINED" && hasWord(to, words, "NOTDEFINED") ? "NOTDEFINED" : stand, kWord);
    }
    return false;
}

bool Conversion::fitSimple(Value& value, const Type* from, const Type* to) {
    const VnTypeCodeKind kind = to->kind();
    if (from && from->kind() == kind && !asEnumeration(from))
        return true;
    const Value before = value;
    double number = 0;
    switch (kind) {
    case VnTypeCodeKind::kString:
        if (value.is(Value::Kind::kString) || value.is(Value::Kind::kBinary))
            return true;
        if (!value.is(Value::Kind::kLiteral) && !value.is(Value::Kind::kNumber))
            return false;
        value = Value::string(before.text);
        break;
    case VnTypeCodeKind::kReal:
        if (!value.toReal(number))
            return false;
        if (value.text.find('.') == std::string::npos)
            value = Value::real(number);
        break;
    case VnTypeCodeKind::kInteger: {
        constexpr double kLargest = 2147483646.0;
        if (!value.toReal(number) ||
            number != static_cast<double>(static_cast<std::int64_t>(std::clamp(number, -kLargest, kLargest))))
            return false;
        value = Value::integer(static_cast<std::int64_t>(number));
        break;
    }
    case VnTypeCodeKind::kBoolean:
    case VnTypeCodeKind::kLogical:
        return value.is(Value::Kind::kLiteral) &&
               (value.text == "T" || value.text == "F" || (value.text == "U" && kind == VnTypeCodeKind::kLogical));
    default:
        return value.is(Value::Kind::kBinary) && kind == VnTypeCodeKind::kBinary;
    }
    if (value.text != before.text)
        tell(ConvertKind::kChangedValue, m_attribute, shown(before), shown(value), kOtherForm);
    return true;
}

} // namespace vnifc::conversion
