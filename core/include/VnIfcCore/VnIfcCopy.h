#pragma once
#include <VnIfcCore/VnIfcModel.h>

#include <span>
#include <utility>
#include <vector>

namespace VN_SDAI {

/// Copies several instances of another model, each once, as VnIfcModel::copy does with `copies`. One by one, each would
/// have to look through all that `copies` names. False, and nothing is copied, when one of them is of the target or
/// opens to null.
VNIFC_API bool vnCopyInstances(VnIfcModel& target, std::span<const VnDbObjectId> sources,
                               std::vector<std::pair<VnDbObjectId, VnDbObjectId>>& copies);

} // namespace VN_SDAI
