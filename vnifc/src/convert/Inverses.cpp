#include "Conversion.h"

#include <algorithm>
#include <utility>

// What the target demands of the instances that refer to an instance: at most one, or at least one.
namespace vnifc::conversion {

using namespace VN_SDAI;

namespace {

constexpr std::string_view kOnlyOne = "the release allows one such reference to an instance";
constexpr std::string_view kUnreferred = "the release demands that something refers to it, and nothing does";

bool isSingle(const typed::InverseRow& inverse) noexcept {
    return inverse.attribute.kind == typed::AttributeKind::kReference || inverse.upper == 1;
}

/// True when the entity, if there is one, has such an inverse attribute, for one instance as well. It may have another
/// name, or count instances of a supertype too.
bool hasSingle(const EntityType* entity, const typed::InverseRow& inverse) noexcept {
    for (; entity; entity = entity->supertype())
        for (const typed::InverseRow& each : entity->entityClass()->inverses)
            if (isSingle(each) && vnEqualNoCase(each.inverted, inverse.inverted) &&
                (vnEqualNoCase(each.attribute.typeText, inverse.attribute.typeText) ||
                 vnEqualNoCase(each.attribute.name, inverse.attribute.name)))
                return true;
    return false;
}

bool demandsOne(const typed::InverseRow& inverse) noexcept {
    const bool isBare = inverse.lower == typed::kUnset;
    return isBare ? inverse.attribute.kind == typed::AttributeKind::kReference : inverse.lower > 0;
}

/// True when the source demands the same of the entity.
bool hasDemand(const EntityType* entity, const typed::InverseRow& inverse) noexcept {
    for (; entity; entity = entity->supertype())
        for (const typed::InverseRow& each : entity->entityClass()->inverses)
            if (vnEqualNoCase(each.attribute.name, inverse.attribute.name))
                return demandsOne(each);
    return false;
}

} // namespace

/// Inverse attributes of the target that at most one instance may fill by this attribute, where the source allows more.
const std::vector<Conversion::Limit>& Conversion::limitsOf(const EntityType& entity, std::string_view attribute) {
    const auto [place, isNew] = m_limits.try_emplace({&entity, std::string(attribute)});
    if (!isNew)
        return place->second;
    for (std::size_t i = 0; i < m_target.schema().entityCount(); ++i) {
        const EntityType& owner = *m_target.schema().entityAt(i);
        for (const typed::InverseRow& inverse : owner.entityClass()->inverses)
            if (isSingle(inverse) && vnEqualNoCase(inverse.inverted, attribute) &&
                isNamed(entity, inverse.attribute.typeText) && !hasSingle(m_source.entity(nameOf(owner)), inverse))
                place->second.push_back({&inverse, &owner});
    }
    return place->second;
}

/// Takes out references to instances that another one claimed before, where only one may; or puts a new instance that
/// says the same in their place.
void Conversion::limit(const EntityType& entity, std::string_view attribute, Value& value) {
    for (const Limit& each : limitsOf(entity, attribute)) {
        const auto isTaken = [&](const Value& item) {
            const EntityType* type = item.is(Value::Kind::kReference) ? typeInTarget(item.number) : nullptr;
            if (!type || !type->isKindOf(each.owner))
                return false;
            std::uint64_t& claim = m_claims.try_emplace({each.inverse, item.number}, m_record->number).first->second;
            if (m_gone.contains(claim))
                claim = m_record->number;
            return claim != m_record->number;
        };
        if (value.is(Value::Kind::kList)) {
            for (Value& item : value.items) {
                const Value before = item;
                if (!isTaken(item))
                    continue;
                item = copyFor(before, *typeInTarget(before.number));
                if (!item.isSet())
                    tellPartLost(before, kOnlyOne);
            }
            std::erase_if(value.items, [](const Value& item) { return !item.isSet(); });
        } else if (isTaken(value)) {
            m_reasonLost = kOnlyOne;
            value = copyFor(value, *typeInTarget(value.number));
        }
    }
}

/// A new instance that says the same as one that may be referred to once; unset when there is no line for it.
Value Conversion::copyFor(const Value& value, const EntityType& type) {
    for (const CopyCase& each : copyCases()) {
        if (!isNamed(type, each.entity) || m_depth == kDeepest)
            continue;
        const Value outer = std::exchange(m_value, value);
        ++m_depth;
        const Value made = make(each.value);
        --m_depth;
        m_value = outer;
        if (!made.isSet())
            return {};
        tell(ConvertKind::kChangedValue, m_attribute, shown(value), shown(made), kOnlyOne);
        return made;
    }
    return {};
}

/// An attribute of the instance that is copied, without what is lost, and with copies of what one may refer to.
Value Conversion::copiedAttribute(std::string_view attribute) {
    Value value = record(m_value)[attribute];
    std::erase_if(value.items,
                  [&](const Value& item) { return item.is(Value::Kind::kReference) && !typeInTarget(item.number); });
    if (!value.isSet() || (value.is(Value::Kind::kList) && value.items.empty()))
        return {};
    for (Value& item : value.items) {
        const Value copy = item.is(Value::Kind::kReference) ? copyFor(item, *typeInTarget(item.number)) : Value();
        item = copy.isSet() ? copy : item;
    }
    return value.is(Value::Kind::kReference) && !typeInTarget(value.number) ? Value() : value;
}

/// The element that an instance is part of by nesting or aggregation; unset when that is gone or there is none.
Value Conversion::wholeOf(std::uint64_t number) {
    if (!m_hasWholes) {
        m_hasWholes = true;
        for (const std::string_view relationship : {"IfcRelNests", "IfcRelAggregates"})
            for (const std::uint64_t each : instancesOf(relationship)) {
                const Record relation = record(each);
                forEachReference(relation["RelatedObjects"], [&](std::uint64_t member) {
                    const std::uint64_t whole = relation["RelatingObject"].number;
                    const EntityType* type = typeInTarget(whole);
                    if (type && isNamed(*type, "IfcElement"))
                        m_wholes.emplace(member, whole);
                });
            }
    }
    const auto found = m_wholes.find(number);
    return found != m_wholes.end() && typeInTarget(found->second) ? Value::reference(found->second) : Value();
}

/// The numbers that instances of that entity refer to by the attribute, in the source or in what the target will read.
std::unordered_set<std::uint64_t> Conversion::referredBy(const typed::InverseRow& inverse, bool inSource) {
    std::unordered_set<std::uint64_t> numbers;
    const auto look = [&](Release& release, const EntityType* type, std::string_view parameters) {
        if (!type || !isNamed(*type, inverse.attribute.typeText))
            return;
        const std::size_t position = release.layout(*type).find(inverse.inverted);
        Values values;
        if (position != Layout::kNone && parseList(parameters, values) && position < values.size())
            forEachReference(values[position], [&](std::uint64_t number) { numbers.insert(number); });
    };
    const auto lookAtText = [&](std::uint64_t number, std::string_view text) {
        const std::size_t open = text.find('(');
        if (open != text.npos && text.ends_with(')'))
            look(m_target, typeInTarget(number), text.substr(open + 1, text.size() - open - 2));
    };
    for (std::size_t i = 0; i < m_instances.size(); ++i) {
        const Instance& instance = m_instances[i];
        const Outcome& outcome = m_outcomes[i];
        if (inSource && instance.plan)
            look(m_source, instance.plan->source->entity, instance.parameters);
        else if (!inSource && outcome.state == State::kVerbatim)
            look(m_target, typeInTarget(instance.number), instance.parameters);
        else if (!inSource && outcome.state == State::kWritten)
            lookAtText(instance.number, outcome.text);
        for (const auto& [number, text] : outcome.created)
            if (!inSource)
                lookAtText(number, text);
    }
    return numbers;
}

/// Looks for instances that nothing refers to although the target demands it, which the source did not, or had. Those
/// get what refers to them where a line says how; else they drop out. True when something changed.
bool Conversion::meetDemands() {
    std::unordered_map<const EntityType*, std::vector<std::size_t>> byType;
    for (std::size_t i = 0; i < m_instances.size(); ++i)
        if (m_outcomes[i].state == State::kVerbatim || m_outcomes[i].state == State::kWritten)
            if (const EntityType* type = typeInTarget(m_instances[i].number))
                byType[type].push_back(i);
    bool hasChanged = false;
    for (std::size_t e = 0; e < m_target.schema().entityCount(); ++e) {
        const EntityType& owner = *m_target.schema().entityAt(e);
        for (const typed::InverseRow& inverse : owner.entityClass()->inverses) {
            std::vector<std::size_t> held;
            for (const auto& [type, members] : byType)
                if (demandsOne(inverse) && type->isKindOf(&owner))
                    held.insert(held.end(), members.begin(), members.end());
            if (!held.empty())
                hasChanged = meetDemand(inverse, std::move(held)) || hasChanged;
        }
    }
    return hasChanged;
}

bool Conversion::meetDemand(const typed::InverseRow& inverse, std::vector<std::size_t> held) {
    const std::unordered_set<std::uint64_t> referred = referredBy(inverse, false);
    std::erase_if(held, [&](std::size_t i) { return referred.contains(m_instances[i].number); });
    if (held.empty())
        return false;
    const std::unordered_set<std::uint64_t> before = referredBy(inverse, true);
    std::ranges::sort(held);
    bool hasChanged = false;
    for (const std::size_t i : held) {
        const Plan& plan = *m_instances[i].plan;
        const bool wasDemanded = hasDemand(plan.source->entity, inverse);
        if (wasDemanded && !before.contains(m_instances[i].number))
            continue; // the fault of the file
        hasChanged = true;
        const Record record = this->record(m_instances[i].number);
        m_record = &record;
        m_outcome = &m_outcomes[i];
        m_attribute = inverse.attribute.name;
        if (addReferrer(inverse, wasDemanded))
            continue;
        m_refused.emplace(record.number, typeInTarget(record.number));
        convertInstance(i, kUnreferred);
    }
    return hasChanged;
}

/// Adds an instance that refers to the one at hand as the inverse attribute demands. False when there is no line for
/// it, what the line needs is not there, or what referred to it before is lost.
bool Conversion::addReferrer(const typed::InverseRow& inverse, bool wasDemanded) {
    for (const RequiredCase& each : requiredCases()) {
        if (wasDemanded || !vnEqualNoCase(each.inverse, inverse.attribute.name) ||
            !isNamed(*typeInTarget(m_record->number), each.entity))
            continue;
        if (each.value.find("@whole") != each.value.npos && !wholeOf(m_record->number).isSet())
            return false;
        if (m_outcome->state == State::kVerbatim) {
            const Record* const record = m_record;
            convertInstance(find(record->number));
            m_record = record;
        }
        m_attribute = inverse.attribute.name;
        const Value made = make(each.value);
        if (!made.isSet())
            return false;
        tell(ConvertKind::kFilledValue, inverse.attribute.name, "$", shown(made), each.reason);
        return true;
    }
    return false;
}

} // namespace vnifc::conversion
