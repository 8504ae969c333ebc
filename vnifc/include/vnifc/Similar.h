#pragma once
#include <vnifc/Export.h>

#include <span>
#include <string_view>

namespace vnifc {

/// The name among those known that somebody may have meant: the one with the fewest letters to change, add, leave out
/// or swap, in any case, if that is at most one in three, without "Ifc" at the beginning. Empty when none is near. The
/// result refers to the text that `known` refers to.
VNIFC_LAYER_API std::string_view similarName(std::string_view name, std::span<const std::string_view> known);

} // namespace vnifc
