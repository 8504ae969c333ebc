#pragma once
#include <VnIfcCore/VnIfcModel.h>

#include <map>
#include <string>
#include <string_view>

namespace vnifc::tool {

/// The sign of a unit, or its name where it has none: "mm", "W/(m²·K)", "inch".
std::string signOf(const VN_SDAI::VnIfcEntityBase& unit);

/// The units that a project declares for all values that do not tell their own.
class ProjectUnits {
public:
    explicit ProjectUnits(const VN_SDAI::VnIfcModel& model);

    /// The unit of a measure, which is named in upper case ("IFCPOSITIVELENGTHMEASURE"); null when the project declares
    /// none for it, and for types that have no unit.
    const VN_SDAI::VnIfcEntityBase* find(std::string_view measure) const;

private:
    std::map<std::string, const VN_SDAI::VnIfcEntityBase*, std::less<>> m_units; ///< by kind: "LENGTHUNIT"
};

} // namespace vnifc::tool
