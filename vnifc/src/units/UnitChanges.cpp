#include "UnitChanges.h"

#include "../meaning/ProjectUnits.h"

#include <charconv>
#include <cmath>

namespace vnifc::detail {

namespace {

// Files write the factor of a degree with as few digits as 0.0174533.
constexpr double kUnitDigits = 1e-6;
// Of a value all that a double has whatever its last bit.
constexpr int kValueDigits = 15;

bool isMoney(const Instance& unit) { return unit.is("IfcMonetaryUnit"); }

UnitChange changeOf(const Instance& from, const Instance& to) {
    UnitChange change;
    const auto refuse = [&](const std::string& reason) {
        change.problem = "values in " + signOf(from) + " cannot be converted to " + signOf(to) + ": " + reason;
        return change;
    };
    if (isMoney(from) || isMoney(to))
        return refuse("rates of exchange are not known");
    try {
        const Unit source(from), target(to);
        if (source.dimension() != target.dimension())
            return refuse("the dimensions differ");
        change.factor = source.factor() / target.factor();
        change.offset = (source.offset() - target.offset()) / target.factor();
    } catch (const BadValue& error) {
        return refuse(error.what());
    }
    return change;
}

} // namespace

double UnitChange::apply(double value) const noexcept {
    const double exact = value * factor + offset;
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, exact, std::chars_format::scientific, kValueDigits - 1);
    double rounded = exact;
    std::from_chars(digits, end.ptr, rounded);
    return rounded;
}

UnitChange UnitChange::toThe(int power) const {
    UnitChange result = *this;
    result.factor = std::pow(factor, power);
    return result;
}

UnitChanges::UnitChanges(const Instance& from, const Instance& to) {
    const std::map<std::string, Instance> declared = unitsOf(from);
    for (const auto& [kind, unit] : unitsOf(to)) {
        const auto found = declared.find(kind);
        if (found == declared.end())
            forbid(kind, "its project declares no unit of kind " + kind + ", the other one " + signOf(unit));
        else if (!isSameUnit(found->second, unit))
            m_changes.emplace(kind, changeOf(found->second, unit));
    }
}

const UnitChange* UnitChanges::find(std::string_view measure) const {
    const auto found = m_changes.find(unitKindOf(upperCase(measure)));
    return found == m_changes.end() ? nullptr : &found->second;
}

bool UnitChanges::contains(const Instance& unit) const { return m_changes.contains(kindOf(unit)); }

std::string kindOf(const Instance& unit) {
    if (isMoney(unit))
        return "MONETARYUNIT";
    return unit.has("UnitType") ? unit["UnitType"].valueOr(std::string()) : std::string();
}

std::map<std::string, Instance> unitsOf(const Instance& project) {
    std::map<std::string, Instance> units;
    const Instance assignment = project["UnitsInContext"].valueOr(Instance());
    for (const Instance& unit :
         assignment ? assignment["Units"].valueOr(std::vector<Instance>()) : std::vector<Instance>())
        if (const std::string kind = unit ? kindOf(unit) : std::string(); !kind.empty() && kind != "USERDEFINED")
            units.emplace(kind, unit);
    return units;
}

bool isSameUnit(const Instance& left, const Instance& right) {
    if (isMoney(left) || isMoney(right))
        return signOf(left) == signOf(right);
    try {
        const Unit a(left);
        const Unit b(right);
        const auto isClose = [](double x, double y) { return std::abs(x - y) <= kUnitDigits * std::abs(x); };
        return isClose(a.factor(), b.factor()) && isClose(a.offset(), b.offset()) && a.dimension() == b.dimension();
    } catch (const BadValue&) {
        return left.name() == right.name(); // context-dependent ones have nothing but a name
    }
}

} // namespace vnifc::detail
