#include <VnIfcCore/VnIfcException.h>

namespace VN_SDAI {

VnIfcException::~VnIfcException() = default;

} // namespace VN_SDAI
