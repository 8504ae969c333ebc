#include <VnIfcCore/VnIfcVersion.h>

namespace VN_SDAI {

const char* vnIfcVersion() noexcept { return VNIFC_VERSION; }

} // namespace VN_SDAI
