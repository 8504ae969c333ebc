#pragma once
#include <VnIfcCore/VnIfcNameType.h>

namespace VN_SDAI {

/// A name for a type (ISO 10303-22, defined_type). Enumerations, selects and aggregations, anonymous ones too, are
/// known in the dictionary through such a record.
class VNIFC_API VnIfcDefinedType : public VnIfcNameType {
public:
    /// `underlying` is null where the type beneath is given by a name that the schema builder resolves. With
    /// `ownsUnderlying` the underlying record becomes part of this one, whether or not construction succeeds.
    VnIfcDefinedType(const char* name, DictionaryInstance* underlying, bool ownsUnderlying);
    ~VnIfcDefinedType() override;

    /// The type beneath; null until resolved.
    const VnIfcParameterType* underlyingType() const noexcept { return m_underlying; }
    /// Its name as registered ("string", "ifclabel"); empty where a record was given.
    const VnAnsiString& underlyingName() const noexcept { return m_underlyingName; }
    VnTypeCodeKind kind() const noexcept override;

    /// Lets a static pointer show this record for as long as it lives.
    void showIn(VnIfcNameType*& place) noexcept { m_shown.show(place, this); }

private:
    friend class VnIfcSchemaBuilder;
    VnIfcDefinedType(const char* name, std::unique_ptr<DictionaryInstance> owned, const DictionaryInstance* underlying);

    std::unique_ptr<DictionaryInstance> m_owned;
    const VnIfcParameterType* m_underlying;
    VnAnsiString m_underlyingName;
    VnIfcShownIn<VnIfcNameType> m_shown;
};

} // namespace VN_SDAI
