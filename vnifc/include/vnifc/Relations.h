#pragma once
#include <vnifc/Units.h>

#include <string>
#include <vector>

// What an object has to do with others, whatever the release calls the relation. All functions are about the instance
// that they are given, and give no instance, or an empty list, where there is nothing. They throw NotFound for what is
// no instance.
namespace vnifc {

// ---- where an object is

/// The spatial element that an object is in: its own container, or that of the whole that it is a part of, of the
/// opening's host or of what it fills. For a spatial element the one that it is a part of.
VNIFC_LAYER_API Instance container(const Instance& object);
/// The nearest storey, building or site that an object is in, itself included.
VNIFC_LAYER_API Instance storey(const Instance& object);
VNIFC_LAYER_API Instance building(const Instance& object);
VNIFC_LAYER_API Instance site(const Instance& object);
/// What is directly in a spatial element, without the spatial elements that are parts of it.
VNIFC_LAYER_API std::vector<Instance> contents(const Instance& spatialElement);

/// The parts that an object is aggregated or nested of.
VNIFC_LAYER_API std::vector<Instance> parts(const Instance& whole);
/// What an object is a part of.
VNIFC_LAYER_API Instance whole(const Instance& part);
/// What an object hangs from in the tree of a model: container, whole, the opening that it fills or the element that it
/// is an opening of.
VNIFC_LAYER_API Instance parent(const Instance& object);

/// A project or spatial element, with what is in it but in none of the nodes below it.
struct SpatialNode {
    Instance instance;
    unsigned level;                 ///< 0 for a root
    std::vector<Instance> elements; ///< everything there, also parts of parts, without ports
};
/// The spatial structure, each node before those below it; nodes deeper than `depth` are elements of the one above.
/// Each instance stands in it once, so that a structure that runs in circles ends.
VNIFC_LAYER_API std::vector<SpatialNode> spatialStructure(const Model& model, unsigned depth = ~0U);
/// The elements that are nowhere in it, without openings and the like, which belong to the element that they are in.
VNIFC_LAYER_API std::vector<Instance> elementsOutside(const Model& model, const std::vector<SpatialNode>& structure);

// ---- types

/// The type of an object.
VNIFC_LAYER_API Instance typeOf(const Instance& object);
/// The objects of a type.
VNIFC_LAYER_API std::vector<Instance> occurrences(const Instance& type);

// ---- material

enum class MaterialKind : std::uint8_t { kNone, kSingle, kList, kLayers, kProfiles, kConstituents, kOther };

/// A layer, profile, constituent or member of a list; of a single material itself.
struct MaterialPart {
    Instance part;
    Instance material; ///< none for a layer of air
    std::string name;  ///< of the material; where there is none, of the part
    std::string category;
    std::optional<double> thickness; ///< of a layer, in the project's unit of length
    std::optional<double> fraction;  ///< of a constituent
    Instance profile;
};

struct Material {
    Instance definition; ///< what is assigned: a material, list, set or usage
    MaterialKind kind = MaterialKind::kNone;
    bool isUsage = false;  ///< the definition says how a set is used
    bool isOfType = false; ///< assigned to the object's type and not to itself
    std::string name;      ///< of the set or material
    std::vector<MaterialPart> parts;

    explicit operator bool() const noexcept { return kind != MaterialKind::kNone; }
};

/// The material of an object: its own, or its type's. The first where there are several.
VNIFC_LAYER_API Material material(const Instance& object);

// ---- classifications, groups, layers

struct Classification {
    Instance reference;
    std::string identification; ///< "21.22"
    std::string name;
    std::string system; ///< the name of the classification
};
/// The classifications of an object, then those of its type.
VNIFC_LAYER_API std::vector<Classification> classifications(const Instance& object);

/// The groups that an object is in, systems and zones included.
VNIFC_LAYER_API std::vector<Instance> groups(const Instance& object);
/// Those among them that are systems.
VNIFC_LAYER_API std::vector<Instance> systems(const Instance& object);
/// What is in a group.
VNIFC_LAYER_API std::vector<Instance> members(const Instance& group);

/// The names of the presentation layers of a product's representations and their items, each once.
VNIFC_LAYER_API std::vector<std::string> layers(const Instance& product);

} // namespace vnifc
