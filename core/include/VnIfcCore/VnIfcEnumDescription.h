#pragma once
#include <VnIfcCore/VnIfcVariantType.h>

namespace VN_SDAI {

/// Names one enumerator of an enumeration type. Refers to the type's descriptor and lives no longer than it.
struct VnIfcEnumDescription {
    const IVnIfcVariantTypeEnumeration* enumeration = nullptr;
    std::int32_t index = 0;

    /// The qualified name; null when there is no such enumerator.
    const VnAnsiString* name() const noexcept {
        const bool isKnown = enumeration && index >= 0 && index < enumeration->literalCount();
        return isKnown ? enumeration->literalName(index) : nullptr;
    }
    friend bool operator==(const VnIfcEnumDescription&, const VnIfcEnumDescription&) noexcept = default;
};

} // namespace VN_SDAI
