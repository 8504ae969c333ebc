#pragma once
#include <VnIfcCore/VnAnsiString.h>
#include <VnIfcCore/VnDbObjectId.h>

#include <limits>

namespace VN_SDAI {

/// The values that stand for "unset", per kind of attribute.
struct Consts {
    static constexpr const char* VnStringUnset = VnUnsetText.text;
    static constexpr std::uint32_t VnStringUnsetLength = 1;
    static constexpr double VnRealUnset = std::numeric_limits<double>::quiet_NaN();
    static constexpr int VnIntUnset = 0x7fffffff;
    static constexpr VnDbObjectId VnHandleUnset{};
};

} // namespace VN_SDAI
