// What export says of files of other programs, compared with what an independent reader finds in them. Names, places
// and types of attributes are those of the release's declarations.
#include "Process.h"
#include "support/Corpus.h"
#include "support/Releases.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <sstream>

namespace vnifc::test {

namespace {

namespace fs = std::filesystem;
using declared::Type;
using nlohmann::json;

// ---- what the file says

void appendUtf8(std::string& text, unsigned long c) {
    if (c < 0x80) {
        text += static_cast<char>(c);
        return;
    }
    const int following = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr unsigned long kLead[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(kLead[following] | c >> 6 * following);
    for (int i = following - 1; i >= 0; --i)
        text += static_cast<char>(0x80 | (c >> 6 * i & 0x3F));
}

/// A string that cannot be decoded; what is shown of it is not for this test.
struct MalformedText {};

/// Decodes a string as it stands in a file.
std::string decoded(const std::string& quoted) {
    std::string text;
    std::size_t digits = 0; // of a character, within \X2\ or \X4\.
    for (std::size_t i = 1; i + 1 < quoted.size();) {
        const std::string_view rest = std::string_view(quoted).substr(i);
        const auto hexadecimal = [&](std::size_t at, std::size_t count) {
            const std::string digitsThere = quoted.substr(i + at, count);
            if (digitsThere.size() != count || digitsThere.find_first_not_of("0123456789ABCDEFabcdef") != text.npos)
                throw MalformedText();
            appendUtf8(text, std::stoul(digitsThere, nullptr, 16));
            i += at + count;
        };
        if (rest.starts_with("\\X0\\")) {
            digits = 0;
            i += 4;
        } else if (digits > 0) {
            hexadecimal(0, digits);
        } else if (rest.starts_with("\\X2\\") || rest.starts_with("\\X4\\")) {
            digits = rest[2] == '2' ? 4 : 8;
            i += 4;
        } else if (rest.starts_with("\\X\\")) {
            hexadecimal(3, 2);
        } else if (rest.starts_with("\\S\\")) {
            appendUtf8(text, static_cast<unsigned char>(rest[3]) + 0x80u);
            i += 4;
        } else {
            text += rest[0];
            i += rest[0] == '\\' || rest[0] == '\'' ? 2 : 1;
        }
    }
    if (digits > 0)
        throw MalformedText();
    return text;
}

/// What export should say of a file's values. A value that is none of its attribute's type is kept as text and shown as
/// unset; there is no expectation for a list in which only some elements fit, nor for malformed text.
class Expectation {
public:
    using Parameters = std::vector<declared::Parameter>;

    explicit Expectation(const declared::Schema& release) : m_release(release) {}

    /// Empty for a keyword without declaration.
    const Parameters& parametersOf(const std::string& keyword) const {
        const auto [found, isNew] = m_parameters.try_emplace(keyword);
        const declared::Entity* entity = isNew ? m_release.entity(keyword) : nullptr;
        if (entity)
            found->second = m_release.parameters(*entity);
        return found->second;
    }

    std::optional<json> valueOf(const plain::Instance& instance, std::size_t position) const try {
        if (position >= instance.parameters.size())
            return json(); // left out
        const Type type = m_release.resolved(parametersOf(instance.keyword)[position].attribute->type);
        const std::optional<json> value = ofType(instance.parameters[position], type, 0);
        if (value || type.layers.empty())
            return value.value_or(json());
        return std::nullopt;
    } catch (const MalformedText&) {
        return std::nullopt;
    }

    /// The instances that an instance refers to with a parameter.
    std::set<std::uint64_t> targetsOf(const plain::Instance& instance, std::size_t position) const {
        std::set<std::uint64_t> targets;
        if (position < instance.parameters.size())
            collectTargets(instance.parameters[position], targets);
        return targets;
    }

private:
    static void collectTargets(const plain::Value& value, std::set<std::uint64_t>& targets) {
        if (value.kind == plain::Value::kToken && value.text.starts_with('#'))
            targets.insert(std::stoull(value.text.substr(1)));
        for (const plain::Value& each : value.values)
            collectTargets(each, targets);
    }

    /// Nothing when the value is not of the type.
    std::optional<json> ofType(const plain::Value& value, const Type& type, std::size_t level) const {
        if (value.kind == plain::Value::kNothing || value.text == "$" || value.text == "*")
            return json();
        return level < type.layers.size() ? listOf(value, type, level) : single(value, type);
    }

    std::optional<json> listOf(const plain::Value& value, const Type& type, std::size_t level) const {
        if (value.kind != plain::Value::kList)
            return std::nullopt;
        // A list that must not be empty has no other way of being unset.
        if (value.values.empty() && type.layers[level].lower != "0")
            return json();
        json list = json::array();
        for (const plain::Value& each : value.values) {
            std::optional<json> element = ofType(each, type, level + 1);
            if (!element)
                return std::nullopt;
            list.push_back(std::move(*element));
        }
        return list;
    }

    std::optional<json> single(const plain::Value& value, const Type& type) const {
        const declared::Named* named = m_release.type(type.name);
        if (named && named->kind == declared::Named::kSelect)
            return select(value, *named);
        if (named)
            return literal(value, *named);
        if (m_release.entity(type.name))
            return reference(value);
        return simple(value, type.name);
    }

    std::optional<json> simple(const plain::Value& value, const std::string& type) const {
        const bool isNumber = value.kind == plain::Value::kNumber;
        if (type == "STRING")
            return value.kind == plain::Value::kString ? std::optional<json>(decoded(value.text)) : std::nullopt;
        if (type == "REAL" || type == "NUMBER")
            return isNumber ? std::optional<json>(value.number) : std::nullopt;
        if (type == "INTEGER") {
            constexpr double kLimit = std::numeric_limits<std::int32_t>::max();
            const bool fits =
                isNumber && value.text.find_first_of(".eE") == value.text.npos && std::abs(value.number) < kLimit;
            return fits ? std::optional<json>(static_cast<std::int64_t>(value.number)) : std::nullopt;
        }
        const std::string token = declared::upper(value.text);
        if (type == "BINARY")
            return std::nullopt;
        if (token == ".U." && type == "LOGICAL")
            return "UNKNOWN";
        return token == ".T." || token == ".F." ? std::optional<json>(token == ".T.") : std::nullopt;
    }

    static std::optional<json> literal(const plain::Value& value, const declared::Named& enumeration) {
        const std::string token = declared::upper(value.text);
        const bool isDotted = value.kind == plain::Value::kToken && token.size() > 2 && token.starts_with('.');
        const std::string name = isDotted ? token.substr(1, token.size() - 2) : "";
        const bool isKnown = std::ranges::any_of(
            enumeration.items, [&](const std::string& each) { return declared::upper(each) == name; });
        return isKnown ? std::optional<json>(name) : std::nullopt;
    }

    static std::optional<json> reference(const plain::Value& value) {
        if (value.kind != plain::Value::kToken || !value.text.starts_with('#'))
            return std::nullopt;
        return json{{"ref", std::stoull(value.text.substr(1))}};
    }

    std::optional<json> select(const plain::Value& value, const declared::Named& select) const {
        if (std::optional<json> handle = reference(value))
            return handle;
        const declared::Named* member = value.kind == plain::Value::kTyped ? m_release.type(value.text) : nullptr;
        if (!member || value.values.size() != 1 || !hasMember(select, member->name))
            return std::nullopt;
        Type type;
        type.name = member->name;
        const std::optional<json> held = ofType(value.values[0], m_release.resolved(type), 0);
        if (!held || held->is_null())
            return std::nullopt; // a type around nothing
        return json{{"type", value.text}, {"value", *held}};
    }

    bool hasMember(const declared::Named& select, const std::string& name) const {
        return std::ranges::any_of(select.items, [&](const std::string& each) {
            const declared::Named* inner = m_release.type(each);
            return each == name || (inner && inner->kind == declared::Named::kSelect && hasMember(*inner, name));
        });
    }

    const declared::Schema& m_release;
    mutable std::map<std::string, Parameters> m_parameters;
};

// ---- what export says

/// A SET has no order and no equal elements.
void makeSet(json& value) {
    if (!value.is_array())
        return;
    std::sort(value.begin(), value.end());
    value.erase(std::unique(value.begin(), value.end()), value.end());
}

struct Counts {
    std::size_t instances = 0, compared = 0, uncertain = 0, inverses = 0;
};

/// Compares an instance with what was exported of it.
void compare(const plain::Instance& inFile, json& exported, const Expectation& expectation, Counts& counts) {
    EXPECT_EQ(exported["type"], inFile.keyword);
    const Expectation::Parameters& parameters = expectation.parametersOf(inFile.keyword);
    json& values = exported["attributes"];
    std::size_t shown = 0;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const std::string& name = parameters[i].attribute->name;
        EXPECT_EQ(values.contains(name), !parameters[i].isDerived) << '#' << exported["id"] << '.' << name;
        shown += parameters[i].isDerived ? 0 : 1;
        std::optional<json> expected = expectation.valueOf(inFile, i);
        if (parameters[i].isDerived || !expected) {
            counts.uncertain += parameters[i].isDerived ? 0 : 1;
            continue;
        }
        const std::vector<declared::Layer>& layers = parameters[i].attribute->type.layers;
        if (!layers.empty() && layers[0].kind == "set") {
            makeSet(*expected);
            makeSet(values[name]);
        }
        EXPECT_EQ(values[name], *expected) << '#' << exported["id"] << '.' << name;
        ++counts.compared;
    }
    EXPECT_EQ(values.size(), shown) << '#' << exported["id"];
}

/// Who refers to whom by which attribute, found by a search through all parameters.
class Referrers {
public:
    Referrers(const declared::Schema& release, const plain::File& file, const Expectation& expectation)
        : m_release(release), m_file(file) {
        for (const auto& [number, instance] : file.instances) {
            const Expectation::Parameters& parameters = expectation.parametersOf(instance.keyword);
            for (std::size_t i = 0; i < parameters.size(); ++i)
                for (const std::uint64_t target : expectation.targetsOf(instance, i))
                    m_found[{parameters[i].entity->name, parameters[i].attribute->name}][target].insert(number);
        }
    }

    /// Those that an inverse attribute of an instance stands for.
    std::set<std::uint64_t> of(std::uint64_t number, const declared::Inverse& inverse) const {
        const declared::Entity& declaredThere = *m_release.entity(inverse.entity);
        std::set<std::uint64_t> result;
        for (const declared::Entity* each : m_release.upwards(declaredThere)) {
            const auto attribute = m_found.find({each->name, inverse.attribute});
            const auto target = attribute == m_found.end() ? Targets::const_iterator() : attribute->second.find(number);
            if (attribute == m_found.end() || target == attribute->second.end())
                continue;
            for (const std::uint64_t referrer : target->second) {
                const declared::Entity& entity = *m_release.entity(m_file.instances.at(referrer).keyword);
                if (m_release.isKindOf(entity, inverse.entity))
                    result.insert(referrer);
            }
        }
        return result;
    }

private:
    using Targets = std::map<std::uint64_t, std::set<std::uint64_t>>;

    const declared::Schema& m_release;
    const plain::File& m_file;
    std::map<std::pair<std::string, std::string>, Targets> m_found;
};

/// Compares the inverse attributes of an instance with what was exported of them.
void compareInverses(const declared::Schema& release, const plain::Instance& inFile, const json& exported,
                     const Referrers& referrers, Counts& counts) {
    const json& shown = exported["inverse"];
    std::size_t notEmpty = 0;
    for (const declared::Entity* entity : release.upwards(*release.entity(inFile.keyword))) {
        for (const declared::Inverse& inverse : entity->inverses) {
            const std::set<std::uint64_t> expected = referrers.of(exported["id"], inverse);
            const json found = shown.value(inverse.name, json::array());
            const std::set<std::uint64_t> set(found.begin(), found.end());
            const bool isSingle = inverse.layers.empty() || inverse.layers[0].upper == "1";
            // Of several where one is allowed any may be shown.
            const bool isRight =
                isSingle && expected.size() > 1 ? set.size() == 1 && expected.contains(*set.begin()) : set == expected;
            EXPECT_TRUE(isRight) << '#' << exported["id"] << '=' << inFile.keyword << '.' << inverse.name << ' '
                                 << found << " instead of " << json(expected);
            notEmpty += expected.empty() ? 0 : 1;
        }
    }
    EXPECT_EQ(shown.size(), notEmpty) << '#' << exported["id"];
    counts.inverses += notEmpty;
}

/// The files of one release.
class ExportCorpus : public testing::TestWithParam<std::string> {};

TEST_P(ExportCorpus, ValuesAndInversesAreThoseOfTheFile) {
    if (!fs::exists(corpus()))
        GTEST_SKIP() << "no files of other programs here";
    const declared::Schema& release = declared::schemaNamed(GetParam());
    Counts all;
    for (const fs::path& file : corpusFiles()) {
        const plain::File inFile = plain::read(contents(file));
        if (releaseOf(inFile) != GetParam())
            continue;
        SCOPED_TRACE(file.filename());
        const Expectation expectation(release);
        const Referrers referrers(release, inFile, expectation);
        Counts counts;
        std::istringstream lines(runTool({"export", "--quiet", "--inverse", file.string()}).out);
        for (std::string line; std::getline(lines, line); ++counts.instances) {
            json exported = json::parse(line);
            const plain::Instance& instance = inFile.instances.at(exported["id"]);
            if (!release.entity(instance.keyword)) {
                EXPECT_TRUE(exported.contains("parameters")) << line;
                continue;
            }
            compare(instance, exported, expectation, counts);
            compareInverses(release, instance, exported, referrers, counts);
        }
        EXPECT_EQ(counts.instances, inFile.instances.size());
        // One program encodes every string that is not ASCII wrongly.
        EXPECT_GT(counts.compared, 20 * counts.uncertain);
        all.compared += counts.compared;
        all.inverses += counts.inverses;
    }
    EXPECT_GT(all.compared, 0u);
    EXPECT_GT(all.inverses, 0u);
    RecordProperty("values", static_cast<int>(all.compared));
    RecordProperty("inverses", static_cast<int>(all.inverses));
}

INSTANTIATE_TEST_SUITE_P(Releases, ExportCorpus, testing::ValuesIn(builtReleases()), nameOfRelease);

} // namespace

} // namespace vnifc::test
