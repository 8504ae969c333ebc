// Aggregate values: how they grow, initializers (ISO 10303-11, 12.9), and the algebra of sets, bags and lists (12.6).
#include "Machine.h"

#include <algorithm>

namespace vnifc::rules {

using express::AggregateKind;
using express::Operator;

Aggregate* Machine::makeAggregate(AggregateKind kind, std::uint32_t capacity) {
    Aggregate* const result = m_arena.make<Aggregate>();
    result->kind = kind;
    result->capacity = capacity;
    result->data = m_arena.array<Value>(capacity);
    return result;
}

void Machine::append(Aggregate& aggregate, const Value& value) {
    if (aggregate.count == aggregate.capacity) {
        constexpr std::uint32_t kFirst = 4;
        const std::uint32_t capacity = std::max(kFirst, 2 * aggregate.capacity);
        auto* const values = m_arena.array<Value>(capacity);
        std::copy_n(aggregate.values(), aggregate.count, values);
        aggregate.data = values;
        aggregate.capacity = capacity;
    }
    aggregate.values()[aggregate.count++] = value;
}

bool Machine::contains(const Aggregate& aggregate, const Value& value) {
    spend(aggregate.count);
    for (std::uint32_t i = 0; i < aggregate.count; ++i) {
        if (equal(element(aggregate, i), value, true) == kTrue)
            return true;
    }
    return false;
}

void Machine::add(Aggregate& aggregate, const Value& value) {
    if (aggregate.kind != AggregateKind::kSet || !contains(aggregate, value))
        append(aggregate, value);
}

Value Machine::initializer(const Value* elements, std::uint32_t count, bool isRepeated) {
    Aggregate* const result = makeAggregate(AggregateKind::kList, count);
    result->isInitializer = true;
    for (std::uint32_t i = 0; i < count; ++i) {
        Value each = elements[isRepeated ? 2 * i : i];
        share(each);
        const Value& times = elements[2 * i + 1];
        if (!isRepeated) {
            append(*result, each);
            continue;
        }
        if (!times.is(Tag::kInteger) || times.integer < 0)
            return Value();
        spend(static_cast<std::uint64_t>(times.integer));
        for (std::int64_t n = 0; n < times.integer; ++n)
            append(*result, each);
    }
    return Value::of(result);
}

/// "+" (12.6.3): of two aggregates, or of one and an element.
Value Machine::unite(const Value& left, const Value& right) {
    const bool hasLeft = left.is(Tag::kAggregate), hasRight = right.is(Tag::kAggregate);
    const Aggregate& first = hasLeft ? *left.aggregate : *right.aggregate;
    // An aggregate of aggregates takes another one of its elements' kind as an element.
    const bool isElement = hasLeft && hasRight && !right.aggregate->isInitializer && !first.isInitializer &&
                           m_schema.underlying(first.element).kind == TypeKind::kAggregate &&
                           m_schema.underlying(right.aggregate->element).kind != TypeKind::kAggregate &&
                           right.aggregate->element != 0;
    const Aggregate& lead = first.isInitializer && hasRight ? *right.aggregate : first;
    if (lead.isArray())
        return Value();
    spend(first.count);
    Aggregate* const result = makeAggregate(lead.kind, first.count + 1);
    result->element = lead.element;
    result->isInitializer = lead.isInitializer;
    const auto addAll = [&](const Value& from) {
        spend(from.aggregate->count);
        for (std::uint32_t i = 0; i < from.aggregate->count; ++i)
            add(*result, element(*from.aggregate, i));
    };
    hasLeft ? addAll(left) : add(*result, left);
    hasRight && !isElement ? addAll(right) : add(*result, right);
    return Value::of(result);
}

/// "*" (12.6.2). What a BAG holds several times is in the result as often as in the one that has fewer.
Value Machine::intersect(const Aggregate& left, const Aggregate& right) {
    const bool isBag = left.kind == AggregateKind::kBag && right.kind == AggregateKind::kBag;
    Aggregate* const result = makeAggregate(isBag ? AggregateKind::kBag : AggregateKind::kSet, 0);
    result->element = left.element != 0 ? left.element : right.element;
    std::vector<bool> isTaken(right.count);
    for (std::uint32_t i = 0; i < left.count; ++i) {
        const Value each = element(left, i);
        spend(right.count + 1);
        for (std::uint32_t j = 0; j < right.count; ++j) {
            if (isTaken[j] || equal(each, element(right, j), true) != kTrue)
                continue;
            isTaken[j] = isBag;
            add(*result, each);
            break;
        }
    }
    return Value::of(result);
}

/// "-" (12.6.4), of an aggregate or an element.
Value Machine::subtract(const Aggregate& left, const Value& right) {
    Aggregate* const result = makeAggregate(left.kind, left.count);
    result->element = left.element;
    const std::uint32_t count = right.is(Tag::kAggregate) ? right.aggregate->count : 1;
    std::vector<bool> isTaken(count);
    for (std::uint32_t i = 0; i < left.count; ++i) {
        const Value each = element(left, i);
        bool isGone = false;
        spend(count + 1);
        for (std::uint32_t j = 0; j < count && !isGone; ++j) {
            const Value other = right.is(Tag::kAggregate) ? element(*right.aggregate, j) : right;
            isGone = !isTaken[j] && equal(each, other, true) == kTrue;
            isTaken[j] = isTaken[j] || (isGone && left.kind == AggregateKind::kBag);
        }
        if (!isGone)
            append(*result, each);
    }
    return Value::of(result);
}

Value Machine::aggregateOperation(Operator op, const Value& left, const Value& right) {
    if (op == Operator::kPlus)
        return unite(left, right);
    if (op == Operator::kMultiply && left.is(Tag::kAggregate) && right.is(Tag::kAggregate))
        return intersect(*left.aggregate, *right.aggregate);
    if (op == Operator::kMinus && left.is(Tag::kAggregate))
        return subtract(*left.aggregate, right);
    return Value();
}

} // namespace vnifc::rules
