#pragma once
#include "ModelState.h"

#include <unordered_set>

namespace vnifc::detail {

using Slots = std::unordered_set<const VN_SDAI::VnIfcInstanceSlot*>;

/// Erases instances and every reference to them: an attribute becomes unset, a list or set loses the elements.
void eraseAll(ModelState& state, const std::vector<VN_SDAI::VnDbObjectId>& handles);

} // namespace vnifc::detail
