#pragma once
#include <VnIfcCore/VnAnsiString.h>
#include <VnIfcCore/VnDbObjectId.h>

#include <limits>

namespace VN_SDAI {

/// The values that stand for "unset", per kind of attribute.
struct Consts {
    /// STRING: the text of the one byte 0xFF, which no exchange text is.
    static constexpr const char* VnStringUnset = VnUnsetText.text;
    /// Of VnStringUnset, in bytes.
    static constexpr std::uint32_t VnStringUnsetLength = 1;
    /// REAL and NUMBER: NaN; ask with std::isnan.
    static constexpr double VnRealUnset = std::numeric_limits<double>::quiet_NaN();
    /// INTEGER: the largest value of 32 bits.
    static constexpr int VnIntUnset = 0x7fffffff;
    /// A reference: the null handle.
    static constexpr VnDbObjectId VnHandleUnset{};
};

} // namespace VN_SDAI
