#include "JsonInstance.h"
#include "WholeModel.h"

#include <algorithm>

namespace vnifc::tool {

namespace {

/// Those of some entities, subtypes included, each once and ascending; all where none is named.
std::vector<Instance> instancesOf(const Model& model, const std::vector<std::string>& types) {
    std::vector<Instance> instances;
    for (const std::string& type : types)
        for (const Instance instance : model.instances(type))
            instances.push_back(instance);
    std::ranges::sort(instances);
    instances.erase(std::unique(instances.begin(), instances.end()), instances.end());
    return instances;
}

} // namespace

ExitCode exportInstances(const ReadFlags& flags, const std::vector<std::string>& types, bool inverses) {
    const Model model = openModel(flags);
    const std::vector<Instance> wanted = instancesOf(model, types);
    Output output(writeToStandardOutput);
    JsonWriter json(output);
    const auto write = [&](const Instance& instance) {
        writeInstance(json, instance, {.inverses = inverses});
        json.newLine();
    };
    if (types.empty())
        std::ranges::for_each(model.all(), write);
    else
        std::ranges::for_each(wanted, write);
    output.flush();
    return exitCodeOf(model);
}

} // namespace vnifc::tool
