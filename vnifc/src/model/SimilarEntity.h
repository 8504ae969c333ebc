#pragma once
#include <VnIfcCore/VnIfcSchema.h>

#include <string>

namespace vnifc::detail {

/// For the end of a message: " (did you mean IfcWall?)", or nothing when no entity of the schema has a similar name.
std::string similarEntity(const VN_SDAI::VnIfcSchema& schema, std::string_view name);

} // namespace vnifc::detail
