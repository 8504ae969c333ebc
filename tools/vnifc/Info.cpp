#include "LoadedFile.h"
#include "Messages.h"
#include "Platform.h"
#include "Population.h"
#include "Terminal.h"

#include <VnIfcCore/VnIfcText.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <vnifc/Model.h>
#include <vnifc/Relations.h>

#include <algorithm>
#include <optional>

namespace vnifc::tool {

namespace {

struct HeaderField {
    const char* label;
    const char* key; ///< in JSON
    const char* keyword;
    std::size_t index;
    bool isList;
};

// ISO 10303-21, 8.2.
constexpr HeaderField kHeaderFields[] = {
    {"schema", "schema", "FILE_SCHEMA", 0, true},
    {"description", "description", "FILE_DESCRIPTION", 0, true},
    {"name", "name", "FILE_NAME", 0, false},
    {"time stamp", "timeStamp", "FILE_NAME", 1, false},
    {"author", "author", "FILE_NAME", 2, true},
    {"organization", "organization", "FILE_NAME", 3, true},
    {"preprocessor", "preprocessor", "FILE_NAME", 4, false},
    {"system", "system", "FILE_NAME", 5, false},
    {"authorization", "authorization", "FILE_NAME", 6, false},
    {"implementation", "implementation", "FILE_DESCRIPTION", 1, false},
};

/// What the file is besides its instances.
struct Facts {
    std::uint64_t bytes;
    std::uint64_t errors, warnings;
    std::string findings;
    double seconds;
    const VN_SDAI::VnIfcRelease* release;

    explicit Facts(const LoadedFile& file)
        : bytes(file.result().bytes), errors(file.result().errors), warnings(file.result().warnings),
          findings(file.findings()), seconds(file.seconds()), release(&file.release()) {}
};

/// The spatial structure in a few numbers.
struct Extent {
    std::uint64_t globalIds = 0;
    std::vector<std::pair<std::string, std::uint64_t>> nodes; ///< by entity, from the outside in
    std::uint64_t elements = 0;
    std::optional<double> lowest, highest; ///< elevations of storeys, in the project's unit of length
    std::string unit;

    explicit Extent(const Model& model) {
        for (const Instance instance : model.instances("IfcRoot"))
            globalIds += instance.globalId().empty() ? 0 : 1;
        for (const SpatialNode& node : spatialStructure(model))
            add(node);
        if (const Instance length = projectUnit(model, "LENGTHUNIT"))
            unit = signOf(length);
    }

private:
    void add(const SpatialNode& node) {
        elements += node.elements.size();
        const auto known = std::ranges::find(nodes, node.instance.type(),
                                             [](const auto& each) -> std::string_view { return each.first; });
        if (known == nodes.end())
            nodes.emplace_back(std::string(node.instance.type()), 1);
        else
            ++known->second;
        if (!node.instance.is("IfcBuildingStorey"))
            return;
        if (const auto elevation = node.instance.get<double>("Elevation")) {
            lowest = std::min(lowest.value_or(*elevation), *elevation);
            highest = std::max(highest.value_or(*elevation), *elevation);
        }
    }
};

void printRow(std::string_view label, const std::string& value) {
    fmt::print("{}{}\n", painted(fmt::format("{:<15}", label), Paint::kFaint, hasColours(Stream::kOutput)), value);
}

std::string decoded(const std::vector<std::string>& values) {
    const std::string all = fmt::format("{}", fmt::join(values, ", "));
    return VN_SDAI::vnDecodeText(all, VN_SDAI::VnIfcRawBytes::kReplace).text;
}

void printHeader(const VN_SDAI::VnIfcHeader& header) {
    for (const HeaderField& field : kHeaderFields) {
        std::vector<std::string> values = header.strings(field.keyword, field.index);
        std::erase(values, ""); // how a list says that there is nothing to say
        if (!values.empty())
            printRow(field.label, printable(decoded(values)));
    }
}

void printCounts(const char* title, const Population::Counts& counts) {
    if (counts.empty())
        return;
    const bool isColoured = hasColours(Stream::kOutput);
    fmt::print("\n{}\n", painted(title, Paint::kStrong, isColoured));
    const auto rows = byFrequency(counts);
    // For a person bars beside the ten largest, in what the line has left.
    constexpr std::size_t kBars = 10;
    constexpr unsigned kLongestBar = 40, kBesideName = 14;
    std::size_t longest = 0;
    for (std::size_t i = 0; i < std::min(rows.size(), kBars); ++i)
        longest = std::max(longest, rows[i].first.size());
    const unsigned taken = static_cast<unsigned>(longest) + kBesideName;
    const unsigned room = !isOutputTerminal() || lineWidth() <= taken ? 0 : std::min(lineWidth() - taken, kLongestBar);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto& [name, count] = rows[i];
        const double share = static_cast<double>(count) / static_cast<double>(rows.front().second);
        fmt::print("{:>10}  {}", forReader(count), printable(name));
        if (room > 0 && i < kBars)
            fmt::print("{:{}}{}", "", longest + 2 - name.size(), painted(bar(share, room), Paint::kAccent, isColoured));
        fmt::print("\n");
    }
}

void printExtent(const Extent& extent) {
    std::vector<std::string> parts;
    for (const auto& [entity, count] : extent.nodes)
        parts.push_back(fmt::format("{} {}", forReader(count), printable(entity)));
    printRow("GlobalIds", forReader(extent.globalIds));
    if (!parts.empty())
        printRow("structure", fmt::format("{}; {} elements", fmt::join(parts, ", "), forReader(extent.elements)));
    if (extent.lowest)
        printRow("elevations", printable(fmt::format("{:g} to {:g} {}", *extent.lowest, *extent.highest, extent.unit)));
}

void printInfoText(const std::string& name, const Facts& facts, const Model& model, const Population& population,
                   const Extent& extent) {
    printRow("file", printable(name));
    printRow("release", fmt::format("{} (module {})", facts.release->name, facts.release->module));
    printHeader(model.core().header());
    printRow("size", fmt::format("{} bytes, {} instances", forReader(facts.bytes), forReader(model.size())));
    printExtent(extent);
    printRow("read in", fmt::format("{:.3f} s, peak memory {:.1f} MiB", facts.seconds,
                                    static_cast<double>(peakMemory()) / 1048576));
    printRow("diagnostics", facts.findings);
    printCounts("instances per entity", population.entities);
    printCounts("instances without a class, kept as text", population.withoutClass);
}

nlohmann::ordered_json jsonOf(const VN_SDAI::VnIfcHeader& header) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    for (const HeaderField& field : kHeaderFields) {
        std::vector<std::string> values = header.strings(field.keyword, field.index);
        for (std::string& value : values)
            value = decoded({value});
        if (field.isList)
            json[field.key] = values;
        else
            json[field.key] = values.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(values.front());
    }
    return json;
}

nlohmann::ordered_json jsonOf(const Extent& extent) {
    nlohmann::ordered_json json;
    json["nodes"] = nlohmann::ordered_json::object();
    for (const auto& [entity, count] : extent.nodes)
        json["nodes"][entity] = count;
    json["elements"] = extent.elements;
    json["lowestElevation"] = extent.lowest ? nlohmann::ordered_json(*extent.lowest) : nlohmann::ordered_json();
    json["highestElevation"] = extent.highest ? nlohmann::ordered_json(*extent.highest) : nlohmann::ordered_json();
    json["lengthUnit"] = extent.unit.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(extent.unit);
    return json;
}

void printInfoJson(const std::string& name, const Facts& facts, const Model& model, const Population& population,
                   const Extent& extent) {
    Population::Counts types = population.entities;
    for (const auto& [keyword, count] : population.withoutClass)
        types[keyword] += count;
    nlohmann::ordered_json json;
    json["file"] = name;
    json["bytes"] = facts.bytes;
    json["schema"] = model.core().header().schemas();
    json["release"] = facts.release->name;
    json["module"] = facts.release->module;
    json["header"] = jsonOf(model.core().header());
    json["instances"] = model.size();
    json["globalIds"] = extent.globalIds;
    json["structure"] = jsonOf(extent);
    json["types"] = std::move(types);
    json["diagnostics"] = {{"error", facts.errors}, {"warning", facts.warnings}};
    json["seconds"] = {{"read", facts.seconds}};
    json["peakBytes"] = peakMemory();
    // Names may come from the file in any encoding; JSON has but one.
    fmt::print("{}\n", json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

} // namespace

ExitCode info(const ReadFlags& flags, bool json) {
    LoadedFile file(flags);
    const Facts facts(file);
    const ExitCode exitCode = file.exitCode();
    const Population population(file.model());
    const Model model(file.take());
    const Extent extent(model);
    (json ? printInfoJson : printInfoText)(flags.file, facts, model, population, extent);
    return exitCode;
}

} // namespace vnifc::tool
