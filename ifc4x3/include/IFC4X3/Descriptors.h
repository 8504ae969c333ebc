#pragma once
#include <IFC4X3/Export.h>

#include <cstddef>

namespace IFC4X3 {

/// How many variant type descriptors the module has made and not yet released; 0 after uninitialisation.
IFC4X3_API std::size_t livingDescriptors() noexcept;

} // namespace IFC4X3
