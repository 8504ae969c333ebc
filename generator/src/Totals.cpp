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
    for (const Entity& entity : model.entities) {
        for (const ExplicitAttribute& attribute : entity.explicits) {
            texts.insert(attributeTypeText(attribute.type));
        }
    }
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
    std::size_t expected;
    std::size_t (*count)(const Model&);
};

constexpr Total kTotals[] = {
    {"entities", 880, [](const Model& m) { return m.entities.size(); }},
    {"entities in building order", 880, [](const Model& m) { return m.entityOrder.size(); }},
    {"root entities", 59, [](const Model& m) { return countIf(m.entities, [](auto& e) { return !e.supertype; }); }},
    {"concrete entities", 746,
     [](const Model& m) { return countIf(m.entities, [](auto& e) { return !e.isAbstract; }); }},
    {"explicit attributes", 1625,
     [](const Model& m) { return sum(m.entities, [](auto& e) { return e.explicits.size(); }); }},
    {"derived attributes", 62,
     [](const Model& m) { return sum(m.entities, [](auto& e) { return e.derived.size(); }); }},
    {"redeclaring derived attributes", 8, redeclaring},
    {"inverse attributes", 163,
     [](const Model& m) { return sum(m.entities, [](auto& e) { return e.inverses.size(); }); }},
    {"entities without attributes", 123,
     [](const Model& m) {
         return countIf(m.entities,
                        [](auto& e) { return e.explicits.empty() && e.derived.empty() && e.inverses.empty(); });
     }},
    {"entities without explicit attributes", 153,
     [](const Model& m) { return countIf(m.entities, [](auto& e) { return e.explicits.empty(); }); }},
    {"entities without properties", 129,
     [](const Model& m) { return countIf(m.entities, [](auto& e) { return !e.hasProperties(); }); }},
    {"entities with links to inverse attributes", 94,
     [](const Model& m) { return countIf(m.entities, [](auto& e) { return !e.links.empty(); }); }},
    {"distinct texts of explicit attribute types", 568, explicitTypeTexts},
    {"enumeration classes", 242, [](const Model& m) { return m.enumerations.size(); }},
    {"literals of enumeration classes", 2090, [](const Model& m) { return literals(m.enumerations); }},
    {"enumeration records", 252, [](const Model& m) { return m.enumerationRecords.size(); }},
    {"literals of enumeration records", 2193, [](const Model& m) { return literals(m.enumerationRecords); }},
    {"selects", 66, [](const Model& m) { return m.selects.size(); }},
    {"direct members of selects", 287,
     [](const Model& m) { return sum(m.selects, [](auto& s) { return s.members.size(); }); }},
    {"entity members of flattened selects", 135, entityMembers},
    {"defined types over simple types", 125, [](const Model& m) { return m.definedTypeOrder.size(); }},
    {"named aggregations", 5,
     [](const Model& m) { return countIf(m.aggregations, [](auto& a) { return a.isNamed; }); }},
    {"aggregations", 261, [](const Model& m) { return m.aggregations.size(); }},
    {"set aggregations", 166, aggregations<AggregateKind::kSet>},
    {"list aggregations", 87, aggregations<AggregateKind::kList>},
    {"array aggregations", 8, aggregations<AggregateKind::kArray>},
};

} // namespace

std::vector<std::string> wrongTotals(const Model& model) {
    std::vector<std::string> messages;
    for (const Total& total : kTotals) {
        if (const std::size_t found = total.count(model); found != total.expected) {
            messages.push_back(std::string(total.what) + ": expected " + std::to_string(total.expected) + ", found " +
                               std::to_string(found));
        }
    }
    return messages;
}

} // namespace expgen
