// Entity values (ISO 10303-11, 12.10 and 9.2.6) and the built-in functions (clause 15).
#include "Machine.h"

#include "Member.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace vnifc::rules {

using express::AggregateKind;

Value Machine::construct(TypeIndex entity, const Value* parameters, std::uint16_t count) {
    const std::vector<NameId>& names = m_schema.parametersOf(entity);
    Constructed* const made = m_arena.make<Constructed>();
    auto* const part = m_arena.make<TypeIndex>();
    *part = entity;
    made->leaf = entity;
    made->parts = part;
    made->partCount = 1;
    made->attributes = m_arena.array<Constructed::Attribute>(count);
    made->attributeCount = count;
    for (std::uint16_t i = 0; i < count; ++i) {
        Value value = parameters[i];
        share(value);
        const Attribute* const attribute = m_schema.attribute(entity, names[i]);
        made->attributes[i] = {names[i], attribute ? convert(value, attribute->type) : value};
    }
    return Value::of(made);
}

/// "||": the parts of both, each once (12.10).
Value Machine::join(const Value& left, const Value& right) {
    if (!left.isEntity() || !right.isEntity())
        return Value();
    Value sides[] = {left, right};
    for (Value& side : sides) {
        // Of an instance, a copy.
        TypeId type = 0;
        if (side.is(Tag::kInstance))
            attributeSlot(side, 0, type);
    }
    const Constructed& a = *sides[0].constructed;
    const Constructed& b = *sides[1].constructed;
    spend(std::uint64_t{a.attributeCount} + b.attributeCount);
    Constructed* const made = m_arena.make<Constructed>();
    auto* const parts = m_arena.array<TypeIndex>(std::size_t{a.partCount} + b.partCount);
    made->attributes = m_arena.array<Constructed::Attribute>(std::size_t{a.attributeCount} + b.attributeCount);
    for (const Constructed* side : {&a, &b}) {
        for (std::uint16_t i = 0; i < side->partCount; ++i) {
            if (std::find(parts, parts + made->partCount, side->parts[i]) == parts + made->partCount)
                parts[made->partCount++] = side->parts[i];
        }
        for (std::uint16_t i = 0; i < side->attributeCount; ++i) {
            if (!made->find(side->attributes[i].name))
                made->attributes[made->attributeCount++] = side->attributes[i];
        }
    }
    made->parts = parts;
    for (std::uint16_t i = 0; i < made->partCount; ++i) {
        const auto isAbove = [&](TypeIndex other) { return m_schema.isOf(parts[i], other); };
        if (std::all_of(parts, parts + made->partCount, isAbove))
            made->leaf = parts[i];
    }
    return Value::of(made);
}

Value Machine::size(BuiltIn function, const Value& of) {
    if (function == BuiltIn::kBlength)
        return of.is(Tag::kBinary) ? Value::of(std::int64_t{of.length}) : Value();
    if (function == BuiltIn::kLength) {
        if (!of.is(Tag::kString))
            return Value();
        const std::string_view text = of.view();
        spend(text.size() / 64);
        const auto isFirst = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
        return Value::of(static_cast<std::int64_t>(std::count_if(text.begin(), text.end(), isFirst)));
    }
    if (!of.is(Tag::kAggregate))
        return Value();
    const Aggregate& aggregate = *of.aggregate;
    switch (function) {
    case BuiltIn::kSizeof:
        return Value::of(std::int64_t{aggregate.count});
    case BuiltIn::kHiindex:
        return Value::of(aggregate.first() + aggregate.count - 1);
    case BuiltIn::kLoindex:
        return Value::of(aggregate.first());
    case BuiltIn::kLobound:
        return Value::of(std::int64_t{aggregate.lower});
    case BuiltIn::kHibound:
        if (aggregate.isArray())
            return Value::of(aggregate.first() + aggregate.count - 1);
        return aggregate.upper == kOpenBound ? Value() : Value::of(std::int64_t{aggregate.upper});
    default:
        return Value();
    }
}

Value Machine::numeric(BuiltIn function, const Value& of) const noexcept {
    if (!of.isNumber())
        return Value();
    const double x = of.number();
    switch (function) {
    case BuiltIn::kAbs:
        return of.is(Tag::kInteger) && of.integer < 0 ? negate(of) : of.is(Tag::kInteger) ? of : Value::of(std::abs(x));
    case BuiltIn::kAcos:
        return Value::of(std::acos(x));
    case BuiltIn::kAsin:
        return Value::of(std::asin(x));
    case BuiltIn::kCos:
        return Value::of(std::cos(x));
    case BuiltIn::kExp:
        return Value::of(std::exp(x));
    case BuiltIn::kLog:
        return Value::of(std::log(x));
    case BuiltIn::kLog2:
        return Value::of(std::log2(x));
    case BuiltIn::kLog10:
        return Value::of(std::log10(x));
    case BuiltIn::kSin:
        return Value::of(std::sin(x));
    case BuiltIn::kSqrt:
        return Value::of(std::sqrt(x));
    case BuiltIn::kTan:
        return Value::of(std::tan(x));
    case BuiltIn::kOdd:
        return of.is(Tag::kInteger) ? Value::of((of.integer & 1) != 0) : Value();
    default:
        return Value();
    }
}

Value Machine::builtIn(BuiltIn function, const Value* parameters) {
    const Value& first = parameters[0];
    switch (function) {
    case BuiltIn::kExists:
        return Value::of(first.exists());
    case BuiltIn::kNvl:
        return first.exists() ? first : parameters[1];
    case BuiltIn::kSizeof:
    case BuiltIn::kHiindex:
    case BuiltIn::kLoindex:
    case BuiltIn::kHibound:
    case BuiltIn::kLobound:
    case BuiltIn::kLength:
    case BuiltIn::kBlength:
        return size(function, first);
    case BuiltIn::kAtan: {
        const Value& second = parameters[1];
        if (!first.isNumber() || !second.isNumber() || (first.number() == 0 && second.number() == 0))
            return Value();
        return Value::of(std::atan2(first.number(), second.number()));
    }
    case BuiltIn::kTypeof:
        return typesOf(first);
    case BuiltIn::kUsedin:
        return usedIn(first, parameters[1]);
    case BuiltIn::kRolesof:
        return rolesOf(first);
    case BuiltIn::kFormat:
        return format(first, parameters[1]);
    case BuiltIn::kValue:
        return first.is(Tag::kString) ? number(first.view()) : Value();
    case BuiltIn::kValueIn:
        return valueIn(first, parameters[1]);
    case BuiltIn::kValueUnique:
        return valueUnique(first);
    default:
        return numeric(function, first);
    }
}

Value Machine::typesOf(const Value& value) {
    if (!value.exists())
        return Value();
    constexpr std::uint64_t kCost = 16; // whether the set is there already or not
    spend(kCost);
    if (value.is(Tag::kConstructed) && value.constructed->partCount > 1) {
        // Combinations are many and seldom asked for.
        Aggregate* const types = makeAggregate(AggregateKind::kSet, 0);
        for (const TypeIndex type : typesFoundIn(value))
            append(*types, Value::of(std::string_view(m_schema.named(type).qualified)));
        return Value::of(types);
    }
    const TypeIndex named = value.is(Tag::kAggregate)     ? value.aggregate->type
                            : value.is(Tag::kConstructed) ? value.constructed->parts[0]
                                                          : value.type;
    TypeSet& types = m_typeSets[std::uint32_t{named} << 16 | baseType(value)];
    if (!types.aggregate.isOfTypes) {
        for (const TypeIndex type : typesFoundIn(value))
            types.values.push_back(Value::of(std::string_view(m_schema.named(type).qualified)));
        types.aggregate.kind = AggregateKind::kSet;
        types.aggregate.isOfTypes = true;
        types.aggregate.count = types.aggregate.capacity = static_cast<std::uint32_t>(types.values.size());
        types.aggregate.data = types.values.data();
    }
    return Value::of(&types.aggregate);
}

std::vector<TypeIndex> Machine::typesFoundIn(const Value& value) const {
    std::vector<TypeIndex> types;
    for (TypeIndex i = kNoType + 1; i < m_schema.named().size(); ++i) {
        if (isOf(value, i))
            types.push_back(i);
    }
    return types;
}

namespace {

/// The name of a role: "SCHEMA.ENTITY.ATTRIBUTE".
std::string nameOfRole(const Schema& schema, const Attribute& role) {
    return schema.named(role.owner).qualified + '.' + schema.nameOf(role.name);
}

} // namespace

Value Machine::usedIn(const Value& instance, const Value& role) {
    if (!instance.isEntity() || !role.is(Tag::kString))
        return Value();
    Aggregate* const users = makeAggregate(AggregateKind::kBag, 0);
    if (!instance.is(Tag::kInstance) || !m_view || instance.instance->objectId().isNull())
        return Value::of(users);
    const auto uses = m_view->uses(instance.instance->objectId().slot());
    spend(uses.size());
    const Attribute* known = nullptr; // whose name was compared last
    bool isAsked = false;
    for (const ModelView::Use& use : uses) {
        if (use.role != known) {
            known = use.role;
            isAsked = role.length == 0 || nameOfRole(m_schema, *known) == role.view();
        }
        if (isAsked)
            append(*users, valueOf(*use.user));
    }
    return Value::of(users);
}

Value Machine::rolesOf(const Value& instance) {
    if (!instance.isEntity())
        return Value();
    Aggregate* const roles = makeAggregate(AggregateKind::kSet, 0);
    if (!instance.is(Tag::kInstance) || !m_view || instance.instance->objectId().isNull())
        return Value::of(roles);
    for (const ModelView::Use& use : m_view->uses(instance.instance->objectId().slot())) {
        spend(1);
        add(*roles, text(nameOfRole(m_schema, *use.role)));
    }
    return Value::of(roles);
}

Value Machine::number(std::string_view text) {
    spend(text.size() / 16);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    const char* const end = text.data() + text.size();
    std::int64_t whole = 0;
    if (const auto read = std::from_chars(text.data(), end, whole); read.ec == std::errc() && read.ptr == end)
        return Value::of(whole);
    double real = 0;
    const auto read = std::from_chars(text.data(), end, real);
    return read.ec == std::errc() && read.ptr == end ? Value::of(real) : Value();
}

Value Machine::valueIn(const Value& aggregate, const Value& value) {
    if (!aggregate.is(Tag::kAggregate) || !value.exists())
        return Value::of(kUnknown);
    Truth result = kFalse;
    spend(aggregate.aggregate->count);
    for (std::uint32_t i = 0; i < aggregate.aggregate->count && result != kTrue; ++i)
        result = std::max(result, equal(element(*aggregate.aggregate, i), value, false));
    return Value::of(result);
}

Value Machine::valueUnique(const Value& value) {
    if (!value.is(Tag::kAggregate))
        return Value::of(kUnknown);
    const Aggregate& aggregate = *value.aggregate;
    Truth result = kTrue;
    for (std::uint32_t i = 0; i < aggregate.count; ++i) {
        const Value each = element(aggregate, i);
        spend(i + 1);
        for (std::uint32_t j = 0; j < i; ++j) {
            const Truth truth = equal(element(aggregate, j), each, false);
            if (truth == kTrue)
                return Value::of(kFalse);
            result = std::min(result, static_cast<Truth>(kTrue - truth));
        }
        if (!each.exists())
            result = std::min(result, kUnknown);
    }
    return Value::of(result);
}

namespace {

constexpr int kMaxWidth = 1000;

/// "width.decimals" with a type letter (15.10.1): 7I, 10F, 8.3F, 9.2E. A sign asks for one in front of positive ones.
std::string formatSymbolic(double number, std::string_view form) {
    const bool hasSign = form.starts_with('+') || form.starts_with('-');
    const bool isPlus = form.starts_with('+');
    if (hasSign)
        form.remove_prefix(1);
    if (form.empty())
        return {};
    const char type = form.back();
    form.remove_suffix(1);
    const bool hasZeros = form.starts_with('0');
    int width = 0, decimals = 0;
    const auto read = std::from_chars(form.data(), form.data() + form.size(), width);
    if (read.ec != std::errc() || width < 0 || width > kMaxWidth)
        return {};
    if (read.ptr != form.data() + form.size()) {
        const auto rest = std::from_chars(read.ptr + 1, form.data() + form.size(), decimals);
        if (*read.ptr != '.' || rest.ptr != form.data() + form.size() || decimals < 0 || decimals > kMaxWidth)
            return {};
    }
    std::string pattern = std::string("%") + (isPlus ? "+" : "") + (hasZeros ? "0" : "") + "*.*";
    if (type == 'I' || type == 'i') {
        pattern += 'f';
        decimals = 0;
        number = std::round(number);
    } else {
        pattern += type == 'E' || type == 'e' ? 'E' : 'f';
    }
    char buffer[2 * kMaxWidth];
    const int length = std::snprintf(buffer, sizeof buffer, pattern.c_str(), width, decimals, number);
    return length > 0 && static_cast<std::size_t>(length) < sizeof buffer ? std::string(buffer) : std::string();
}

/// A picture (15.10.2): "#" for digits, "." or "," where decimals begin, the other of both between groups; a sign where
/// one stands. Everything else stays as it is.
std::string formatPicture(double number, std::string_view form) {
    const std::size_t lastPoint = form.find_last_of(".,");
    const bool hasDecimals = lastPoint != form.npos && form.find(form[lastPoint]) == lastPoint;
    const std::size_t decimals =
        hasDecimals ? static_cast<std::size_t>(
                          std::count(form.begin() + static_cast<std::ptrdiff_t>(lastPoint), form.end(), '#'))
                    : 0;
    if (form.size() > kMaxWidth)
        return {};
    char digits[2 * kMaxWidth];
    const int length = std::snprintf(digits, sizeof digits, "%.*f", static_cast<int>(decimals), std::abs(number));
    if (length <= 0 || static_cast<std::size_t>(length) >= sizeof digits)
        return {};
    std::string plain(digits, static_cast<std::size_t>(length));
    std::erase(plain, '.');
    std::string result(form);
    std::size_t left = plain.size();
    bool hasSign = false;
    for (std::size_t i = form.size(); i-- > 0;) {
        if (form[i] == '#') {
            result[i] = left > 0 ? plain[--left] : ' ';
        } else if (form[i] == '+' || form[i] == '-') {
            hasSign = true;
            result[i] = number < 0 ? '-' : form[i] == '+' ? '+' : ' ';
        } else if ((form[i] == '.' || form[i] == ',') && left == 0 && !(hasDecimals && i == lastPoint)) {
            result[i] = ' '; // no digits in front of the group
        }
    }
    return left > 0 || (number < 0 && !hasSign) ? std::string() : result;
}

} // namespace

Value Machine::format(const Value& value, const Value& form) {
    if (!value.isNumber() || !form.is(Tag::kString))
        return Value();
    std::string_view how = form.view();
    spend(how.size() / 16);
    if (how.empty()) {
        constexpr std::string_view kWhole = "7I", kReal = "10E";
        how = value.is(Tag::kInteger) ? kWhole : kReal;
    }
    const bool isPicture = how.find('#') != how.npos;
    const std::string result = isPicture ? formatPicture(value.number(), how) : formatSymbolic(value.number(), how);
    return result.empty() ? Value() : text(result);
}

} // namespace vnifc::rules
