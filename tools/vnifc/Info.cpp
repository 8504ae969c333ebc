#include "LoadedFile.h"
#include "Messages.h"
#include "Platform.h"
#include "Population.h"

#include <VnIfcCore/VnIfcText.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace vnifc::tool {

namespace {

struct HeaderField {
    const char* label;
    const char* keyword;
    std::size_t index;
};

// ISO 10303-21, 8.2.
constexpr HeaderField kHeaderFields[] = {
    {"schema", "FILE_SCHEMA", 0},      {"description", "FILE_DESCRIPTION", 0},
    {"name", "FILE_NAME", 0},          {"time stamp", "FILE_NAME", 1},
    {"author", "FILE_NAME", 2},        {"organization", "FILE_NAME", 3},
    {"preprocessor", "FILE_NAME", 4},  {"system", "FILE_NAME", 5},
    {"authorization", "FILE_NAME", 6}, {"implementation", "FILE_DESCRIPTION", 1},
};

void printRow(std::string_view label, const std::string& value) { fmt::print("{:<15}{}\n", label, value); }

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
    fmt::print("\n{}\n", title);
    for (const auto& [name, count] : byFrequency(counts))
        fmt::print("{:>10}  {}\n", count, printable(name));
}

void printInfoText(const std::string& name, const LoadedFile& file, const Population& population) {
    printRow("file", printable(name));
    printRow("release", fmt::format("{} (module {})", file.release().name, file.release().module));
    printHeader(file.model().header());
    printRow("size", fmt::format("{} bytes, {} instances", file.result().bytes, file.model().count()));
    printRow("read in", fmt::format("{:.3f} s, peak memory {:.1f} MiB", file.seconds(),
                                    static_cast<double>(peakMemory()) / 1048576));
    printRow("diagnostics", file.findings());
    printCounts("instances per entity", population.entities);
    printCounts("instances without a class, kept as text", population.withoutClass);
}

void printInfoJson(const std::string& name, const LoadedFile& file, const Population& population) {
    Population::Counts types = population.entities;
    for (const auto& [keyword, count] : population.withoutClass)
        types[keyword] += count;
    nlohmann::ordered_json json;
    json["file"] = name;
    json["bytes"] = file.result().bytes;
    json["schema"] = file.model().header().schemas();
    json["release"] = file.release().name;
    json["module"] = file.release().module;
    json["instances"] = file.model().count();
    json["types"] = std::move(types);
    json["diagnostics"] = {{"error", file.result().errors}, {"warning", file.result().warnings}};
    json["seconds"] = {{"read", file.seconds()}};
    json["peak_bytes"] = peakMemory();
    // Names may come from the file in any encoding; JSON has but one.
    fmt::print("{}\n", json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

} // namespace

ExitCode info(const ReadFlags& flags, bool json) {
    const LoadedFile file(flags);
    const Population population(file.model());
    (json ? printInfoJson : printInfoText)(flags.file, file, population);
    return file.exitCode();
}

} // namespace vnifc::tool
