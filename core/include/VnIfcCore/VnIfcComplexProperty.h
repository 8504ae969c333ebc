#pragma once
#include <VnIfcCore/VnIfcSimpleProperty.h>

namespace VN_SDAI {

/// Stands for an instance that gathers other properties or quantities under one name.
class VNIFC_API VnIfcComplexProperty : public VnIfcSimpleProperty {
public:
    /// Makes the property object of an instance, which the caller owns; leaves the pointer alone when it has none for
    /// such instances.
    using Builder = bool (*)(VnIfcEntityBase* instance, VnIfcProperty*& property, int& code);

    /// `members` is the attribute that refers to the gathered instances.
    VnIfcComplexProperty(const VnDbObjectId& object, VnAnsiString members, Builder builder);
    ~VnIfcComplexProperty() override;

    /// eRefused: there is no one value.
    VN::ErrorStatus getValue(VnIfcVariant& value) const override;
    VN::ErrorStatus putValue(const VnIfcVariant& value) const override;
    /// One for each gathered instance that the builder has one for. False when the instance is gone.
    bool subProperties(VnIfcPropertyCollection& parts) const override;

private:
    Builder m_builder;
};

} // namespace VN_SDAI
