#include "ProjectUnits.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>

namespace vnifc {

using detail::Entity;
using detail::ModelState;
using detail::Name;
using VN_SDAI::VnIfcEntityBase;

namespace {

struct Prefix {
    std::string_view name;
    std::string_view sign;
    double factor;
};

constexpr Prefix kPrefixes[] = {{"EXA", "E", 1e18},  {"PETA", "P", 1e15},  {"TERA", "T", 1e12},   {"GIGA", "G", 1e9},
                                {"MEGA", "M", 1e6},  {"KILO", "k", 1e3},   {"HECTO", "h", 1e2},   {"DECA", "da", 1e1},
                                {"DECI", "d", 1e-1}, {"CENTI", "c", 1e-2}, {"MILLI", "m", 1e-3},  {"MICRO", "µ", 1e-6},
                                {"NANO", "n", 1e-9}, {"PICO", "p", 1e-12}, {"FEMTO", "f", 1e-15}, {"ATTO", "a", 1e-18}};

struct SiUnit {
    std::string_view name;
    std::string_view sign;
    double factor;
    double offset;
    Dimension dimension;
    int power = 1; ///< of the prefix: a square millimetre is a millionth of a square metre
};

constexpr double kCelsius = 273.15;
constexpr double kGram = 1e-3;

constexpr SiUnit kSiUnits[] = {{"AMPERE", "A", 1, 0, {0, 0, 0, 1}},
                               {"BECQUEREL", "Bq", 1, 0, {0, 0, -1}},
                               {"CANDELA", "cd", 1, 0, {0, 0, 0, 0, 0, 0, 1}},
                               {"COULOMB", "C", 1, 0, {0, 0, 1, 1}},
                               {"CUBIC_METRE", "m³", 1, 0, {3}, 3},
                               {"DEGREE_CELSIUS", "°C", 1, kCelsius, {0, 0, 0, 0, 1}},
                               {"FARAD", "F", 1, 0, {-2, -1, 4, 2}},
                               {"GRAM", "g", kGram, 0, {0, 1}},
                               {"GRAY", "Gy", 1, 0, {2, 0, -2}},
                               {"HENRY", "H", 1, 0, {2, 1, -2, -2}},
                               {"HERTZ", "Hz", 1, 0, {0, 0, -1}},
                               {"JOULE", "J", 1, 0, {2, 1, -2}},
                               {"KELVIN", "K", 1, 0, {0, 0, 0, 0, 1}},
                               {"LUMEN", "lm", 1, 0, {0, 0, 0, 0, 0, 0, 1}},
                               {"LUX", "lx", 1, 0, {-2, 0, 0, 0, 0, 0, 1}},
                               {"METRE", "m", 1, 0, {1}},
                               {"MOLE", "mol", 1, 0, {0, 0, 0, 0, 0, 1}},
                               {"NEWTON", "N", 1, 0, {1, 1, -2}},
                               {"OHM", "Ω", 1, 0, {2, 1, -3, -2}},
                               {"PASCAL", "Pa", 1, 0, {-1, 1, -2}},
                               {"RADIAN", "rad", 1, 0, {}},
                               {"SECOND", "s", 1, 0, {0, 0, 1}},
                               {"SIEMENS", "S", 1, 0, {-2, -1, 3, 2}},
                               {"SIEVERT", "Sv", 1, 0, {2, 0, -2}},
                               {"SQUARE_METRE", "m²", 1, 0, {2}, 2},
                               {"STERADIAN", "sr", 1, 0, {}},
                               {"TESLA", "T", 1, 0, {0, 1, -2, -1}},
                               {"VOLT", "V", 1, 0, {2, 1, -3, -1}},
                               {"WATT", "W", 1, 0, {2, 1, -3}},
                               {"WEBER", "Wb", 1, 0, {2, 1, -2, -1}}};

// Others that people write, without prefixes. Exact by definition (ISO 80000 and the international yard and pound).
constexpr double kInch = 0.0254;
constexpr double kPound = 0.45359237;
constexpr double kGravity = 9.80665;
constexpr double kDegree = 3.14159265358979323846 / 180;
constexpr SiUnit kOtherUnits[] = {{"", "min", 60, 0, {0, 0, 1}},
                                  {"", "h", 3600, 0, {0, 0, 1}},
                                  {"", "d", 86400, 0, {0, 0, 1}},
                                  {"", "l", 1e-3, 0, {3}},
                                  {"", "L", 1e-3, 0, {3}},
                                  {"", "t", 1e3, 0, {0, 1}},
                                  {"", "bar", 1e5, 0, {-1, 1, -2}},
                                  {"", "ha", 1e4, 0, {2}},
                                  {"", "°", kDegree, 0, {}},
                                  {"", "deg", kDegree, 0, {}},
                                  {"", "degC", 1, kCelsius, {0, 0, 0, 0, 1}},
                                  {"", "°F", 5.0 / 9, kCelsius - 32 * 5.0 / 9, {0, 0, 0, 0, 1}},
                                  {"", "degF", 5.0 / 9, kCelsius - 32 * 5.0 / 9, {0, 0, 0, 0, 1}},
                                  {"", "in", kInch, 0, {1}},
                                  {"", "inch", kInch, 0, {1}},
                                  {"", "ft", 12 * kInch, 0, {1}},
                                  {"", "foot", 12 * kInch, 0, {1}},
                                  {"", "yd", 36 * kInch, 0, {1}},
                                  {"", "mi", 63360 * kInch, 0, {1}},
                                  {"", "lb", kPound, 0, {0, 1}},
                                  {"", "oz", kPound / 16, 0, {0, 1}},
                                  {"", "lbf", kPound* kGravity, 0, {1, 1, -2}},
                                  {"", "psi", kPound* kGravity / (kInch * kInch), 0, {-1, 1, -2}},
                                  {"", "ohm", 1, 0, {2, 1, -3, -2}},
                                  {"", "%", 1e-2, 0, {}}};

const Prefix* prefixNamed(std::string_view name) {
    const auto found = std::ranges::find(kPrefixes, name, &Prefix::name);
    return found == std::end(kPrefixes) ? nullptr : found;
}

template <std::size_t count>
const SiUnit* unitBy(const SiUnit (&units)[count], std::string_view SiUnit::*key, std::string_view text) {
    const auto found = std::ranges::find(units, text, key);
    return found == std::end(units) ? nullptr : found;
}

void multiply(double& factor, Dimension& dimension, double otherFactor, const Dimension& other, int exponent) {
    factor *= std::pow(otherFactor, exponent);
    for (std::size_t i = 0; i < dimension.size(); ++i)
        dimension[i] += other[i] * exponent;
}

// ---- signs

std::string power(const std::string& sign, unsigned exponent) {
    static constexpr std::string_view kDigits[] = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
    if (exponent == 1)
        return sign;
    // What has an exponent already would take the other one for a part of it.
    const bool isPower = sign.ends_with("²") || sign.ends_with("³");
    std::string result = isPower ? "(" + sign + ")" : sign;
    for (const char digit : std::to_string(exponent))
        result += kDigits[digit - '0'];
    return result;
}

std::string joined(const std::vector<std::string>& factors) {
    std::string product;
    for (const std::string& factor : factors)
        product.append(product.empty() ? "" : "·").append(factor);
    return product;
}

std::string signOfUnit(ModelState& state, const VnIfcEntityBase& unit);

/// A product of units: "W/(m²·K)".
std::string signOfProduct(ModelState& state, const VnIfcEntityBase& unit) {
    std::vector<std::string> over, under;
    state.forEachTarget(unit, Name::Elements, [&](VnIfcEntityBase& element) {
        const int exponent = state.value(element, Name::Exponent).valueOr(1);
        state.forEachTarget(element, Name::Unit, [&](VnIfcEntityBase& factor) {
            // A file may let a product be its own factor.
            const std::string sign =
                state.is(factor, Entity::IfcNamedUnit) ? signOfUnit(state, factor) : state.text(factor, Name::Name);
            const auto size = static_cast<unsigned>(exponent);
            (exponent < 0 ? under : over).push_back(power(sign, exponent < 0 ? 0 - size : size));
        });
    });
    const std::string dividend = over.empty() ? "1" : joined(over);
    if (under.empty())
        return dividend;
    const std::string divisor = joined(under);
    return dividend + '/' + (under.size() > 1 ? '(' + divisor + ')' : divisor);
}

std::string signOfUnit(ModelState& state, const VnIfcEntityBase& unit) {
    if (state.is(unit, Entity::IfcSIUnit)) {
        const std::string_view prefix = state.literal(unit, Name::Prefix), name = state.literal(unit, Name::Name);
        const Prefix* knownPrefix = prefixNamed(prefix);
        const SiUnit* known = unitBy(kSiUnits, &SiUnit::name, name);
        return std::string(knownPrefix ? knownPrefix->sign : prefix) + std::string(known ? known->sign : name);
    }
    if (state.is(unit, Entity::IfcDerivedUnit))
        return signOfProduct(state, unit);
    return state.text(unit, state.is(unit, Entity::IfcMonetaryUnit) ? Name::Currency : Name::Name);
}

/// "LENGTHUNIT" for "IFCPOSITIVELENGTHMEASURE" and for itself; empty for what is no measure.
std::string kindOf(std::string_view measure) {
    static constexpr std::pair<std::string_view, std::string_view> kOthers[] = {
        {"IFCTHERMALCONDUCTIVITYMEASURE", "THERMALCONDUCTANCEUNIT"},
        {"IFCSECTIONALAREAINTEGRALMEASURE", "SECTIONAREAINTEGRALUNIT"}};
    for (const auto& [other, kind] : kOthers)
        if (measure == other)
            return std::string(kind);
    constexpr std::string_view kMeasure = "MEASURE";
    if (!measure.ends_with(kMeasure))
        return measure.ends_with("UNIT") ? std::string(measure) : std::string();
    measure.remove_suffix(kMeasure.size());
    for (const std::string_view prefix : {"IFC", "POSITIVE", "NONNEGATIVE"})
        if (measure.starts_with(prefix))
            measure.remove_prefix(prefix.size());
    return std::string(measure) + "UNIT";
}

std::string upperCase(std::string_view name) {
    std::string upper(name);
    for (char& c : upper)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
    return upper;
}

} // namespace

/// Finds the way from the instance of a unit to SI units.
class UnitReader {
public:
    explicit UnitReader(ModelState& state) : m_state(state) {}

    Unit read(const VnIfcEntityBase& unit, unsigned depth = 0) const {
        if (depth > kMaxDepth)
            refuse(unit, "it refers to itself");
        Unit result;
        if (m_state.is(unit, Entity::IfcSIUnit))
            readSi(unit, result);
        else if (m_state.is(unit, Entity::IfcConversionBasedUnit))
            readConversion(unit, result, depth);
        else if (m_state.is(unit, Entity::IfcDerivedUnit))
            readDerived(unit, result, depth);
        else
            refuse(unit, "only SI units, units converted from them, and derived units have one");
        result.m_sign = signOfUnit(m_state, unit);
        return result;
    }

private:
    // Units of real files lead to SI in two steps.
    static constexpr unsigned kMaxDepth = 16;

    [[noreturn]] void refuse(const VnIfcEntityBase& unit, const std::string& why) const {
        const Instance instance = m_state.wrap(unit);
        throw BadValue("the unit #" + std::to_string(instance.id()) + ' ' + std::string(instance.keyword()) +
                       " has no way to SI: " + why);
    }

    void readSi(const VnIfcEntityBase& unit, Unit& result) const {
        const SiUnit* known = unitBy(kSiUnits, &SiUnit::name, m_state.literal(unit, Name::Name));
        if (!known)
            refuse(unit, "its name is not given");
        const Prefix* prefix = prefixNamed(m_state.literal(unit, Name::Prefix));
        result.m_factor = known->factor * (prefix ? std::pow(prefix->factor, known->power) : 1);
        result.m_offset = known->offset;
        result.m_dimension = known->dimension;
    }

    void readConversion(const VnIfcEntityBase& unit, Unit& result, unsigned depth) const {
        const VnIfcEntityBase* measure = m_state.target(unit, Name::ConversionFactor);
        const VnIfcEntityBase* base = measure ? m_state.target(*measure, Name::UnitComponent) : nullptr;
        const std::optional<double> factor = measure ? m_state.number(*measure, Name::ValueComponent) : std::nullopt;
        if (!base || !factor || *factor == 0)
            refuse(unit, "its conversion factor is not given");
        const Unit other = read(*base, depth + 1);
        // The offset is added after the factor has been applied.
        const double offset = m_state.number(unit, Name::ConversionOffset).value_or(0);
        result.m_factor = *factor * other.m_factor;
        result.m_offset = offset * other.m_factor + other.m_offset;
        result.m_dimension = other.m_dimension;
    }

    /// A difference counts here, so that offsets do not.
    void readDerived(const VnIfcEntityBase& unit, Unit& result, unsigned depth) const {
        m_state.forEachTarget(unit, Name::Elements, [&](VnIfcEntityBase& element) {
            const auto exponent = m_state.value(element, Name::Exponent).get<int>();
            const VnIfcEntityBase* base = m_state.target(element, Name::Unit);
            if (!exponent || !base || std::abs(*exponent) > kMaxExponent)
                refuse(unit, "one of its elements lacks unit or exponent");
            const Unit other = read(*base, depth + 1);
            multiply(result.m_factor, result.m_dimension, other.m_factor, other.m_dimension, *exponent);
        });
    }

    static constexpr int kMaxExponent = 99;

    ModelState& m_state;
};

/// Takes the sign of a unit apart: product = power {("·" | "*" | "." | "/") power}.
class SignReader {
public:
    explicit SignReader(std::string_view sign) : m_sign(sign), m_rest(sign) {}

    Unit read() {
        Unit unit = product(0);
        if (!m_rest.empty())
            refuse();
        unit.m_sign = m_sign;
        return unit;
    }

private:
    static constexpr unsigned kMaxDepth = 16;
    static constexpr int kMaxExponent = 99;

    [[noreturn]] void refuse() const {
        throw BadValue("expected the sign of a unit, such as mm, m², °C or W/(m²·K), found " + std::string(m_sign));
    }

    bool take(std::string_view text) {
        if (!m_rest.starts_with(text))
            return false;
        m_rest.remove_prefix(text.size());
        return true;
    }

    Unit product(unsigned depth) {
        if (depth > kMaxDepth)
            refuse();
        Unit result = factor(depth);
        for (;;) {
            const bool divides = take("/");
            if (!divides && !take("·") && !take("*") && !take("."))
                return result;
            const Unit next = factor(depth);
            // In a product a difference counts, so that offsets do not.
            result.m_offset = 0;
            multiply(result.m_factor, result.m_dimension, next.m_factor, next.m_dimension, divides ? -1 : 1);
        }
    }

    Unit factor(unsigned depth) {
        Unit unit;
        if (take("1")) {
        } else if (take("(")) {
            unit = product(depth + 1);
            if (!take(")"))
                refuse();
        } else {
            unit = named();
        }
        const int exponent = this->exponent();
        if (exponent == 1)
            return unit;
        Unit result;
        multiply(result.m_factor, result.m_dimension, unit.m_factor, unit.m_dimension, exponent);
        return result;
    }

    Unit named() {
        const std::size_t end = nameEnd();
        const std::string_view name = m_rest.substr(0, end);
        m_rest.remove_prefix(end);
        if (const SiUnit* exact = lookUp(name))
            return unitOf(*exact, 1);
        for (const Prefix& prefix : kPrefixes)
            for (const std::string_view sign :
                 {prefix.sign, prefix.name == "MICRO" ? std::string_view("u") : prefix.sign})
                if (name.starts_with(sign))
                    if (const SiUnit* unit = unitBy(kSiUnits, &SiUnit::sign, name.substr(sign.size())))
                        return unitOf(*unit, prefix.factor);
        refuse();
    }

    static const SiUnit* lookUp(std::string_view name) {
        const SiUnit* known = unitBy(kSiUnits, &SiUnit::sign, name);
        return known ? known : unitBy(kOtherUnits, &SiUnit::sign, name);
    }
    static Unit unitOf(const SiUnit& known, double prefix) {
        Unit unit;
        unit.m_factor = known.factor * prefix;
        unit.m_offset = known.offset;
        unit.m_dimension = known.dimension;
        return unit;
    }

    /// A name ends before an operator, a parenthesis, or an exponent.
    std::size_t nameEnd() const {
        std::size_t end = 0;
        while (end < m_rest.size()) {
            const std::string_view rest = m_rest.substr(end);
            if (std::string_view("0123456789()*./^-").find(rest.front()) != std::string_view::npos ||
                rest.starts_with("·") || rest.starts_with("²") || rest.starts_with("³"))
                break;
            ++end;
        }
        return end;
    }

    int exponent() {
        if (take("²"))
            return 2;
        if (take("³"))
            return 3;
        const bool isWritten = take("^");
        int value = 1;
        const auto [stop, error] = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), value);
        if (error == std::errc() && std::abs(value) <= kMaxExponent)
            m_rest.remove_prefix(static_cast<std::size_t>(stop - m_rest.data()));
        else if (isWritten || error == std::errc())
            refuse();
        return value;
    }

    std::string_view m_sign;
    std::string_view m_rest;
};

Unit::Unit(const Instance& unit) : Unit(UnitReader(detail::stateOf(unit)).read(detail::opened(unit))) {}
Unit::Unit(std::string_view sign) : Unit(SignReader(sign).read()) {}

double convert(double value, const Unit& from, const Unit& to) {
    if (from.dimension() != to.dimension())
        throw BadValue("cannot convert " + from.sign() + " to " + to.sign() + ": the dimensions differ");
    return to.fromSi(from.toSi(value));
}

std::string signOf(const Instance& unit) { return signOfUnit(detail::stateOf(unit), detail::opened(unit)); }

Instance projectUnit(const Model& model, std::string_view measure) {
    ModelState& state = *model.wrap({}).state();
    VnIfcEntityBase* unit = state.units().find(upperCase(measure));
    return unit ? state.wrap(*unit) : Instance();
}

std::optional<Quantity> quantity(const Instance& instance, std::string_view attribute) {
    const Value value = instance[attribute];
    const std::optional<double> number = value.get<double>();
    if (!number)
        return std::nullopt;
    ModelState& state = detail::stateOf(instance);
    const VnIfcEntityBase& object = detail::opened(instance);
    const VnIfcEntityBase* unit = state.target(object, Name::Unit);
    if (!unit) {
        const auto typed = value.get<Typed>();
        const detail::AttributeInfo* info = state.classOf(object)->findExplicit(attribute);
        unit = state.units().find(typed ? typed->type() : info ? detail::upperNameOf(info->type) : std::string());
    }
    if (!unit)
        return std::nullopt;
    return Quantity{*number, UnitReader(state).read(*unit)};
}

namespace detail {

ProjectUnits::ProjectUnits(ModelState& state) {
    const auto projects = state.population.select(state.model(), [&](const VN_SDAI::VnIfcEntityType* type) {
        return type && type == state.type(Entity::IfcProject);
    });
    for (const VN_SDAI::VnDbObjectId& handle : *projects) {
        const VnIfcEntityBase* project = handle.openObject();
        if (!project)
            continue;
        state.forEachTarget(*project, Name::UnitsInContext, [&](VnIfcEntityBase& assignment) {
            state.forEachTarget(assignment, Name::Units, [&](VnIfcEntityBase& unit) {
                const bool isMoney = state.is(unit, Entity::IfcMonetaryUnit);
                m_units.emplace(isMoney ? "MONETARYUNIT" : state.literal(unit, Name::UnitType), &unit);
            });
        });
    }
}

VnIfcEntityBase* ProjectUnits::find(std::string_view measure) const {
    const auto found = m_units.find(kindOf(measure));
    return found == m_units.end() ? nullptr : found->second;
}

} // namespace detail

} // namespace vnifc
