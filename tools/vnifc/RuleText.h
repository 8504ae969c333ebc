#pragma once
#include "Commands.h"

#include <vnifc/Rules.h>

#include <optional>

namespace vnifc::tool {

/// The rules of a model's release: from the text that is named, or else from the one that is found. Nothing when none
/// is. Throws Failure for one that cannot be used.
std::optional<Rules> rulesFor(const VN_SDAI::VnIfcModel& model, const std::string& text);

/// One line: that there is no text of that release, and how to have one.
std::string howToHaveRules(const VN_SDAI::VnIfcModel& model);

} // namespace vnifc::tool
