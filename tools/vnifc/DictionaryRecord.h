#pragma once
#include <VnIfcCore/VnIfcSchema.h>

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace vnifc::tool {

/// The schema's version: "4.3".
std::string versionOf(const VN_SDAI::VnIfcSchema& schema);

/// What the dictionary holds on a type or an entity, every name in the form in which it was registered.
nlohmann::ordered_json recordOf(const VN_SDAI::VnIfcDefinedType& type);
nlohmann::ordered_json recordOf(const VN_SDAI::VnIfcEntityType& entity);

} // namespace vnifc::tool
