#pragma once
#include <VnIfcCore/VnAscii.h>
#include <VnIfcCore/VnIfcLogical.h>

namespace VN_SDAI {

/// What the literal T, F or U means (ISO 10303-21, table of encodings), without its dots and in any case; Unset for
/// anything else.
constexpr VnIfcLogical logicalOf(std::string_view literal) noexcept {
    switch (literal.size() == 1 ? vnUpper(literal[0]) : '\0') {
    case 'T':
        return VnIfcLogical::True;
    case 'F':
        return VnIfcLogical::False;
    case 'U':
        return VnIfcLogical::Unknown;
    default:
        return VnIfcLogical::Unset;
    }
}

/// The same for a BOOLEAN, which has no U.
constexpr VnIfcBoolean booleanOf(std::string_view literal) noexcept {
    const VnIfcLogical value = logicalOf(literal);
    return value == VnIfcLogical::True    ? VnIfcBoolean::True
           : value == VnIfcLogical::False ? VnIfcBoolean::False
                                          : VnIfcBoolean::Unset;
}

} // namespace VN_SDAI
