#pragma once
#include "Commands.h"

#include <VnIfcCore/VnIfcModel.h>

#include <cstdint>
#include <string>

namespace vnifc::tool {

/// Writes a model to a file, into an archive when its name ends in .ifczip, or to standard output, "-"; shows progress.
/// Answers the number of bytes of the exchange file. Throws Failure; an existing file is then as it was.
std::uint64_t writeModel(const VN_SDAI::VnIfcModel& model, const std::string& target, const ReadFlags& flags);

} // namespace vnifc::tool
