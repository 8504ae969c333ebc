#include "Totals.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <set>
#include <string_view>

namespace expgen {
namespace {

template <class Records, class Predicate>
std::size_t countIf(const Records& records, Predicate predicate) {
    return static_cast<std::size_t>(std::count_if(records.begin(), records.end(), predicate));
}

template <class Records, class Size>
std::size_t sum(const Records& records, Size size) {
    return std::accumulate(records.begin(), records.end(), std::size_t{0},
                           [&](std::size_t total, const auto& record) { return total + size(record); });
}

std::size_t literals(const std::vector<Enumeration>& enumerations) {
    return sum(enumerations, [](const Enumeration& e) { return e.literals.size(); });
}

std::size_t redeclaring(const Model& model) {
    return sum(model.entities, [](const Entity& e) {
        return countIf(e.derived, [](const DerivedAttribute& a) { return a.redeclaredOwner != nullptr; });
    });
}

std::size_t explicitTypeTexts(const Model& model) {
    std::set<std::string> texts;
    for (const Entity& entity : model.entities)
        for (const ExplicitAttribute& attribute : entity.explicits)
            texts.insert(attributeTypeText(attribute.type));
    return texts.size();
}

std::size_t entityMembers(const Model& model) {
    return sum(model.selects, [](const Select& s) {
        return countIf(s.leaves, [](const SelectLeaf& leaf) {
            return leaf.type.kind == Kind::kEntity && !leaf.type.isAggregate();
        });
    });
}

template <AggregateKind kind>
std::size_t aggregations(const Model& model) {
    return countIf(model.aggregations, [](const Aggregation& a) { return a.layer.kind == kind; });
}

struct Total {
    std::string_view what;
    std::size_t (*count)(const Model&);
};

constexpr Total kTotals[] = {
    {"entities", [](const Model& m) { return m.entities.size(); }},
    {"entities in building order", [](const Model& m) { return m.entityOrder.size(); }},
    {"root entities", [](const Model& m) { return countIf(m.entities, [](auto& e) { return !e.supertype; }); }},
    {"concrete entities", [](const Model& m) { return countIf(m.entities, [](auto& e) { return !e.isAbstract; }); }},
    {"explicit attributes", [](const Model& m) { return sum(m.entities, [](auto& e) { return e.explicits.size(); }); }},
    {"optional explicit attributes",
     [](const Model& m) {
         return sum(m.entities, [](auto& e) { return countIf(e.explicits, [](auto& a) { return a.isOptional; }); });
     }},
    {"derived attributes", [](const Model& m) { return sum(m.entities, [](auto& e) { return e.derived.size(); }); }},
    {"redeclaring derived attributes", redeclaring},
    {"inverse attributes", [](const Model& m) { return sum(m.entities, [](auto& e) { return e.inverses.size(); }); }},
    {"entities without attributes",
     [](const Model& m) {
         return countIf(m.entities,
                        [](auto& e) { return e.explicits.empty() && e.derived.empty() && e.inverses.empty(); });
     }},
    {"entities without explicit attributes",
     [](const Model& m) { return countIf(m.entities, [](auto& e) { return e.explicits.empty(); }); }},
    {"entities without properties",
     [](const Model& m) { return countIf(m.entities, [](auto& e) { return !e.hasProperties(); }); }},
    {"entities with links to inverse attributes",
     [](const Model& m) { return countIf(m.entities, [](auto& e) { return !e.links.empty(); }); }},
    {"distinct texts of explicit attribute types", explicitTypeTexts},
    {"enumeration classes", [](const Model& m) { return m.enumerations.size(); }},
    {"literals of enumeration classes", [](const Model& m) { return literals(m.enumerations); }},
    {"enumeration records", [](const Model& m) { return m.enumerationRecords.size(); }},
    {"literals of enumeration records", [](const Model& m) { return literals(m.enumerationRecords); }},
    {"selects", [](const Model& m) { return m.selects.size(); }},
    {"direct members of selects",
     [](const Model& m) { return sum(m.selects, [](auto& s) { return s.members.size(); }); }},
    {"entity members of flattened selects", entityMembers},
    {"defined types over simple types", [](const Model& m) { return m.definedTypeOrder.size(); }},
    {"named aggregations", [](const Model& m) { return countIf(m.aggregations, [](auto& a) { return a.isNamed; }); }},
    {"aggregations", [](const Model& m) { return m.aggregations.size(); }},
    {"set aggregations", aggregations<AggregateKind::kSet>},
    {"list aggregations", aggregations<AggregateKind::kList>},
    {"array aggregations", aggregations<AggregateKind::kArray>},
};

} // namespace

std::vector<std::string> wrongTotals(const Model& model, const Release& release) {
    std::vector<std::string> messages;
    for (const auto& [what, expected] : release.totals) {
        const auto total = std::find_if(std::begin(kTotals), std::end(kTotals),
                                        [&what = what](const Total& each) { return each.what == what; });
        if (total == std::end(kTotals))
            messages.push_back("\"" + what + "\" is nothing that is counted");
        else if (const std::size_t found = total->count(model); found != expected)
            messages.push_back(what + ": expected " + std::to_string(expected) + ", found " + std::to_string(found));
    }
    return messages;
}

std::string totalsText(const Model& model) {
    std::string text;
    for (const Total& total : kTotals)
        text += "total " + std::string(total.what) + ' ' + std::to_string(total.count(model)) + '\n';
    return text;
}

} // namespace expgen
