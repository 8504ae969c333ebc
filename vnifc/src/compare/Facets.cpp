#include "Facets.h"

#include "../whole/Targets.h"

#include <algorithm>
#include <tuple>

namespace vnifc::detail {

using namespace VN_SDAI;

struct Facets::Relation {
    const char* entity; ///< subtypes included
    const char* objects;
    const char* target;
    DiffAspect aspect;
};

const Facets::Relation Facets::kRelations[] = {
    {"IfcRelContainedInSpatialStructure", "RelatedElements", "RelatingStructure", DiffAspect::kContainer},
    {"IfcRelAggregates", "RelatedObjects", "RelatingObject", DiffAspect::kWhole},
    {"IfcRelNests", "RelatedObjects", "RelatingObject", DiffAspect::kWhole},
    {"IfcRelDefinesByType", "RelatedObjects", "RelatingType", DiffAspect::kType},
    {"IfcRelDefinesByProperties", "RelatedObjects", "RelatingPropertyDefinition", DiffAspect::kProperty},
    {"IfcRelAssociatesMaterial", "RelatedObjects", "RelatingMaterial", DiffAspect::kMaterial},
    {"IfcRelAssociatesClassification", "RelatedObjects", "RelatingClassification", DiffAspect::kClassification},
    {"IfcRelAssignsToGroup", "RelatedObjects", "RelatingGroup", DiffAspect::kGroup},
};

Facets::Facets(ModelState& state, const Roster& roster) : m_usedSets(roster.size()) {
    for (const Relation& relation : kRelations)
        m_types.push_back(state.schema().entity(relation.entity));
    const VnIfcEntityType* typeObject = state.schema().entity("IfcTypeObject");
    const auto enter = [&](std::uint32_t object, std::uint32_t target, DiffAspect aspect) {
        m_facets.push_back({object, target, aspect});
        if (aspect == DiffAspect::kProperty)
            m_usedSets[target] = true;
    };
    for (std::uint32_t i = 0; i < roster.size(); ++i) {
        const VnIfcEntityBase& instance = roster.instance(i);
        const VnIfcEntityType* type = instance.getInstanceType();
        if (!type)
            continue;
        if (typeObject && type->isKindOf(typeObject))
            for (const std::uint32_t set : targetsOf(state, roster, instance, "HasPropertySets"))
                enter(i, set, DiffAspect::kProperty);
        if (!isFacetRelation(*type))
            continue;
        for (std::size_t r = 0; r < m_types.size(); ++r) {
            if (!m_types[r] || !type->isKindOf(m_types[r]))
                continue;
            const auto objects = targetsOf(state, roster, instance, kRelations[r].objects);
            for (const std::uint32_t target : targetsOf(state, roster, instance, kRelations[r].target))
                for (const std::uint32_t object : objects)
                    enter(object, target, kRelations[r].aspect);
            break;
        }
    }
    std::ranges::stable_sort(m_facets, {}, [](const Facet& facet) { return std::tie(facet.object, facet.aspect); });
}

std::span<const Facets::Facet> Facets::of(std::uint32_t object) const noexcept {
    const auto found = std::ranges::equal_range(m_facets, object, {}, &Facet::object);
    return {found.begin(), found.end()};
}

bool Facets::isFacetRelation(const VnIfcEntityType& type) const noexcept {
    return std::ranges::any_of(m_types, [&](const VnIfcEntityType* each) { return each && type.isKindOf(each); });
}

bool Facets::isEnd(std::string_view attribute) noexcept {
    return std::ranges::any_of(
        kRelations, [&](const Relation& each) { return attribute == each.objects || attribute == each.target; });
}

} // namespace vnifc::detail
