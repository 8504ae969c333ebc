#pragma once
#include <vnifc/Units.h>

#include <map>
#include <string>
#include <string_view>

namespace vnifc::detail {

/// How values of one kind get from the unit of one project to that of another.
struct UnitChange {
    double factor = 1;
    double offset = 0;   ///< added after the factor has been applied
    std::string problem; ///< why they do not; empty where they do

    /// To as many digits as both units are known to, so that 0.29 m are 290 mm and not a little less.
    double apply(double value) const noexcept;
    /// For a value of that dimension to a power.
    UnitChange toThe(int power) const;
};

/// The kinds of unit that differ between two projects: values of all others may stay as they are.
class UnitChanges {
public:
    UnitChanges() = default;
    /// Also kinds that `from` declares no unit of; values of these have none.
    UnitChanges(const Instance& from, const Instance& to);

    bool empty() const noexcept { return m_changes.empty(); }
    /// Of a measure in any case or a kind ("LENGTHUNIT"); null when nothing changes for it.
    const UnitChange* find(std::string_view measure) const;
    bool contains(const Instance& unit) const;
    /// Kinds of which no value may be met, with the reason.
    void forbid(const std::string& kind, std::string problem) { m_changes[kind].problem = std::move(problem); }

private:
    std::map<std::string, UnitChange, std::less<>> m_changes;
};

/// The units that a project declares, by kind: "LENGTHUNIT"; without those of a kind of their own.
std::map<std::string, Instance> unitsOf(const Instance& project);
/// "LENGTHUNIT"; of money "MONETARYUNIT", of a kind of its own "USERDEFINED".
std::string kindOf(const Instance& unit);
/// True when values may go from one to the other without a change.
bool isSameUnit(const Instance& left, const Instance& right);

/// Brings all values of a model to other units. Throws BadValue, with nothing changed, when the model has a value of a
/// kind with a problem, or one whose unit cannot be told. Returns the number of values that changed.
std::uint64_t applyChanges(Model& model, const UnitChanges& changes);
/// As applyChanges, without any change.
void checkChanges(const Model& model, const UnitChanges& changes);

} // namespace vnifc::detail
