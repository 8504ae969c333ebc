#include <vnifc/Error.h>
#include <vnifc/Table.h>

#include <map>

namespace vnifc {

namespace {

/// A sum whose unit is that of the first number.
class Sum {
public:
    /// The number of an instance, in the sum's unit.
    std::optional<double> numberOf(const Facet& facet, const Instance& instance) {
        const std::optional<Quantity> quantity = facet.quantity(instance);
        const std::optional<double> plain = quantity ? std::nullopt : facet.value(instance).get<double>();
        if (!quantity && !plain)
            return std::nullopt;
        const Unit unit = quantity ? quantity->unit : Unit();
        if (!m_unit)
            m_unit = unit;
        if (unit.dimension() != m_unit->dimension())
            throw BadValue('#' + std::to_string(instance.id()) + ": " + facet.text() + " is in " + nameOf(unit) +
                           ", which cannot be added to " + nameOf(*m_unit));
        return quantity ? quantity->in(*m_unit) : *plain;
    }
    std::string unit() const { return m_unit ? m_unit->sign() : std::string(); }

private:
    static std::string nameOf(const Unit& unit) { return unit.sign().empty() ? "no unit" : unit.sign(); }

    std::optional<Unit> m_unit;
};

} // namespace

FacetGroups groupBy(const InstanceRange& instances, const Facet* by, const Facet* sum) {
    std::map<std::string, FacetGroup> groups;
    if (!by)
        groups.try_emplace("");
    Sum numbers;
    for (const Instance instance : instances) {
        FacetGroup& group = groups[by ? by->words(instance) : std::string()];
        ++group.count;
        const std::optional<double> number = sum ? numbers.numberOf(*sum, instance) : std::nullopt;
        group.summed += number ? 1 : 0;
        group.sum += number.value_or(0);
    }
    FacetGroups result{{}, numbers.unit()};
    for (auto& [name, group] : groups) {
        group.name = name;
        result.groups.push_back(std::move(group));
    }
    return result;
}

} // namespace vnifc
