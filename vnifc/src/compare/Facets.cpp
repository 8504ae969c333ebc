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
    const VnIfcEntityType* lastType = nullptr;
    bool isTypeObject = false;
    std::size_t relation = 0;
    for (std::uint32_t i = 0; i < roster.size(); ++i) {
        const VnIfcEntityBase& instance = roster.instance(i);
        const VnIfcEntityType* type = instance.getInstanceType();
        if (!type)
            continue;
        // Neighbours are often of one entity.
        if (type != lastType) {
            lastType = type;
            isTypeObject = typeObject && type->isKindOf(typeObject);
            relation = relationOf(*type);
        }
        if (isTypeObject)
            for (const std::uint32_t set : targetsOf(state, roster, instance, "HasPropertySets"))
                enter(i, set, DiffAspect::kProperty);
        if (relation == m_types.size())
            continue;
        const auto objects = targetsOf(state, roster, instance, kRelations[relation].objects);
        for (const std::uint32_t target : targetsOf(state, roster, instance, kRelations[relation].target))
            for (const std::uint32_t object : objects)
                enter(object, target, kRelations[relation].aspect);
    }
    std::ranges::stable_sort(m_facets, {}, [](const Facet& facet) { return std::tie(facet.object, facet.aspect); });
}

std::span<const Facets::Facet> Facets::of(std::uint32_t object) const noexcept {
    return {std::ranges::lower_bound(m_facets, object, {}, &Facet::object),
            std::ranges::upper_bound(m_facets, object, {}, &Facet::object)};
}

std::size_t Facets::relationOf(const VnIfcEntityType& type) const noexcept {
    const auto found =
        std::ranges::find_if(m_types, [&](const VnIfcEntityType* each) { return each && type.isKindOf(each); });
    return static_cast<std::size_t>(found - m_types.begin());
}

bool Facets::isEnd(std::string_view attribute) noexcept {
    return std::ranges::any_of(
        kRelations, [&](const Relation& each) { return attribute == each.objects || attribute == each.target; });
}

} // namespace vnifc::detail
