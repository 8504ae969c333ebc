#pragma once
#include <VnIfcCore/VnIfcVariantType.h>

namespace VN_SDAI {

/// Names one enumerator of an enumeration type. Refers to the type's descriptor and lives no longer than it.
struct VnIfcEnumDescription {
    /// The enumeration type's descriptor, not owned; null when nothing is named.
    const IVnIfcVariantTypeEnumeration* enumeration = nullptr;
    /// The enumerator's code; the last one stands for "unset".
    std::int32_t index = 0;

    /// The qualified name; null when there is no such enumerator.
    const VnAnsiString* name() const noexcept {
        const bool isKnown = enumeration && index >= 0 && index < enumeration->literalCount();
        return isKnown ? enumeration->literalName(index) : nullptr;
    }
    /// True for the same enumerator of the same descriptor.
    friend bool operator==(const VnIfcEnumDescription&, const VnIfcEnumDescription&) noexcept = default;
};

} // namespace VN_SDAI
