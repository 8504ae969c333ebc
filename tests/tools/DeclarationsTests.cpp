// The dictionary of each release, as the tool shows it, compared with the release's declarations.
#include "Process.h"
#include "support/Declarations.h"
#include "support/Releases.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <set>

namespace vnifc::test {

namespace {

namespace fs = std::filesystem;
using declared::lower;
using declared::upper;
using nlohmann::json;

std::string layersOf(const declared::Type& type, std::size_t from) {
    std::string text;
    for (std::size_t i = from; i < type.layers.size(); ++i)
        text += type.layers[i].kind + " [" + type.layers[i].lower + ':' + type.layers[i].upper + "] of ";
    return text;
}

bool isSimple(const std::string& name) {
    static const std::set<std::string> kNames{"BINARY", "BOOLEAN", "INTEGER", "LOGICAL", "NUMBER", "REAL", "STRING"};
    return kNames.contains(name);
}

/// Simple types in lower case; NUMBER counts as REAL.
std::string nameOf(const declared::Type& type) {
    if (type.name == "NUMBER")
        return "real";
    return isSimple(type.name) ? lower(type.name) : type.name;
}

/// Binaries of a width have a name of their own.
std::string elementOf(const declared::Type& type) {
    return nameOf(type) + (type.name == "BINARY" && !type.width.empty() ? '(' + type.width + ')' : "");
}

json bound(const std::string& text) {
    const bool isNumber = text.find_first_not_of("0123456789") == text.npos && !text.empty();
    return isNumber ? json(std::stoi(text)) : json();
}

json numbers(const std::vector<declared::Layer>& layers, json record) {
    record["lower"] = layers.empty() ? json() : bound(layers[0].lower);
    record["upper"] = layers.empty() ? json() : bound(layers[0].upper);
    return record;
}

/// What the dictionary should hold by the declarations of its release.
class Expected {
public:
    explicit Expected(const declared::Schema& release) : m_release(release) {}

    json entity(const declared::Entity& entity) const {
        json attributes = json::array();
        for (const declared::Explicit& each : entity.explicits)
            attributes.push_back({{"name", each.name},
                                  {"kind", "explicit"},
                                  {"type", attributeType(each.type)},
                                  {"optional", each.isOptional}});
        for (const declared::Derived& each : entity.derived) {
            const bool redeclares = !each.redeclaredIn.empty();
            attributes.push_back({{"name", redeclares ? lower(each.redeclaredIn + '_' + each.name) : each.name},
                                  {"kind", "derived"},
                                  {"type", attributeType(each.type)},
                                  {"redeclares", redeclares ? json(each.name) : json()}});
        }
        for (const declared::Inverse& each : entity.inverses)
            attributes.push_back(numbers(each.layers, {{"name", each.name},
                                                       {"kind", "inverse"},
                                                       {"entity", lower(each.entity)},
                                                       {"attribute", each.attribute}}));
        return {{"name", upper(entity.name)},
                {"supertype", entity.supertype.empty() ? json() : json(upper(entity.supertype))},
                {"abstract", entity.isAbstract},
                {"attributes", attributes}};
    }

    json type(const declared::Named& type) const {
        if (type.kind == declared::Named::kEnumeration)
            return {{"name", lower(type.name)}, {"kind", "enumeration"}, {"literals", upperCase(type.items)}};
        if (type.kind == declared::Named::kSelect)
            return {{"name", type.name}, {"kind", "select"}, {"members", upperCase(type.items)}};
        if (!type.underlying.layers.empty())
            return aggregation(type.name, type.underlying, 0);
        return {{"name", type.name}, {"kind", "defined"}, {"underlying", lower(nameOf(type.underlying))}};
    }

    /// The aggregates that attributes are of, down to the innermost.
    std::map<std::string, json> anonymousAggregations() const {
        std::map<std::string, json> result;
        const auto add = [&](const declared::Type& declared) {
            const declared::Type type = m_release.withoutAggregateNames(declared);
            for (std::size_t i = 0; i < type.layers.size(); ++i) {
                const std::string name = layersOf(type, i) + elementOf(type);
                result[name] = aggregation(name, type, i);
            }
        };
        for (const declared::Entity& entity : m_release.entities()) {
            for (const declared::Explicit& each : entity.explicits)
                add(each.type);
            for (const declared::Derived& each : entity.derived)
                add(each.type);
            for (const declared::Inverse& each : entity.inverses)
                add(inverseType(each));
        }
        return result;
    }

private:
    static json upperCase(const std::vector<std::string>& names) {
        json result = json::array();
        for (const std::string& name : names)
            result.push_back(upper(name));
        return result;
    }

    static declared::Type inverseType(const declared::Inverse& inverse) {
        declared::Type type;
        type.layers = inverse.layers;
        type.name = inverse.entity;
        return type;
    }

    std::string attributeType(const declared::Type& declared) const {
        const declared::Type type = m_release.withoutAggregateNames(declared);
        return layersOf(type, 0) + upper(elementOf(type));
    }

    static json aggregation(const std::string& name, const declared::Type& type, std::size_t level) {
        return numbers({type.layers[level]}, {{"name", name},
                                              {"kind", "aggregation"},
                                              {"aggregation", type.layers[level].kind},
                                              {"element", layersOf(type, level + 1) + elementOf(type)}});
    }

    const declared::Schema& m_release;
};

/// Where the dictionary of a release differs from its declarations by design, its folder has the difference.
fs::path folderOf(const std::string& release) { return fs::path(VNIFC_SCHEMAS) / lower(release); }

class Declarations : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        const Outcome outcome = runTool({"schema", "--schema", GetParam(), "--json"});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
        m_dictionary = json::parse(outcome.out);
    }

    /// The records of a list, which are all different, by their names.
    std::map<std::string, json> records(const char* list, const char* kind = nullptr) const {
        std::map<std::string, json> result;
        for (const json& record : m_dictionary[list])
            if (const bool isMeant = !kind || record["kind"] == kind;
                isMeant && !result.emplace(record["name"], record).second)
                ADD_FAILURE() << record << " has a name that another has";
        return result;
    }

    std::vector<std::string> namesOf(const char* list, const char* kind = nullptr) const {
        std::vector<std::string> names;
        for (const json& record : m_dictionary[list])
            if (!kind || record["kind"] == kind)
                names.push_back(record["name"]);
        return names;
    }

    static void same(const std::map<std::string, json>& found, const std::map<std::string, json>& expected) {
        for (const auto& [name, record] : expected) {
            const auto there = found.find(name);
            EXPECT_EQ(there == found.end() ? json() : there->second, record) << name;
        }
        for (const auto& [name, record] : found)
            EXPECT_TRUE(expected.contains(name)) << record << " is declared nowhere";
    }

    const declared::Schema& m_release = declared::schemaNamed(GetParam());
    json m_dictionary;
};

TEST_P(Declarations, EveryEntityIsThatOfTheText) {
    EXPECT_EQ(m_dictionary["name"], m_release.name());
    const Expected expectation(m_release);
    std::map<std::string, json> expected;
    for (const declared::Entity& entity : m_release.entities())
        expected[upper(entity.name)] = expectation.entity(entity);
    same(records("entities"), expected);
}

TEST_P(Declarations, EveryTypeIsThatOfTheText) {
    const Expected expectation(m_release);
    std::map<std::string, json> expected;
    const auto add = [&](const declared::Named& type) {
        const json record = expectation.type(type);
        expected[record["name"]] = record;
    };
    const fs::path enumerationsFile = folderOf(GetParam()) / "dictionary_enumerations.exp";
    const bool hasOwnEnumerations = fs::exists(enumerationsFile);
    for (const declared::Named& type : m_release.types())
        if (type.kind != declared::Named::kEnumeration || !hasOwnEnumerations)
            add(type);
    if (hasOwnEnumerations) {
        const declared::Schema enumerations(enumerationsFile);
        for (const declared::Named& type : enumerations.types())
            add(type);
    }
    same(records("namedTypes"), expected);
    same(records("anonymousTypes", "aggregation"), expectation.anonymousAggregations());
    EXPECT_EQ(namesOf("anonymousTypes", "string"), (std::vector<std::string>{"string(22)fixed", "binary(32)"}));
}

/// Of releases that have no order of their own.
class OrderOfDeclarations : public Declarations {
public:
    static std::vector<std::string> releases() {
        std::vector<std::string> result = builtReleases();
        std::erase_if(result,
                      [](const std::string& name) { return fs::exists(folderOf(name) / "building_order.txt"); });
        return result;
    }
};

TEST_P(OrderOfDeclarations, IsThatOfTheText) {
    std::map<std::string, std::vector<std::string>> types;
    for (const declared::Named& type : m_release.types()) {
        const json record = Expected(m_release).type(type);
        types[record["kind"]].push_back(record["name"]);
    }
    for (const auto& [kind, names] : types)
        EXPECT_EQ(namesOf("namedTypes", kind.c_str()), names);

    std::vector<std::string> entities;
    const std::function<void(const declared::Entity&)> add = [&](const declared::Entity& entity) {
        if (std::ranges::find(entities, upper(entity.name)) != entities.end())
            return;
        if (!entity.supertype.empty())
            add(*m_release.entity(entity.supertype));
        entities.push_back(upper(entity.name));
    };
    for (const declared::Entity& entity : m_release.entities())
        add(entity);
    EXPECT_EQ(namesOf("entities"), entities);
}

INSTANTIATE_TEST_SUITE_P(Releases, Declarations, testing::ValuesIn(builtReleases()), nameOfRelease);
INSTANTIATE_TEST_SUITE_P(Releases, OrderOfDeclarations, testing::ValuesIn(OrderOfDeclarations::releases()),
                         nameOfRelease);

} // namespace

} // namespace vnifc::test
