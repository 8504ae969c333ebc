// What values become where they are assigned (ISO 10303-11, 13.3). Aggregates and entity values are shared until
// somebody changes one in place, who then gets one of his own: instances of the model never change.
#include "Machine.h"

#include <algorithm>

namespace vnifc::rules {

using express::AggregateKind;

void Machine::share(Value& value) noexcept {
    if (value.is(Tag::kAggregate)) {
        if (value.aggregate->owner)
            value.aggregate->owner = nullptr;
    } else if (value.is(Tag::kConstructed) && value.constructed->owner) {
        value.constructed->owner = nullptr;
    }
}

std::int32_t Machine::boundOf(std::int32_t bound, std::int32_t slot) const noexcept {
    if (slot < 0)
        return bound;
    const Value& value = m_bounds[slot];
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max() / 2;
    return value.is(Tag::kInteger) ? static_cast<std::int32_t>(std::clamp(value.integer, -kMost, kMost)) : bound;
}

/// The value as one of that type; indeterminate when it cannot be one.
Value Machine::convert(Value value, TypeId id) {
    const Type& type = m_schema.type(id);
    if (!value.exists())
        return value;
    switch (type.kind) {
    case TypeKind::kUnknown:
    case TypeKind::kSelect:
        return value;
    case TypeKind::kBinary:
        return value.is(Tag::kBinary) ? value : Value();
    case TypeKind::kString:
        return value.is(Tag::kString) ? value : Value();
    case TypeKind::kBoolean:
        return value.is(Tag::kLogical) && value.integer != kUnknown ? value : Value();
    case TypeKind::kLogical:
        return value.is(Tag::kLogical) ? value : Value();
    case TypeKind::kInteger:
        return value.is(Tag::kInteger) ? value : Value();
    case TypeKind::kNumber:
        return value.isNumber() ? value : Value();
    case TypeKind::kReal:
        if (value.is(Tag::kInteger)) {
            Value real = Value::of(static_cast<double>(value.integer));
            real.type = value.type;
            return real;
        }
        return value.is(Tag::kReal) ? value : Value();
    case TypeKind::kEntity:
        return value.isEntity() && isOf(value, type.name) ? value : Value();
    case TypeKind::kEnumeration: {
        if (!value.is(Tag::kEnumeration))
            return Value();
        const std::vector<NameId>& literals = m_schema.named(type.name).literals;
        const auto found = std::ranges::find(literals, static_cast<NameId>(value.integer));
        if (found == literals.end())
            return Value();
        value.type = type.name;
        value.length = static_cast<std::uint32_t>(found - literals.begin());
        return value;
    }
    case TypeKind::kDefined: {
        Value inner = convert(value, type.inner);
        if (!inner.exists() || inner.isEntity())
            return inner;
        if (inner.is(Tag::kAggregate)) {
            if (inner.aggregate->type != type.name) {
                Aggregate* const named = m_arena.make<Aggregate>();
                *named = *inner.aggregate;
                named->owner = nullptr;
                named->type = type.name;
                inner = Value::of(named);
            }
        } else if (inner.type == kNoType || !m_schema.isOf(inner.type, type.name)) {
            inner.type = type.name;
        }
        return inner;
    }
    case TypeKind::kAggregate:
        return value.is(Tag::kAggregate) ? convertAggregate(value, type) : Value();
    }
    return value;
}

Value Machine::convertAggregate(const Value& value, const Type& type) {
    const Aggregate& source = *value.aggregate;
    if (type.isGeneral || (source.kind == type.aggregate && !source.isInitializer && !source.isArray()))
        return value;
    const std::int32_t lower = boundOf(type.lower, type.lowerSlot);
    const std::int32_t upper = boundOf(type.upper, type.upperSlot);
    if (source.kind == type.aggregate && !source.isInitializer && source.lower == lower)
        return value;
    spend(source.count);
    std::uint32_t size = source.count;
    if (type.aggregate == AggregateKind::kArray && upper != kOpenBound)
        size = static_cast<std::uint32_t>(
            std::clamp<std::int64_t>(std::int64_t{upper} - lower + 1, size, std::numeric_limits<std::uint32_t>::max()));
    Aggregate* const result = makeAggregate(type.aggregate, size);
    result->lower = lower;
    result->upper = upper;
    result->element = type.inner;
    for (std::uint32_t i = 0; i < source.count; ++i) {
        const Value each = element(source, i);
        const Value converted = source.isInitializer ? convert(each, type.inner) : each;
        type.aggregate == AggregateKind::kSet ? add(*result, converted) : append(*result, converted);
    }
    while (type.aggregate == AggregateKind::kArray && result->count < size)
        append(*result, Value());
    return Value::of(result);
}

/// The aggregate of a place, as one that nobody else has.
Aggregate* Machine::ownAggregate(Value& place) {
    Aggregate& held = *place.aggregate;
    if (held.owner == &place && held.source == Aggregate::Source::kValues)
        return &held;
    spend(held.count);
    Aggregate* const own = makeAggregate(held.kind, held.count);
    own->type = held.type;
    own->element = held.element;
    own->lower = held.lower;
    own->upper = held.upper;
    for (std::uint32_t i = 0; i < held.count; ++i) {
        Value each = element(held, i);
        append(*own, each);
    }
    own->owner = &place;
    place = Value::of(own);
    return own;
}

Value* Machine::attributeSlot(Value& of, NameId name, TypeId& type) {
    if (!of.isEntity())
        return nullptr;
    const TypeIndex leaf = leafOf(of);
    if (of.is(Tag::kInstance) || of.constructed->owner != &of) {
        Constructed* const own = m_arena.make<Constructed>();
        if (of.is(Tag::kInstance)) {
            const std::vector<const Attribute*>& attributes = m_schema.explicitOf(leaf);
            auto* const parts = m_arena.make<TypeIndex>();
            *parts = leaf;
            own->leaf = leaf;
            own->parts = parts;
            own->partCount = 1;
            own->attributes = m_arena.array<Constructed::Attribute>(attributes.size());
            for (const Attribute* each : attributes)
                own->attributes[own->attributeCount++] = {each->name, load(*of.instance, *each)};
        } else {
            *own = *of.constructed;
            own->attributes = m_arena.array<Constructed::Attribute>(own->attributeCount);
            std::copy_n(of.constructed->attributes, own->attributeCount, own->attributes);
        }
        own->owner = &of;
        of = Value::of(own);
    }
    for (std::uint16_t i = 0; i < of.constructed->attributeCount; ++i) {
        Constructed::Attribute& each = of.constructed->attributes[i];
        if (each.name != name)
            continue;
        type = 0;
        for (std::uint16_t part = 0; part < of.constructed->partCount; ++part) {
            if (const Attribute* const attribute = m_schema.attribute(of.constructed->parts[part], name))
                type = attribute->type;
        }
        return &each.value;
    }
    return nullptr;
}

Value* Machine::elementSlot(Value& of, const Value& index, TypeId& type) {
    const Type declared = m_schema.underlying(type);
    if (!of.exists() && declared.kind == TypeKind::kAggregate) {
        // A variable that has no value yet becomes an aggregate with its first element.
        of = Value::of(makeAggregate(declared.aggregate, 0));
        of.aggregate->isInitializer = declared.aggregate == AggregateKind::kArray;
        of = convert(of, type);
    }
    if (!of.is(Tag::kAggregate) || !index.is(Tag::kInteger))
        return nullptr;
    Aggregate* const own = ownAggregate(of);
    if (type == 0 || declared.kind != TypeKind::kAggregate)
        type = own->element;
    else
        type = declared.inner;
    const std::int64_t position = index.integer - own->first();
    if (position == own->count && own->kind == AggregateKind::kList)
        append(*own, Value());
    if (position < 0 || position >= own->count)
        return nullptr;
    return own->values() + position;
}

/// Where an assignment goes; null when there is no such place.
Value* Machine::target(const Path& path, const Value* indices, TypeId& type) {
    m_bounds = slotAt(path.levels, 0);
    Value* place = slotAt(path.levels, path.slot);
    type = path.variable;
    for (const Path::Step& step : path.steps) {
        switch (step.kind) {
        case Path::Step::Kind::kAttribute:
            place = attributeSlot(*place, step.id, type);
            break;
        case Path::Step::Kind::kGroup:
            if (!place->isEntity() || !isOf(*place, step.id))
                return nullptr;
            break;
        case Path::Step::Kind::kIndex:
            place = elementSlot(*place, *indices++, type);
            break;
        }
        if (!place)
            return nullptr;
    }
    return place;
}

void Machine::assign(const Path& path, const Value* indices, const Value& value) {
    TypeId type = 0;
    Value shared = value;
    share(shared);
    if (Value* const place = target(path, indices, type))
        *place = type == 0 ? shared : convert(shared, type);
    else
        throw NotEvaluated("an assignment to what is not there");
}

/// INSERT (16.1): the operands are indices, element and position.
void Machine::insert(const Path& path, const Value* operands) {
    TypeId type = 0;
    Value* const place = target(path, operands, type);
    Value added = operands[path.indices];
    const Value& position = operands[path.indices + 1];
    if (!place || !place->is(Tag::kAggregate) || !position.is(Tag::kInteger))
        throw NotEvaluated("INSERT into what is no list");
    Aggregate* const list = ownAggregate(*place);
    if (position.integer < 0 || position.integer > list->count)
        throw NotEvaluated("INSERT past the end of a list");
    share(added);
    spend(list->count);
    append(*list, added);
    Value* const values = list->values();
    std::rotate(values + position.integer, values + list->count - 1, values + list->count);
}

/// REMOVE (16.2): the operands are indices and position.
void Machine::remove(const Path& path, const Value* operands) {
    TypeId type = 0;
    Value* const place = target(path, operands, type);
    const Value& position = operands[path.indices];
    if (!place || !place->is(Tag::kAggregate) || !position.is(Tag::kInteger))
        throw NotEvaluated("REMOVE from what is no list");
    Aggregate* const list = ownAggregate(*place);
    if (position.integer < 1 || position.integer > list->count)
        throw NotEvaluated("REMOVE past the end of a list");
    spend(list->count);
    Value* const values = list->values();
    std::copy(values + position.integer, values + list->count, values + position.integer - 1);
    --list->count;
}

} // namespace vnifc::rules
