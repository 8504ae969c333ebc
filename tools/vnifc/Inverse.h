#pragma once
#include "JsonWriter.h"

#include <VnIfcCore/VnIfcModel.h>

#include <utility>
#include <vector>

namespace vnifc::tool {

using Instances = std::vector<const VN_SDAI::VnIfcEntityBase*>;

/// The instances that an attribute refers to, explicit or inverse, whatever holds the references: a SET's in ascending
/// order of their numbers, also those in a select's set of values. Those that are not there are left out. Empty where
/// the instance has no such attribute.
Instances targetsOf(const VN_SDAI::VnIfcEntityBase& instance, const VN_SDAI::VnAnsiString& attribute);

/// The inverse attributes of an instance that hold something, inherited ones first, with the instances there.
std::vector<std::pair<const VN_SDAI::VnAnsiString*, Instances>> inversesOf(const VN_SDAI::VnIfcEntityBase& instance);

/// Writes the same as an object: numbers by attribute, or with `describe` references with keyword and name.
void writeInverses(JsonWriter& json, const VN_SDAI::VnIfcEntityBase& instance, bool describe = false);

} // namespace vnifc::tool
