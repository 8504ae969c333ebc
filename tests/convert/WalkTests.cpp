// Every concrete entity of every release, brought to every other: whatever is in the declarations must come through,
// stand in another place, or be told of. Catches a value that goes silently, a line that makes something the target
// does not allow, and what one of the many pairs of releases has and the others have not.
#include "Support.h"

#include <random>

using namespace convert_tests;
using namespace declared;
using vnifc::test::builtReleases;

namespace {

/// Makes a file with an instance of each concrete entity of a release, from its declarations alone.
class Population {
public:
    Population(const Schema& schema, double optionals, unsigned seed)
        : m_schema(schema), m_random(seed), m_optionals(optionals) {
        for (const Entity& each : schema.entities())
            if (!each.isAbstract)
                m_concrete.push_back(&each);
        for (std::size_t i = 0; i < m_concrete.size(); ++i)
            for (const Entity* each : schema.upwards(*m_concrete[i]))
                m_numbers[each->name].push_back(i + 1);
    }

    std::string text() {
        std::string data;
        for (std::size_t i = 0; i < m_concrete.size(); ++i)
            data += '#' + std::to_string(i + 1) + '=' + upper(m_concrete[i]->name) + '(' + parameters(*m_concrete[i]) +
                    ");\n";
        return fileOf(data);
    }

private:
    std::string parameters(const Entity& entity) {
        std::string text;
        for (const Parameter& each : m_schema.parameters(entity)) {
            text += text.empty() ? "" : ",";
            const bool isLeftOut =
                each.attribute->isOptional && std::uniform_real_distribution<>(0, 1)(m_random) >= m_optionals;
            text += each.isDerived ? "*" : isLeftOut ? "$" : value(each.attribute->type, 0);
        }
        return text;
    }

    std::size_t chosen(std::size_t count) { return m_random() % count; }

    std::string value(const Type& type, std::size_t level) {
        const Type plain = m_schema.withoutAggregateNames(type);
        if (level < plain.layers.size())
            return aggregate(plain, level);
        return element(plain);
    }

    std::string aggregate(const Type& type, std::size_t level) {
        const Layer& layer = type.layers[level];
        const bool isArray = layer.kind == "array";
        const int lower = std::atoi(layer.lower.c_str());
        const int count = isArray ? std::atoi(layer.upper.c_str()) - lower + 1 : std::max(lower, 1);
        std::set<std::string> seen;
        std::string text;
        for (int i = 0; i < count; ++i) {
            std::string each = value(type, level + 1);
            constexpr int kTries = 20;
            for (int tries = 0; seen.contains(each) && tries < kTries; ++tries)
                each = value(type, level + 1);
            seen.insert(each);
            text += (i > 0 ? "," : "") + each;
        }
        return '(' + text + ')';
    }

    std::string element(const Type& type) {
        static const std::map<std::string, std::string> kTexts{{"IfcDate", "'2024-05-06'"},
                                                               {"IfcDateTime", "'2024-05-06T07:08:09'"},
                                                               {"IfcTime", "'07:08:09'"},
                                                               {"IfcDuration", "'P1DT2H'"}};
        if (type.name == "IfcGloballyUniqueId")
            return guid();
        if (const auto text = kTexts.find(type.name); text != kTexts.end())
            return text->second;
        if (m_schema.entity(type.name)) {
            const std::vector<std::size_t>& numbers = m_numbers[type.name];
            return numbers.empty() ? "$" : '#' + std::to_string(numbers[chosen(numbers.size())]);
        }
        const Named* named = m_schema.type(type.name);
        if (!named)
            return simple(type.name);
        if (named->kind == Named::kEnumeration)
            return '.' + named->items[chosen(named->items.size())] + '.';
        if (named->kind == Named::kDefined)
            return value(named->underlying, 0);
        const std::string& member = named->items[chosen(named->items.size())];
        const Named* inner = m_schema.type(member);
        const std::string text = value({{}, member, {}, false}, 0);
        return !inner || inner->kind == Named::kSelect ? text : upper(member) + '(' + text + ')';
    }

    std::string simple(const std::string& name) {
        const std::string number = std::to_string(++m_count);
        if (name == "REAL" || name == "NUMBER")
            return number + '.';
        if (name == "INTEGER")
            return number;
        if (name == "STRING")
            return "'text " + number + '\'';
        if (name == "BINARY")
            return "\"0AB\"";
        return name == "LOGICAL" ? ".F." : ".T.";
    }

    std::string guid() {
        std::string digits = std::to_string(++m_count);
        return "'1" + std::string(21 - digits.size(), 'a') + digits + '\'';
    }

    const Schema& m_schema;
    std::mt19937 m_random;
    double m_optionals;
    std::size_t m_count = 0;
    std::vector<const Entity*> m_concrete;
    std::map<std::string, std::vector<std::size_t>> m_numbers; ///< of an entity and its subtypes
};

std::string textOf(const plain::Value& value) {
    if (value.kind != plain::Value::kList && value.kind != plain::Value::kTyped)
        return value.text;
    std::string text = value.kind == plain::Value::kTyped ? value.text + '(' : "(";
    for (const plain::Value& each : value.values)
        text += textOf(each) + ',';
    return text + ')';
}

/// True for the same value, a SET in another order, and a list to which something was added.
bool holds(std::string now, std::string before) {
    if (before.ends_with(')') && now.starts_with(before.substr(0, before.size() - 1)))
        return true;
    std::sort(now.begin(), now.end());
    std::sort(before.begin(), before.end());
    return now == before;
}

/// Values that are neither under the same name in the target nor told of.
std::string silent(const Converted& converted, const plain::File& source, const Schema& from, const Schema& to) {
    std::map<std::uint64_t, std::set<std::string>> told;
    std::set<std::uint64_t> whole; // told of as a whole
    for (const vnifc::ConvertFinding& each : converted.findings) {
        told[each.instance].insert(lower(each.attribute));
        const bool isAbsorbed = each.kind == vnifc::ConvertKind::kAbsorbed && each.attribute.empty();
        if (isAbsorbed || each.kind == vnifc::ConvertKind::kLostInstance)
            whole.insert(each.instance);
    }
    std::string text;
    for (const auto& [number, instance] : source.instances) {
        if (whole.contains(number))
            continue;
        const auto found = converted.instances.find(number);
        const Entity* entity = from.entity(instance.keyword);
        const Entity* become = found == converted.instances.end() ? nullptr : to.entity(found->second.keyword);
        if (!become) {
            text += '#' + std::to_string(number) + ' ' + instance.keyword + " is gone\n";
            continue;
        }
        const std::vector<Parameter> names = from.parameters(*entity), others = to.parameters(*become);
        for (std::size_t i = 0; i < names.size(); ++i) {
            const std::string value = textOf(instance.parameters[i]);
            if (value == "$" || value == "*" || told[number].contains(lower(names[i].attribute->name)))
                continue;
            bool isThere = false;
            for (std::size_t k = 0; k < others.size() && k < found->second.parameters.size(); ++k)
                isThere = isThere || (lower(others[k].attribute->name) == lower(names[i].attribute->name) &&
                                      holds(textOf(found->second.parameters[k]), value));
            if (!isThere)
                text += '#' + std::to_string(number) + ' ' + instance.keyword + '.' + names[i].attribute->name + ' ' +
                        value + '\n';
        }
    }
    return text;
}

/// Instances of the source that the target does not have.
std::uint64_t goneOf(const Converted& converted) {
    std::uint64_t gone = 0;
    for (const VN_SDAI::VnDbObjectId& each : converted.source.model().instances())
        gone += converted.target.model().find(each.number()).isNull();
    return gone;
}

struct Pair {
    std::string from;
    std::string to;

    friend void PrintTo(const Pair& pair, std::ostream* out) { *out << pair.from << " to " << pair.to; }
};

std::vector<Pair> pairs() {
    std::vector<Pair> all;
    for (const std::string& from : builtReleases())
        for (const std::string& to : builtReleases())
            all.push_back({from, to});
    return all;
}

class WalkTest : public testing::TestWithParam<Pair> {};

TEST_P(WalkTest, BringsEverythingOrTellsWhy) {
    const Schema& from = schemaNamed(GetParam().from);
    const Schema& to = schemaNamed(GetParam().to);
    for (const double optionals : {1.0, 0.5, 0.0}) {
        const std::string text = Population(from, optionals, 1).text();
        const Converted converted(text, GetParam().from, GetParam().to);
        const plain::File source = plain::read(text);
        const vnifc::ConvertResult& result = converted.result;
        EXPECT_EQ(result.carried + result.changed + result.reduced + result.lost, source.instances.size());
        EXPECT_EQ(converted.target.model().count(), source.instances.size() + result.added - goneOf(converted));
        EXPECT_EQ(silent(converted, source, from, to), "");
        EXPECT_EQ(added(converted.before, converted.after), "") << converted.said;
        if (GetParam().from == GetParam().to) {
            EXPECT_EQ(result.carried, source.instances.size());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Pairs, WalkTest, testing::ValuesIn(pairs()),
                         [](const auto& each) { return each.param.from + "_" + each.param.to; });

} // namespace
