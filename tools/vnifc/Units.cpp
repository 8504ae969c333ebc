#include "Units.h"

#include "Instances.h"
#include "Inverse.h"

#include <VnIfcCore/VnIfcSchema.h>

#include <fmt/format.h>

#include <charconv>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

using Signs = std::map<std::string_view, std::string_view>;

const Signs kPrefixes{{"EXA", "E"},   {"PETA", "P"},  {"TERA", "T"},  {"GIGA", "G"},  {"MEGA", "M"},  {"KILO", "k"},
                      {"HECTO", "h"}, {"DECA", "da"}, {"DECI", "d"},  {"CENTI", "c"}, {"MILLI", "m"}, {"MICRO", "µ"},
                      {"NANO", "n"},  {"PICO", "p"},  {"FEMTO", "f"}, {"ATTO", "a"}};

const Signs kNames{
    {"AMPERE", "A"},          {"BECQUEREL", "Bq"}, {"CANDELA", "cd"}, {"COULOMB", "C"},  {"CUBIC_METRE", "m³"},
    {"DEGREE_CELSIUS", "°C"}, {"FARAD", "F"},      {"GRAM", "g"},     {"GRAY", "Gy"},    {"HENRY", "H"},
    {"HERTZ", "Hz"},          {"JOULE", "J"},      {"KELVIN", "K"},   {"LUMEN", "lm"},   {"LUX", "lx"},
    {"METRE", "m"},           {"MOLE", "mol"},     {"NEWTON", "N"},   {"OHM", "Ω"},      {"PASCAL", "Pa"},
    {"RADIAN", "rad"},        {"SECOND", "s"},     {"SIEMENS", "S"},  {"SIEVERT", "Sv"}, {"SQUARE_METRE", "m²"},
    {"STERADIAN", "sr"},      {"TESLA", "T"},      {"VOLT", "V"},     {"WATT", "W"},     {"WEBER", "Wb"}};

/// The sign of a name; the name itself where there is none.
std::string signFor(const Signs& signs, const std::string& name) {
    const auto found = signs.find(name);
    return found == signs.end() ? name : std::string(found->second);
}

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

/// A product of units: "W/(m²·K)".
std::string signOfProduct(const VnIfcEntityBase& unit) {
    std::vector<std::string> over, under;
    for (const VnIfcEntityBase* element : targetsOf(unit, "Elements")) {
        const std::string text = textOf(*element, "Exponent");
        int exponent = 1;
        std::from_chars(text.data(), text.data() + text.size(), exponent);
        for (const VnIfcEntityBase* factor : targetsOf(*element, "Unit")) {
            // A file may let a product be its own factor.
            const std::string sign = factor->isKindOf("IfcNamedUnit") ? signOf(*factor) : nameOf(*factor);
            const auto size = static_cast<unsigned>(exponent);
            (exponent < 0 ? under : over).push_back(power(sign, exponent < 0 ? 0 - size : size));
        }
    }
    const std::string dividend = over.empty() ? "1" : fmt::format("{}", fmt::join(over, "·"));
    if (under.empty())
        return dividend;
    const std::string divisor = fmt::format("{}", fmt::join(under, "·"));
    return dividend + '/' + (under.size() > 1 ? '(' + divisor + ')' : divisor);
}

/// "LENGTHUNIT" for "IFCPOSITIVELENGTHMEASURE"; empty for what is no measure.
std::string kindOf(std::string_view measure) {
    static const Signs kOthers{{"IFCTHERMALCONDUCTIVITYMEASURE", "THERMALCONDUCTANCEUNIT"},
                               {"IFCSECTIONALAREAINTEGRALMEASURE", "SECTIONAREAINTEGRALUNIT"}};
    if (const auto found = kOthers.find(measure); found != kOthers.end())
        return std::string(found->second);
    if (!measure.ends_with("MEASURE"))
        return {};
    measure.remove_suffix(7);
    for (const std::string_view prefix : {"IFC", "POSITIVE", "NONNEGATIVE"})
        if (measure.starts_with(prefix))
            measure.remove_prefix(prefix.size());
    return std::string(measure) + "UNIT";
}

} // namespace

std::string signOf(const VnIfcEntityBase& unit) {
    if (unit.isKindOf("IfcSIUnit"))
        return signFor(kPrefixes, textOf(unit, "Prefix")) + signFor(kNames, textOf(unit, "Name"));
    if (unit.isKindOf("IfcDerivedUnit"))
        return signOfProduct(unit);
    return unit.isKindOf("IfcMonetaryUnit") ? textOf(unit, "Currency") : nameOf(unit);
}

ProjectUnits::ProjectUnits(const VnIfcModel& model) {
    model.forEach(model.schema()->entity("IfcProject"), true, [this](const VnIfcEntityBase& project) {
        for (const VnIfcEntityBase* assignment : targetsOf(project, "UnitsInContext"))
            for (const VnIfcEntityBase* unit : targetsOf(*assignment, "Units"))
                m_units.emplace(unit->isKindOf("IfcMonetaryUnit") ? "MONETARYUNIT" : textOf(*unit, "UnitType"), unit);
    });
}

const VnIfcEntityBase* ProjectUnits::find(std::string_view measure) const {
    const auto found = m_units.find(kindOf(measure));
    return found == m_units.end() ? nullptr : found->second;
}

} // namespace vnifc::tool
