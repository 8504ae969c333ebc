#include "Relate.h"

#include "../model/Erasing.h"
#include "../model/Writing.h"

#include <vnifc/Change.h>

#include <VnIfcCore/VnIfcGUID.h>

#include <algorithm>
#include <unordered_set>

namespace vnifc {

namespace detail {

using namespace VN_SDAI;

ModelState* modelOf(std::span<const Instance> instances) {
    ModelState* state = nullptr;
    for (const Instance& instance : instances) {
        opened(instance);
        if (state && state != instance.state())
            throw BadValue('#' + std::to_string(instance.id()) + " is an instance of another model");
        state = instance.state();
    }
    return state;
}

Instance createFor(ModelState& state, std::string_view entity, const Instance& other,
                   std::initializer_list<std::pair<std::string_view, Value>> attributes) {
    const VnDbObjectId handle = state.model().create(entity);
    if (handle.isNull())
        throw NotFound(std::string(state.file.release()->name) + " has no entity " + std::string(entity));
    Instance created(handle, &state);
    state.created(handle);
    if (created.has("GlobalId"))
        created.set("GlobalId", VnIfcGUID::create().view());
    if (created.has("OwnerHistory") && other && other.has("OwnerHistory"))
        created.set("OwnerHistory", other["OwnerHistory"]);
    for (const auto& [name, value] : attributes)
        created.set(name, value);
    return created;
}

void takeOut(ModelState& state, Instance relation, const char* related, std::span<const Instance> others) {
    const std::unordered_set<Instance> gone(others.begin(), others.end());
    std::vector<Instance> rest = relation[related].get<std::vector<Instance>>().value_or(std::vector<Instance>());
    std::erase_if(rest, [&](const Instance& each) { return gone.contains(each); });
    if (rest.empty())
        eraseAll(state, {relation.core()});
    else
        relation.set(related, rest);
}

void unrelate(ModelState& state, const RelationKind& kind, std::span<const Instance> others) {
    state.needInverses();
    std::vector<Instance> relations;
    for (const Instance& other : others)
        state.forEachTarget(opened(other), kind.fromRelated, [&](VnIfcEntityBase& relation) {
            if (state.is(relation, kind.entity))
                relations.push_back(state.wrap(relation));
        });
    std::ranges::sort(relations);
    relations.erase(std::unique(relations.begin(), relations.end()), relations.end());
    for (const Instance& relation : relations)
        takeOut(state, relation, kind.related, others);
}

void relate(ModelState& state, const RelationKind& kind, std::span<const Instance> others, const Instance& one) {
    state.needInverses();
    Instance relation;
    for (const Name name : kind.fromRelating)
        state.forEachTarget(opened(one), name, [&](VnIfcEntityBase& each) {
            if (!relation && state.is(each, kind.entity))
                relation = state.wrap(each);
        });
    if (!relation) {
        createFor(state, kEntityNames[static_cast<std::size_t>(kind.entity)], others.front(),
                  {{kind.relating, one}, {kind.related, Value(others)}});
        return;
    }
    std::vector<Instance> all = relation[kind.related].get<std::vector<Instance>>().value_or(std::vector<Instance>());
    all.insert(all.end(), others.begin(), others.end());
    relation.set(kind.related, all);
}

namespace {

constexpr RelationKind kContainment{Entity::IfcRelContainedInSpatialStructure,
                                    "RelatingStructure",
                                    "RelatedElements",
                                    Name::ContainedInStructure,
                                    {Name::ContainsElements, Name::ContainsElements}};
// Where the inverse attribute is IsTypedBy, the one of that name below leads to sets only.
constexpr RelationKind kTyping{
    Entity::IfcRelDefinesByType, "RelatingType", "RelatedObjects", Name::IsTypedBy, {Name::Types, Name::ObjectTypeOf}};
constexpr RelationKind kOldTyping{Entity::IfcRelDefinesByType,
                                  "RelatingType",
                                  "RelatedObjects",
                                  Name::IsDefinedBy,
                                  {Name::Types, Name::ObjectTypeOf}};
constexpr RelationKind kMaterial{Entity::IfcRelAssociatesMaterial,
                                 "RelatingMaterial",
                                 "RelatedObjects",
                                 Name::HasAssociations,
                                 {Name::AssociatedTo, Name::AssociatedTo}};

/// Before anything changes: that the one is what it has to be, and that the others can be related so.
ModelState* checkedModel(std::span<const Instance> others, const Instance& one, const RelationKind& kind,
                         std::initializer_list<Entity> wanted) {
    ModelState* state = modelOf(others);
    if (!state)
        return nullptr;
    for (const Instance& other : others)
        if (!state->has(opened(other), kind.fromRelated))
            throw BadValue('#' + std::to_string(other.id()) + ' ' + std::string(other.keyword()) + " cannot have a " +
                           kEntityNames[static_cast<std::size_t>(kind.entity)]);
    if (one.id() == 0)
        return state;
    const VnIfcEntityBase& object = opened(one);
    if (one.state() != state)
        throw BadValue('#' + std::to_string(one.id()) + " is an instance of another model");
    if (std::ranges::none_of(wanted, [&](Entity entity) { return state->is(object, entity); }))
        throw BadValue('#' + std::to_string(one.id()) + ' ' + std::string(one.keyword()) + " is no " +
                       kEntityNames[static_cast<std::size_t>(*wanted.begin())]);
    return state;
}

void replace(std::span<const Instance> others, const Instance& one, const RelationKind& kind,
             std::initializer_list<Entity> wanted) {
    ModelState* state = checkedModel(others, one, kind, wanted);
    if (!state)
        return;
    unrelate(*state, kind, others);
    if (one.id() != 0)
        relate(*state, kind, others, one);
}

} // namespace

} // namespace detail

using detail::Entity;

void assignContainer(std::span<const Instance> elements, const Instance& spatialElement) {
    detail::replace(elements, spatialElement, detail::kContainment,
                    {Entity::IfcSpatialElement, Entity::IfcSpatialStructureElement});
}

void assignType(std::span<const Instance> objects, const Instance& type) {
    detail::ModelState* state = detail::modelOf(objects);
    const bool isOld = state && !objects.front().has("IsTypedBy");
    detail::replace(objects, type, isOld ? detail::kOldTyping : detail::kTyping, {Entity::IfcTypeObject});
}

namespace {

/// The usages that objects have, which say something about these objects only.
std::vector<Instance> usagesOf(std::span<const Instance> objects) {
    std::vector<Instance> usages;
    for (const Instance& object : objects)
        if (const Material material = vnifc::material(object); material.isUsage && !material.isOfType)
            usages.push_back(material.definition);
    return usages;
}

} // namespace

void assignMaterial(std::span<const Instance> objects, const Instance& material) {
    detail::ModelState* state = detail::modelOf(objects);
    const std::vector<Instance> usages = usagesOf(objects);
    detail::replace(objects, material, detail::kMaterial,
                    {Entity::IfcMaterial, Entity::IfcMaterialDefinition, Entity::IfcMaterialList,
                     Entity::IfcMaterialLayer, Entity::IfcMaterialLayerSet, Entity::IfcMaterialLayerSetUsage,
                     Entity::IfcMaterialProfileSetUsage});
    for (const Instance& usage : usages)
        if (usage && usage.referrers().empty())
            detail::eraseAll(*state, {usage.core()});
}

} // namespace vnifc
