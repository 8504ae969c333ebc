#include "Commands.h"
#include "DictionaryRecord.h"
#include "LoadedFile.h"
#include "Messages.h"

#include <VnIfcTyped/Entity.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <map>

namespace vnifc::tool {

using namespace VN_SDAI;
using Json = nlohmann::ordered_json;

namespace {

// ---- JSON

Json recordOfEntry(const DictionaryInstance& record) {
    if (const auto* entity = dynamic_cast<const VnIfcEntityType*>(&record))
        return recordOf(*entity);
    return recordOf(dynamic_cast<const VnIfcDefinedType&>(record));
}

/// One record a line, so that neither this program nor a line-oriented reader has to hold them all.
void printRecords(const char* key, const Dictionary& records) {
    fmt::print(",\n\"{}\": [", key);
    const char* separator = "\n";
    for (const Dictionary::Entry& entry : records) {
        fmt::print("{}{}", separator, recordOfEntry(*entry.instance).dump());
        separator = ",\n";
    }
    fmt::print("\n]");
}

void printDictionary(const VnIfcSchema& schema) {
    fmt::print("{{\"name\": {}, \"version\": \"{}\"", Json(schema.name().constStr()).dump(), versionOf(schema));
    printRecords("namedTypes", schema.namedTypes());
    printRecords("anonymousTypes", schema.anonymousTypes());
    printRecords("entities", schema.entities());
    fmt::print("}}\n");
}

// ---- Text

std::string string(const Json& value) { return value.get<std::string>(); }

std::string upperCase(std::string_view name) {
    std::string upper(name);
    for (char& c : upper)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
    return upper;
}

/// The dictionary has its names in several forms; people get one, that of the keywords of a file. A type's name ends in
/// that of its innermost element.
std::string inOneForm(std::string_view type) {
    const std::size_t name = type.rfind(' ') + 1;
    const bool isOwn = VnAnsiString("Ifc").compareNoCase(type.substr(name).substr(0, 3)) == 0;
    return isOwn ? std::string(type.substr(0, name)) + upperCase(type.substr(name)) : std::string(type);
}

std::string nameIn(const Json& value) { return inOneForm(string(value)); }

std::string joined(const Json& names) {
    return fmt::format("{}", fmt::join(names.get<std::vector<std::string>>(), "\n  "));
}

std::string bounds(const Json& record) {
    const auto bound = [](const Json& value) { return value.is_null() ? "?" : value.dump(); };
    return fmt::format("[{}:{}]", bound(record["lower"]), bound(record["upper"]));
}

/// A redeclared attribute under the name that it has above.
std::string nameOf(const Json& attribute) {
    const bool isRedeclared = attribute.contains("redeclares") && !attribute["redeclares"].is_null();
    return string(attribute[isRedeclared ? "redeclares" : "name"]);
}

std::string typeText(const Json& attribute) {
    const std::string kind = string(attribute["kind"]);
    if (kind == "explicit")
        return (attribute["optional"].get<bool>() ? "OPTIONAL " : "") + nameIn(attribute["type"]);
    if (kind == "derived")
        return nameIn(attribute["type"]) +
               (attribute["redeclares"].is_null() ? " (derived)" : " (derived, redeclared)");
    const std::string many = attribute["lower"].is_null() ? "" : fmt::format("set {} of ", bounds(attribute));
    return fmt::format("{}{} for {}", many, nameIn(attribute["entity"]), string(attribute["attribute"]));
}

void printAttributes(const VnIfcEntityType& entity) {
    if (entity.supertype())
        printAttributes(*entity.supertype());
    const Json record = recordOf(entity);
    if (record["attributes"].empty())
        return;
    fmt::print("attributes of {}\n", string(record["name"]));
    for (const Json& attribute : record["attributes"])
        fmt::print("  {}: {}\n", nameOf(attribute), typeText(attribute));
}

void printEntity(const VnIfcEntityType& entity) {
    fmt::print("{}entity {}", entity.isAbstract() ? "abstract " : "", entity.name().constStr());
    for (const VnIfcEntityType* above = entity.supertype(); above; above = above->supertype())
        fmt::print(" < {}", above->name().constStr());
    fmt::print("\n");
    printAttributes(entity);
    if (!entity.subtypes().empty())
        fmt::print("subtypes\n");
    for (const VnIfcEntityType* subtype : entity.subtypes())
        fmt::print("  {}\n", subtype->name().constStr());
}

void printType(const VnIfcDefinedType& type) {
    const Json record = recordOf(type);
    const std::string kind = string(record["kind"]);
    fmt::print("{} {}\n", kind, nameIn(record["name"]));
    if (kind == "defined")
        fmt::print("  {}\n", nameIn(record["underlying"]));
    else if (kind == "enumeration")
        fmt::print("  {}\n", joined(record["literals"]));
    else if (kind == "select")
        fmt::print("  {}\n", joined(record["members"]));
    else if (kind == "aggregation")
        fmt::print("  {} {} of {}\n", string(record["aggregation"]), bounds(record), nameIn(record["element"]));
    else
        fmt::print("  width {}{}\n", record["width"].dump(), record["fixed"].get<bool>() ? ", fixed" : "");
}

std::vector<std::string> allNames(const VnIfcSchema& schema) {
    std::vector<std::string> names;
    for (const Dictionary::Entry& entry : schema.entities())
        names.emplace_back(dynamic_cast<const VnIfcEntityType&>(*entry.instance).entityClass()->name);
    for (const Dictionary::Entry& entry : schema.namedTypes())
        names.push_back(inOneForm(entry.name));
    return names;
}

/// A line per record that has a name, for a reader to search in.
void printOverview(const VnIfcSchema& schema) {
    std::map<std::string, unsigned> counts{{"entity", static_cast<unsigned>(schema.entityCount())}};
    std::string lines;
    for (const Dictionary::Entry& entry : schema.namedTypes()) {
        const std::string kind = string(recordOfEntry(*entry.instance)["kind"]);
        ++counts[kind];
        lines += fmt::format("{:<12} {}\n", kind, inOneForm(entry.name));
    }
    for (const Dictionary::Entry& entry : schema.entities())
        lines += fmt::format("{:<12} {}\n", "entity", entry.name.constStr());
    fmt::print("{} version {}\n", schema.name().constStr(), versionOf(schema));
    for (const auto& [kind, count] : counts)
        fmt::print("{:<12} {:>4}\n", kind, count);
    fmt::print("\n{}", lines);
}

} // namespace

ExitCode schema(const std::string& release, const std::string& name, bool json) {
    const VnModule module = vnLoadModule(release.empty() ? vnIfcReleases().back() : releaseNamed(release));
    const VnIfcSchema& schema = *module.schema();
    if (name.empty()) {
        (json ? printDictionary : printOverview)(schema);
        return kSuccess;
    }
    const DictionaryInstance* record = schema.namedType(name);
    if (!record)
        record = schema.anonymousTypes().find(name);
    if (!record) {
        const std::vector<std::string> known = allNames(schema);
        const std::vector<std::string_view> views(known.begin(), known.end());
        throw Failure(kNotThere, fmt::format("{} has no entity or type \"{}\"{}", schema.name().constStr(), name,
                                             didYouMean(name, views)));
    }
    if (json)
        fmt::print("{}\n", recordOfEntry(*record).dump());
    else if (const auto* entity = dynamic_cast<const VnIfcEntityType*>(record))
        printEntity(*entity);
    else
        printType(dynamic_cast<const VnIfcDefinedType&>(*record));
    return kSuccess;
}

} // namespace vnifc::tool
