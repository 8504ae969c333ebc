#include "Instances.h"
#include "Inverse.h"
#include "LoadedFile.h"
#include "Messages.h"
#include "Population.h"
#include "Values.h"

#include <VnIfcCore/VnIfcSchema.h>

#include <fmt/format.h>

#include <limits>
#include <unordered_set>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

/// A project or spatial element, with what is in it but in none of the nodes below it.
struct Node {
    const VnIfcEntityBase* instance;
    unsigned level;
    Population::Counts elements;
};

/// The spatial structure of a model. Each instance stands in it once, so that a structure that runs in circles ends.
class Structure {
public:
    Structure(const VnIfcModel& model, unsigned depth);

    /// Each node before those below it.
    const std::vector<Node>& nodes() const noexcept { return m_nodes; }
    /// The elements that are nowhere in it.
    const Population::Counts& outside() const noexcept { return m_outside; }
    /// How often an instance belongs to a whole although it stands below another one.
    std::size_t repeated() const noexcept { return m_repeated; }

private:
    /// An instance that is to be taken in below a node.
    struct Pending {
        const VnIfcEntityBase* instance;
        std::size_t parent;
    };
    static constexpr std::size_t kNoParent = std::numeric_limits<std::size_t>::max();

    void addRoots(const char* entity, bool onlyTop);
    void addAllBelow(const VnIfcEntityBase& root);
    std::size_t place(const Pending& pending);

    const VnIfcModel& m_model;
    const char* m_spatial; ///< the entity of spatial elements
    unsigned m_depth;
    std::unordered_set<const VnIfcEntityBase*> m_known;
    std::vector<Node> m_nodes;
    Population::Counts m_outside;
    std::size_t m_repeated = 0;
};

Instances partsOf(const VnIfcEntityBase& whole) {
    static const struct {
        VnAnsiString relations;
        VnAnsiString members;
    } kWays[] = {{"IsDecomposedBy", "RelatedObjects"},
                 {"IsNestedBy", "RelatedObjects"},
                 {"ContainsElements", "RelatedElements"}};
    Instances parts;
    for (const auto& [relations, members] : kWays)
        for (const VnIfcEntityBase* relation : targetsOf(whole, relations))
            for (const VnIfcEntityBase* part : targetsOf(*relation, members))
                parts.push_back(part);
    return parts;
}

/// Zones and the like became spatial elements after IFC2X3, under a new supertype.
const char* spatialEntityOf(const VnIfcSchema& schema) {
    return schema.entity("IfcSpatialElement") ? "IfcSpatialElement" : "IfcSpatialStructureElement";
}

Structure::Structure(const VnIfcModel& model, unsigned depth)
    : m_model(model), m_spatial(spatialEntityOf(*model.schema())), m_depth(depth) {
    addRoots("IfcProject", false);
    addRoots(m_spatial, true);
    addRoots(m_spatial, false);
    const VnIfcEntityType* feature = m_model.schema()->entity("IfcFeatureElement");
    m_model.forEach(m_model.schema()->entity("IfcElement"), true, [&](const VnIfcEntityBase& element) {
        // Openings and the like belong to the element that they are in.
        if (!m_known.contains(&element) && !element.isKindOf(feature))
            ++m_outside[keywordOf(element)];
    });
}

void Structure::addRoots(const char* entity, bool onlyTop) {
    m_model.forEach(m_model.schema()->entity(entity), true, [&](const VnIfcEntityBase& instance) {
        if (!onlyTop || targetsOf(instance, "Decomposes").empty())
            addAllBelow(instance);
    });
}

void Structure::addAllBelow(const VnIfcEntityBase& root) {
    std::vector<Pending> pending{{&root, kNoParent}};
    while (!pending.empty()) {
        const Pending next = pending.back();
        pending.pop_back();
        if (!m_known.insert(next.instance).second) {
            m_repeated += next.parent != kNoParent;
            continue;
        }
        const std::size_t parent = place(next);
        const Instances parts = partsOf(*next.instance);
        for (auto part = parts.rbegin(); part != parts.rend(); ++part)
            pending.push_back({*part, parent});
    }
}

/// Makes an instance a node or counts it in the node that it belongs to; returns the node that its parts belong to.
std::size_t Structure::place(const Pending& pending) {
    const bool isRoot = pending.parent == kNoParent;
    const unsigned level = isRoot ? 0 : m_nodes[pending.parent].level + 1;
    if (isRoot || (level <= m_depth && pending.instance->isKindOf(m_spatial))) {
        m_nodes.push_back({pending.instance, level, {}});
        return m_nodes.size() - 1;
    }
    if (!pending.instance->isKindOf("IfcPort"))
        ++m_nodes[pending.parent].elements[keywordOf(*pending.instance)];
    return pending.parent;
}

// ---- Output

void printCounts(const Population::Counts& counts, std::size_t indent) {
    for (const auto& [keyword, count] : byFrequency(counts))
        fmt::print("{:{}}{} {}\n", "", indent, count, printable(keyword));
}

void printText(const Structure& structure) {
    for (const Node& node : structure.nodes()) {
        const std::size_t indent = 2 * std::size_t{node.level};
        const std::string longName = textOf(*node.instance, "LongName");
        const bool tellsMore = !longName.empty() && longName != nameOf(*node.instance);
        fmt::print("{:{}}{}{}\n", "", indent, printable(wordsOf(node.instance->objectId())),
                   tellsMore ? printable(" (" + longName + ")") : "");
        printCounts(node.elements, indent + 2);
    }
    if (structure.outside().empty())
        return;
    fmt::print("elements in no spatial element\n");
    printCounts(structure.outside(), 2);
}

void writeCounts(JsonWriter& json, const char* key, const Population::Counts& counts) {
    json.key(key);
    json.beginObject();
    for (const auto& [keyword, count] : counts) {
        json.key(keyword);
        json.number(count);
    }
    json.endObject();
}

void writeMember(JsonWriter& json, const char* key, const std::string& text) {
    json.key(key);
    text.empty() ? json.null() : json.string(text);
}

/// Begins the object of a node, up to the list of the nodes below it.
void beginNode(JsonWriter& json, const Node& node) {
    json.beginObject();
    json.key("id");
    json.number(node.instance->objectId().number());
    json.key("type");
    json.string(keywordOf(*node.instance));
    writeMember(json, "globalId", textOf(*node.instance, "GlobalId"));
    writeMember(json, "name", nameOf(*node.instance));
    writeMember(json, "longName", textOf(*node.instance, "LongName"));
    writeCounts(json, "elements", node.elements);
    json.key("children");
    json.beginArray();
}

void printJson(const Structure& structure) {
    Output output(writeToStandardOutput);
    JsonWriter json(output);
    unsigned open = 0; // nodes whose list is not ended
    const auto endDownTo = [&](unsigned level) {
        for (; open > level; --open) {
            json.endArray();
            json.endObject();
        }
    };
    json.beginObject();
    json.key("structure");
    json.beginArray();
    for (const Node& node : structure.nodes()) {
        endDownTo(node.level);
        beginNode(json, node);
        ++open;
    }
    endDownTo(0);
    json.endArray();
    writeCounts(json, "outside", structure.outside());
    json.key("repeated");
    json.number(structure.repeated());
    json.endObject();
    json.newLine();
    output.flush();
}

} // namespace

ExitCode tree(const ReadFlags& flags, std::optional<unsigned> depth, bool json) {
    const LoadedFile file(flags, {.inverses = true});
    const Structure structure(file.model(), depth.value_or(std::numeric_limits<unsigned>::max()));
    (json ? printJson : printText)(structure);
    if (structure.repeated() > 0 && !flags.quiet)
        say(fmt::format("{} more places of instances that belong to several wholes; each is counted in the first only",
                        structure.repeated()));
    return file.exitCode();
}

} // namespace vnifc::tool
