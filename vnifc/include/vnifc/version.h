#pragma once
#include <VnIfcCore/VnIfcVersion.h> // VNIFC_VERSION and its parts, which the headers of both libraries share
#include <vnifc/Error.h>

namespace vnifc {

/// The version of the library vnifc that is loaded, "0.2.0" for instance; a text that lives as long as the library.
/// VNIFC_VERSION is that of the headers which the program was compiled with.
VNIFC_LAYER_API const char* version() noexcept;

} // namespace vnifc
