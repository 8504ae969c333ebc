#include <vnifc/version.h>

namespace vnifc {

const char* version() noexcept { return VNIFC_VERSION; }

} // namespace vnifc
