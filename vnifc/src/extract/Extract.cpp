#include "../whole/Annotations.h"
#include "../whole/Targets.h"

#include <vnifc/Extract.h>

#include <algorithm>

namespace vnifc {

using namespace VN_SDAI;
using namespace detail;
using typed::AttributeKind;
using typed::AttributeRow;
using typed::fieldOf;

namespace {

/// How an instance comes to stay.
enum class Stay : std::uint8_t {
    kNo,
    kContext, ///< because others need it
    kWhole,   ///< with its parts: picked, or a part of what is
};

/// How far a relation carries from one of its ends to another.
enum class Carry : std::uint8_t {
    kNeed, ///< the other end is needed
    kBody, ///< the other end belongs to the shape of this one, and stays as this one does
    kPart, ///< the other end is a part of this one, and stays when this one does as a whole
};

struct RelationRule {
    const char* entity; ///< subtypes included
    const char* from;
    const char* to; ///< empty: whatever else the relation refers to
    Carry carry;
};

// Of all releases; names that a release lacks do not matter.
constexpr RelationRule kRules[] = {
    {"IfcRelContainedInSpatialStructure", "RelatedElements", "RelatingStructure", Carry::kNeed},
    {"IfcRelAggregates", "RelatedObjects", "RelatingObject", Carry::kNeed},
    {"IfcRelAggregates", "RelatingObject", "RelatedObjects", Carry::kPart},
    {"IfcRelNests", "RelatedObjects", "RelatingObject", Carry::kNeed},
    {"IfcRelNests", "RelatingObject", "RelatedObjects", Carry::kPart},
    {"IfcRelDefinesByType", "RelatedObjects", "RelatingType", Carry::kNeed},
    {"IfcRelDefinesByProperties", "RelatedObjects", "RelatingPropertyDefinition", Carry::kNeed},
    {"IfcRelDefinesByObject", "RelatedObjects", "RelatingObject", Carry::kNeed},
    {"IfcRelDefinesByTemplate", "RelatedPropertySets", "RelatingTemplate", Carry::kNeed},
    {"IfcRelDeclares", "RelatedDefinitions", "RelatingContext", Carry::kNeed},
    {"IfcRelAssociates", "RelatedObjects", "", Carry::kNeed},
    {"IfcRelVoidsElement", "RelatingBuildingElement", "RelatedOpeningElement", Carry::kBody},
    {"IfcRelVoidsElement", "RelatedOpeningElement", "RelatingBuildingElement", Carry::kNeed},
    {"IfcRelProjectsElement", "RelatingElement", "RelatedFeatureElement", Carry::kBody},
    {"IfcRelProjectsElement", "RelatedFeatureElement", "RelatingElement", Carry::kNeed},
    {"IfcRelAdheresToElement", "RelatingElement", "RelatedSurfaceFeatures", Carry::kBody},
    {"IfcRelAdheresToElement", "RelatedSurfaceFeatures", "RelatingElement", Carry::kNeed},
    {"IfcRelFillsElement", "RelatingOpeningElement", "RelatedBuildingElement", Carry::kPart},
    {"IfcRelConnectsPortToElement", "RelatedElement", "RelatingPort", Carry::kPart},
    {"IfcRelConnectsPortToElement", "RelatingPort", "RelatedElement", Carry::kNeed},
    {"IfcRelAssignsToGroup", "RelatingGroup", "RelatedObjects", Carry::kPart},
};

class Extraction {
public:
    explicit Extraction(ModelState& state) : m_state(state), m_roster(state.model()), m_stay(m_roster.size()) {
        const VnIfcSchema& schema = state.schema();
        m_relationship = schema.entity("IfcRelationship");
        m_root = schema.entity("IfcRoot");
        m_project = schema.entity("IfcProject");
        // What contains others without being made of them.
        for (const char* name : {"IfcContext", "IfcProject", "IfcSpatialElement", "IfcSpatialStructureElement"})
            m_places.push_back(schema.entity(name));
        for (const RelationRule& rule : kRules)
            m_ruleTypes.push_back(schema.entity(rule.entity));
        findRelations();
    }

    void pick(const Instance& instance) { keep(m_roster.ordinalOf(instance.core()), Stay::kWhole); }

    ExtractResult run() {
        for (std::uint32_t i = 0; i < m_roster.size(); ++i)
            if (isKindOf(i, m_project))
                keep(i, Stay::kContext);
        spread();
        keepRelations();
        keepStrangers();
        while (keepAnnotations())
            spread();
        for (const std::uint32_t each : m_trimmed)
            trim(each);
        std::vector<VnDbObjectId> gone;
        for (std::uint32_t i = 0; i < m_roster.size(); ++i)
            if (!stays(i))
                gone.push_back(m_roster.handle(i));
        m_state.model().erase(gone);
        m_state.dropAll();
        return {m_roster.size() - gone.size(), gone.size()};
    }

private:
    bool stays(std::uint32_t i) const noexcept { return m_stay[i] != Stay::kNo; }
    bool isKindOf(std::uint32_t i, const VnIfcEntityType* type) const {
        const VnIfcEntityType* own = m_roster.instance(i).getInstanceType();
        return type && own && own->isKindOf(type);
    }
    bool isPlace(std::uint32_t i) const {
        return std::ranges::any_of(m_places, [&](const VnIfcEntityType* type) { return isKindOf(i, type); });
    }

    void keep(std::uint32_t i, Stay how) {
        if (i == Roster::kNone || m_stay[i] >= how)
            return;
        m_stay[i] = how;
        m_pending.push_back(i);
    }

    /// Which relations an instance stands in, by pairs of instance and relation.
    void findRelations() {
        for (std::uint32_t i = 0; i < m_roster.size(); ++i)
            if (isKindOf(i, m_relationship))
                forEachTarget(m_state, m_roster, m_roster.instance(i),
                              [&](std::uint32_t target) { m_relations.emplace_back(target, i); });
        std::ranges::sort(m_relations);
        m_relations.erase(std::unique(m_relations.begin(), m_relations.end()), m_relations.end());
    }

    void spread() {
        while (!m_pending.empty()) {
            const std::uint32_t i = m_pending.back();
            m_pending.pop_back();
            const Stay how = m_stay[i];
            const bool isRelation = isKindOf(i, m_relationship);
            forEachTarget(m_state, m_roster, m_roster.instance(i),
                          [&](std::uint32_t target) { keep(target, isRelation ? how : Stay::kContext); });
            if (isRelation)
                continue;
            for (auto each = std::ranges::lower_bound(m_relations, i, {}, &Relation::first);
                 each != m_relations.end() && each->first == i; ++each)
                follow(i, each->second);
        }
    }

    void follow(std::uint32_t i, std::uint32_t relation) {
        const VnIfcEntityBase& instance = m_roster.instance(relation);
        for (std::size_t r = 0; r < std::size(kRules); ++r) {
            const RelationRule& rule = kRules[r];
            if (!isKindOf(relation, m_ruleTypes[r]))
                continue;
            if (rule.carry == Carry::kPart && (m_stay[i] != Stay::kWhole || isPlace(i)))
                continue;
            const std::vector<std::uint32_t> from = targetsOf(m_state, m_roster, instance, rule.from);
            if (std::ranges::find(from, i) == from.end())
                continue;
            const Stay how = rule.carry == Carry::kNeed ? Stay::kContext : m_stay[i];
            if (*rule.to != '\0') {
                for (const std::uint32_t target : targetsOf(m_state, m_roster, instance, rule.to))
                    keep(target, how);
                continue;
            }
            forEachTarget(m_state, m_roster, instance, [&](std::uint32_t target) {
                if (std::ranges::find(from, target) == from.end())
                    keep(target, how);
            });
        }
    }

    /// Relations whose ends stay. Of a list at least one has to; whatever else they refer to comes along.
    void keepRelations() {
        std::vector<std::uint32_t> kept;
        for (std::uint32_t i = 0; i < m_roster.size(); ++i) {
            if (!isKindOf(i, m_relationship))
                continue;
            if (stays(i) || hasEnds(i))
                kept.push_back(i);
        }
        for (const std::uint32_t i : kept) {
            m_stay[i] = std::max(m_stay[i], Stay::kContext);
            m_trimmed.push_back(i);
            forEachTarget(m_state, m_roster, m_roster.instance(i), [&](std::uint32_t target) {
                if (!isKindOf(target, m_root))
                    keep(target, Stay::kContext);
            });
        }
        spread();
    }

    bool hasEnds(std::uint32_t relation) {
        const VnIfcEntityBase& instance = m_roster.instance(relation);
        bool hasAny = false;
        for (const AttributeRow* row : m_state.classOf(instance)->references) {
            std::size_t ends = 0;
            std::size_t staying = 0;
            const auto count = [&](const VnDbObjectId& handle) {
                const std::uint32_t target = m_roster.ordinalOf(handle);
                // A relation may name another one, which it can do without.
                if (target == Roster::kNone || !isEnd(target, *row) || isKindOf(target, m_relationship))
                    return;
                ++ends;
                staying += stays(target) ? 1 : 0;
            };
            forEachHandle(instance, *row, count);
            const bool isEnough = row->kind == AttributeKind::kAggregate ? staying > 0 : staying == ends;
            if (ends > 0 && !isEnough)
                return false;
            hasAny = hasAny || staying > 0;
        }
        return hasAny;
    }

    /// Objects are; of the rest what may be associated with them.
    bool isEnd(std::uint32_t target, const AttributeRow& row) const {
        return isKindOf(target, m_root) || std::string_view(row.name).starts_with("Related");
    }

    /// Instances without a class cannot be made smaller: they stay when all that they name does.
    void keepStrangers() {
        for (std::uint32_t i = 0; i < m_roster.size(); ++i) {
            if (stays(i) || m_roster.instance(i).getInstanceType())
                continue;
            bool namesAny = false;
            bool namesOnlyStaying = true;
            forEachTarget(m_state, m_roster, m_roster.instance(i), [&](std::uint32_t target) {
                namesAny = namesAny || isKindOf(target, m_root);
                namesOnlyStaying = namesOnlyStaying && stays(target);
            });
            if (namesAny && namesOnlyStaying)
                keep(i, Stay::kContext);
        }
        spread();
    }

    /// What is about something that stays; false when there is no more of it.
    bool keepAnnotations() {
        bool found = false;
        for (std::uint32_t i = 0; i < m_roster.size(); ++i) {
            const VnIfcEntityBase& instance = m_roster.instance(i);
            const ClassInfo* info = m_state.classOf(instance);
            if (stays(i) || !info)
                continue;
            const std::vector<const AttributeRow*>& rows = m_annotations.rowsOf(*info);
            if (rows.empty() || !isAboutStaying(instance, rows))
                continue;
            found = true;
            m_stay[i] = Stay::kContext;
            m_trimmed.push_back(i);
            for (const AttributeRow* row : info->references) {
                const auto add = [&](const VnDbObjectId& handle) { keep(m_roster.ordinalOf(handle), Stay::kContext); };
                const bool isList =
                    row->kind == AttributeKind::kAggregate && std::ranges::find(rows, row) != rows.end();
                if (!isList)
                    forEachHandle(instance, *row, add);
            }
        }
        return found;
    }

    bool isAboutStaying(const VnIfcEntityBase& instance, const std::vector<const AttributeRow*>& rows) const {
        bool isAny = false;
        for (const AttributeRow* row : rows) {
            bool isHere = false;
            const auto look = [&](const VnDbObjectId& handle) {
                const std::uint32_t target = m_roster.ordinalOf(handle);
                isHere = isHere || (target != Roster::kNone && stays(target));
            };
            forEachHandle(instance, *row, look);
            if (!isHere && row->kind == AttributeKind::kAggregate)
                return false;
            isAny = isAny || isHere;
        }
        return isAny;
    }

    /// Takes what does not stay out of the attributes of an instance that does.
    void trim(std::uint32_t i) {
        VnIfcEntityBase& object = m_roster.instance(i);
        for (const AttributeRow* row : m_state.classOf(object)->references) {
            bool isWhole = true;
            const auto isGone = [&](const VnDbObjectId& handle) {
                const std::uint32_t target = m_roster.ordinalOf(handle);
                return target != Roster::kNone && !stays(target);
            };
            const auto look = [&](const VnDbObjectId& handle) { isWhole = isWhole && !isGone(handle); };
            forEachHandle(object, *row, look);
            if (isWhole)
                continue;
            Instance instance(m_roster.handle(i), &m_state);
            const Value value = instance[row->name];
            const auto* list = std::get_if<Value::List>(&value.untyped().variant());
            if (!list) {
                instance.unset(row->name);
                continue;
            }
            Value::List rest;
            for (const Value& each : *list) {
                const auto* target = std::get_if<Instance>(&each.variant());
                if (!target || !isGone(target->core()))
                    rest.push_back(each);
            }
            instance.set(row->name, Value(std::move(rest)));
        }
    }

    using Relation = std::pair<std::uint32_t, std::uint32_t>;

    ModelState& m_state;
    Roster m_roster;
    Annotations m_annotations;
    const VnIfcEntityType* m_relationship = nullptr;
    const VnIfcEntityType* m_root = nullptr;
    const VnIfcEntityType* m_project = nullptr;
    std::vector<const VnIfcEntityType*> m_places;
    std::vector<const VnIfcEntityType*> m_ruleTypes;
    std::vector<Relation> m_relations;
    std::vector<Stay> m_stay;
    std::vector<std::uint32_t> m_pending;
    std::vector<std::uint32_t> m_trimmed;
};

} // namespace

ExtractResult extract(Model& model, std::span<const Instance> picked) {
    ModelState& state = *model.wrap({}).state();
    Extraction extraction(state);
    for (const Instance& each : picked) {
        if (each.state() != &state)
            throw BadValue("#" + std::to_string(each.id()) + " is an instance of another model");
        extraction.pick(each);
    }
    return extraction.run();
}

} // namespace vnifc
