#include "Conversion.h"

#include <algorithm>

// What becomes of the instances of an entity, which is the same for all of them.
namespace vnifc::conversion {

using namespace VN_SDAI;

namespace {

constexpr std::string_view kNoSuchEntity = "the release has no such entity; kept as the nearest that it has";
constexpr std::string_view kNoCounterpart = "the release has no such entity and none that could stand for it";

/// Calls `visit` with each of the names that stand in a list with commas.
template <class Visit>
void forEachName(std::string_view names, Visit visit) {
    while (!names.empty()) {
        const std::size_t comma = std::min(names.find(','), names.size());
        visit(names.substr(0, comma));
        names.remove_prefix(std::min(comma + 1, names.size()));
    }
}

std::string_view firstName(std::string_view names) noexcept { return names.substr(0, names.find(',')); }

bool hasCoercion(std::string_view from, std::string_view to) noexcept {
    return std::ranges::any_of(coercionCases(), [&](const CoercionCase& each) {
        return vnEqualNoCase(each.from, from) && vnEqualNoCase(each.to, to);
    });
}

bool boundsContain(const VnIfcAggregationType& outer, const VnIfcAggregationType& inner) {
    if (outer.lowerBound().value() > inner.lowerBound().value())
        return false;
    if (outer.upperBound().isUnbounded())
        return true;
    return !inner.upperBound().isUnbounded() && inner.upperBound().value() <= outer.upperBound().value();
}

bool demandsDifferent(const VnIfcAggregationType& type) {
    const auto* list = dynamic_cast<const VnIfcListType*>(&type);
    return dynamic_cast<const VnIfcSetType*>(&type) || (list && list->isUnique());
}

} // namespace

const Mapping& Conversion::mappingOf(const EntityType& entity) {
    const auto found = m_mappings.find(&entity);
    return found != m_mappings.end() ? found->second : m_mappings.emplace(&entity, newMapping(entity)).first->second;
}

const EntityType* Conversion::standInFor(std::string_view name) const {
    if (!m_target.entity(name))
        return nullptr;
    for (const StandInCase& each : standInCases())
        if (vnEqualNoCase(each.entity, name))
            if (const EntityType* standIn = m_target.concrete(each.other))
                return standIn;
    return nullptr;
}

Mapping Conversion::newMapping(const EntityType& entity) const {
    const std::string_view name = nameOf(entity);
    if (const EntityType* same = m_target.concrete(name))
        return {Mapping::Way::kSame, same, nullptr, nullptr, {}};
    for (const EntityCase& each : entityCases())
        if (vnEqualNoCase(each.entity, name))
            if (const EntityType* other = m_target.concrete(each.other))
                return {Mapping::Way::kRenamed, other, &each, nullptr, each.reason};
    for (const InlineCase& each : inlineCases())
        if (vnEqualNoCase(each.entity, name))
            return {Mapping::Way::kInlined, nullptr, nullptr, &each, each.reason};
    for (const EntityType* super = &entity; super; super = super->supertype()) {
        const EntityType* found = m_target.concrete(nameOf(*super));
        for (const EntityCase& each : entityCases()) {
            if (found || !vnEqualNoCase(each.entity, nameOf(*super)))
                continue;
            found = m_target.concrete(each.other);
            found = found ? found : standInFor(each.other);
        }
        found = found ? found : standInFor(nameOf(*super));
        // An instance of an entity without attributes would say nothing.
        if (found && !found->entityClass()->fields.empty())
            return {Mapping::Way::kGeneralised, found, nullptr, nullptr, kNoSuchEntity};
    }
    return {Mapping::Way::kLost, nullptr, nullptr, nullptr, kNoCounterpart};
}

const Plan& Conversion::planOf(const EntityType& entity) {
    const auto [place, isNew] = m_plans.try_emplace(&entity);
    if (!isNew)
        return place->second;
    Plan plan;
    plan.mapping = mappingOf(entity);
    plan.source = &m_source.layout(entity);
    if (plan.mapping.target)
        plan.target = &m_target.layout(*plan.mapping.target);
    planSteps(plan);
    return m_plans[&entity] = std::move(plan);
}

/// The plan for another target than the one that comes first.
Plan Conversion::planTo(const Plan& plan, const Mapping& mapping) {
    Plan other;
    other.mapping = mapping;
    other.source = plan.source;
    other.target = &m_target.layout(*mapping.target);
    planSteps(other);
    return other;
}

void Conversion::planSteps(Plan& plan) {
    plan.steps.assign(plan.source->fields.size(), {});
    planFolds(plan);
    if (!plan.target)
        return;
    planComputed(plan);
    planUniques(plan);
    for (std::size_t i = 0; i < plan.steps.size(); ++i) {
        const Field& field = plan.source->fields[i];
        Step& step = plan.steps[i];
        if (step.isConsumed)
            continue;
        planStep(plan, field, step);
        step.isSafe = step.target != Layout::kNone && isSafe(field, plan.target->fields[step.target]) &&
                      limitsOf(*plan.target->entity, plan.target->fields[step.target].name).empty();
    }
    plan.isVerbatim = isVerbatim(plan);
}

void Conversion::planStep(const Plan& plan, const Field& field, Step& step) const {
    step.target = plan.target->find(field.name);
    if (step.target != Layout::kNone)
        return;
    for (const AttributeCase& each : attributeCases()) {
        const bool isForth = vnEqualNoCase(each.attribute, field.name);
        if (each.compute || !(isForth || vnEqualNoCase(each.other, field.name)))
            continue;
        if (!isNamed(*plan.source->entity, each.entity) && !isNamed(*plan.target->entity, each.entity))
            continue;
        step.target = plan.target->find(isForth ? each.other : each.attribute);
        step.attributeCase = &each;
        if (step.target != Layout::kNone)
            return;
    }
    step.attributeCase = nullptr;
}

/// Lines with a function hold where the target lacks the attribute or the entity that they begin with.
void Conversion::planComputed(Plan& plan) {
    for (const AttributeCase& each : attributeCases()) {
        if (!each.compute || !isNamed(*plan.source->entity, each.entity))
            continue;
        const std::string_view first = firstName(each.attribute);
        if (plan.source->find(first) == Layout::kNone || plan.target->find(each.other) == Layout::kNone)
            continue;
        if (plan.target->find(first) != Layout::kNone && isNamed(*plan.target->entity, each.entity))
            continue;
        plan.computed.push_back(&each);
        forEachName(each.attribute, [&](std::string_view name) {
            const std::size_t position = plan.source->find(name);
            // What the target has under the same name goes there as well.
            if (position != Layout::kNone && (name == each.other || plan.target->find(name) == Layout::kNone))
                plan.steps[position].isConsumed = true;
        });
    }
}

void Conversion::planFolds(Plan& plan) {
    for (const FoldCase& each : foldCases()) {
        if (!vnEqualNoCase(nameOf(*plan.source->entity), each.entity) || plan.source->find(each.owner) == Layout::kNone)
            continue;
        plan.folds.push_back(&each);
        const auto consume = [&](std::string_view name) {
            const std::size_t position = plan.source->find(name);
            if (position != Layout::kNone && (!plan.target || plan.target->find(name) == Layout::kNone))
                plan.steps[position].isConsumed = true;
        };
        consume(each.owner);
        consume(each.value);
    }
}

void Conversion::planUniques(Plan& plan) const {
    const auto isOfSource = [&](const typed::UniqueRule& rule) {
        for (const typed::EntityClass* each = plan.source->entity->entityClass(); each; each = each->supertype)
            for (const typed::UniqueRule& other : each->uniques)
                if (std::ranges::equal(
                        other.attributes, rule.attributes, vnEqualNoCase,
                        [](const auto* row) { return std::string_view(row->name); },
                        [](const auto* row) { return std::string_view(row->name); }))
                    return true;
        return false;
    };
    for (const typed::EntityClass* each = plan.target->entity->entityClass(); each; each = each->supertype)
        for (const typed::UniqueRule& rule : each->uniques)
            if (!isOfSource(rule))
                plan.uniques.push_back(&rule);
}

bool Conversion::isVerbatim(const Plan& plan) {
    const bool isOther = plan.mapping.way != Mapping::Way::kSame &&
                         !(plan.mapping.way == Mapping::Way::kRenamed && plan.mapping.entityCase->assignments.empty());
    if (isOther || !plan.computed.empty() || !plan.uniques.empty() || plan.steps.size() != plan.target->fields.size())
        return false;
    for (std::size_t i = 0; i < plan.steps.size(); ++i)
        if (plan.steps[i].target != i || !plan.steps[i].isSafe || plan.steps[i].attributeCase)
            return false;
    return true;
}

bool Conversion::isSafe(const Field& from, const Field& to) {
    if (from.isDerived || to.isDerived)
        return from.isDerived == to.isDerived;
    if ((from.isOptional && !to.isOptional && !allowsEmpty(to)) || from.kind() != to.kind())
        return false;
    if (const typed::EnumerationClass* words = to.enumeration())
        return std::ranges::all_of(from.enumeration()->literals, [&](const char* literal) {
            return words->fromLiteral(literal) < words->literals.size();
        });
    return isSafe(from.type, to.type);
}

bool Conversion::isSafe(const Type* from, const Type* to) {
    if (!from || !to)
        return true;
    if (hasCoercion(nameOf(from), nameOf(to)))
        return false;
    const VnIfcAggregationType* list = asAggregation(from);
    const VnIfcAggregationType* toList = asAggregation(to);
    if (list && toList)
        return boundsContain(*toList, *list) && (demandsDifferent(*list) || !demandsDifferent(*toList)) &&
               isSafe(list->elementType(), toList->elementType());
    if (asEntity(from))
        return isClosed(*from, *to);
    if (asSelect(from)) {
        bool safe = asSelect(to) != nullptr;
        forEachMember(from, [&](const Type& member) {
            const Type* other = safe && !asEntity(&member) ? memberNamed(to, nameOf(&member)) : nullptr;
            safe = safe && (asEntity(&member) ? isClosed(member, *to) : other && isSafe(&member, other));
        });
        return safe;
    }
    const VnIfcEnumerationType* words = asEnumeration(from);
    const VnIfcEnumerationType* toWords = asEnumeration(to);
    if (words && toWords)
        return std::ranges::all_of(words->literals(), [&](const VnAnsiString& literal) {
            return std::ranges::find(toWords->literals(), literal) != toWords->literals().end();
        });
    return from->kind() == to->kind();
}

/// True when whatever the entity's instances become may be referred to by the target's type.
bool Conversion::isClosed(const Type& from, const Type& to) {
    const auto [place, isNew] = m_closed.try_emplace({&from, &to}, true);
    if (!isNew)
        return place->second;
    const EntityType* root = asEntity(&from);
    for (std::size_t i = 0; i < m_source.schema().entityCount() && place->second; ++i) {
        const EntityType& each = *m_source.schema().entityAt(i);
        if (each.isAbstract() || !each.isKindOf(root))
            continue;
        const Mapping& mapping = mappingOf(each);
        place->second = mapping.target && mayReferTo(&to, *mapping.target);
    }
    return place->second;
}

} // namespace vnifc::conversion
