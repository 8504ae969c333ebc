#pragma once
#include "../model/ModelState.h"

#include <vnifc/Units.h>

#include <map>
#include <string>

namespace vnifc::detail {

/// The units that a project declares for all values that do not tell their own.
class ProjectUnits {
public:
    explicit ProjectUnits(ModelState& state);

    /// The unit of a measure, which is named in upper case ("IFCPOSITIVELENGTHMEASURE"), or of a kind ("LENGTHUNIT");
    /// null when the project declares none for it, and for types that have no unit.
    VN_SDAI::VnIfcEntityBase* find(std::string_view measure) const;

private:
    std::map<std::string, VN_SDAI::VnIfcEntityBase*, std::less<>> m_units; ///< by kind: "LENGTHUNIT"
};

} // namespace vnifc::detail
