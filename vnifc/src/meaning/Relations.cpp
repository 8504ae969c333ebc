#include "PropertyReader.h"

#include <vnifc/Relations.h>

#include <algorithm>
#include <initializer_list>
#include <unordered_set>

namespace vnifc {

using detail::Entity;
using detail::ModelState;
using detail::Name;
using VN_SDAI::VnIfcEntityBase;

namespace {

/// No structure of a person is as deep; one that runs in circles ends here.
constexpr unsigned kMaxDepth = 256;

/// A relation as seen from one end: the inverse attribute here, and the attribute of the relation that leads on.
struct Way {
    Name relations;
    Name others;
};

/// The relations of an object, with inverse attributes in place.
class Relations {
public:
    explicit Relations(const Instance& instance)
        : m_state(detail::stateOf(instance)), m_object(detail::opened(instance)) {
        m_state.needInverses();
    }

    ModelState& state() const noexcept { return m_state; }
    VnIfcEntityBase& object() const noexcept { return m_object; }
    Instance wrap(VnIfcEntityBase* instance) const noexcept { return instance ? m_state.wrap(*instance) : Instance(); }

    VnIfcEntityBase* first(const VnIfcEntityBase& from, Way way) const {
        for (const VnIfcEntityBase* relation : m_state.targets(from, way.relations))
            if (VnIfcEntityBase* other = m_state.target(*relation, way.others))
                return other;
        return nullptr;
    }
    VnIfcEntityBase* first(const VnIfcEntityBase& from, std::initializer_list<Way> ways) const {
        for (const Way way : ways)
            if (VnIfcEntityBase* other = first(from, way))
                return other;
        return nullptr;
    }
    /// Each once, in the order of the relations.
    std::vector<VnIfcEntityBase*> all(const VnIfcEntityBase& from, std::initializer_list<Way> ways) const {
        std::vector<VnIfcEntityBase*> found;
        std::unordered_set<const VnIfcEntityBase*> known;
        for (const Way way : ways)
            m_state.forEachTarget(from, way.relations, [&](VnIfcEntityBase& relation) {
                m_state.forEachTarget(relation, way.others, [&](VnIfcEntityBase& other) {
                    if (known.insert(&other).second)
                        found.push_back(&other);
                });
            });
        return found;
    }
    std::vector<Instance> wrap(const std::vector<VnIfcEntityBase*>& found) const {
        std::vector<Instance> instances;
        for (VnIfcEntityBase* each : found)
            instances.push_back(m_state.wrap(*each));
        return instances;
    }

    bool isSpatial(const VnIfcEntityBase& instance) const {
        return m_state.is(instance, Entity::IfcSpatialElement) ||
               m_state.is(instance, Entity::IfcSpatialStructureElement);
    }
    VnIfcEntityBase* parentOf(const VnIfcEntityBase& object) const {
        return first(object, {{Name::ContainedInStructure, Name::RelatingStructure},
                              {Name::Decomposes, Name::RelatingObject},
                              {Name::Nests, Name::RelatingObject},
                              {Name::FillsVoids, Name::RelatingOpeningElement},
                              {Name::VoidsElements, Name::RelatingBuildingElement},
                              {Name::ProjectsElements, Name::RelatingElement}});
    }
    /// The nearest instance of an entity upwards, the object itself included.
    Instance nearest(Entity entity) const {
        VnIfcEntityBase* each = &m_object;
        for (unsigned depth = 0; each && depth < kMaxDepth; ++depth) {
            if (m_state.is(*each, entity))
                return m_state.wrap(*each);
            each = parentOf(*each);
        }
        return {};
    }

private:
    ModelState& m_state;
    VnIfcEntityBase& m_object;
};

const std::initializer_list<Way> kParts{{Name::IsDecomposedBy, Name::RelatedObjects},
                                        {Name::IsNestedBy, Name::RelatedObjects}};
const std::initializer_list<Way> kAllBelow{{Name::IsDecomposedBy, Name::RelatedObjects},
                                           {Name::IsNestedBy, Name::RelatedObjects},
                                           {Name::ContainsElements, Name::RelatedElements}};

} // namespace

// ---- where an object is

Instance container(const Instance& object) {
    const Relations relations(object);
    VnIfcEntityBase* each = relations.parentOf(relations.object());
    for (unsigned depth = 0; each && depth < kMaxDepth; ++depth) {
        if (relations.isSpatial(*each))
            return relations.wrap(each);
        each = relations.parentOf(*each);
    }
    return {};
}

Instance storey(const Instance& object) { return Relations(object).nearest(Entity::IfcBuildingStorey); }
Instance building(const Instance& object) { return Relations(object).nearest(Entity::IfcBuilding); }
Instance site(const Instance& object) { return Relations(object).nearest(Entity::IfcSite); }

std::vector<Instance> contents(const Instance& spatialElement) {
    const Relations relations(spatialElement);
    return relations.wrap(relations.all(relations.object(), {{Name::ContainsElements, Name::RelatedElements}}));
}

std::vector<Instance> parts(const Instance& whole) {
    const Relations relations(whole);
    return relations.wrap(relations.all(relations.object(), kParts));
}

Instance whole(const Instance& part) {
    const Relations relations(part);
    return relations.wrap(relations.first(
        relations.object(), {{Name::Decomposes, Name::RelatingObject}, {Name::Nests, Name::RelatingObject}}));
}

Instance parent(const Instance& object) {
    const Relations relations(object);
    return relations.wrap(relations.parentOf(relations.object()));
}

// ---- the spatial structure

namespace {

class StructureReader {
public:
    StructureReader(ModelState& state, unsigned depth) : m_state(state), m_depth(depth) {}

    std::vector<SpatialNode> read() {
        addRoots(Entity::IfcProject, false);
        addRoots(spatial(), true);
        addRoots(spatial(), false);
        return std::move(m_nodes);
    }

private:
    /// An instance that is to be taken in below a node.
    struct Pending {
        VnIfcEntityBase* instance;
        std::size_t parent;
    };
    static constexpr std::size_t kNoParent = ~std::size_t{0};

    Entity spatial() const {
        return m_state.type(Entity::IfcSpatialElement) ? Entity::IfcSpatialElement : Entity::IfcSpatialStructureElement;
    }

    void addRoots(Entity entity, bool onlyTop) {
        const auto handles = m_state.population.select(m_state.model(), [&](const VN_SDAI::VnIfcEntityType* type) {
            return type && type->isKindOf(m_state.type(entity));
        });
        for (const VN_SDAI::VnDbObjectId& handle : *handles)
            if (VnIfcEntityBase* instance = handle.openObject())
                if (!onlyTop || m_state.targets(*instance, Name::Decomposes).empty())
                    addAllBelow(*instance);
    }

    void addAllBelow(VnIfcEntityBase& root) {
        std::vector<Pending> pending{{&root, kNoParent}};
        while (!pending.empty()) {
            const Pending next = pending.back();
            pending.pop_back();
            if (!m_known.insert(next.instance).second)
                continue;
            const std::size_t parent = place(next);
            const auto parts = Relations(m_state.wrap(*next.instance)).all(*next.instance, kAllBelow);
            for (auto part = parts.rbegin(); part != parts.rend(); ++part)
                pending.push_back({*part, parent});
        }
    }

    /// Makes an instance a node or an element of the node that it belongs to; returns the node that its parts belong
    /// to.
    std::size_t place(const Pending& pending) {
        const bool isRoot = pending.parent == kNoParent;
        const unsigned level = isRoot ? 0 : m_nodes[pending.parent].level + 1;
        if (isRoot || (level <= m_depth && m_state.is(*pending.instance, spatial()))) {
            m_nodes.push_back({m_state.wrap(*pending.instance), level, {}});
            return m_nodes.size() - 1;
        }
        if (!m_state.is(*pending.instance, Entity::IfcPort))
            m_nodes[pending.parent].elements.push_back(m_state.wrap(*pending.instance));
        return pending.parent;
    }

    ModelState& m_state;
    unsigned m_depth;
    std::unordered_set<const VnIfcEntityBase*> m_known;
    std::vector<SpatialNode> m_nodes;
};

} // namespace

std::vector<SpatialNode> spatialStructure(const Model& model, unsigned depth) {
    ModelState& state = *model.wrap({}).state();
    state.needInverses();
    return StructureReader(state, depth).read();
}

std::vector<Instance> elementsOutside(const Model& model, const std::vector<SpatialNode>& structure) {
    std::unordered_set<Instance> known;
    for (const SpatialNode& node : structure) {
        known.insert(node.instance);
        known.insert(node.elements.begin(), node.elements.end());
    }
    std::vector<Instance> outside;
    for (const Instance& element : model.instances("IfcElement"))
        // Ports and openings belong to the element that they are in.
        if (!known.contains(element) && !element.is("IfcFeatureElement"))
            outside.push_back(element);
    return outside;
}

// ---- types

Instance typeOf(const Instance& object) {
    const Relations relations(object);
    VnIfcEntityBase* found = nullptr;
    detail::forEachType(relations.state(), relations.object(),
                        [&](VnIfcEntityBase& type) { found = found ? found : &type; });
    return relations.wrap(found);
}

std::vector<Instance> occurrences(const Instance& type) {
    const Relations relations(type);
    return relations.wrap(relations.all(
        relations.object(), {{Name::Types, Name::RelatedObjects}, {Name::ObjectTypeOf, Name::RelatedObjects}}));
}

// ---- material

namespace {

/// Takes a material definition apart.
class MaterialReader {
public:
    explicit MaterialReader(ModelState& state) : m_state(state) {}

    Material read(VnIfcEntityBase& definition) const {
        Material result;
        result.definition = m_state.wrap(definition);
        const VnIfcEntityBase* set = m_state.target(definition, Name::ForLayerSet);
        if (!set)
            set = m_state.target(definition, Name::ForProfileSet);
        result.isUsage = set != nullptr;
        if (!set)
            set = &definition;
        result.name = m_state.wrap(*set).name();
        static constexpr struct {
            Entity entity;
            MaterialKind kind;
            Name parts;
        } kKinds[] = {{Entity::IfcMaterialList, MaterialKind::kList, Name::Materials},
                      {Entity::IfcMaterialLayerSet, MaterialKind::kLayers, Name::MaterialLayers},
                      {Entity::IfcMaterialProfileSet, MaterialKind::kProfiles, Name::MaterialProfiles},
                      {Entity::IfcMaterialConstituentSet, MaterialKind::kConstituents, Name::MaterialConstituents}};
        result.kind = MaterialKind::kOther;
        for (const auto& [entity, kind, parts] : kKinds)
            if (m_state.is(*set, entity)) {
                result.kind = kind;
                m_state.forEachTarget(*set, parts,
                                      [&](VnIfcEntityBase& part) { result.parts.push_back(partOf(part)); });
            }
        if (result.kind == MaterialKind::kOther) {
            result.kind = m_state.is(*set, Entity::IfcMaterial) ? MaterialKind::kSingle : MaterialKind::kOther;
            result.parts.push_back(partOf(*set));
        }
        return result;
    }

private:
    MaterialPart partOf(const VnIfcEntityBase& part) const {
        MaterialPart result;
        result.part = m_state.wrap(part);
        const VnIfcEntityBase* material =
            m_state.is(part, Entity::IfcMaterial) ? &part : m_state.target(part, Name::Material);
        if (material)
            result.material = m_state.wrap(*material);
        result.name = m_state.text(material ? *material : part, Name::Name);
        result.category = m_state.text(part, Name::Category);
        result.thickness = m_state.number(part, Name::LayerThickness);
        result.fraction = m_state.number(part, Name::Fraction);
        if (const VnIfcEntityBase* profile = m_state.target(part, Name::Profile))
            result.profile = m_state.wrap(*profile);
        return result;
    }

    ModelState& m_state;
};

/// What a relation that associates leads to.
VnIfcEntityBase* associated(ModelState& state, const VnIfcEntityBase& object, Name relating) {
    VnIfcEntityBase* found = nullptr;
    state.forEachTarget(object, Name::HasAssociations,
                        [&](VnIfcEntityBase& relation) { found = found ? found : state.target(relation, relating); });
    return found;
}

} // namespace

Material material(const Instance& object) {
    const Relations relations(object);
    ModelState& state = relations.state();
    if (VnIfcEntityBase* own = associated(state, relations.object(), Name::RelatingMaterial))
        return MaterialReader(state).read(*own);
    Material result;
    detail::forEachType(state, relations.object(), [&](VnIfcEntityBase& type) {
        VnIfcEntityBase* ofType = result ? nullptr : associated(state, type, Name::RelatingMaterial);
        if (!ofType)
            return;
        result = MaterialReader(state).read(*ofType);
        result.isOfType = true;
    });
    return result;
}

// ---- classifications

namespace {

void addClassifications(ModelState& state, const VnIfcEntityBase& object, std::vector<Classification>& found) {
    state.forEachTarget(object, Name::HasAssociations, [&](VnIfcEntityBase& relation) {
        state.forEachTarget(relation, Name::RelatingClassification, [&](VnIfcEntityBase& reference) {
            Classification each;
            each.reference = state.wrap(reference);
            const bool isOld = !state.has(reference, Name::Identification);
            each.identification = state.text(reference, isOld ? Name::ItemReference : Name::Identification);
            each.name = state.text(reference, Name::Name);
            // References lead to others, and in the end to the system.
            const VnIfcEntityBase* source = &reference;
            for (unsigned depth = 0; source && depth < kMaxDepth; ++depth) {
                if (state.is(*source, Entity::IfcClassification))
                    each.system = state.text(*source, Name::Name);
                source = state.target(*source, Name::ReferencedSource);
            }
            found.push_back(std::move(each));
        });
    });
}

} // namespace

std::vector<Classification> classifications(const Instance& object) {
    const Relations relations(object);
    std::vector<Classification> found;
    addClassifications(relations.state(), relations.object(), found);
    detail::forEachType(relations.state(), relations.object(),
                        [&](VnIfcEntityBase& type) { addClassifications(relations.state(), type, found); });
    return found;
}

// ---- groups and layers

std::vector<Instance> groups(const Instance& object) {
    const Relations relations(object);
    return relations.wrap(relations.all(relations.object(), {{Name::HasAssignments, Name::RelatingGroup}}));
}

std::vector<Instance> systems(const Instance& object) {
    std::vector<Instance> found = groups(object);
    std::erase_if(found, [](const Instance& group) { return !group.is("IfcSystem"); });
    return found;
}

std::vector<Instance> members(const Instance& group) {
    const Relations relations(group);
    return relations.wrap(relations.all(relations.object(), {{Name::IsGroupedBy, Name::RelatedObjects}}));
}

std::vector<std::string> layers(const Instance& product) {
    const Relations relations(product);
    ModelState& state = relations.state();
    std::vector<std::string> names;
    const auto add = [&](const VnIfcEntityBase& item) {
        for (const Name name : {Name::LayerAssignments, Name::LayerAssignment})
            state.forEachTarget(item, name, [&](VnIfcEntityBase& layer) {
                std::string text = state.text(layer, Name::Name);
                if (std::ranges::find(names, text) == names.end())
                    names.push_back(std::move(text));
            });
    };
    const VnIfcEntityBase* shape = state.target(relations.object(), Name::Representation);
    if (!shape)
        return names;
    state.forEachTarget(*shape, Name::Representations, [&](VnIfcEntityBase& representation) {
        add(representation);
        state.forEachTarget(representation, Name::Items, add);
    });
    return names;
}

} // namespace vnifc
