#pragma once

namespace VN_SDAI {

/// Root of the runtime's object classes.
class VnIfcObject {};

} // namespace VN_SDAI
