#pragma once
#include <vnifc/Model.h>

#include <array>

namespace vnifc {

/// Exponents of the base quantities: length, mass, time, electric current, temperature, amount of substance, luminous
/// intensity.
using Dimension = std::array<int, 7>;

/// A unit with what it takes to get to SI units: si = value * factor + offset, where the unit of mass is the kilogram.
/// A value of its own that does not need the model.
class VNIFC_LAYER_API Unit {
public:
    /// The number one.
    Unit() = default;
    /// An instance of IfcNamedUnit or IfcDerivedUnit: SI units with prefixes, units that are converted with a factor
    /// and perhaps an offset, and derived ones. Throws BadValue for what has no way to SI: monetary and
    /// context-dependent units, and units that lack what they need or refer to themselves.
    explicit Unit(const Instance& unit);
    /// A unit by its sign: "mm", "m2", "m²", "W/(m²·K)", "°C", "ft", "kN/m". Throws BadValue.
    explicit Unit(std::string_view sign);

    double toSi(double value) const noexcept { return value * m_factor + m_offset; }
    double fromSi(double value) const noexcept { return (value - m_offset) / m_factor; }
    double factor() const noexcept { return m_factor; }
    double offset() const noexcept { return m_offset; }
    const Dimension& dimension() const noexcept { return m_dimension; }
    /// "mm", "W/(m²·K)", or the name of a unit that has no sign: "inch".
    const std::string& sign() const noexcept { return m_sign; }

private:
    friend class UnitReader;
    friend class SignReader;

    double m_factor = 1;
    double m_offset = 0;
    Dimension m_dimension{};
    std::string m_sign;
};

/// A value in another unit. Throws BadValue when the dimensions differ.
VNIFC_LAYER_API double convert(double value, const Unit& from, const Unit& to);

/// The sign of a unit, or its name where it has none; also of monetary units, by their currency.
VNIFC_LAYER_API std::string signOf(const Instance& unit);

/// The unit that the project declares for a kind of unit ("LENGTHUNIT") or a measure ("IfcPositiveLengthMeasure"), in
/// any case; no instance when it declares none, and for types that have no unit.
VNIFC_LAYER_API Instance projectUnit(const Model& model, std::string_view measure);

/// A number with the unit that holds for it.
struct VNIFC_LAYER_API Quantity {
    double value;
    Unit unit;

    double si() const noexcept { return unit.toSi(value); }
    /// Throws BadValue when the dimensions differ.
    double in(const Unit& other) const { return convert(value, unit, other); }
    double in(std::string_view sign) const { return in(Unit(sign)); }
};

/// The number in an attribute with its unit: what the instance itself says (an attribute Unit), or the project for the
/// attribute's type. Nothing when there is no number, or no unit for it. Throws NotFound for an unknown attribute, and
/// BadValue for a unit that has no way to SI.
VNIFC_LAYER_API std::optional<Quantity> quantity(const Instance& instance, std::string_view attribute);

} // namespace vnifc
