// Values of evaluations as values for the public.
#include "Machine.h"

namespace vnifc::rules {

/// The name of an attribute as its entity declares it.
std::string Machine::nameInText(const Constructed& entity, NameId name) const {
    for (std::uint16_t i = 0; i < entity.partCount; ++i) {
        const Attribute* const attribute = m_schema.attribute(entity.parts[i], name);
        if (attribute && attribute->declaration)
            return attribute->declaration->name.text;
    }
    return m_schema.nameOf(name);
}

RuleValue Machine::toPublic(const Value& value, unsigned depth) {
    constexpr unsigned kMaxDepth = 500;
    if (depth > kMaxDepth)
        throw NotEvaluated("a value that is nested deeper than an evaluation may give");
    RuleValue result;
    if (value.type != kNoType)
        result.type = m_schema.named(value.type).name;
    spend(1);
    switch (value.tag) {
    case Tag::kIndeterminate:
        break;
    case Tag::kLogical:
        result.kind = RuleValue::Kind::kLogical;
        result.integer = value.integer;
        break;
    case Tag::kInteger:
        result.kind = RuleValue::Kind::kInteger;
        result.integer = value.integer;
        break;
    case Tag::kReal:
        result.kind = RuleValue::Kind::kReal;
        result.real = value.real;
        break;
    case Tag::kString:
    case Tag::kBinary:
        result.kind = value.is(Tag::kString) ? RuleValue::Kind::kString : RuleValue::Kind::kBinary;
        result.text = value.view();
        break;
    case Tag::kEnumeration:
        result.kind = RuleValue::Kind::kEnumeration;
        result.text = m_schema.nameOf(static_cast<NameId>(value.integer));
        break;
    case Tag::kInstance:
        result.kind = RuleValue::Kind::kInstance;
        result.instance = value.instance->objectId();
        break;
    case Tag::kConstructed: {
        result.kind = RuleValue::Kind::kConstructed;
        const Constructed& entity = *value.constructed;
        for (std::uint16_t i = 0; i < entity.partCount; ++i) {
            if (entity.leaf == kNoType || entity.leaf == entity.parts[i])
                result.type += (result.type.empty() ? "" : "||") + m_schema.named(entity.parts[i]).name;
        }
        for (std::uint16_t i = 0; i < entity.attributeCount; ++i) {
            result.names.push_back(nameInText(entity, entity.attributes[i].name));
            result.items.push_back(toPublic(entity.attributes[i].value, depth + 1));
        }
        break;
    }
    case Tag::kAggregate:
        result.kind = RuleValue::Kind::kAggregate;
        if (value.aggregate->type != kNoType)
            result.type = m_schema.named(value.aggregate->type).name;
        for (std::uint32_t i = 0; i < value.aggregate->count; ++i)
            result.items.push_back(toPublic(element(*value.aggregate, i), depth + 1));
        break;
    }
    return result;
}

} // namespace vnifc::rules
