#include "ReportPage.h"
#include "pages/Json.h"
#include "pages/Objects.h"
#include "pages/Page.h"

#include <VnIfcCore/VnIfcCheck.h>
#include <VnIfcCore/VnIfcText.h>

#include <vnifc/Columns.h>
#include <vnifc/Relations.h>
#include <vnifc/Report.h>
#include <vnifc/Units.h>
#include <vnifc/version.h>

#include <array>
#include <map>
#include <set>
#include <unordered_map>

namespace vnifc {

namespace {

using detail::Json;
using detail::Texts;
using Counts = std::map<std::string, std::uint64_t, std::less<>>;

constexpr std::array kSeverities = {"info", "warning", "error"};
// Of instances that are not rooted the page has the text as the file has it; those with thousands of points are cut.
constexpr std::size_t kShownText = 1000;

/// Writes an object of lists: what there is, and how often.
void writeCounts(Json& json, std::string_view key, const Counts& counts) {
    json.key(key).begin('[');
    for (const auto& [name, count] : counts)
        json.begin('[').put(name).put(count).end(']');
    json.end(']');
}

void writeMember(Json& json, std::string_view key, std::string_view text) {
    json.key(key);
    text.empty() ? json.null() : json.put(text);
}

// ---- The file

void writeFile(Json& json, const Model& model, const ReportOptions& options) {
    const VN_SDAI::VnIfcHeader& header = model.core().header();
    const auto field = [&](std::string_view label, const char* keyword, std::size_t index) {
        std::string all;
        for (const std::string& each : header.strings(keyword, index))
            if (!each.empty())
                all += (all.empty() ? "" : ", ") + VN_SDAI::vnDecodeText(each).text;
        if (!all.empty())
            json.begin('[').put(label).put(all).end(']');
    };
    json.key("title").put(options.title);
    json.key("program").put("vnifc " + std::string(version()));
    json.key("release").put(model.release());
    json.key("instances").put(model.size());
    // ISO 10303-21, 8.2.
    json.key("header").begin('[');
    field("Schema", "FILE_SCHEMA", 0);
    field("Description", "FILE_DESCRIPTION", 0);
    field("Name", "FILE_NAME", 0);
    field("Time stamp", "FILE_NAME", 1);
    field("Author", "FILE_NAME", 2);
    field("Organization", "FILE_NAME", 3);
    field("Preprocessor", "FILE_NAME", 4);
    field("System", "FILE_NAME", 5);
    field("Authorization", "FILE_NAME", 6);
    json.end(']');
}

void writeTypes(Json& json, const Model& model) {
    Counts types;
    for (const Instance instance : model.all())
        ++types[std::string(instance.type())];
    writeCounts(json, "types", types);
}

// ---- The spatial structure

struct Structure {
    std::vector<SpatialNode> nodes;
    std::vector<Instance> outside;

    explicit Structure(const Model& model) : nodes(spatialStructure(model)), outside(elementsOutside(model, nodes)) {}
};

void writeStructure(Json& json, const Structure& structure) {
    json.key("structure").begin('[');
    for (const SpatialNode& node : structure.nodes) {
        json.begin('{').key("level").put(node.level).key("id").put(node.instance.id());
        json.key("type").put(node.instance.type());
        writeMember(json, "name", node.instance.name());
        if (node.instance.has("LongName"))
            writeMember(json, "longName", node.instance["LongName"].toString());
        json.key("count").put(node.elements.size()).end('}');
    }
    json.end(']').key("outside").put(structure.outside.size());
}

void writeIds(Json& json, const std::vector<Instance>& instances) {
    json.begin('[');
    std::uint64_t previous = 0;
    for (const Instance& instance : instances)
        json.put(static_cast<std::int64_t>(instance.id() - std::exchange(previous, instance.id())));
    json.end(']');
}

/// Of each node its elements, then those of none.
void writeElements(Json& json, const Structure& structure) {
    json.key("elements").begin('[');
    for (const SpatialNode& node : structure.nodes)
        writeIds(json, node.elements);
    writeIds(json, structure.outside);
    json.end(']');
}

// ---- Property sets and quantities

struct SetUse {
    std::uint64_t objects = 0;
    std::map<std::string_view, std::uint64_t> filled; ///< by property: of so many objects it has a value
};

void writeSets(Json& json, const ColumnTable& table) {
    const Column& object = detail::columnOf(table, "object");
    const Column& set = detail::columnOf(table, "set");
    const Column& name = detail::columnOf(table, "name");
    const Column& value = detail::columnOf(table, "value");
    std::map<std::string_view, SetUse> sets;
    std::set<std::string_view> seen; // sets of the object at hand
    for (std::size_t row = 0; row < table.rows; ++row) {
        if (row > 0 && detail::idAt(object, row) != detail::idAt(object, row - 1))
            seen.clear();
        SetUse& use = sets[detail::textAt(set, row)];
        if (seen.insert(detail::textAt(set, row)).second)
            ++use.objects;
        use.filled[detail::textAt(name, row)] += detail::textAt(value, row).empty() ? 0 : 1;
    }
    json.key("sets").begin('[');
    for (const auto& [setName, use] : sets) {
        json.begin('[').put(setName).put(use.objects).begin('[');
        for (const auto& [property, filled] : use.filled)
            json.begin('[').put(property).put(filled).end(']');
        json.end(']').end(']');
    }
    json.end(']');
}

/// The sign of the SI unit of a quantity's measure; empty for a number of pieces and for what has no way to SI.
std::string_view siSignOf(std::string_view measure) {
    constexpr std::pair<std::string_view, std::string_view> kSigns[] = {
        {"IFCLENGTHMEASURE", "m"}, {"IFCAREAMEASURE", "m²"}, {"IFCVOLUMEMEASURE", "m³"},
        {"IFCMASSMEASURE", "kg"},  {"IFCTIMEMEASURE", "s"},
    };
    for (const auto& [name, sign] : kSigns)
        if (name == measure)
            return sign;
    return {};
}

struct Sum {
    double si = 0;
    std::uint64_t count = 0;
    std::string_view sign;
};

/// Which node's quantities those of an object are: its storey's, or those of the nearest node where there is none.
std::unordered_map<std::uint64_t, std::uint64_t> storeys(const Structure& structure) {
    std::unordered_map<std::uint64_t, std::uint64_t> result;
    std::vector<std::uint64_t> storeyAtLevel; // 0: in none
    for (const SpatialNode& node : structure.nodes) {
        storeyAtLevel.resize(node.level);
        const std::uint64_t above = storeyAtLevel.empty() ? 0 : storeyAtLevel.back();
        const std::uint64_t storey = node.instance.is("IfcBuildingStorey") ? node.instance.id() : above;
        storeyAtLevel.push_back(storey);
        const std::uint64_t place = storey != 0 ? storey : node.instance.id();
        result.emplace(node.instance.id(), place);
        for (const Instance& element : node.elements)
            result.emplace(element.id(), place);
    }
    return result;
}

void writeQuantities(Json& json, const Model& model, const Structure& structure) {
    const ColumnTable table = propertyColumns(model, {.quantities = true});
    const std::unordered_map<std::uint64_t, std::uint64_t> storeyOf = storeys(structure);
    const Column& object = detail::columnOf(table, "object");
    const Column& si = detail::columnOf(table, "si_value");
    const Column& number = detail::columnOf(table, "number");
    using Key = std::pair<std::string_view, std::string_view>; // set and name
    std::map<std::uint64_t, std::map<Key, Sum>> sums;
    for (std::size_t row = 0; row < table.rows; ++row) {
        const std::string_view measure = detail::textAt(detail::columnOf(table, "type"), row);
        const bool isCount = measure == "IFCCOUNTMEASURE";
        const Column& value = isCount ? number : si;
        const auto place = storeyOf.find(detail::idAt(object, row));
        if (place == storeyOf.end() || !detail::hasValue(value, row) || (!isCount && siSignOf(measure).empty()))
            continue; // types are nowhere, and ratios have no sum
        Sum& sum = sums[place->second][{detail::textAt(detail::columnOf(table, "set"), row),
                                        detail::textAt(detail::columnOf(table, "name"), row)}];
        sum.si += static_cast<const double*>(value.values().data())[row];
        sum.sign = siSignOf(measure);
        ++sum.count;
    }
    json.key("quantities").begin('[');
    for (const auto& [storey, quantities] : sums) {
        const Instance instance = model[storey];
        json.begin('{').key("id").put(storey).key("type").put(instance.type()).key("name").put(instance.name());
        json.key("sums").begin('[');
        for (const auto& [key, sum] : quantities)
            json.begin('[').put(key.first).put(key.second).put(sum.si).put(sum.sign).put(sum.count).end(']');
        json.end(']').end('}');
    }
    json.end(']');
}

// ---- Materials and classifications

void writeMaterials(Json& json, const Model& model) {
    Counts materials, systems;
    for (const Instance object : model.instances("IfcObject")) {
        if (object.isForeign())
            continue;
        std::set<std::string> names;
        for (const MaterialPart& part : material(object).parts)
            names.insert(part.name);
        for (const std::string& name : names)
            ++materials[name];
        for (const Classification& each : classifications(object))
            ++systems[each.system + '\n' + each.identification + '\n' + each.name];
    }
    writeCounts(json, "materials", materials);
    writeCounts(json, "classifications", systems);
}

// ---- Findings

struct FindingKind {
    std::uint64_t count = 0;
    std::vector<Finding> shown;
};

class Findings {
public:
    explicit Findings(std::size_t shown) : m_shown(shown) {}

    void add(const Finding& finding) {
        FindingKind& kind = m_kinds[{kMostSevere - finding.severity, finding.code, finding.rule}];
        ++m_counts[finding.severity];
        if (++kind.count > m_shown)
            return;
        kind.shown.push_back(finding);
        kind.shown.back().file.clear(); // the page is about one file
        if (finding.instance != 0)
            m_instances.insert(finding.instance);
    }

    void write(Json& json) const {
        json.key("counts").begin('{');
        for (std::size_t i = 0; i < kSeverities.size(); ++i)
            json.key(kSeverities[i]).put(m_counts[i]);
        json.end('}').key("findings").begin('[');
        for (const auto& [key, kind] : m_kinds) {
            const Finding& first = kind.shown.empty() ? kNone : kind.shown.front();
            json.begin('{').key("severity").put(kSeverities[kMostSevere - std::get<0>(key)]);
            json.key("code").put(std::get<1>(key)).key("rule").put(first.rule).key("count").put(kind.count);
            json.key("shown").begin('[');
            for (const Finding& finding : kind.shown)
                json.begin('[').put(finding.instance).put(finding.line).put(finding.text()).end(']');
            json.end(']').end('}');
        }
        json.end(']');
    }

    /// The instances that are no rooted ones, as the file has them.
    void writeInstances(Json& json, const Model& model) const {
        json.key("others").begin('[');
        for (const std::uint64_t id : m_instances) {
            const Instance instance = model.find(id);
            if (!instance || instance.is("IfcRoot"))
                continue;
            std::string text = instance.toString();
            if (text.size() > kShownText)
                text = text.substr(0, kShownText) + "…";
            json.begin('[').put(id).put(instance.type()).put(text).end(']');
        }
        json.end(']');
    }

private:
    using Key = std::tuple<int, std::string, std::string>; ///< errors first, code, rule
    static constexpr int kMostSevere = Finding::kError;
    inline static const Finding kNone{};

    std::size_t m_shown;
    std::map<Key, FindingKind> m_kinds;
    std::array<std::uint64_t, kSeverities.size()> m_counts{};
    std::set<std::uint64_t> m_instances;
};

Findings findingsOf(Model& model, const ReportOptions& options) {
    Findings findings(options.shownFindings);
    const VN_SDAI::VnIfcDiagnosticSink sink = [&](const Finding& finding) { findings.add(finding); };
    for (const Finding& finding : options.reading.empty() ? model.findings() : options.reading)
        if (finding.code != "mandatory") // the check of the instance tells it
            findings.add(finding);
    model.needInverses();
    VN_SDAI::VnIfcCheck(model.core(), sink).run(options.threads);
    if (options.rules) {
        RulesCheckOptions ruleOptions;
        ruleOptions.threads = options.threads;
        options.rules->check(model.core(), sink, ruleOptions);
    }
    return findings;
}

} // namespace

std::string report(Model& model, const ReportOptions& options) {
    const Findings findings = findingsOf(model, options);
    const Structure structure(model);
    const ColumnTable properties = propertyColumns(model);
    Json overview;
    overview.begin('{');
    writeFile(overview, model, options);
    writeTypes(overview, model);
    writeStructure(overview, structure);
    writeSets(overview, properties);
    writeMaterials(overview, model);
    writeQuantities(overview, model, structure);
    findings.write(overview);
    overview.key("rules").put(options.rules ? 1 : 0).end('}');

    Texts texts;
    Json details;
    details.begin('{');
    detail::writeObjects(details, model, texts);
    detail::writeProperties(details, properties, texts);
    writeElements(details, structure);
    findings.writeInstances(details, model);
    texts.write(details);
    details.end('}');
    return detail::pageWith(detail::kReportPage, {{"overview", overview.take()}, {"details", details.take()}});
}

} // namespace vnifc
