#pragma once
#include <VnIfcCore/VnIfcNameType.h>

namespace VN_SDAI {

/// The members of a select (ISO 10303-22, select_type).
class VNIFC_API VnIfcSelectType : public VnIfcParameterType {
public:
    /// Owns the type code from then on.
    explicit VnIfcSelectType(VnTypeCode* typeCode) { VnIfcParameterType::type(typeCode); }
    ~VnIfcSelectType() override;

    /// The names of the members as registered ("IFCVECTOR"), in declared order; nested selects stand as one member.
    std::span<const VnAnsiString> memberNames() const noexcept { return m_memberNames; }
    /// The types of those names; null where a name is not resolved, empty before resolution.
    std::span<const VnIfcNameType* const> members() const noexcept { return m_members; }
    VnTypeCodeKind kind() const noexcept override { return VnTypeCodeKind::kSelect; }

private:
    friend class VnIfcSchemaBuilder;

    std::vector<VnAnsiString> m_memberNames;
    std::vector<const VnIfcNameType*> m_members;
};

} // namespace VN_SDAI
