// Operators (ISO 10303-11, clause 12).
#include "Machine.h"

#include <algorithm>
#include <cmath>

namespace vnifc::rules {

using express::AggregateKind;
using express::Operator;

namespace {

Truth negation(Truth truth) noexcept { return static_cast<Truth>(kTrue - truth); }
Truth truthOf(bool holds) noexcept { return holds ? kTrue : kFalse; }

bool ordered(Operator op, int order) noexcept {
    switch (op) {
    case Operator::kEqual:
        return order == 0;
    case Operator::kUnequal:
        return order != 0;
    case Operator::kLess:
        return order < 0;
    case Operator::kLessOrEqual:
        return order <= 0;
    case Operator::kGreater:
        return order > 0;
    default:
        return order >= 0;
    }
}

int orderOf(double left, double right) noexcept { return left < right ? -1 : left > right ? 1 : 0; }
int orderOf(std::int64_t left, std::int64_t right) noexcept { return left < right ? -1 : left > right ? 1 : 0; }

bool isLetter(char c) noexcept { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// Bytes of the character of UTF-8 at the beginning of a text.
std::size_t characterAt(std::string_view text) noexcept {
    std::size_t length = 1;
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
        ++length;
    return length;
}

/// LIKE (12.2.5). Backs up to the last "*" only, so that time is bounded by the product of the lengths.
class Pattern {
public:
    Pattern(std::string_view text, std::string_view pattern) noexcept : m_text(text), m_pattern(pattern) {}

    bool matches() noexcept {
        std::size_t starPattern = std::string_view::npos, starText = 0;
        while (m_t < m_text.size() || m_p < m_pattern.size()) {
            if (m_p < m_pattern.size() && m_pattern[m_p] == '&')
                return true;
            if (m_p < m_pattern.size() && m_pattern[m_p] == '*') {
                starPattern = ++m_p;
                starText = m_t;
                continue;
            }
            if (m_p < m_pattern.size() && m_pattern[m_p] == '$') {
                takeWord();
                continue;
            }
            if (m_p < m_pattern.size() && m_t < m_text.size() && takeOne())
                continue;
            if (starPattern == std::string_view::npos || starText >= m_text.size())
                return false;
            starText += characterAt(m_text.substr(starText));
            m_t = starText;
            m_p = starPattern;
        }
        return true;
    }

private:
    /// "$": what stands up to a space or the end.
    void takeWord() noexcept {
        ++m_p;
        while (m_t < m_text.size() && m_text[m_t] != ' ')
            ++m_t;
    }

    bool takeOne() noexcept {
        std::size_t p = m_p;
        const bool isNot = m_pattern[p] == '!' && p + 1 < m_pattern.size();
        p += isNot ? 1 : 0;
        const char c = m_text[m_t];
        const std::size_t length = characterAt(m_text.substr(m_t));
        bool holds = false;
        std::size_t patternLength = 1;
        switch (m_pattern[p]) {
        case '@':
            holds = isLetter(c);
            break;
        case '^':
            holds = c >= 'A' && c <= 'Z';
            break;
        case '?':
            holds = true;
            break;
        case '#':
            holds = c >= '0' && c <= '9';
            break;
        default:
            p += m_pattern[p] == '\\' && p + 1 < m_pattern.size() ? 1 : 0;
            patternLength = characterAt(m_pattern.substr(p));
            holds = m_text.substr(m_t, length) == m_pattern.substr(p, patternLength);
            break;
        }
        if (holds == isNot)
            return false;
        m_t += length;
        m_p = p + patternLength;
        return true;
    }

    std::string_view m_text;
    std::string_view m_pattern;
    std::size_t m_t = 0;
    std::size_t m_p = 0;
};

} // namespace

Value Machine::negate(const Value& value) const noexcept {
    if (value.is(Tag::kInteger) && value.integer != std::numeric_limits<std::int64_t>::min())
        return Value::of(-value.integer);
    return value.is(Tag::kReal) ? Value::of(-value.real) : Value();
}

Value Machine::binary(Operator op, const Value& left, const Value& right) {
    switch (op) {
    case Operator::kAnd:
        return Value::of(std::min(left.truth(), right.truth()));
    case Operator::kOr:
        return Value::of(std::max(left.truth(), right.truth()));
    case Operator::kXor: {
        const Truth a = left.truth(), b = right.truth();
        return Value::of(a == kUnknown || b == kUnknown ? kUnknown : truthOf(a != b));
    }
    case Operator::kEqual:
        return Value::of(equal(left, right, false));
    case Operator::kUnequal:
        return Value::of(negation(equal(left, right, false)));
    case Operator::kSame:
        return Value::of(equal(left, right, true));
    case Operator::kNotSame:
        return Value::of(negation(equal(left, right, true)));
    case Operator::kLess:
    case Operator::kLessOrEqual:
    case Operator::kGreater:
    case Operator::kGreaterOrEqual:
        return Value::of(compare(op, left, right));
    case Operator::kIn:
        return Value::of(isIn(left, right));
    case Operator::kLike:
        if (!left.is(Tag::kString) || !right.is(Tag::kString))
            return Value::of(kUnknown);
        spend(1 + left.length * std::uint64_t{right.length} / 8);
        return Value::of(Pattern(left.view(), right.view()).matches());
    case Operator::kConcatenate:
        return join(left, right);
    default:
        break;
    }
    if (!left.exists() || !right.exists())
        return Value();
    if (left.is(Tag::kAggregate) || right.is(Tag::kAggregate))
        return aggregateOperation(op, left, right);
    if (op == Operator::kPlus && left.tag == right.tag && (left.is(Tag::kString) || left.is(Tag::kBinary)))
        return concatenate(left, right);
    return left.isNumber() && right.isNumber() ? arithmetic(op, left, right) : Value();
}

Value Machine::concatenate(const Value& left, const Value& right) {
    const std::uint64_t length = std::uint64_t{left.length} + right.length;
    if (length > std::numeric_limits<std::uint32_t>::max())
        throw NotEvaluated("a text that is too long");
    spend(length / 64);
    char* const memory = m_arena.array<char>(length);
    left.view().copy(memory, left.length);
    right.view().copy(memory + left.length, right.length);
    Value result = Value::of(std::string_view(memory, length));
    result.tag = left.tag;
    return result;
}

namespace {

Value integerArithmetic(Operator op, std::int64_t left, std::int64_t right) noexcept {
    std::int64_t result = 0;
    bool isLost = false;
    switch (op) {
    case Operator::kPlus:
        isLost = __builtin_add_overflow(left, right, &result);
        break;
    case Operator::kMinus:
        isLost = __builtin_sub_overflow(left, right, &result);
        break;
    case Operator::kMultiply:
        isLost = __builtin_mul_overflow(left, right, &result);
        break;
    case Operator::kIntegerDivide:
    case Operator::kModulo: {
        constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
        if (right == 0 || left == kLeast || right == kLeast)
            return Value();
        // 0 <= a MOD b < |b|, whatever the signs are (12.1).
        return Value::of(op == Operator::kIntegerDivide ? left / right : std::abs(left) % std::abs(right));
    }
    case Operator::kPower: {
        if (right < 0)
            return Value::of(std::pow(static_cast<double>(left), static_cast<double>(right)));
        result = 1;
        for (std::int64_t base = left; right > 0 && !isLost; right >>= 1) {
            if (right & 1)
                isLost = __builtin_mul_overflow(result, base, &result);
            if (right > 1)
                isLost = __builtin_mul_overflow(base, base, &base) || isLost;
        }
        break;
    }
    default:
        return Value();
    }
    return isLost ? Value() : Value::of(result);
}

} // namespace

Value Machine::arithmetic(Operator op, const Value& left, const Value& right) {
    if (op == Operator::kDivide)
        return Value::of(left.number() / right.number());
    if (op == Operator::kIntegerDivide || op == Operator::kModulo) {
        constexpr double kMost = 9.0e18;
        if (std::abs(left.number()) > kMost || std::abs(right.number()) > kMost)
            return Value();
        const auto whole = [](const Value& value) {
            return value.is(Tag::kInteger) ? value.integer : static_cast<std::int64_t>(value.real);
        };
        return integerArithmetic(op, whole(left), whole(right));
    }
    if (left.is(Tag::kInteger) && right.is(Tag::kInteger))
        return integerArithmetic(op, left.integer, right.integer);
    const double a = left.number(), b = right.number();
    switch (op) {
    case Operator::kPlus:
        return Value::of(a + b);
    case Operator::kMinus:
        return Value::of(a - b);
    case Operator::kMultiply:
        return Value::of(a * b);
    case Operator::kPower:
        return Value::of(std::pow(a, b));
    default:
        return Value();
    }
}

Truth Machine::compare(Operator op, const Value& left, const Value& right) {
    if (!left.exists() || !right.exists())
        return kUnknown;
    if (left.isNumber() && right.isNumber()) {
        const bool areWhole = left.is(Tag::kInteger) && right.is(Tag::kInteger);
        return truthOf(
            ordered(op, areWhole ? orderOf(left.integer, right.integer) : orderOf(left.number(), right.number())));
    }
    if (left.tag != right.tag)
        return kUnknown;
    switch (left.tag) {
    case Tag::kString:
    case Tag::kBinary:
        spend(std::min(left.length, right.length) / 64);
        return truthOf(ordered(op, left.view().compare(right.view())));
    case Tag::kLogical:
        return truthOf(ordered(op, orderOf(left.integer, right.integer)));
    case Tag::kEnumeration: {
        // A literal that several enumerations have takes the one of the other side.
        const Value a =
            left.type == kNoType && right.type != kNoType ? convert(left, m_schema.named(right.type).type) : left;
        const Value b =
            right.type == kNoType && left.type != kNoType ? convert(right, m_schema.named(left.type).type) : right;
        if (a.type != b.type || a.type == kNoType)
            return kUnknown;
        return truthOf(ordered(op, orderOf(std::int64_t{a.length}, std::int64_t{b.length})));
    }
    case Tag::kAggregate:
        if (op == Operator::kLessOrEqual)
            return isSubset(left, right);
        return op == Operator::kGreaterOrEqual ? isSubset(right, left) : kUnknown;
    default:
        return kUnknown;
    }
}

Truth Machine::equal(const Value& left, const Value& right, bool asInstances) {
    if (!left.exists() || !right.exists())
        return kUnknown;
    if (left.isNumber() && right.isNumber()) {
        const bool areWhole = left.is(Tag::kInteger) && right.is(Tag::kInteger);
        return truthOf(areWhole ? left.integer == right.integer : left.number() == right.number());
    }
    if (left.isEntity() && right.isEntity()) {
        const bool areSame = left.tag == right.tag && left.instance == right.instance;
        return areSame ? kTrue : asInstances ? kFalse : equalEntities(left, right);
    }
    if (left.tag != right.tag)
        return kFalse;
    switch (left.tag) {
    case Tag::kString:
    case Tag::kBinary:
        if (left.length != right.length)
            return kFalse;
        spend(left.length / 64);
        return truthOf(left.view() == right.view());
    case Tag::kLogical:
    case Tag::kEnumeration:
        return truthOf(left.integer == right.integer);
    case Tag::kAggregate:
        return equalAggregates(*left.aggregate, *right.aggregate, asInstances);
    default:
        return kUnknown;
    }
}

namespace {

/// Aggregates hold aggregates, and entities entities; this deep, and no deeper.
constexpr std::size_t kMaxCompared = 500;

} // namespace

Truth Machine::equalAggregates(const Aggregate& left, const Aggregate& right, bool asInstances) {
    if (&left == &right && (left.isOfTypes || left.source == Aggregate::Source::kHandles))
        return kTrue;
    if (left.count != right.count)
        return kFalse;
    if (left.isArray() && right.isArray() && left.lower != right.lower)
        return kFalse;
    if (m_compared.size() >= kMaxCompared)
        throw NotEvaluated("values that are nested deeper than an evaluation may compare");
    m_compared.emplace_back(nullptr, nullptr);
    Truth result = kTrue;
    if (left.isUnordered() || right.isUnordered()) {
        result = hasEach(left, right, asInstances, true);
    } else {
        spend(left.count);
        for (std::uint32_t i = 0; i < left.count && result != kFalse; ++i)
            result = std::min(result, equal(element(left, i), element(right, i), asInstances));
    }
    m_compared.pop_back();
    return result;
}

/// Each element of the one is in the other; with `eachItsOwn`, which two of the same size are equal by (12.2.1.5,
/// 12.2.1.6), an element there counts for one here only.
Truth Machine::hasEach(const Aggregate& left, const Aggregate& right, bool asInstances, bool eachItsOwn) {
    std::vector<bool> isTaken(right.count);
    bool isUnknown = false;
    for (std::uint32_t i = 0; i < left.count; ++i) {
        const Value each = element(left, i);
        bool isFound = false, mayBe = false;
        spend(right.count + 1);
        for (std::uint32_t j = 0; j < right.count && !isFound; ++j) {
            if (isTaken[j])
                continue;
            const Truth truth = equal(each, element(right, j), asInstances);
            isFound = truth == kTrue;
            mayBe |= truth == kUnknown;
            isTaken[j] = isFound && eachItsOwn;
        }
        if (!isFound && !mayBe)
            return kFalse;
        isUnknown |= !isFound;
    }
    return isUnknown ? kUnknown : kTrue;
}

TypeIndex Machine::leafOf(const Value& entity) const noexcept {
    return entity.is(Tag::kInstance) ? entity.type : entity.constructed->leaf;
}

Value Machine::valueOfAttribute(const Value& entity, const Attribute& attribute) {
    if (entity.is(Tag::kInstance))
        return load(*entity.instance, attribute);
    const Value* const held = entity.constructed->find(attribute.name);
    return held ? *held : Value();
}

/// Attribute by attribute (12.2.1.7). What is compared already, further out, is taken for equal: values that refer to
/// each other in a circle are different only if something else in them is.
Truth Machine::equalEntities(const Value& left, const Value& right) {
    const TypeIndex leaf = leafOf(left);
    if (leaf != leafOf(right) || leaf == kNoType)
        return kFalse;
    const std::pair<const void*, const void*> pair(left.instance, right.instance);
    spend(m_compared.size() / 16);
    if (std::ranges::find(m_compared, pair) != m_compared.end())
        return kTrue;
    if (m_compared.size() >= kMaxCompared)
        throw NotEvaluated("instances that are nested deeper than an evaluation may compare");
    m_compared.push_back(pair);
    Truth result = kTrue;
    for (const Attribute* each : m_schema.explicitOf(leaf)) {
        spend(1);
        const Value a = valueOfAttribute(left, *each), b = valueOfAttribute(right, *each);
        const Truth truth = equal(a, b, false);
        result = std::min(result, truth);
        if (result == kFalse)
            break;
    }
    m_compared.pop_back();
    return result;
}

/// IN (12.2.3).
Truth Machine::isIn(const Value& value, const Value& aggregate) {
    if (!value.exists() || !aggregate.is(Tag::kAggregate))
        return kUnknown;
    Truth result = kFalse;
    spend(aggregate.aggregate->count);
    for (std::uint32_t i = 0; i < aggregate.aggregate->count; ++i) {
        const Truth truth = equal(element(*aggregate.aggregate, i), value, true);
        if (truth == kTrue)
            return kTrue;
        result = std::max(result, truth);
    }
    return result;
}

/// "<=" (12.6.5): of a BAG, each element as often at least.
Truth Machine::isSubset(const Value& part, const Value& whole) {
    const Aggregate& left = *part.aggregate;
    const Aggregate& right = *whole.aggregate;
    const bool isBag = left.kind == AggregateKind::kBag && right.kind == AggregateKind::kBag;
    return hasEach(left, right, true, isBag);
}

Value Machine::interval(const Value& low, const Value& item, const Value& high, std::uint8_t flags) {
    const Truth first = compare((flags & 1) != 0 ? Operator::kLessOrEqual : Operator::kLess, low, item);
    const Truth second = compare((flags & 2) != 0 ? Operator::kLessOrEqual : Operator::kLess, item, high);
    return Value::of(std::min(first, second));
}

namespace {

/// Where characters from..to, from 1, stand in a text; false when it has fewer.
bool findCharacters(std::string_view text, std::int64_t from, std::int64_t to, std::size_t& begin, std::size_t& end) {
    std::int64_t number = 0;
    begin = text.size();
    for (std::size_t offset = 0; offset < text.size();) {
        const std::size_t length = characterAt(text.substr(offset));
        ++number;
        if (number == from)
            begin = offset;
        offset += length;
        if (number == to) {
            end = offset;
            return true;
        }
    }
    return false;
}

} // namespace

Value Machine::range(const Value& of, const Value& first, const Value& last) {
    const bool isText = of.is(Tag::kString) || of.is(Tag::kBinary);
    if (!isText || !first.is(Tag::kInteger) || !last.is(Tag::kInteger) || first.integer < 1 ||
        last.integer < first.integer)
        return Value();
    std::size_t begin = 0, end = 0;
    spend(of.length / 16);
    if (!findCharacters(of.view(), first.integer, last.integer, begin, end))
        return Value();
    Value result = Value::of(of.view().substr(begin, end - begin));
    result.tag = of.tag;
    return result;
}

Value Machine::indexed(const Value& of, const Value& index) {
    if (!of.is(Tag::kAggregate))
        return range(of, index, index);
    if (!index.is(Tag::kInteger))
        return Value();
    const std::int64_t position = index.integer - of.aggregate->first();
    if (index.integer < of.aggregate->first() || position >= of.aggregate->count)
        return Value();
    Value result = element(*of.aggregate, static_cast<std::uint32_t>(position));
    share(result);
    return result;
}

} // namespace vnifc::rules
