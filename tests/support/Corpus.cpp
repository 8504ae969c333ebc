#include "Corpus.h"

#include "Files.h"
#include "Releases.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

namespace vnifc::test {

namespace fs = std::filesystem;

namespace {

/// A text that is the same for equal values; SETs are sorted. `level` is that of the type's layer that a list is of.
std::string canonical(const plain::Value& value, const declared::Type& type, std::size_t level) {
    if (value.kind == plain::Value::kNumber) {
        std::ostringstream text;
        text << std::hexfloat << value.number;
        return text.str();
    }
    if (value.kind == plain::Value::kToken && value.text.starts_with('.'))
        return declared::upper(value.text);
    const bool isList = value.kind == plain::Value::kList;
    if (!isList && value.kind != plain::Value::kTyped)
        return value.text;
    std::vector<std::string> values;
    for (const plain::Value& each : value.values)
        values.push_back(canonical(each, type, isList ? level + 1 : type.layers.size()));
    if (isList && level < type.layers.size() && type.layers[level].kind == "set")
        std::ranges::sort(values);
    std::string text = isList ? "(" : value.text + '(';
    for (const std::string& each : values)
        text += each + ',';
    return text + ')';
}

std::vector<std::string> canonical(const plain::Instance& instance, const declared::Schema& release) {
    std::vector<declared::Parameter> known;
    if (const declared::Entity* entity = release.entity(instance.keyword))
        known = release.parameters(*entity);
    std::vector<std::string> values;
    for (std::size_t i = 0; i < instance.parameters.size(); ++i)
        values.push_back(canonical(instance.parameters[i],
                                   i < known.size() ? release.resolved(known[i].attribute->type) : declared::Type(),
                                   0));
    return values;
}

} // namespace

fs::path corpus() {
    const char* place = std::getenv("VNIFC_CORPUS");
    return place ? fs::path(place) : fs::path(VNIFC_SCHEMAS "/../../shared/corpus");
}

std::vector<fs::path> corpusFiles() {
    std::vector<fs::path> files;
    if (!fs::is_directory(corpus()))
        return files;
    for (const auto& entry : fs::directory_iterator(corpus()))
        if (entry.path().extension() == ".ifc")
            files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

std::vector<fs::path> readableCorpusFiles() {
    std::vector<fs::path> files = corpusFiles();
    std::erase_if(files, [](const fs::path& file) { return !isBuilt(releaseOf(plain::read(contents(file)))); });
    return files;
}

std::string releaseOf(const plain::File& file) {
    for (const auto& [keyword, parameters] : file.header) {
        if (keyword != "FILE_SCHEMA")
            continue;
        if (parameters.find("IFC2X") != parameters.npos)
            return "IFC2X3";
        if (parameters.find("IFC4X1") != parameters.npos)
            return "IFC4X3";
        return parameters.find("IFC4X3") != parameters.npos ? "IFC4X3_ADD2" : "IFC4";
    }
    throw std::runtime_error("a file without FILE_SCHEMA");
}

std::string lossesOf(const plain::File& before, const plain::File& after, const declared::Schema& release) {
    std::string losses;
    for (const auto& [number, instance] : before.instances) {
        const std::string name = '#' + std::to_string(number) + '=' + instance.keyword;
        const auto found = after.instances.find(number);
        if (found == after.instances.end())
            losses += name + " is missing\n";
        else if (found->second.keyword != instance.keyword)
            losses += name + " has become another\n";
        else if (found->second.text != instance.text)
            losses += name + " has another text\n";
        else if (canonical(found->second, release) != canonical(instance, release))
            losses += name + " has other parameters\n";
    }
    if (after.instances.size() != before.instances.size())
        losses += "other instances have come in\n";
    return losses;
}

} // namespace vnifc::test
