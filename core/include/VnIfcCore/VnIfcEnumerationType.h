#pragma once
#include <VnIfcCore/VnIfcParameterType.h>

#include <list>

namespace VN_SDAI {

/// The literals of an enumeration (ISO 10303-22, enumeration_type).
class VNIFC_API VnIfcEnumerationType : public VnIfcParameterType {
public:
    /// Owns the type code from then on.
    VnIfcEnumerationType(VnTypeCode* typeCode, std::list<VnAnsiString> literals);
    ~VnIfcEnumerationType() override;

    /// Upper case, in declared order.
    std::span<const VnAnsiString> literals() const noexcept { return m_literals; }
    VnTypeCodeKind kind() const noexcept override { return VnTypeCodeKind::kEnumeration; }

private:
    std::vector<VnAnsiString> m_literals;
};

} // namespace VN_SDAI
