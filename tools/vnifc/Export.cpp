#include "Instances.h"
#include "LoadedFile.h"

#include <algorithm>

namespace vnifc::tool {

using namespace VN_SDAI;

ExitCode exportInstances(const ReadFlags& flags, const std::vector<std::string>& types, bool inverses) {
    const LoadedFile file(flags, {.inverses = inverses});
    std::vector<EntityFilter> filters;
    for (const std::string& type : types)
        filters.emplace_back(file.model(), type, true);
    Output output(writeToStandardOutput);
    JsonWriter json(output);
    file.model().forEach([&](const VnIfcEntityBase& instance) {
        const auto matches = [&](const EntityFilter& filter) { return filter.matches(instance); };
        if (!filters.empty() && std::ranges::none_of(filters, matches))
            return;
        writeInstance(json, instance, {.inverses = inverses});
        json.newLine();
    });
    output.flush();
    return file.exitCode();
}

} // namespace vnifc::tool
