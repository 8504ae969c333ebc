#include "JsonWriter.h"
#include "Messages.h"
#include "Population.h"
#include "WholeModel.h"

#include <fmt/format.h>
#include <vnifc/Relations.h>

#include <limits>

namespace vnifc::tool {

namespace {

struct Structure {
    std::vector<SpatialNode> nodes;
    std::vector<Instance> outside;
    std::size_t repeated = 0; ///< how often an instance belongs to a whole although it stands below another one

    Structure(const Model& model, unsigned depth)
        : nodes(spatialStructure(model, depth)), outside(elementsOutside(model, nodes)) {
        for (const SpatialNode& node : nodes)
            repeated += node.elsewhere.size();
    }
};

Population::Counts countsOf(const std::vector<Instance>& instances) {
    Population::Counts counts;
    for (const Instance& each : instances)
        ++counts[std::string(each.keyword())];
    return counts;
}

std::string longNameOf(const Instance& instance) {
    return instance.has("LongName") ? instance["LongName"].toString() : std::string();
}

// ---- Output

void printCounts(const std::vector<Instance>& instances, std::size_t indent) {
    for (const auto& [keyword, count] : byFrequency(countsOf(instances)))
        fmt::print("{:{}}{} {}\n", "", indent, count, printable(keyword));
}

void printText(const Structure& structure) {
    for (const SpatialNode& node : structure.nodes) {
        const std::size_t indent = 2 * std::size_t{node.level};
        const std::string longName = longNameOf(node.instance);
        const bool tellsMore = !longName.empty() && longName != node.instance.name();
        fmt::print("{:{}}{}{}\n", "", indent, printable(Value(node.instance).toString(TextForm::kDescribed)),
                   tellsMore ? printable(" (" + longName + ")") : "");
        printCounts(node.elements, indent + 2);
    }
    if (structure.outside.empty())
        return;
    fmt::print("elements in no spatial element\n");
    printCounts(structure.outside, 2);
}

void writeCounts(JsonWriter& json, const char* key, const std::vector<Instance>& instances) {
    json.key(key);
    json.beginObject();
    for (const auto& [keyword, count] : countsOf(instances)) {
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
void beginNode(JsonWriter& json, const SpatialNode& node) {
    json.beginObject();
    json.key("id");
    json.number(node.instance.id());
    json.key("type");
    json.string(node.instance.keyword());
    writeMember(json, "globalId", node.instance.globalId());
    writeMember(json, "name", node.instance.name());
    writeMember(json, "longName", longNameOf(node.instance));
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
    for (const SpatialNode& node : structure.nodes) {
        endDownTo(node.level);
        beginNode(json, node);
        ++open;
    }
    endDownTo(0);
    json.endArray();
    writeCounts(json, "outside", structure.outside);
    json.key("repeated");
    json.number(std::uint64_t{structure.repeated});
    json.endObject();
    json.newLine();
    output.flush();
}

} // namespace

ExitCode tree(const ReadFlags& flags, std::optional<unsigned> depth, bool json) {
    const Model model = openModel(flags);
    const Structure structure(model, depth.value_or(std::numeric_limits<unsigned>::max()));
    (json ? printJson : printText)(structure);
    if (structure.repeated > 0 && !flags.quiet)
        say(fmt::format("{} more places of instances that belong to several wholes; each is counted in the first only",
                        structure.repeated));
    return exitCodeOf(model);
}

} // namespace vnifc::tool
